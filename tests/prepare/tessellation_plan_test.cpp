#include "prepare/tessellation_plan.h"

#include <string>

#include <gmock/gmock.h>

#include "tests/prepare/tied_structure.h"
#include "tests/support/instances.h"

namespace plenvorith {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct Planned : test::Instances {
  explicit Planned(const std::string& data)
      : Instances(data),
        structure(test::tiedStructure(table)),
        instances(table, reader),
        occurrences(structure, instances, warnings),
        plan(planTessellation(table, findPartTessellation(table, structure, occurrences, warnings),
                              occurrences, warnings)) {}

  /// The lists as "instance:placement" and the faces as "instance:solid:list".
  [[nodiscard]] std::string lists() const {
    std::string text;
    for (const PlannedList& list : plan.lists) {
      text += std::to_string(table.number(list.list)) + ':' + std::to_string(list.placement) + ' ';
    }
    return text;
  }
  [[nodiscard]] std::string faces() const {
    std::string text;
    for (const PlannedFace& face : plan.faces) {
      text += std::to_string(table.number(face.face)) + ':' +
              (face.solid == PlannedFace::kNoSolid ? "-" : std::to_string(face.solid)) + ':' +
              std::to_string(face.list) + ' ';
    }
    return text;
  }
  /// The scale of a placement and the height of its origin.
  [[nodiscard]] std::string place(std::size_t i) const {
    const Placement& placement = plan.placements.at(i).placement;
    return std::to_string(placement.m[0][0]) + ' ' + std::to_string(placement.m[2][3]);
  }

