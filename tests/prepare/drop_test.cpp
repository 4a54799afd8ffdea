#include "prepare/drop.h"

#include <string>

#include <gmock/gmock.h>

#include "tests/support/instances.h"

namespace plenvorith {
namespace {

/// The fate of each instance in the order of the file: K, C, R or D.
std::string fatesOf(const std::string& data) {
  const test::Instances in(data);
  std::string fates;
  for (const Fate fate : decideFates(in.table, readProductStructure(in.table))) {
    fates += fate == Fate::Kept      ? 'K'
             : fate == Fate::Changed ? 'C'
             : fate == Fate::Retyped ? 'R'
                                     : 'D';
  }
  return fates;
}

const std::string kLoneFace = "#1=TRIANGULATED_FACE('',#2,3,(),$,(),());\n";

TEST(Drop, KeepsAllWhereNothingIsTessellated) {
  EXPECT_EQ(fatesOf("#1=A(#2,(#3));\n#2=B();\n"), "KK");
}

TEST(Drop, TakesEveryTessellatedType) {
  EXPECT_EQ(fatesOf("#1=TESSELLATED_SOLID('',(),$);\n#2=COORDINATES_LIST('',0,());\n"
                    "#3=A_TESSELLATED_B();\n#4=TRIANGULATED_X();\n#5=(A()TESSELLATED_ITEM());\n"
                    "#6=TESSELATED_ITEM();\n"),
            "DDDDDK");
}

TEST(Drop, TakesWhatNamesItAsAnAttribute) {
  EXPECT_EQ(fatesOf(kLoneFace + "#3=A('',#1);\n#4=B(#3,#5);\n#5=C();\n#6=D(#99);\n"), "DDDKK");
}

TEST(Drop, ChangesListsThatHoldIt) {
  EXPECT_EQ(fatesOf(kLoneFace + "#3=A((#1,#9));\n#4=A((#9,#1),#9);\n#5=A((#1,''));\n#9=C();\n"),
            "DCCCK");
}

TEST(Drop, TakesWhatHasAListOfNothingElse) {
  EXPECT_EQ(fatesOf(kLoneFace + "#3=A((#1));\n#4=A((#1,#3,#1),#9);\n#5=A((#9),(#4));\n#9=C();\n"),
            "DDDDK");
}

TEST(Drop, KeepsAllOfOneNumberThatTheKernelMayTake) {
  EXPECT_EQ(fatesOf("#1=A();\n#1=B();\n#1=TESSELLATED_SHELL('',(),$);\n#1=C(;\n"), "KKDD");
  EXPECT_EQ(fatesOf(kLoneFace + "#4=A();\n#4=B(#2,#1);\n#5=C(#4);\n"), "DKDK");
}

TEST(Drop, RetypesShapesThatHoldOtherItems) {
  const std::string point = "#3=CARTESIAN_POINT('',(0.,0.,0.));\n";
  EXPECT_EQ(fatesOf(kLoneFace + point + "#4=TESSELLATED_SHAPE_REPRESENTATION('',(#1,#3),$);\n"),
            "DKR");
  EXPECT_EQ(fatesOf(kLoneFace + point + "#4=TESSELLATED_SHAPE_REPRESENTATION('',(#1),$);\n"),
            "DKD");
  EXPECT_EQ(fatesOf(kLoneFace + point +
                    "#4=(DRAUGHTING_MODEL()REPRESENTATION('',(#1,#3),$)"
                    "TESSELLATED_SHAPE_REPRESENTATION());\n"),
            "DKD");
}

TEST(Drop, NeverTakesExactGeometryAndProductStructure) {
  EXPECT_EQ(fatesOf(kLoneFace + "#3=MANIFOLD_SOLID_BREP('',#1);\n#4=CLOSED_SHELL('',(#1));\n"
                                "#5=PRODUCT_DEFINITION_SHAPE('','',#1);\n"
                                "#6=NEXT_ASSEMBLY_USAGE_OCCURRENCE('','','',#1,#1,$);\n"
                                "#7=SHAPE_REPRESENTATION('',(#3),#1);\n"),
            "DCCCCC");
}

TEST(Drop, NeverTakesWhatProductsAndPlacementsRestOn) {
  EXPECT_EQ(fatesOf(kLoneFace +
                    "#3=APPLICATION_CONTEXT(#1);\n#4=PRODUCT_CONTEXT('',#1,'mechanical');\n"
                    "#5=PRODUCT('','','',(#1));\n#6=PRODUCT_DEFINITION('','',#1,$);\n"
                    "#7=PRODUCT_DEFINITION_FORMATION_WITH_SPECIFIED_SOURCE('','',#1,.NOT_KNOWN.);\n"
                    "#8=ITEM_DEFINED_TRANSFORMATION('','',#1,#9);\n"
                    "#9=(GEOMETRIC_REPRESENTATION_CONTEXT(3)GLOBAL_UNIT_ASSIGNED_CONTEXT((#1))"
                    "REPRESENTATION_CONTEXT('',''));\n"
                    "#10=(CONVERSION_BASED_UNIT('INCH',#1)LENGTH_UNIT()NAMED_UNIT(#1));\n"
                    "#11=LENGTH_MEASURE_WITH_UNIT(LENGTH_MEASURE(25.4),#1);\n"),
            "DCCCCCCCCC");
}

TEST(Drop, GoesOnUntilNothingChanges) {
  std::string chain = kLoneFace;
  std::string expected = "D";
  for (int i = 100; i < 1'100; ++i) {
    const std::string before = i == 100 ? "#1" : '#' + std::to_string(i - 1);
    chain += '#' + std::to_string(i) +
             (i % 2 == 0 ? "=A((" + before + "));\n" : "=A(" + before + ");\n");
    expected += 'D';
  }
  EXPECT_EQ(fatesOf(chain), expected);
}

}  // namespace
}  // namespace plenvorith
