#include "product/placement.h"

#include <string>

#include <gmock/gmock.h>

#include "tests/support/prepared_file.h"

namespace plenvorith {
namespace {

/// One triangle, mapped to the placement #47.
const std::string kMapped = R"(#40=COORDINATES_LIST('',3,((1.,2.,3.),(2.,2.,3.),(1.,4.,3.)));
#41=TRIANGULATED_SURFACE_SET('',#40,3,(),(),((1,2,3)));
#42=TESSELLATED_SHAPE_REPRESENTATION('',(#41),$);
#43=REPRESENTATION_MAP(#44,#42);
#44=AXIS2_PLACEMENT_3D('',#45,$,$);
#45=CARTESIAN_POINT('',(0.,0.,0.));
#46=MAPPED_ITEM('',#43,#47);
#49=SHAPE_REPRESENTATION('',(#46),$);
#50=CARTESIAN_POINT('',(10.,0.,0.));
#51=DIRECTION('',(0.,1.,0.));
#52=DIRECTION('',(0.,0.,-1.));
#53=DIRECTION('',(-1.,0.,0.));
)";

/// The points that a placement makes of the three, and the triangle of them.
struct Mapped {
  std::string points;
  std::string triangles;

  bool operator==(const Mapped&) const = default;
};

std::string between(const std::string& text, const std::string& start, const std::string& end) {
  const std::size_t begin = text.find(start);
  return begin == std::string::npos
             ? "nothing"
             : text.substr(begin + start.size(), text.find(end, begin) - begin - start.size());
}

Mapped mappedTo(const std::string& placement) {
  const std::string file =
      test::prepared(test::stepFile(kMapped + "#47=" + placement + ";\n")).file;
  return {between(file, "=COORDINATES_LIST('',3,(", "));\n"), between(file, ",(),$,(),(", "),())")};
}

TEST(Placement, OfAnAxisPlacementIsATurnAndAShift) {
  EXPECT_EQ(mappedTo("AXIS2_PLACEMENT_3D('',#50,$,#51)"),
            (Mapped{"(8.,1.,3.),(8.,2.,3.),(6.,1.,3.)", "(1,2,3)"}));
}

TEST(Placement, OfAnOperatorScales) {
  EXPECT_EQ(mappedTo("CARTESIAN_TRANSFORMATION_OPERATOR_3D('','',$,$,$,#50,0.5,$)"),
            (Mapped{"(10.5,1.,1.5),(11.,1.,1.5),(10.5,2.,1.5)", "(1,2,3)"}));
}

TEST(Placement, OfAnOperatorWhoseScaleIsNoNumberDoesNotScale) {
  for (const char* scale : {"$", "+-0.5", "x"}) {
    EXPECT_EQ(mappedTo(std::string("CARTESIAN_TRANSFORMATION_OPERATOR_3D('','',$,$,$,#50,") +
                       scale + ",$)"),
              (Mapped{"(11.,2.,3.),(12.,2.,3.),(11.,4.,3.)", "(1,2,3)"}))
        << scale;
  }
}

TEST(Placement, OfAnOperatorInAComplexInstanceIsTheSame) {
  EXPECT_EQ(
      mappedTo("(CARTESIAN_TRANSFORMATION_OPERATOR($,$,#50,0.5)"
               "CARTESIAN_TRANSFORMATION_OPERATOR_3D($)FUNCTIONALLY_DEFINED_TRANSFORMATION('',$)"
               "GEOMETRIC_REPRESENTATION_ITEM()REPRESENTATION_ITEM(''))"),
      (Mapped{"(10.5,1.,1.5),(11.,1.,1.5),(10.5,2.,1.5)", "(1,2,3)"}));
}

TEST(Placement, OfAnOperatorTakesTheYAxisForASecondAxisThatIsLeftOut) {
  EXPECT_EQ(mappedTo("CARTESIAN_TRANSFORMATION_OPERATOR_3D('','',$,$,$,#45,$,#52)"),
            (Mapped{"(1.,2.,-3.),(2.,2.,-3.),(1.,4.,-3.)", "(1,3,2)"}));
  EXPECT_EQ(mappedTo("CARTESIAN_TRANSFORMATION_OPERATOR_3D('','',$,#53,$,#45,$,$)"),
            (Mapped{"(-1.,2.,3.),(-2.,2.,3.),(-1.,4.,3.)", "(1,3,2)"}));
}

}  // namespace
}  // namespace plenvorith
