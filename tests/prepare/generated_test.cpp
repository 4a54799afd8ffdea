// Prepares generated STEP files and compares what the converter decodes of the results with the
// reference: the same triangles in the same places, whatever order the file has.
//
// PLENVORITH_GENERATED_FILES  how many files, 400 where it is not set, 100 with sanitizers
// PLENVORITH_GENERATED_SEED   the first seed, 1 where it is not set; file n has the seed after that
//                             by n, and a failure names its seed

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <random>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "prepare/preparation.h"
#include "steptext/tessellation_analysis.h"
#include "tessellation/face_decoder.h"
#include "tests/prepare/tessellated_file_generator.h"
#include "tests/reference/reference_prepare.h"
#include "tests/support/captured_cout.h"
#include "tests/support/records.h"
#include "tests/support/rounds.h"
#include "tests/support/temp_dir.h"

namespace plenvorith {
namespace {

using test::FloatTriangle;
using test::ReferencePreparation;

/// What the converter takes of a prepared file, without the exact geometry.
struct Taken {
  TessellationStatus status = TessellationStatus::NoTessellation;
  std::vector<Triangle> triangles;
};

Taken takenFrom(const std::string& path) {
  EntityTable table;
  readEntityTable(table, path);
  const TessellationAnalysis analysis = analyzeTessellation(table);
  if (analysis.status == TessellationStatus::TessellationOnly) {
    return {analysis.status, decodeAllTriangulatedFaces(table)};
  }
  return {analysis.status, decodeTriangulatedFaces(table, analysis.uniqueFaces)};
}

FloatTriangle floatsOf(const Triangle& triangle) {
  FloatTriangle floats{};
  std::size_t i = 0;
  for (const Point3& p : {triangle.v1, triangle.v2, triangle.v3}) {
    for (const double number : {p.x, p.y, p.z}) {
      floats.at(i++) = static_cast<float>(number);
    }
  }
  return floats;
}

/// Begins each triangle at its least corner, in the same sense of rotation, and sorts them all.
std::vector<FloatTriangle> sorted(std::vector<FloatTriangle> triangles) {
  for (FloatTriangle& triangle : triangles) {
    FloatTriangle turned = triangle;
    for (int i = 0; i < 2; ++i) {
      std::rotate(turned.begin(), turned.begin() + 3, turned.end());
      triangle = std::min(triangle, turned);
    }
  }
  std::sort(triangles.begin(), triangles.end());
  return triangles;
}

bool isNear(const FloatTriangle& a, const FloatTriangle& b) {
  constexpr double kRelative = 1e-6;
  double size = 0;
  double distance = 0;
  for (std::size_t i = 0; i < a.size(); ++i) {
    size = std::max({size, std::abs(static_cast<double>(a.at(i))), 1e-6});
    distance = std::max(distance, std::abs(static_cast<double>(a.at(i)) - b.at(i)));
  }
  return distance <= kRelative * size;
}

/// Any of the three ways to begin at a corner.
bool isNearTurned(const FloatTriangle& a, FloatTriangle b) {
  for (int i = 0; i < 3; ++i) {
    if (isNear(a, b)) {
      return true;
    }
    std::rotate(b.begin(), b.begin() + 3, b.end());
  }
  return false;
}

/// Each expected triangle is there, and no other one; where numbers are computed, the last bits may
/// differ.
void expectSameTriangles(const std::vector<Triangle>& triangles,
                         const ReferencePreparation& expected) {
  std::vector<FloatTriangle> actual;
  actual.reserve(triangles.size());
  for (const Triangle& triangle : triangles) {
    actual.push_back(floatsOf(triangle));
  }
  actual = sorted(actual);
  const std::vector<FloatTriangle> wanted = sorted(expected.triangles);
  ASSERT_EQ(actual.size(), wanted.size());
  if (actual == wanted) {
    return;
  }
  ASSERT_FALSE(expected.isCopied) << "numbers that are copied differ";
  for (const FloatTriangle& triangle : wanted) {
    const auto found = std::find_if(actual.begin(), actual.end(), [&](const FloatTriangle& other) {
      return isNearTurned(triangle, other);
    });
    ASSERT_NE(found, actual.end()) << "no triangle " << testing::PrintToString(triangle);
    actual.erase(found);
  }
}

/// How often something was met, so that a generator that has become useless is noticed.
struct Tally {
  std::size_t triangles = 0;
  std::size_t skipped = 0;
  std::size_t copied = 0;
  std::size_t exact = 0;
  std::size_t empty = 0;
};

class Generated : public testing::Test {
 protected:
  std::string prepared(const std::string& input, const std::string& output, int status) const {
    const test::CapturedCout report;
    EXPECT_EQ(prepareFile(input, output), status) << report.text();
    return report.text();
  }

  void check(const std::string& content) {
    const ReferencePreparation expected = test::referencePrepare(content);
    const bool isEmpty = expected.triangles.empty();
    tally.triangles += expected.triangles.size();
    tally.skipped += expected.skipped > 0 ? 1 : 0;
    tally.copied += expected.isCopied && !isEmpty ? 1 : 0;
    tally.exact += expected.hasExactGeometry ? 1 : 0;
    tally.empty += isEmpty ? 1 : 0;

    const std::string input = test::writeFile(dir / "in.stp", content);
    const std::string once = dir / "once.stp";
    const std::string twice = dir / "twice.stp";
    const int status = expected.hasExactGeometry || !isEmpty ? 0 : 3;
    const std::string report = prepared(input, once, status);
    EXPECT_EQ(report.find("Skipped triangles: ") != std::string::npos, expected.skipped > 0);
    EXPECT_NE(report.find(expected.hasExactGeometry ? "exact geometry: yes" : "exact geometry: no"),
              std::string::npos);
    const Taken taken = takenFrom(once);
    ASSERT_NO_FATAL_FAILURE(expectSameTriangles(taken.triangles, expected)) << report;
    if (!isEmpty) {
      EXPECT_EQ(taken.status, expected.hasExactGeometry ? TessellationStatus::PartiallyUnique
                                                        : TessellationStatus::TessellationOnly);
    }
    EXPECT_FALSE(expected.hasExactGeometry && taken.status == TessellationStatus::TessellationOnly)
        << "nothing exact would be read";

    (void)prepared(once, twice, status);
    const Taken again = takenFrom(twice);
    EXPECT_EQ(again.status, taken.status);
    EXPECT_EQ(again.triangles, taken.triangles);
    EXPECT_EQ(test::readFile(input), content);
  }

  const test::TempDir dir;
  Tally tally;
};

TEST_F(Generated, FilesGiveTheTrianglesOfTheReference) {
  const unsigned long count =
      test::fromEnvironment("PLENVORITH_GENERATED_FILES", test::kHasSanitizers ? 100 : 400);
  const unsigned long seed = test::fromEnvironment("PLENVORITH_GENERATED_SEED", 1);
  for (unsigned long i = 0; i < count; ++i) {
    std::mt19937 random(static_cast<std::mt19937::result_type>(seed + i));
    const std::string content = test::generateTessellatedFile(random);
    ASSERT_NO_FATAL_FAILURE(check(content)) << "seed " << seed + i << "\n" << content;
    ASSERT_FALSE(HasFailure()) << "seed " << seed + i << "\n" << content;
  }
  EXPECT_GE(tally.triangles, 10 * count);
  EXPECT_GE(tally.skipped, count / 8);
  EXPECT_GE(tally.copied, count / 12);
  EXPECT_GE(tally.exact, count / 4);
  EXPECT_GE(tally.empty, count / 16);
}

}  // namespace
}  // namespace plenvorith
