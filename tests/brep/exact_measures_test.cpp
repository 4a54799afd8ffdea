#include "brep/exact_measures.h"

#include <cmath>

#include <BRepPrimAPI_MakeCone.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRepPrimAPI_MakeSphere.hxx>
#include <BRepPrimAPI_MakeTorus.hxx>
#include <gmock/gmock.h>

#include "tests/support/kernel_shapes.h"

namespace plenvorith {
namespace {

using test::boxAt;
using testing::DoubleNear;
using testing::Optional;

void expectMeasures(const TopoDS_Shape& shape, double volume, double area) {
  const PartMeasures measures = exactMeasures(shape);
  EXPECT_THAT(measures.volume, Optional(DoubleNear(volume, 1e-9 * volume)));
  EXPECT_THAT(measures.area, Optional(DoubleNear(area, 1e-9 * area)));
}

TEST(ExactMeasures, AreThoseOfTheFormulas) {
  expectMeasures(BRepPrimAPI_MakeSphere(10).Shape(), 4000 * M_PI / 3, 400 * M_PI);
  expectMeasures(BRepPrimAPI_MakeTorus(10, 3).Shape(), 180 * M_PI * M_PI, 120 * M_PI * M_PI);
  expectMeasures(BRepPrimAPI_MakeCylinder(5, 20).Shape(), 500 * M_PI, 250 * M_PI);
  // 8 * pi / 3 * (64 + 16 + 4); the side is 10 long.
  expectMeasures(BRepPrimAPI_MakeCone(8, 2, 8).Shape(), 224 * M_PI, M_PI * (64 + 4 + (8 + 2) * 10));
}

TEST(ExactMeasures, OfASolidThatIsInsideOutHaveANegativeVolume) {
  EXPECT_THAT(exactMeasures(boxAt(0).Reversed()).volume, Optional(DoubleNear(-6000, 1e-9)));
}

TEST(ExactMeasures, OfASheetAreItsAreaAlone) {
  const PartMeasures measures = exactMeasures(test::bentSheet());
  EXPECT_EQ(measures.volume, std::nullopt);
  EXPECT_THAT(measures.area, Optional(DoubleNear(300, 1e-9)));
  EXPECT_FALSE(measures.centroid.has_value());
}

}  // namespace
}  // namespace plenvorith
