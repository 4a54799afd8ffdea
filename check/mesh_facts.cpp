#include "check/mesh_facts.h"

#include <array>
#include <cstddef>
#include <vector>

#include "check/edge_balance.h"
#include "check/places.h"
#include "check/stl_reader.h"

namespace plenvorith {
namespace {

Place rounded(const Point3& point) {
  return {static_cast<float>(point.x), static_cast<float>(point.y), static_cast<float>(point.z)};
}

Point3 pointOf(const Place& place) {
  return {place[0], place[1], place[2]};
}

/// The vertex of this number (0 to 2).
Place vertexOf(const StlTriangle& triangle, std::size_t number) {
  const std::size_t start = 3 + 3 * number;
  return {triangle[start], triangle[start + 1], triangle[start + 2]};
}

void balance(MeshFacts& facts, std::span<const Corners> corners, std::uint32_t places) {
  facts.openEdges = countOpenEdges(corners, places);
  facts.pieces = countPieces(corners, places);
}

/// Numbers the vertices of a file in two turns, each for one half of the hashes: memory for the
/// search is needed for one half at a time.
class FileCorners {
 public:
  std::string read(const std::string& path, MeshMeasure& measure) {
    std::string problem;
    for (std::uint64_t half = 0; half < 2 && problem.empty(); ++half) {
      problem = readHalf(path, half, measure);
    }
    if (problem.empty() && numbered_ != 3 * std::uint64_t{corners_.size()}) {
      problem = "changed while it was read";
    }
    return problem;
  }

  [[nodiscard]] std::span<const Corners> corners() const {
    return corners_;
  }
  [[nodiscard]] std::uint32_t places() const {
    return places_;
  }

 private:
  std::string readHalf(const std::string& path, std::uint64_t half, MeshMeasure& measure) {
    std::optional<PlaceNumbers> numbers;
    bool hasTooMany = false;
    std::string problem = readBinaryStl(path, [&](std::uint64_t count, std::uint64_t first,
                                                  std::span<const StlTriangle> triangles) {
      if (!numbers) {
        if (half == 0) {
          corners_.resize(count);
        }
        // A closed mesh has half as many vertices as triangles.
        numbers.emplace(static_cast<std::size_t>(count / 4), static_cast<std::size_t>(3 * count));
      }
      if (count != corners_.size()) {
        return false;
      }
      number(triangles, std::span(corners_).subspan(first, triangles.size()), half, *numbers);
      if (half == 0) {
        for (const StlTriangle& triangle : triangles) {
          addTriangle(measure, pointOf(vertexOf(triangle, 0)), pointOf(vertexOf(triangle, 1)),
                      pointOf(vertexOf(triangle, 2)));
        }
      }
      hasTooMany = places_ + std::uint64_t{numbers->count()} > kMaxPlaces;
      return !hasTooMany;
    });
    if (hasTooMany) {
      return "has more than " + std::to_string(kMaxPlaces) + " different vertices";
    }
    places_ += numbers ? numbers->count() : 0;
    return problem;
  }

  /// Sets the corners whose vertices have hashes of this half.
  void number(std::span<const StlTriangle> triangles, std::span<Corners> corners,
              std::uint64_t half, PlaceNumbers& numbers) {
    hashes_.clear();
    for (const StlTriangle& triangle : triangles) {
      for (std::size_t k = 0; k < 3; ++k) {
        hashes_.push_back(hashOf(vertexOf(triangle, k)));
      }
    }
    const auto isWanted = [half](std::uint64_t hash) { return hash >> 63U == half; };
    for (std::size_t i = 0; i < hashes_.size(); ++i) {
      const std::size_t ahead = i + PlaceNumbers::kAhead;
      if (ahead < hashes_.size() && isWanted(hashes_[ahead])) {
        numbers.expect(hashes_[ahead]);
      }
      if (isWanted(hashes_[i])) {
        corners[i / 3][i % 3] =
            places_ + numbers.numberOf(vertexOf(triangles[i / 3], i % 3), hashes_[i]);
        ++numbered_;
      }
    }
  }

  std::vector<std::uint64_t> hashes_;  // of the vertices of a block
  std::vector<Corners> corners_;
  std::uint32_t places_ = 0;
  std::uint64_t numbered_ = 0;
};

}  // namespace

MeshFacts meshFactsOf(std::span<const Triangle> triangles) {
  MeshFacts facts;
  PlaceNumbers numbers(triangles.size() / 2 + 2, 3 * triangles.size());
  std::vector<Corners> corners;
  corners.reserve(triangles.size());
  for (const Triangle& triangle : triangles) {
    const std::array<Place, 3> vertices = {rounded(triangle.v1), rounded(triangle.v2),
                                           rounded(triangle.v3)};
    Corners& numbered = corners.emplace_back();
    for (std::size_t k = 0; k < 3; ++k) {
      numbered[k] = numbers.numberOf(vertices[k], hashOf(vertices[k]));
    }
    addTriangle(facts.measure, pointOf(vertices[0]), pointOf(vertices[1]), pointOf(vertices[2]));
  }
  balance(facts, corners, numbers.count());
  return facts;
}

std::string readMeshFacts(const std::string& path, MeshFacts& facts) {
  facts = {};
  FileCorners file;
  std::string problem = file.read(path, facts.measure);
  if (problem.empty()) {
    balance(facts, file.corners(), file.places());
  }
  return problem;
}

}  // namespace plenvorith