  Warnings warnings;
  ProductStructure structure;
  InstanceReader instances;
  Occurrences occurrences;
  TessellationPlan plan;
};

/// Millimetres #2 and metres #4; placements at the heights 0 (#10) and 5 (#15) of a unit; faces #21
/// and #22 of the points #20.
const std::string kTwoUnits =
    "#1=(LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT(.MILLI.,.METRE.));\n"
    "#2=(GLOBAL_UNIT_ASSIGNED_CONTEXT((#1))REPRESENTATION_CONTEXT('',''));\n"
    "#3=(LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT($,.METRE.));\n"
    "#4=(GLOBAL_UNIT_ASSIGNED_CONTEXT((#3))REPRESENTATION_CONTEXT('',''));\n"
    "#10=AXIS2_PLACEMENT_3D('',#11,$,$);\n#11=CARTESIAN_POINT('',(0.,0.,0.));\n"
    "#15=AXIS2_PLACEMENT_3D('',#16,$,$);\n#16=CARTESIAN_POINT('',(0.,0.,5.));\n"
    "#20=COORDINATES_LIST('',0,());\n#21=TRIANGULATED_FACE('',#20,3,(),$,(),());\n"
    "#22=TRIANGULATED_FACE('',#20,3,(),$,(),());\n"
    "#30=TESSELLATED_SOLID('',(#22,#21),$);\n";

TEST(TessellationPlan, WithoutPlacementsHasOneSolidForEachBody) {
  const Planned in(kTwoUnits + "#40=TESSELLATED_SHAPE_REPRESENTATION('',(#22,#30),#2);\n");
  EXPECT_EQ(in.lists(), "20:0 ");
  EXPECT_EQ(in.faces(), "21:1:0 22:0:0 22:1:0 ");
  EXPECT_EQ(in.plan.solidCount, 2U);
  EXPECT_EQ(in.plan.bodyCount, 2U);
  EXPECT_THAT(in.plan.firstSolids, ElementsAre(0, 1));
  EXPECT_THAT(in.plan.units, ElementsAre(1.0));
  ASSERT_EQ(in.plan.placements.size(), 1U);
  EXPECT_TRUE(in.plan.placements[0].isIdentity);
  EXPECT_FALSE(in.plan.placements[0].isMirrored);
  EXPECT_FALSE(in.plan.hasTooMany);
  EXPECT_THAT(in.warnings, IsEmpty());
}

TEST(TessellationPlan, ScalesToMillimetres) {
  const Planned in(kTwoUnits + "#40=TESSELLATED_SHAPE_REPRESENTATION('',(#30),#4);\n");
  ASSERT_EQ(in.plan.placements.size(), 1U);
  EXPECT_FALSE(in.plan.placements[0].isIdentity);
  EXPECT_EQ(in.place(0), "1000.000000 0.000000");
  EXPECT_THAT(in.plan.units, ElementsAre(1000.0));
}

TEST(TessellationPlan, HasASolidAndAListForEachPlace) {
  const Planned in(kTwoUnits +
                   "#40=TESSELLATED_SHAPE_REPRESENTATION('',(#30),#2);\n"
                   "#41=REPRESENTATION_MAP(#10,#40);\n#42=MAPPED_ITEM('',#41,#10);\n"
                   "#43=MAPPED_ITEM('',#41,#15);\n#44=MAPPED_ITEM('',#41,#15);\n"
                   "#45=SHAPE_REPRESENTATION('',(#42,#43,#44),#2);\n");
  EXPECT_EQ(in.lists(), "20:0 20:1 ");
  EXPECT_EQ(in.plan.solidCount, 3U);
  EXPECT_EQ(in.plan.bodyCount, 1U);
  EXPECT_THAT(in.plan.firstSolids, ElementsAre(0));
  // Two of the three solids stand in the same place and share its list.
  EXPECT_EQ(in.faces(), "21:0:0 21:1:1 21:2:1 22:0:0 22:1:1 22:2:1 ");
  EXPECT_EQ(in.place(0), "1.000000 0.000000");
  EXPECT_EQ(in.place(1), "1.000000 5.000000");
}

TEST(TessellationPlan, PlacesRepositionedFacesOnTheirOwn) {
  const Planned in(kTwoUnits +
                   "#23=(REPOSITIONED_TESSELLATED_ITEM(#15)REPRESENTATION_ITEM('')"
                   "TESSELLATED_FACE(#20,3,(),$)TRIANGULATED_FACE((),()));\n"
                   "#31=TESSELLATED_SHELL('',(#21,#23),$);\n"
                   "#40=TESSELLATED_SHAPE_REPRESENTATION('',(#31),#4);\n");
  EXPECT_EQ(in.lists(), "20:0 20:1 ");
  EXPECT_EQ(in.faces(), "21:0:0 23:0:1 ");
  EXPECT_EQ(in.place(0), "1000.000000 0.000000");
  EXPECT_EQ(in.place(1), "1000.000000 5000.000000");
}

TEST(TessellationPlan, TellsMirroredPlaces) {
  const Planned in(kTwoUnits +
                   "#17=DIRECTION('',(0.,0.,-1.));\n"
                   "#18=CARTESIAN_TRANSFORMATION_OPERATOR_3D('','',$,$,$,#11,$,#17);\n"
                   "#40=TESSELLATED_SHAPE_REPRESENTATION('',(#30),#2);\n"
                   "#41=REPRESENTATION_MAP(#10,#40);\n#42=MAPPED_ITEM('',#41,#18);\n"
                   "#45=SHAPE_REPRESENTATION('',(#42),#2);\n");
  ASSERT_EQ(in.plan.placements.size(), 1U);
  EXPECT_TRUE(in.plan.placements[0].isMirrored);
  EXPECT_FALSE(in.plan.placements[0].isIdentity);
}

TEST(TessellationPlan, LeavesOutFacesWithoutCoordinates) {
  const Planned in(kTwoUnits +
                   "#23=TRIANGULATED_FACE('',$,3,(),$,(),());\n"
                   "#31=TESSELLATED_SHELL('',(#23,#21),$);\n"
                   "#40=TESSELLATED_SHAPE_REPRESENTATION('',(#23,#31),#2);\n");
  EXPECT_EQ(in.faces(), "21:0:0 ");
  EXPECT_EQ(in.plan.bodyCount, 1U);
  EXPECT_THAT(in.warnings, ElementsAre("a face without coordinates is left out"));
}

TEST(TessellationPlan, CountsOnlyTheFacesOfCopies) {
  const Planned in(kTwoUnits +
                   "#50=MANIFOLD_SOLID_BREP('',#51);\n#51=CLOSED_SHELL('',());\n"
                   "#52=SHAPE_REPRESENTATION('',(#50),#2);\n"
                   "#31=TESSELLATED_SOLID('',(#21),#50);\n"
                   "#40=TESSELLATED_SHAPE_REPRESENTATION('',(#31),#2);\n");
  EXPECT_EQ(in.faces(), "21:-:0 ");
  EXPECT_EQ(in.lists(), "");
  EXPECT_EQ(in.plan.solidCount, 0U);
  EXPECT_EQ(in.plan.bodyCount, 0U);
}

}  // namespace
}  // namespace plenvorith
