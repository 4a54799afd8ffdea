// What the kernel reads back from a clean STEP file is what the input held.

#include <numbers>
#include <string>

#include <gmock/gmock.h>

#include "app/clean_step_pipeline.h"
#include "tests/support/exact_geometry.h"
#include "tests/support/sample_copies.h"
#include "tests/support/scoped_tmpdir.h"
#include "tests/support/temp_dir.h"

namespace plenvorith {
namespace {

using test::ExactGeometry;
using test::exactGeometryIn;

/// Converts a file and what comes out of it once more; both have to hold `expected`.
void expectKeptTwiceThrough(const std::string& input, const ExactGeometry& expected) {
  const test::TempDir dir;
  const test::ScopedTmpdir tmpdir(dir.path());
  const std::string once = dir / "once.step";
  const std::string twice = dir / "twice.step";
  (void)test::printedBy([&] {
    EXPECT_TRUE(convertToCleanStep(input, once, 0.1, false));
    EXPECT_TRUE(convertToCleanStep(once, twice, 0.1, false));
  });
  for (const std::string& output : {once, twice}) {
    test::expectNoTessellatedType(output);
    test::expectSameGeometry(exactGeometryIn(output), expected);
  }
}

TEST(CleanStepGeometry, KeepsOneSolid) {
  const test::SampleCopies samples;
  const ExactGeometry bracket = exactGeometryIn(samples / "bracket.step");
  EXPECT_EQ(bracket.solids, 1u);
  EXPECT_NEAR(bracket.greatest[0] - bracket.least[0], 60, 1e-4);
  EXPECT_NEAR(bracket.greatest[1] - bracket.least[1], 40, 1e-4);
  EXPECT_NEAR(bracket.greatest[2] - bracket.least[2], 46, 1e-4);
  // Two legs, 6 thick and 40 wide, less what rounding takes from four corners (radius 8) and the
  // outer edge (12), with what it puts into the inner edge (6), less the holes (4, 4 and 8).
  constexpr double kOffCorner = 1 - std::numbers::pi / 4;
  constexpr double kVolume = (60 + 40) * 6 * 40 - 4 * 8 * 8 * kOffCorner * 6 -
                             (12 * 12 - 6 * 6) * kOffCorner * 40 -
                             (4 * 4 + 4 * 4 + 8 * 8) * std::numbers::pi * 6;
  EXPECT_NEAR(bracket.volume, kVolume, 1e-6 * kVolume);
  expectKeptTwiceThrough(samples / "bracket.step", bracket);
}

TEST(CleanStepGeometry, KeepsTheSolidsAndTheFreeShellOfAnAssembly) {
  const test::SampleCopies samples;
  const ExactGeometry lamp = exactGeometryIn(samples / "assembly.step");
  EXPECT_EQ(lamp.solids, 3u);
  EXPECT_EQ(lamp.freeShells, 1u);
  EXPECT_EQ(lamp.freeFaces, 0u);
  // Foot, pole and bulb: 30 x 30 x 4, 2.5 x 2.5 x 46 and 4/3 x 8 x 8 x 8, all times pi.
  constexpr double kVolume = (3600 + 287.5 + 2048.0 / 3) * std::numbers::pi;
  EXPECT_NEAR(lamp.volume, kVolume, 1e-6 * kVolume);
  expectKeptTwiceThrough(samples / "assembly.step", lamp);
}

TEST(CleanStepGeometry, KeepsTheExactGeometryThatTessellationDuplicates) {
  const test::SampleCopies samples;
  const test::TempDir dir;
  const test::ScopedTmpdir tmpdir(dir.path());
  const ExactGeometry flange = exactGeometryIn(samples / "paired.step");
  EXPECT_EQ(flange.solids, 1u);
  // Disc and hub without the bore and six bolt holes.
  constexpr double kVolume =
      (30 * 30 * 6 + 14 * 14 * 16 - 9 * 9 * 22 - 6 * 3 * 3 * 6) * std::numbers::pi;
  EXPECT_NEAR(flange.volume, kVolume, 1e-6 * kVolume);
  expectKeptTwiceThrough(samples / "paired.step", flange);
}

TEST(CleanStepGeometry, SplitKeepsTheExactGeometryOfAMixedFile) {
  const test::SampleCopies samples;
  const test::TempDir dir;
  const test::ScopedTmpdir tmpdir(dir.path());
  const ExactGeometry ring = exactGeometryIn(samples / "mixed.step");
  EXPECT_EQ(ring.solids, 1u);
  // A torus: 2 pi pi R r r.
  constexpr double kVolume = 2 * std::numbers::pi * std::numbers::pi * 9 * 1.5 * 1.5;
  EXPECT_NEAR(ring.volume, kVolume, 1e-6 * kVolume);
  (void)test::printedBy(
      [&] { EXPECT_TRUE(convertToCleanStep(samples / "mixed.step", dir / "out.stp", 0.1, true)); });
  test::expectNoTessellatedType(dir / "out.stp_1.stp");
  test::expectSameGeometry(exactGeometryIn(dir / "out.stp_1.stp"), ring);
}

}  // namespace
}  // namespace plenvorith
