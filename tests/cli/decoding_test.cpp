// The way from the text of tessellated faces to the bytes of the STL file.

#include <array>
#include <limits>
#include <string>
#include <tuple>
#include <vector>

#include "tests/cli/expect_run.h"
#include "tests/cli/inputs.h"

namespace plenvorith::test {
namespace {

using testing::HasSubstr;

/// The STL file made of a file with these entities and one more, an unpaired representation.
std::vector<StlRecord> decoded(const std::string& entities) {
  const Sandbox dir;
  dir.write("in.step", stepFile("#1=TESSELLATED_SHAPE_REPRESENTATION('',(),#9);\n" + entities));
  const Outcome outcome = runIn(dir, {"in.step", "out.stl"});
  EXPECT_THAT(outcome.out, HasSubstr("  Status: tessellation only (no BRep)\n"));
  EXPECT_EQ(outcome.err, outcome.exitStatus == 0 ? "" : "Error: No geometry found in file\n");
  return outcome.exitStatus == 0 ? recordsOf(dir.read("out.stl")) : std::vector<StlRecord>();
}

const std::string kTriangle = "#2=COORDINATES_LIST('',3,((0.,0.,0.),(1.,0.,0.),(0.,1.,0.)));\n";
const std::string kSquare =
    "#2=COORDINATES_LIST('',4,((0.,0.,0.),(1.,0.,0.),(1.,1.,0.),(0.,1.,0.)));\n";

const std::vector<StlRecord> kTriangleForward = {{0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0}};

TEST(Decoding, ComputesTheNormalFromTheCornersInTheirOrder) {
  EXPECT_EQ(decoded(kTriangle + "#3=COMPLEX_TRIANGULATED_FACE('',#2,3,(),$,(),((1,2,3)),());\n"),
            kTriangleForward);
  EXPECT_EQ(decoded(kTriangle + "#3=COMPLEX_TRIANGULATED_FACE('',#2,3,(),$,(),((1,3,2)),());\n"),
            (std::vector<StlRecord>{{0, 0, -1, 0, 0, 0, 0, 1, 0, 1, 0, 0}}));
}

TEST(Decoding, KeepsDegenerateTrianglesWithANormalOfZero) {
  EXPECT_EQ(decoded(kTriangle + "#3=COMPLEX_TRIANGULATED_FACE('',#2,3,(),$,(),((1,1,2)),());\n"),
            (std::vector<StlRecord>{{0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0}}));
}

TEST(Decoding, SkipsTrianglesWithAnIndexThatNamesNoPoint) {
  EXPECT_EQ(
      decoded(kTriangle +
              "#3=COMPLEX_TRIANGULATED_FACE('',#2,3,(),$,(),((0,1,2),(1,2,4),(1,2,3)),());\n"),
      kTriangleForward);
}

TEST(Decoding, RejectsAFileWhoseTrianglesAllNameMissingPoints) {
  EXPECT_TRUE(
      decoded(kTriangle + "#3=COMPLEX_TRIANGULATED_FACE('',#2,3,(),$,(),((0,1,2)),());\n").empty());
}

TEST(Decoding, EndsAtAnInnerListOfFourIndices) {
  EXPECT_EQ(
      decoded(kSquare +
              "#3=COMPLEX_TRIANGULATED_FACE('',#2,4,(),$,(),((1,2,3),(2,3,4,1),(1,3,4)),());\n"),
      (std::vector<StlRecord>{{0, 0, 1, 0, 0, 0, 1, 0, 0, 1, 1, 0},
                              {0, 0, 1, 1, 0, 0, 1, 1, 0, 0, 1, 0}}));
}

TEST(Decoding, ReadsIndicesAsNumbersCutToWholeOnes) {
  EXPECT_EQ(
      decoded(kTriangle + "#3=COMPLEX_TRIANGULATED_FACE('',#2,3,(),$,(),((1.9,2E0,+3.)),());\n"),
      kTriangleForward);
}

TEST(Decoding, IgnoresStoredNormalsIndexMappingLinkAndFans) {
  EXPECT_EQ(decoded(kTriangle +
                    "#3=COMPLEX_TRIANGULATED_FACE('a(b',#2,3,((1.,0.,0.)),#8,(3,2,1),((1,2,3)),"
                    "((3,2,1)));\n"),
            kTriangleForward);
}

TEST(Decoding, DropsOnlyTheFaceWhoseCoordinatesAreMissing) {
  EXPECT_EQ(decoded(kTriangle + "#3=COMPLEX_TRIANGULATED_FACE('',#7,3,(),$,(),((1,2,3)),());\n"
                                "#4=COMPLEX_TRIANGULATED_FACE('',#2,3,(),$,(),((1,2,3)),());\n"),
            kTriangleForward);
}

TEST(Decoding, TakesFacesInTheTextOrderOfTheirNames) {
  EXPECT_EQ(decoded(kSquare + "#3=COMPLEX_TRIANGULATED_FACE('',#2,4,(),$,(),((3,4,1)),());\n"
                              "#20=COMPLEX_TRIANGULATED_FACE('',#2,4,(),$,(),((2,3,4)),());\n"
                              "#100=COMPLEX_TRIANGULATED_FACE('',#2,4,(),$,(),((1,2,3)),());\n"),
            (std::vector<StlRecord>{{0, 0, 1, 0, 0, 0, 1, 0, 0, 1, 1, 0},
                                    {0, 0, 1, 1, 0, 0, 1, 1, 0, 0, 1, 0},
                                    {0, 0, 1, 1, 1, 0, 0, 1, 0, 0, 0, 0}}));
}

TEST(Decoding, LeavesOutOtherKindsOfFaces) {
  EXPECT_TRUE(decoded(kTriangle + "#3=TRIANGULATED_FACE('',#2,3,(),$,(),((1,2,3)));\n"
                                  "#4= COMPLEX_TRIANGULATED_FACE('',#2,3,(),$,(),((1,2,3)),());\n"
                                  "#5 =COMPLEX_TRIANGULATED_FACE('',#2,3,(),$,(),((1,2,3)),());\n")
                  .empty());
}

TEST(Decoding, ReadsEntitiesThatSpanLinesOfAnyLineEnd) {
  EXPECT_EQ(decoded("#2=COORDINATES_LIST('',3,(\r\n (0.,0.,0.),\r\n\r\n\t(1.,0.,0.),(0.,\r\n1.,0.)"
                    "));\r\n"
                    "#3=COMPLEX_TRIANGULATED_FACE\n('',#2,3,(),$,(),((1,2,3)),());\n"
                    "#4=COMPLEX_TRIANGULATED_FACE('',\n#2,3,(),\n$,(),((1,\n2,3)),());\n"),
            kTriangleForward);
}

TEST(Decoding, WritesNumbersBeyondTheFloatRangeAsInfinity) {
  const std::vector<StlRecord> records = decoded(
      "#2=COORDINATES_LIST('',3,((1E39,0.,0.),(-1E39,0.,0.),(0.1,1E-60,0.)));\n"
      "#3=COMPLEX_TRIANGULATED_FACE('',#2,3,(),$,(),((1,2,3)),());\n");
  ASSERT_EQ(records.size(), 1U);
  EXPECT_EQ(records[0][3], std::numeric_limits<float>::infinity());
  EXPECT_EQ(records[0][6], -std::numeric_limits<float>::infinity());
  EXPECT_EQ(records[0][9], 0.1F);
  EXPECT_EQ(records[0][10], 0.0F);
}

/// Entities of the DATA section, and how many of them the program counts.
using EntityCount = testing::TestWithParam<std::tuple<const char*, const char*>>;

TEST_P(EntityCount, IsThatOfTheNamesThatBeginALine) {
  const Sandbox dir;
  const auto& [entities, count] = GetParam();
  dir.write("in.step", entities);
  EXPECT_THAT(runIn(dir, {"in.step", "out.stl"}).out,
              HasSubstr(std::string("  Parsed ") + count + " entities\n"));
}

INSTANTIATE_TEST_SUITE_P(
    , EntityCount,
    testing::Values(std::tuple("DATA;\nENDSEC;\n", "0"), std::tuple("#12 = FOO;\n", "0"),
                    std::tuple(" #12=FOO;\n", "0"), std::tuple("#12=FOO;\n#0012=FOO;\n", "2"),
                    std::tuple("#7=\n", "1"), std::tuple("#7=", "1"),
                    std::tuple("#1=A;\r\n#2=B;\r\n", "2"), std::tuple("#3=A;\n#3=B;\n", "1"),
                    std::tuple("#1=A;#2=B;\n", "1"), std::tuple("#1=A;\n/*\n#2=B;\n*/\n", "2"),
                    std::tuple("#=A;\n#1A=B;\n=C;\n", "0"),
                    std::tuple("#1=A\nENDSEC;\nDATA;\n#2=B;\n", "2")));

/// Entities, and how the program classifies them: paired and unique representations, unique faces.
using Classification =
    testing::TestWithParam<std::tuple<const char*, const char*, std::array<int, 3>>>;

TEST_P(Classification, IsShownWithItsCounts) {
  const Sandbox dir;
  const auto& [entities, status, counts] = GetParam();
  dir.write("in.step", stepFile(entities));
  EXPECT_THAT(runIn(dir, {"in.step", "out.stl"}).out,
              HasSubstr(std::string("  Status: ") + status +
                        "\n  Paired tess representations: " + std::to_string(counts[0]) +
                        "\n  Unique tess representations: " + std::to_string(counts[1]) +
                        "\n  Unique tess faces to parse: " + std::to_string(counts[2]) + "\n"));
}

constexpr const char* kAllPaired = "all tessellation paired with BRep";
constexpr const char* kPartlyUnique = "partially unique tessellation";
constexpr const char* kTessellationOnly = "tessellation only (no BRep)";

INSTANTIATE_TEST_SUITE_P(
    , Classification,
    testing::Values(std::tuple("#5=TESSELLATED_SHAPE_REPRESENTATION('',(#6),#2);\n"
                               "#7=SHAPE_REPRESENTATION('',(#8),#2);\n"
                               "#9=SHAPE_REPRESENTATION_RELATIONSHIP('','',#7,#5);\n",
                               kAllPaired, std::array{1, 0, 0}),
                    std::tuple("#5=TESSELLATED_SHAPE_REPRESENTATION('',(#6),#2);\n"
                               "#7=SHAPE_REPRESENTATION('',(#8),#2);\n"
                               "#9=SHAPE_REPRESENTATION_RELATIONSHIP('','',#5,#7);\n",
                               kAllPaired, std::array{1, 0, 0}),
                    // A relationship may be complex.
                    std::tuple("#5=TESSELLATED_SHAPE_REPRESENTATION('',(#6),#2);\n"
                               "#7=SHAPE_REPRESENTATION('',(#8),#2);\n"
                               "#9=(REPRESENTATION_RELATIONSHIP('','',#7,#5)\n"
                               "SHAPE_REPRESENTATION_RELATIONSHIP());\n",
                               kAllPaired, std::array{1, 0, 0}),
                    // Only a plain SHAPE_REPRESENTATION is a partner.
                    std::tuple("#5=TESSELLATED_SHAPE_REPRESENTATION('',(#6),#2);\n"
                               "#7=ADVANCED_BREP_SHAPE_REPRESENTATION('',(#8),#2);\n"
                               "#9=SHAPE_REPRESENTATION_RELATIONSHIP('','',#7,#5);\n",
                               kTessellationOnly, std::array{0, 1, 0}),
                    std::tuple("#5=TESSELLATED_SHAPE_REPRESENTATION('',(#6),#2);\n"
                               "#7=TESSELLATED_SHAPE_REPRESENTATION('',(#6),#2);\n"
                               "#9=SHAPE_REPRESENTATION_RELATIONSHIP('','',#7,#5);\n",
                               kTessellationOnly, std::array{0, 2, 0}),
                    // Of two in one relationship, the later one.
                    std::tuple("#5=TESSELLATED_SHAPE_REPRESENTATION('',(#6),#2);\n"
                               "#6=TESSELLATED_SHAPE_REPRESENTATION('',(#6),#2);\n"
                               "#7=SHAPE_REPRESENTATION('',(#8),#2);\n"
                               "#9=SHAPE_REPRESENTATION_RELATIONSHIP('','',#5,#6,#7);\n",
                               kPartlyUnique, std::array{1, 1, 0}),
                    std::tuple("#5=TESSELLATED_SHAPE_REPRESENTATION('',(#6),#2);\n"
                               "#6=TESSELLATED_SOLID('',(#10,#11),$);\n"
                               "#10=COMPLEX_TRIANGULATED_FACE('',#7,3,(),$,(),(),());\n"
                               "#11=COMPLEX_TRIANGULATED_FACE('',#7,3,(),$,(),(),());\n",
                               kTessellationOnly, std::array{0, 1, 2}),
                    // Two that share a solid.
                    std::tuple("#4=TESSELLATED_SHAPE_REPRESENTATION('',(#6),#2);\n"
                               "#5=TESSELLATED_SHAPE_REPRESENTATION('',(#6),#2);\n"
                               "#6=TESSELLATED_SOLID('',(#10),$);\n"
                               "#10=COMPLEX_TRIANGULATED_FACE('',#7,3,(),$,(),(),());\n",
                               kTessellationOnly, std::array{0, 2, 1}),
                    // A face that no solid holds.
                    std::tuple("#5=TESSELLATED_SHAPE_REPRESENTATION('',(#6),#2);\n"
                               "#6=COMPLEX_TRIANGULATED_FACE('',#7,3,(),$,(),(),());\n",
                               kTessellationOnly, std::array{0, 1, 0})));

TEST(ClassificationRule, NeedsTheTypeRightBehindTheEqualsSign) {
  const Sandbox dir;
  dir.write("in.step", stepFile("#5= TESSELLATED_SHAPE_REPRESENTATION('',(#6),#2);\n"));
  EXPECT_THAT(runIn(dir, {"in.step", "out.stl"}).out,
              HasSubstr("  Status: no tessellation\n[3] Stripping"));
}

}  // namespace
}  // namespace plenvorith::test
