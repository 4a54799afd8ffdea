#include "check/mesh_identity.h"

#include <cmath>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/memory_file.h"
#include "tests/support/stl_file.h"

namespace plenvorith {
namespace {

std::vector<Triangle> someTriangles(std::size_t count) {
  std::vector<Triangle> triangles;
  for (std::size_t i = 0; i < count; ++i) {
    const double x = static_cast<double>(i) / 3;
    triangles.push_back(makeTriangle({x, 0, 0}, {x, 1, 0.1}, {x, 0, 1}));
  }
  return triangles;
}

std::vector<test::StlRecord> recordsFrom(const std::vector<Triangle>& triangles) {
  std::vector<test::StlRecord> records;
  for (const Triangle& t : triangles) {
    test::StlRecord& record = records.emplace_back();
    std::size_t i = 0;
    for (const Point3* point : {&t.normal, &t.v1, &t.v2, &t.v3}) {
      for (const double coordinate : {point->x, point->y, point->z}) {
        record[i++] = static_cast<float>(coordinate);
      }
    }
  }
  return records;
}

std::string differenceOf(const std::vector<test::StlRecord>& records,
                         const std::vector<Triangle>& triangles) {
  test::MemoryFile file;
  return differenceFrom(file.write(test::stlFile(records)), triangles);
}

TEST(MeshIdentity, IsThatOfTheSameTriangles) {
  const std::vector<Triangle> triangles = someTriangles(10'000);
  EXPECT_EQ(differenceOf(recordsFrom(triangles), triangles), "");
}

TEST(MeshIdentity, LooksAtEveryBitOfEveryNumber) {
  const std::vector<Triangle> triangles = someTriangles(5000);
  for (std::size_t i = 0; i < 12; ++i) {
    std::vector<test::StlRecord> records = recordsFrom(triangles);
    records[4321][i] = std::nextafter(records[4321][i], 100.0F);
    EXPECT_EQ(differenceOf(records, triangles), "differs from triangle 4322 on");
  }
}

TEST(MeshIdentity, TellsTheZerosApart) {
  const std::vector<Triangle> triangles = someTriangles(1);
  std::vector<test::StlRecord> records = recordsFrom(triangles);
  records[0][3] = -records[0][3];
  EXPECT_EQ(differenceOf(records, triangles), "differs from triangle 1 on");
}

TEST(MeshIdentity, TakesNormalsThatAreNoNumbers) {
  std::vector<Triangle> triangles = someTriangles(2);
  triangles[1].normal.y = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ(differenceOf(recordsFrom(triangles), triangles), "");
}

TEST(MeshIdentity, RejectsOtherCounts) {
  EXPECT_EQ(differenceOf(recordsFrom(someTriangles(3)), someTriangles(4)),
            "has 3 triangles, not 4");
  EXPECT_EQ(differenceOf(recordsFrom(someTriangles(4)), someTriangles(3)),
            "has 4 triangles, not 3");
  EXPECT_EQ(differenceOf({}, someTriangles(3)), "has 0 triangles, not 3");
  EXPECT_EQ(differenceOf({}, {}), "");
}

TEST(MeshIdentity, RejectsWhatIsNoMesh) {
  test::MemoryFile file;
  EXPECT_EQ(differenceFrom(file.write("x"), someTriangles(1)),
            "ends after 1 byte, inside the 84 in front of the first triangle");
}

}  // namespace
}  // namespace plenvorith
