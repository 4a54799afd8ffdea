// The reference is what everything else is measured by, so it is held against numbers by hand.

#include "tests/reference/reference_prepare.h"

#include <string>

#include <gmock/gmock.h>

namespace plenvorith::test {
namespace {

using testing::ElementsAre;
using testing::UnorderedElementsAre;

std::string file(const std::string& instances) {
  return "ISO-10303-21;\nHEADER;\nENDSEC;\nDATA;\n" + instances + "ENDSEC;\nEND-ISO-10303-21;\n";
}

const std::string kInches = R"(
#1=(LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT(.CENTI.,.METRE.));
#2=LENGTH_MEASURE_WITH_UNIT(LENGTH_MEASURE(2.5),#1);
#3=(CONVERSION_BASED_UNIT('SHORT INCH',#2)LENGTH_UNIT()NAMED_UNIT(*));
#4=(GEOMETRIC_REPRESENTATION_CONTEXT(3)GLOBAL_UNIT_ASSIGNED_CONTEXT((#3))REPRESENTATION_CONTEXT('',''));
)";

TEST(ReferencePrepare, ExpandsStripsAndFansThroughTheMappingAndScalesThem) {
  const ReferencePreparation result = referencePrepare(file(kInches + R"(
#10=COORDINATES_LIST('',4,((0.,0.,0.),(1.,0.,0.),(0.,1.,0.),(1.,1.,0.)));
#11=COMPLEX_TRIANGULATED_FACE('',#10,4,(),$,(4,3,2,1),((1,2,3,4),(1,2,2)),((1,2,4),(1,2,9)));
#12=TESSELLATED_SHAPE_REPRESENTATION('',(#13),#4);
#13=TESSELLATED_SHELL('',(#11),$);
)"));
  EXPECT_THAT(result.triangles, ElementsAre(FloatTriangle{25, 25, 0, 0, 25, 0, 25, 0, 0},
                                            FloatTriangle{0, 25, 0, 0, 0, 0, 25, 0, 0},
                                            FloatTriangle{25, 25, 0, 0, 25, 0, 0, 0, 0}));
  EXPECT_EQ(result.skipped, 1U);
  EXPECT_FALSE(result.hasExactGeometry);
  EXPECT_FALSE(result.isCopied);
}

// Two products; #30 uses #20 once with the part as the first side of the relationship, once as the
// second. A quarter turn about z and a shift by 10 in the whole, a shift by 1 in the part.
const std::string kUsages = R"(
#20=PRODUCT_DEFINITION('part','',$,$);
#21=PRODUCT_DEFINITION_SHAPE('',$,#20);
#22=SHAPE_REPRESENTATION('',(#50),$);
#23=SHAPE_DEFINITION_REPRESENTATION(#21,#22);
#24=REPRESENTATION_RELATIONSHIP('','',#22,#42);
#30=PRODUCT_DEFINITION('whole','',$,$);
#31=PRODUCT_DEFINITION_SHAPE('',$,#30);
#32=SHAPE_REPRESENTATION('',(#50),$);
#33=SHAPE_DEFINITION_REPRESENTATION(#31,#32);
#40=COORDINATES_LIST('',3,((1.,0.,0.),(2.,0.,0.),(1.,3.,0.)));
#41=TRIANGULATED_FACE('',#40,3,(),$,(),((1,2,3)));
#42=TESSELLATED_SHAPE_REPRESENTATION('',(#41),$);
#50=AXIS2_PLACEMENT_3D('',#51,$,$);
#51=CARTESIAN_POINT('',(1.,0.,0.));
#52=AXIS2_PLACEMENT_3D('',#53,#54,#55);
#53=CARTESIAN_POINT('',(10.,0.,0.));
#54=DIRECTION('',(0.,0.,1.));
#55=DIRECTION('',(0.,1.,0.));
#60=NEXT_ASSEMBLY_USAGE_OCCURRENCE('','','',#30,#20,$);
#61=PRODUCT_DEFINITION_SHAPE('',$,#60);
#62=CONTEXT_DEPENDENT_SHAPE_REPRESENTATION(#63,#61);
#63=(REPRESENTATION_RELATIONSHIP('','',#22,#32)REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION(#64)SHAPE_REPRESENTATION_RELATIONSHIP());
#64=ITEM_DEFINED_TRANSFORMATION('',$,#50,#52);
)";

TEST(ReferencePrepare, PlacesAPartByItsUsage) {
  EXPECT_THAT(referencePrepare(file(kUsages)).triangles,
              ElementsAre(FloatTriangle{10, 0, 0, 10, 1, 0, 7, 0, 0}));
}

TEST(ReferencePrepare, TellsThePartByTheProductNotByTheOrder) {
  std::string swapped = kUsages;
  swapped.replace(swapped.find("#22,#32"), 7, "#32,#22");
  swapped.replace(swapped.find("#50,#52"), 7, "#52,#50");
  EXPECT_THAT(referencePrepare(file(swapped)).triangles,
              ElementsAre(FloatTriangle{10, 0, 0, 10, 1, 0, 7, 0, 0}));
}

TEST(ReferencePrepare, KeepsTheOutsideOutsideWhereAPartIsMirrored) {
  EXPECT_THAT(referencePrepare(file(R"(
#40=COORDINATES_LIST('',3,((0.,0.,0.),(2.,0.,0.),(0.,3.,0.)));
#41=TRIANGULATED_SURFACE_SET('',#40,3,(),(),((1,2,3)));
#42=TESSELLATED_SHAPE_REPRESENTATION('',(#41),$);
#43=REPRESENTATION_MAP(#44,#42);
#44=AXIS2_PLACEMENT_3D('',#45,$,$);
#45=CARTESIAN_POINT('',(0.,0.,0.));
#46=MAPPED_ITEM('',#43,#47);
#47=CARTESIAN_TRANSFORMATION_OPERATOR_3D('','',$,$,#48,#45,2.,$);
#48=DIRECTION('',(0.,-1.,0.));
#49=SHAPE_REPRESENTATION('',(#46,#50),$);
#50=MAPPED_ITEM('',#43,#44);
)"))
                  .triangles,
              UnorderedElementsAre(FloatTriangle{0, 0, 0, 0, -6, 0, 4, 0, 0},
                                   FloatTriangle{0, 0, 0, 2, 0, 0, 0, 3, 0}));
}

TEST(ReferencePrepare, LeavesOutCopiesOfExactGeometry) {
  const std::string both = R"(
#10=ADVANCED_FACE('',(),$,.T.);
#11=OPEN_SHELL('',(#10));
#12=SHELL_BASED_SURFACE_MODEL('',(#11));
#13=MANIFOLD_SURFACE_SHAPE_REPRESENTATION('',(#12),$);
#40=COORDINATES_LIST('',3,((0.,0.,0.),(2.,0.,0.),(0.,3.,0.)));
#41=TRIANGULATED_FACE('',#40,3,(),#10,(),((1,2,3)));
#42=TRIANGULATED_FACE('',#40,3,(),$,(),((1,3,2)));
#43=TESSELLATED_SHAPE_REPRESENTATION('',(#41,#42),$);
)";
  const ReferencePreparation result = referencePrepare(file(both));
  EXPECT_TRUE(result.hasExactGeometry);
  EXPECT_TRUE(result.isCopied);
  EXPECT_THAT(result.triangles, ElementsAre(FloatTriangle{0, 0, 0, 0, 3, 0, 2, 0, 0}));

  const std::string related = both + "#44=SHAPE_REPRESENTATION_RELATIONSHIP('','',#13,#43);\n";
  EXPECT_THAT(referencePrepare(file(related)).triangles, ElementsAre(result.triangles.front()))
      << "the linked face tells that the other one is no copy";
  std::string unlinked = related;
  unlinked.replace(unlinked.find("#10,(),((1,2,3))"), 3, "$");
  EXPECT_THAT(referencePrepare(file(unlinked)).triangles, testing::IsEmpty());
}

}  // namespace
}  // namespace plenvorith::test
