#include "tests/reference/reference_face.h"

namespace plenvorith::test {
namespace {

/// The place in the coordinates list, from 1; 0 where there is none.
std::size_t place(const Face& face, const Parameter& index, std::size_t points) {
  long number = std::stol(index.text);
  if (!face.pnindex.empty()) {
    const bool isMapped = number >= 1 && number <= static_cast<long>(face.pnindex.size());
    number = isMapped ? std::stol(face.pnindex[static_cast<std::size_t>(number) - 1].text) : 0;
  }
  return number >= 1 && number <= static_cast<long>(points) ? static_cast<std::size_t>(number) : 0;
}

}  // namespace

Face faceOf(const Model& model, const std::string& name) {
  const ExchangeInstance& instance = *find(model, name);
  Parameters all;
  for (const char* base : {"TESSELLATED_FACE", "TESSELLATED_SURFACE_SET"}) {
    if (const Parameters* const record = recordOf(instance, base)) {
      all = *record;
    }
  }
  Face face;
  for (const std::string& type : kFaceTypes) {
    if (recordOf(instance, type) == nullptr) {
      continue;
    }
    const Parameters rest = own(model, name, type);
    all.insert(all.end(), rest.begin(), rest.end());
    const bool isFace = type.ends_with("FACE");
    const std::size_t index = isFace ? 4 : 3;
    face.coordinates = all.at(0);
    face.link = isFace ? all.at(3) : Parameter{};
    face.pnindex = all.at(index).items;
    if (type.starts_with("COMPLEX")) {
      face.strips = all.at(index + 1).items;
      face.fans = all.at(index + 2).items;
    } else {
      face.triangles = all.at(index + 1).items;
    }
  }
  return face;
}

std::vector<Corners> trianglesOf(const Face& face, std::size_t points) {
  const auto corners = [&](const Parameter& a, const Parameter& b, const Parameter& c) {
    return Corners{place(face, a, points), place(face, b, points), place(face, c, points)};
  };
  std::vector<Corners> triangles;
  for (const Parameter& triple : face.triangles) {
    triangles.push_back(corners(triple.items.at(0), triple.items.at(1), triple.items.at(2)));
  }
  const auto addUnlessJoint = [&](const Parameter& a, const Parameter& b, const Parameter& c) {
    if (std::stol(a.text) != std::stol(b.text) && std::stol(b.text) != std::stol(c.text) &&
        std::stol(c.text) != std::stol(a.text)) {
      triangles.push_back(corners(a, b, c));
    }
  };
  for (const Parameter& strip : face.strips) {
    for (std::size_t i = 0; i + 2 < strip.items.size(); ++i) {
      const std::size_t isOdd = i % 2;
      addUnlessJoint(strip.items[i], strip.items[i + 1 + isOdd], strip.items[i + 2 - isOdd]);
    }
  }
  for (const Parameter& fan : face.fans) {
    for (std::size_t i = 1; i + 1 < fan.items.size(); ++i) {
      addUnlessJoint(fan.items[0], fan.items[i], fan.items[i + 1]);
    }
  }
  // What a mapping makes equal is a joint as well.
  std::erase_if(triangles, [](const Corners& c) {
    const bool isInside = c[0] != 0 && c[1] != 0 && c[2] != 0;
    return isInside && (c[0] == c[1] || c[1] == c[2] || c[2] == c[0]);
  });
  return triangles;
}

}  // namespace plenvorith::test
