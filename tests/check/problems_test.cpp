#include "check/problems.h"

#include <cmath>
#include <limits>

#include <gmock/gmock.h>

#include "tests/check/models.h"

namespace plenvorith {
namespace {

using test::modelOf;
using test::openShell;
using test::soundPart;
using testing::DoubleEq;
using testing::Optional;

TEST(Problems, AreNoneOfASoundPart) {
  EXPECT_FALSE(hasProblem(soundPart()));
}

TEST(Problems, AreOpenSolids) {
  CheckedPart part = soundPart();
  part.mesh.openEdges = 1;
  EXPECT_FALSE(isClosed(part.mesh));
  EXPECT_TRUE(hasProblem(part));
}

TEST(Problems, AreSolidsWithoutTriangles) {
  CheckedPart part = soundPart();
  part.mesh.measure.triangles = 0;
  EXPECT_FALSE(isClosed(part.mesh));
  EXPECT_TRUE(hasProblem(part));
}

TEST(Problems, AreNotSmallMeshes) {
  CheckedPart part = soundPart();
  part.mesh.measure.triangles = 1;
  EXPECT_TRUE(isClosed(part.mesh));
}

TEST(Problems, AreSolidsThatAreInsideOutOrFlat) {
  CheckedPart part = soundPart();
  part.mesh.measure.sixfoldVolume = -8;
  EXPECT_TRUE(hasProblem(part));
  part.mesh.measure.sixfoldVolume = 0;
  EXPECT_TRUE(hasProblem(part));
  part.mesh.measure.sixfoldVolume = std::numeric_limits<double>::quiet_NaN();
  EXPECT_TRUE(hasProblem(part));
  part.mesh.measure.sixfoldVolume = 1e-300;
  EXPECT_FALSE(hasProblem(part));
}

TEST(Problems, AreNotTheBordersOfShellsFacesAndTessellation) {
  for (const char* kind : {"shell", "face", "tessellation", "other"}) {
    CheckedPart part = openShell();
    part.part.kind = kind;
    part.mesh.measure.sixfoldVolume = -1;
    EXPECT_FALSE(hasProblem(part)) << kind;
  }
}

TEST(Problems, AreFacesWithoutMesh) {
  CheckedPart part = openShell();
  part.part.faces.withoutMesh = 1;
  EXPECT_TRUE(hasProblem(part));
}

TEST(Problems, AreFacesBeyondTheDeflection) {
  CheckedPart part = openShell();
  part.part.faces.overDeflection = 1;
  EXPECT_TRUE(hasProblem(part));
}

CheckedPart withExactAndStated(const PartMeasures& exact, const PartMeasures& stated) {
  CheckedPart part = soundPart();
  part.part.exact = exact;
  part.part.stated = stated;
  return part;
}

TEST(Problems, AreStatedMeasuresThatAreATenthOfAPercentOff) {
  const PartMeasures exact = {1000.0, 1000.0, Point3{1, 1, 1}};
  EXPECT_FALSE(hasProblem(withExactAndStated(exact, exact)));
  for (const double factor : {0.9989, 1.0011}) {
    EXPECT_TRUE(hasProblem(withExactAndStated({1000.0 * factor, 1000.0, {}}, exact)));
    EXPECT_TRUE(hasProblem(withExactAndStated({1000.0, 1000.0 * factor, {}}, exact)));
  }
  for (const double factor : {0.9991, 1.0009}) {
    EXPECT_FALSE(hasProblem(withExactAndStated({1000.0 * factor, 1000.0 * factor, {}}, exact)));
  }
}

TEST(Problems, AreNotStatedMeasuresThatAreJustATenthOfAPercentOff) {
  const PartMeasures stated = {1000.0, 1000.0, Point3{0, 0, 0}};
  for (const double exact : {999.0, 1001.0}) {
    EXPECT_FALSE(hasProblem(withExactAndStated({exact, exact, {}}, stated)));
    const double beyond = std::nextafter(exact, exact < 1000 ? 0.0 : 2000.0);
    EXPECT_TRUE(hasProblem(withExactAndStated({beyond, exact, {}}, stated)));
    EXPECT_TRUE(hasProblem(withExactAndStated({exact, beyond, {}}, stated)));
  }
  // The part is 1000 large.
  CheckedPart part = withExactAndStated({1000.0, 1000.0, Point3{1, 0, 0}}, stated);
  part.mesh.measure.high = {0, 600, 800};
  EXPECT_FALSE(hasProblem(part));
  part.part.exact.centroid->x = std::nextafter(1.0, 2.0);
  EXPECT_TRUE(hasProblem(part));
}

TEST(Problems, AreMeasuresThatAreNoNumbers) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_TRUE(hasProblem(withExactAndStated({nan, 1.0, {}}, {1.0, 1.0, {}})));
  EXPECT_TRUE(hasProblem(withExactAndStated({1.0, 1.0, {}}, {nan, 1.0, {}})));
}

TEST(Problems, AreStatedCentresFarFromTheExactOnes) {
  // The part is as large as the diagonal of a cube of side 2.
  const PartMeasures exact = {8.0, 24.0, Point3{1, 1, 1}};
  EXPECT_FALSE(hasProblem(withExactAndStated(exact, {{}, {}, Point3{1.0034, 1, 1}})));
  EXPECT_TRUE(hasProblem(withExactAndStated(exact, {{}, {}, Point3{1.0035, 1, 1}})));
}

TEST(Problems, AreNotStatedMeasuresBesideThoseOfAMesh) {
  CheckedPart part = soundPart();
  part.part.stated = {100.0, 1.0, Point3{5, 5, 5}};
  EXPECT_FALSE(hasProblem(part));
}

TEST(Problems, OfTheWholeAreItsStatedMeasures) {
  CheckedModel model = modelOf({soundPart(), soundPart(), openShell()});
  for (CheckedPart& part : model.parts) {
    part.part.exact = {8.0, 24.0, Point3{1, 1, 1}};
  }
  model.stated = {16.0, 48.0, Point3{1, 1, 1}};
  model.withExact = true;
  EXPECT_FALSE(hasProblemOfTheWhole(model));
  model.stated.volume = 16.02;
  EXPECT_TRUE(hasProblemOfTheWhole(model));
  model.withExact = false;
  EXPECT_FALSE(hasProblemOfTheWhole(model));
  EXPECT_FALSE(hasProblemOfTheWhole(modelOf({})));
}

TEST(Problems, OfTheWholeGoByTheSizeOfAllParts) {
  for (double Point3::*axis : {&Point3::x, &Point3::y, &Point3::z}) {
    // From 0 to 1000, whichever part comes first.
    CheckedPart low = soundPart();
    low.mesh.measure.high = {};
    low.part.exact = {1.0, 1.0, Point3{}};
    CheckedPart high = low;
    low.mesh.measure.high.*axis = 100;
    high.mesh.measure.low.*axis = 900;
    high.mesh.measure.high.*axis = 1000;
    for (CheckedModel model : {modelOf({low, high}), modelOf({high, low})}) {
      model.withExact = true;
      model.stated.centroid = Point3{0.99, 0, 0};
      EXPECT_FALSE(hasProblemOfTheWhole(model));
      model.stated.centroid = Point3{1.01, 0, 0};
      EXPECT_TRUE(hasProblemOfTheWhole(model));
    }
  }
}

TEST(Totals, HaveTheLargestDeviation) {
  CheckedModel model = modelOf({soundPart(), soundPart(), soundPart()});
  model.parts[1].part.faces.deviation = 0.5;
  EXPECT_EQ(totalsOf(model).deviation, 0.5);
}

TEST(Measures, OfPartsThatCancelOutHaveNoCentre) {
  CheckedModel model = modelOf({soundPart(), soundPart()});
  model.parts[1].mesh.measure.sixfoldVolume = -48;
  const PartMeasures whole = bestMeasures(model);
  EXPECT_EQ(whole.volume, 0.0);
  EXPECT_FALSE(whole.centroid.has_value());
}

TEST(Measures, OfTheWholeAreThoseOfItsSolids) {
  CheckedModel model = modelOf({soundPart(), soundPart(), openShell()});
  model.parts[1].part.exact = {24.0, 30.0, Point3{5, 1, 1}};
  const PartMeasures whole = bestMeasures(model);
  EXPECT_THAT(whole.volume, Optional(DoubleEq(32)));
  EXPECT_THAT(whole.area, Optional(DoubleEq(54)));
  ASSERT_TRUE(whole.centroid.has_value());
  EXPECT_THAT(whole.centroid->x, DoubleEq(4));
}

TEST(Measures, OfAWholeWithoutSolidsAreThoseOfAllParts) {
  EXPECT_THAT(bestMeasures(modelOf({openShell(), openShell()})).area, Optional(DoubleEq(48)));
}

TEST(Measures, DifferRelativelyToTheOthers) {
  const MeasureDifferences differences =
      differencesOf({110.0, 90.0, Point3{0, 0, 0}}, {100.0, 100.0, Point3{0, 3, 4}});
  EXPECT_THAT(differences.volume, Optional(DoubleEq(0.1)));
  EXPECT_THAT(differences.area, Optional(DoubleEq(-0.1)));
  EXPECT_THAT(differences.centroid, Optional(DoubleEq(5)));
  EXPECT_THAT(differencesOf({-110.0, {}, {}}, {-100.0, {}, {}}).volume, Optional(DoubleEq(-0.1)));
  EXPECT_EQ(differencesOf({0.0, {}, {}}, {0.0, {}, {}}).volume, 0.0);
  EXPECT_EQ(differencesOf({1.0, {}, {}}, {}).volume, std::nullopt);
  EXPECT_EQ(differencesOf({}, {1.0, 1.0, Point3{}}).centroid, std::nullopt);
}

}  // namespace
}  // namespace plenvorith
