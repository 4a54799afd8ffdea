// Checks a mesh of ten million triangles that is made for it. Takes some seconds, half a gigabyte in
// the temporary directory and as much memory; hence only if PLENVORITH_LARGE is 1.

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <string>

#include <gmock/gmock.h>

#include "common/little_endian.h"
#include "tests/support/run_program.h"
#include "tests/support/temp_dir.h"

namespace plenvorith::test {
namespace {

using namespace std::string_literals;

/// A closed skin around a flat sheet of squares: the upper side one unit above the lower one, and the
/// borders of both joined.
class LargeMesh {
 public:
  LargeMesh(const std::string& path, std::uint32_t squares)
      : file_(path, std::ios::binary), squares_(squares) {
    std::string header(84, '\0');
    putUint32(header.data() + 80, triangles());
    file_ << header;
    for (std::uint32_t x = 0; x < squares; ++x) {
      for (std::uint32_t y = 0; y < squares; ++y) {
        addSquare({x, y, 1}, {x + 1, y, 1}, {x + 1, y + 1, 1}, {x, y + 1, 1});
        addSquare({x, y, 0}, {x, y + 1, 0}, {x + 1, y + 1, 0}, {x + 1, y, 0});
      }
      const std::uint32_t n = squares;
      addSquare({x, 0, 0}, {x + 1, 0, 0}, {x + 1, 0, 1}, {x, 0, 1});
      addSquare({x + 1, n, 0}, {x, n, 0}, {x, n, 1}, {x + 1, n, 1});
      addSquare({0, x + 1, 0}, {0, x, 0}, {0, x, 1}, {0, x + 1, 1});
      addSquare({n, x, 0}, {n, x + 1, 0}, {n, x + 1, 1}, {n, x, 1});
    }
    file_.close();
    EXPECT_TRUE(file_.good()) << "the disk is full";
  }

  [[nodiscard]] std::uint32_t triangles() const {
    return 4 * squares_ * squares_ + 8 * squares_;
  }

 private:
  struct Corner {
    std::uint32_t x, y, z;
  };

  void addSquare(Corner a, Corner b, Corner c, Corner d) {
    addTriangle(a, b, c);
    addTriangle(a, c, d);
  }

  void addTriangle(Corner a, Corner b, Corner c) {
    std::string record(50, '\0');
    char* place = record.data() + 12;
    for (const Corner& corner : {a, b, c}) {
      for (const std::uint32_t number : {corner.x, corner.y, corner.z}) {
        place = putFloat(place, static_cast<float>(number));
      }
    }
    file_ << record;
  }

  std::ofstream file_;
  std::uint32_t squares_;
};

TEST(LargeCheck, FindsOneMissingTriangleAmongTenMillion) {
  const char* const wanted = std::getenv("PLENVORITH_LARGE");
  if (wanted == nullptr || wanted != "1"s) {
    GTEST_SKIP() << "takes a gigabyte of disk and memory; set PLENVORITH_LARGE=1 for it";
  }
  const TempDir dir;
  const std::string path = dir / "sheet.stl";
  const LargeMesh mesh(path, 1600);
  ASSERT_EQ(mesh.triangles(), 10'252'800U);
  const auto check = [&] {
    return runProgram({.program = PLENVORITH_CHECK,
                       .arguments = {path},
                       .directory = dir.path(),
                       .environment = {},
                       .timeLimit = std::chrono::minutes{5}});
  };
  const Outcome whole = check();
  EXPECT_EQ(whole.exitStatus, 0) << whole.err;
  EXPECT_THAT(whole.out, testing::StartsWith(R"({"triangles":10252800,"closed":true,"openEdges":0,)"
                                             R"("degenerate":0,"pieces":1,"volume":2560000.0,)"
                                             R"("area":5126400.0,"bounds":[[0.0,0.0,0.0],)"
                                             R"([1600.0,1600.0,1.0]]})"));
  EXPECT_LE(whole.peakMemory, 60 * std::int64_t{mesh.triangles()});

  // The five millionth becomes its first corner alone.
  std::fstream file(path, std::ios::binary | std::ios::in | std::ios::out);
  std::string corners(36, '\0');
  const std::streamoff place = 84 + 50 * std::streamoff{5'000'000} + 12;
  file.seekg(place);
  file.read(corners.data(), 36);
  file.seekp(place);
  file << corners.substr(0, 12) << corners.substr(0, 12) << corners.substr(0, 12);
  file.close();
  ASSERT_TRUE(file.good());
  const Outcome open = check();
  EXPECT_THAT(open.out, testing::StartsWith(R"({"triangles":10252800,"closed":false,"openEdges":3,)"
                                            R"("degenerate":1,"pieces":1,)"));
}

}  // namespace
}  // namespace plenvorith::test
