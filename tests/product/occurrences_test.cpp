#include "product/occurrences.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "tests/support/instances.h"

namespace plenvorith {
namespace {

using test::Instances;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

struct Placed : Instances {
  explicit Placed(const std::string& data)
      : Instances(data),
        structure(readProductStructure(table)),
        instances(table, reader),
        occurrences(structure, instances, warnings) {}

  [[nodiscard]] RepresentationIndex representation(std::uint64_t number) const {
    return structure.find((*this)[number]);
  }
  /// Where a representation of one node stands, by the z coordinate of its origin.
  std::vector<double> heightsOf(std::uint64_t number) {
    const std::vector<Node> nodes = occurrences.nodesOf(representation(number));
    EXPECT_EQ(nodes.size(), 1U);
    EXPECT_TRUE(occurrences.place(nodes));
    std::vector<double> heights;
    for (const Placement& placement : occurrences.placementsOf(nodes[0])) {
      heights.push_back(placement.m[2][3]);
    }
    return heights;
  }
  bool isPlaced(std::uint64_t number) {
    return occurrences.isPlaced(occurrences.nodesOf(representation(number))[0]);
  }

  Warnings warnings;
  ProductStructure structure;
  InstanceReader instances;
  Occurrences occurrences;
};

/// Millimetres #2 and centimetres #4; placements at the heights 0 (#10), 1 (#11) and 5 (#15).
const std::string kPlacements =
    "#1=(LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT(.MILLI.,.METRE.));\n"
    "#2=(GLOBAL_UNIT_ASSIGNED_CONTEXT((#1))REPRESENTATION_CONTEXT('',''));\n"
    "#3=(LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT(.CENTI.,.METRE.));\n"
    "#4=(GLOBAL_UNIT_ASSIGNED_CONTEXT((#3))REPRESENTATION_CONTEXT('',''));\n"
    "#10=AXIS2_PLACEMENT_3D('',#20,$,$);\n#20=CARTESIAN_POINT('',(0.,0.,0.));\n"
    "#11=AXIS2_PLACEMENT_3D('',#21,$,$);\n#21=CARTESIAN_POINT('',(0.,0.,1.));\n"
    "#15=AXIS2_PLACEMENT_3D('',#25,$,$);\n#25=CARTESIAN_POINT('',(0.,0.,5.));\n";

TEST(Occurrences, WhatNothingPlacesStandsOnceWhereItIs) {
  Placed in(kPlacements + "#100=SHAPE_REPRESENTATION('',(),#2);\n");
  EXPECT_THAT(in.heightsOf(100), ElementsAre(0.0));
  EXPECT_FALSE(in.isPlaced(100));
  EXPECT_THAT(in.warnings, IsEmpty());
}

TEST(Occurrences, MappedItemsPlaceOnceEach) {
  Placed in(kPlacements +
            "#100=SHAPE_REPRESENTATION('',(),#2);\n#101=REPRESENTATION_MAP(#11,#100);\n"
            "#102=MAPPED_ITEM('',#101,#10);\n#103=MAPPED_ITEM('',#101,#15);\n"
            "#104=SHAPE_REPRESENTATION('',(#102,#103),#2);\n");
  EXPECT_THAT(in.heightsOf(100), UnorderedElementsAre(-1.0, 4.0));
  EXPECT_TRUE(in.isPlaced(100));
}

/// The product of #101 is used by that of #100 where #11 meets #15.
const std::string kRelated =
    "#50=PRODUCT_DEFINITION('','',$,$);\n#51=PRODUCT_DEFINITION('','',$,$);\n"
    "#52=PRODUCT_DEFINITION_SHAPE('','',#50);\n#53=PRODUCT_DEFINITION_SHAPE('','',#51);\n"
    "#54=SHAPE_DEFINITION_REPRESENTATION(#52,#100);\n"
    "#55=SHAPE_DEFINITION_REPRESENTATION(#53,#101);\n"
    "#56=NEXT_ASSEMBLY_USAGE_OCCURRENCE('','','',#50,#51,$);\n"
    "#57=PRODUCT_DEFINITION_SHAPE('','',#56);\n"
    "#58=CONTEXT_DEPENDENT_SHAPE_REPRESENTATION(#59,#57);\n"
    "#59=(REPRESENTATION_RELATIONSHIP('','',#101,#100)"
    "REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION(#60)SHAPE_REPRESENTATION_RELATIONSHIP());\n"
    "#60=ITEM_DEFINED_TRANSFORMATION('','',#11,#15);\n";

TEST(Occurrences, AUsagePlacesThePartInTheWhole) {
  Placed in(kPlacements + kRelated +
            "#100=SHAPE_REPRESENTATION('',(),#2);\n#101=SHAPE_REPRESENTATION('',(),#2);\n");
  EXPECT_THAT(in.heightsOf(101), ElementsAre(4.0));
  EXPECT_THAT(in.heightsOf(100), ElementsAre(0.0));
  EXPECT_THAT(in.warnings, IsEmpty());
}

TEST(Occurrences, EachSideOfAPlacementHasItsOwnUnit) {
  Placed in(kPlacements + kRelated +
            "#100=SHAPE_REPRESENTATION('',(),#4);\n#101=SHAPE_REPRESENTATION('',(),#2);\n");
  EXPECT_THAT(in.heightsOf(101), ElementsAre(49.0));
  EXPECT_EQ(in.occurrences.unitOf(in.representation(100)), 10.0);
  EXPECT_EQ(in.occurrences.unitOf(in.representation(101)), 1.0);
}

TEST(Occurrences, UsagesOfUsagesMultiply) {
  Placed in(kPlacements + kRelated +
            "#100=SHAPE_REPRESENTATION('',(),#2);\n#101=SHAPE_REPRESENTATION('',(),#2);\n"
            "#110=REPRESENTATION_MAP(#10,#100);\n#111=MAPPED_ITEM('',#110,#11);\n"
            "#112=MAPPED_ITEM('',#110,#15);\n#113=SHAPE_REPRESENTATION('',(#111,#112),#2);\n"
            "#114=PRODUCT_DEFINITION('','',$,$);\n#115=PRODUCT_DEFINITION_SHAPE('','',#114);\n"
            "#116=SHAPE_DEFINITION_REPRESENTATION(#115,#113);\n");
  EXPECT_THAT(in.heightsOf(101), UnorderedElementsAre(5.0, 9.0));
}

TEST(Occurrences, ATransformationPlacesWhatIsNoProducts) {
  Placed in(kPlacements +
            "#50=PRODUCT_DEFINITION('','',$,$);\n#52=PRODUCT_DEFINITION_SHAPE('','',#50);\n"
            "#54=SHAPE_DEFINITION_REPRESENTATION(#52,#100);\n"
            "#59=(REPRESENTATION_RELATIONSHIP('','',#101,#100)"
            "REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION(#60)"
            "SHAPE_REPRESENTATION_RELATIONSHIP());\n"
            "#60=ITEM_DEFINED_TRANSFORMATION('','',#10,#15);\n"
            "#100=SHAPE_REPRESENTATION('',(),#2);\n#101=SHAPE_REPRESENTATION('',(),#2);\n");
  EXPECT_THAT(in.heightsOf(101), ElementsAre(5.0));
}

TEST(Occurrences, AProductInItselfIsWarnedOf) {
  Placed in(kPlacements + kRelated +
            "#100=SHAPE_REPRESENTATION('',(),#2);\n#101=SHAPE_REPRESENTATION('',(),#2);\n"
            "#70=NEXT_ASSEMBLY_USAGE_OCCURRENCE('','','',#51,#50,$);\n");
  EXPECT_EQ(in.heightsOf(101).size(), 1U);
  EXPECT_TRUE(in.warnings.contains("a product is part of itself"));
}

}  // namespace
}  // namespace plenvorith
