// Writes a STEP file of tessellation: wavy patches of triangles, the same for the same arguments.
//
//   generate_tessellation long|short|wrapped MEGABYTES OUTPUT
//
// "long" has one entity a line, each with lists of thousands of points or triangles; "wrapped" is
// the same with its lists broken at 72 columns; the entities of "short" take about 200 bytes.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <random>
#include <string>

namespace {

constexpr std::uint64_t kSeed = 20240229;

/// Collects one entity, broken into lines of at most 72 columns if asked for.
class EntityText {
 public:
  explicit EntityText(bool wrap) : wrap_(wrap) {}

  void add(const std::string& item) {
    if (wrap_ && column_ + item.size() > 72) {
      text_ += '\n';
      column_ = 0;
    }
    text_ += item;
    column_ += item.size();
  }
  std::string takeLine() {
    std::string line = text_ + "\n";
    text_.clear();
    column_ = 0;
    return line;
  }

 private:
  bool wrap_;
  std::string text_;
  std::size_t column_ = 0;
};

std::string number(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.6f", value);
  return text;
}

/// A square patch of (side + 1)^2 points as a coordinates list.
std::string coordinates(std::uint64_t name, int side, std::mt19937_64& random, EntityText& entity) {
  std::uniform_real_distribution<double> place(-500.0, 500.0);
  std::uniform_real_distribution<double> height(-1.0, 1.0);
  const double x0 = place(random);
  const double y0 = place(random);
  entity.add("#" + std::to_string(name) + "=COORDINATES_LIST('',");
  entity.add(std::to_string((side + 1) * (side + 1)) + ",(");
  for (int y = 0; y <= side; ++y) {
    for (int x = 0; x <= side; ++x) {
      entity.add(std::string(x + y == 0 ? "(" : ",(") + number(x0 + 0.5 * x) + "," +
                 number(y0 + 0.5 * y) + "," + number(height(random)) + ")");
    }
  }
  entity.add("));");
  return entity.takeLine();
}

/// The two triangles of every cell of the patch `coordinates`.
std::string face(std::uint64_t name, std::uint64_t coordinates, int side, EntityText& entity) {
  entity.add("#" + std::to_string(name) + "=COMPLEX_TRIANGULATED_FACE('',");
  entity.add("#" + std::to_string(coordinates) + ",");
  entity.add(std::to_string((side + 1) * (side + 1)) + ",((0.,0.,1.)),$,(),(");
  for (int y = 0; y < side; ++y) {
    for (int x = 0; x < side; ++x) {
      const int a = y * (side + 1) + x + 1;
      const int c = a + side + 1;
      const auto triple = [](int i, int j, int k) {
        return "(" + std::to_string(i) + "," + std::to_string(j) + "," + std::to_string(k) + ")";
      };
      entity.add(std::string(x + y == 0 ? "" : ",").append(triple(a, a + 1, c)));
      entity.add(std::string(",").append(triple(a + 1, c + 1, c)));
    }
  }
  entity.add("),());");
  return entity.takeLine();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    std::fprintf(stderr, "usage: generate_tessellation long|short|wrapped MEGABYTES OUTPUT\n");
    return 2;
  }
  const int side = std::strcmp(argv[1], "short") == 0 ? 2 : 100;
  EntityText entity(std::strcmp(argv[1], "wrapped") == 0);
  const std::uint64_t size = std::strtoull(argv[2], nullptr, 10) * 1'000'000;
  std::ofstream file(argv[3], std::ios::binary);
  std::mt19937_64 random(kSeed);

  file << "ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION((''),'2;1');\n"
          "FILE_NAME('','',(''),(''),'','','');\n"
          "FILE_SCHEMA(('AP242_MANAGED_MODEL_BASED_3D_ENGINEERING_MIM_LF'));\nENDSEC;\nDATA;\n"
          "#1=TESSELLATED_SHAPE_REPRESENTATION('',(#2),$);\n#2=TESSELLATED_SOLID('',(),$);\n";
  std::uint64_t written = 0;
  for (std::uint64_t name = 10; written < size; name += 2) {
    const std::string lines =
        coordinates(name, side, random, entity) + face(name + 1, name, side, entity);
    file << lines;
    written += lines.size();
  }
  file << "ENDSEC;\nEND-ISO-10303-21;\n";
  return file.flush() ? 0 : 1;
}
