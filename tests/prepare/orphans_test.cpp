#include "prepare/orphans.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "tests/support/instances.h"

namespace plenvorith {
namespace {

/// "representations -> product shape", as the numbers of the instances.
std::string orphansOf(const std::string& data) {
  const test::Instances in(data);
  ProductStructure structure = readProductStructure(in.table);
  const Orphans orphans = tieOrphans(in.table, structure);
  std::string text;
  for (const InstanceIndex representation : orphans.representations) {
    text += std::to_string(in.table.number(representation)) + ' ';
  }
  return text + (orphans.productShape == kNoInstance
                     ? "-> none"
                     : "-> " + std::to_string(in.table.number(orphans.productShape)));
}

/// Two exact representations, #10 and #11, and one of points, #12.
const std::string kShapes =
    "#1=MANIFOLD_SOLID_BREP('',#2);\n#10=SHAPE_REPRESENTATION('',(#1),$);\n"
    "#11=ADVANCED_BREP_SHAPE_REPRESENTATION('',(#1),$);\n#12=SHAPE_REPRESENTATION('',(),$);\n";
const std::string kNamed =
    "#20=PRODUCT_DEFINITION('','',$,$);\n#21=PRODUCT_DEFINITION_SHAPE('','',#20);\n";

TEST(Orphans, AreNoneWithoutExactGeometry) {
  EXPECT_EQ(orphansOf("#12=SHAPE_REPRESENTATION('',(),$);\n" + kNamed), "-> none");
}

TEST(Orphans, AreAllExactOnesIfNoProductHasOne) {
  EXPECT_EQ(orphansOf(kShapes), "10 11 -> none");
  EXPECT_EQ(orphansOf(kShapes + kNamed), "10 11 -> 21");
  EXPECT_EQ(orphansOf(kShapes + kNamed + "#22=SHAPE_DEFINITION_REPRESENTATION(#21,#12);\n"),
            "10 11 -> 21");
}

TEST(Orphans, AreTiedToNoneOfSeveralProducts) {
  EXPECT_EQ(orphansOf(kShapes + kNamed +
                      "#30=PRODUCT_DEFINITION('','',$,$);\n"
                      "#31=PRODUCT_DEFINITION_SHAPE('','',#30);\n"),
            "10 11 -> none");
}

TEST(Orphans, AreNoneIfAProductHasExactGeometry) {
  EXPECT_EQ(orphansOf(kShapes + kNamed + "#22=SHAPE_DEFINITION_REPRESENTATION(#21,#10);\n"),
            "-> none");
}

TEST(Orphans, AreNoneIfAnyRelationshipTiesAProductToExactGeometry) {
  const std::string tied = kShapes + kNamed + "#22=SHAPE_DEFINITION_REPRESENTATION(#21,#12);\n";
  for (const char* relationship :
       {"SHAPE_REPRESENTATION_RELATIONSHIP('','',#11,#12)",
        "SHAPE_REPRESENTATION_RELATIONSHIP('','',#12,#11)",
        "CONSTRUCTIVE_GEOMETRY_REPRESENTATION_RELATIONSHIP('','',#11,#12)",
        "(REPRESENTATION_RELATIONSHIP('','',#11,#12)"
        "REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION(#9)SHAPE_REPRESENTATION_RELATIONSHIP()"
        ")"}) {
    EXPECT_EQ(orphansOf(tied + "#23=" + relationship + ";\n"), "-> none") << relationship;
  }
  EXPECT_EQ(orphansOf(tied + "#23=SHAPE_REPRESENTATION_RELATIONSHIP('','',#11,#10);\n"),
            "10 11 -> 21");
}

TEST(Orphans, AreNotWhatOthersMap) {
  EXPECT_EQ(orphansOf(kShapes + "#40=REPRESENTATION_MAP(#90,#10);\n#41=MAPPED_ITEM('',#40,#91);\n"
                                "#42=SHAPE_REPRESENTATION('',(#41),$);\n"),
            "11 42 -> none");
}

}  // namespace
}  // namespace plenvorith
