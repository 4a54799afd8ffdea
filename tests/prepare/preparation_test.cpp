#include "prepare/preparation.h"

#include <string>

#include <gmock/gmock.h>

#include "tests/support/prepared_file.h"

namespace plenvorith {
namespace {

using test::dataOf;
using test::prepared;
using test::Prepared;
using test::stepFile;

constexpr std::string_view kMillimetres =
    "#1=(LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT(.MILLI.,.METRE.));\n"
    "#2=(GEOMETRIC_REPRESENTATION_CONTEXT(3)GLOBAL_UNIT_ASSIGNED_CONTEXT((#1))"
    "REPRESENTATION_CONTEXT('',''));\n";

std::string text(std::string_view a, std::string_view b) {
  return std::string(a) + std::string(b);
}

TEST(Preparation, WritesPartTessellationAsPlainTriangles) {
  const Prepared result = prepared(stepFile(text(
      kMillimetres,
      "#10 = COORDINATES_LIST ( 'four', 4,\n ((0.,0.,0.),(10.,0.,0.),(0.,10.,0.),\n"
      "(0.,0.,10.)) ); /* a comment */\n"
      "#11=COMPLEX_TRIANGULATED_FACE('',#10,4,((0.,0.,1.)),$,(4,3,2,1),((1,2,3,4)),((1,2,4)));\n"
      "#12=TESSELLATED_SOLID('one',(#11),$);\n"
      "#13=TESSELLATED_SHAPE_REPRESENTATION('',(#12),#2);\n")));
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_EQ(result.out,
            "Preparing: in.stp\n"
            "  Read 6 entities\n"
            "  Tessellated representations: 1, exact geometry: no\n"
            "  Paired with exact geometry: 0 bodies, 0 triangles, left out\n"
            "  Only annotation: 0 representations, left out\n"
            "  Only features or properties: 0 representations, left out\n"
            "  Part tessellation: 1 bodies -> 1 faces, 3 triangles, 1 placements, 1 mm a unit\n"
            "  Dropped entities: 4, changed: 0\n"
            "  Holds now: tessellation\n"
            "Saved: out.stp\n");
  EXPECT_EQ(dataOf(result.file),
            text(kMillimetres,
                 "#10=COORDINATES_LIST('',4,((0.,0.,0.),(10.,0.,0.),(0.,10.,0.),(0.,0.,10.)));\n"
                 "#11=COMPLEX_TRIANGULATED_FACE('',#10,4,(),$,(),"
                 "((4,3,2),(3,1,2),(4,3,1)),());\n"
                 "#12=TESSELLATED_SOLID('',(#11),$);\n"
                 "#13=(LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT(.MILLI.,.METRE.));\n"
                 "#14=(GEOMETRIC_REPRESENTATION_CONTEXT(3)GLOBAL_UNIT_ASSIGNED_CONTEXT((#13))"
                 "REPRESENTATION_CONTEXT('',''));\n"
                 "#15=TESSELLATED_SHAPE_REPRESENTATION('',(#12),#14);\n"));
  EXPECT_EQ(result.files, 2U);
}

TEST(Preparation, SaysThatAFileHoldsNoGeometry) {
  const Prepared result = prepared(stepFile("#1=CARTESIAN_POINT('',(0.,0.,0.));\n"));
  EXPECT_EQ(result.exitStatus, 3);
  EXPECT_THAT(result.out, testing::EndsWith("  Holds now: no geometry\nSaved: out.stp\n"));
  EXPECT_EQ(dataOf(result.file), "#1=CARTESIAN_POINT('',(0.,0.,0.));\n");
}

TEST(Preparation, RejectsWhatIsNoStepFile) {
  for (const char* content : {"", "solid x\n", "ISO-10303-21", "END-ISO-10303-21;\n"}) {
    const Prepared result = prepared(content);
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(result.err, "Error: in.stp: not a STEP file\n");
    EXPECT_FALSE(result.isWritten);
    EXPECT_EQ(result.files, 1U);
  }
}

TEST(Preparation, RejectsWhatNeverEnds) {
  const auto errorOf = [](std::string_view data) {
    const Prepared result =
        prepared("ISO-10303-21;\nHEADER;\nENDSEC;\nDATA;\n" + std::string(data));
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_FALSE(result.isWritten);
    return result.err;
  };
  EXPECT_EQ(errorOf("#1=A('x);\n#2 ENDSEC;"), "Error: in.stp: a string never ends\n");
  EXPECT_EQ(errorOf("#1=A(1);/* x * /"), "Error: in.stp: a comment never ends\n");
  EXPECT_EQ(errorOf("#1=A(/* x */"), "Error: in.stp: an instance never ends\n");
  EXPECT_EQ(errorOf("#1=A(1"), "Error: in.stp: an instance never ends\n");
}

TEST(Preparation, RejectsSomethingElseThanANumberInPartTessellation) {
  const auto errorOf = [](std::string_view list, std::string_view face) {
    const Prepared result = prepared(stepFile(
        text(kMillimetres, "#10=" + std::string(list) + ";\n#11=" + std::string(face) +
                               ";\n#13=TESSELLATED_SHAPE_REPRESENTATION('',(#11),#2);\n")));
    EXPECT_EQ(result.exitStatus, result.err.empty() ? 0 : 1);
    EXPECT_EQ(result.isWritten, result.err.empty());
    return result.err;
  };
  constexpr std::string_view kList = "COORDINATES_LIST('',3,((1.,2.,3.),(1.,2.,4.),(1.,3.,3.)))";
  constexpr std::string_view kFace = "TRIANGULATED_FACE('',#10,3,(),$,(),((1,2,3)))";
  EXPECT_EQ(errorOf(kList, kFace), "");
  EXPECT_EQ(errorOf("COORDINATES_LIST('',1,((1.,x,3.)))", kFace),
            "Error: in.stp: no number where one has to be in #10\n");
  EXPECT_EQ(errorOf("COORDINATES_LIST('',1,((1.,2.)))", kFace),
            "Error: in.stp: no number where one has to be in #10\n");
  EXPECT_EQ(errorOf("COORDINATES_LIST('',3,((1.,2.,3.),(1.,2.,4.)).,((1.,3.,3.)))", kFace),
            "Error: in.stp: no number where one has to be in #10\n");
  EXPECT_EQ(errorOf(kList, "TRIANGULATED_FACE('',#10,1,(),$,(),((1,$,1)))"),
            "Error: in.stp: no number where one has to be in #11\n");
}

}  // namespace
}  // namespace plenvorith
