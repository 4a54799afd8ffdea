// Each warning, and cases at the edge of the rules, on whole files.

#include <sstream>
#include <string>
#include <string_view>

#include <gmock/gmock.h>

#include "tests/support/prepared_file.h"

namespace plenvorith {
namespace {

using test::dataOf;
using test::Prepared;
using test::stepFile;
using testing::HasSubstr;
using testing::Not;

constexpr std::string_view kMillimetre =
    "#1=(LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT(.MILLI.,.METRE.));\n"
    "#2=(GEOMETRIC_REPRESENTATION_CONTEXT(3)GLOBAL_UNIT_ASSIGNED_CONTEXT((#1))"
    "REPRESENTATION_CONTEXT('',''));\n";
constexpr std::string_view kOneFace =
    "#10=COORDINATES_LIST('',3,((0.,0.,0.),(1.,0.,0.),(0.,1.,0.)));\n"
    "#11=TRIANGULATED_FACE('',#10,3,(),$,(),((1,2,3)));\n"
    "#12=TESSELLATED_SOLID('',(#11),$);\n";
constexpr std::string_view kOnlyRepresentation =
    "#13=TESSELLATED_SHAPE_REPRESENTATION('',(#12),#2);\n";
constexpr std::string_view kShown =
    "#20=PRODUCT_DEFINITION('','',#98,#99);\n"
    "#21=PRODUCT_DEFINITION_SHAPE('','',#20);\n"
    "#22=SHAPE_DEFINITION_REPRESENTATION(#21,#13);\n";

Prepared prepared(std::initializer_list<std::string_view> data) {
  std::string text;
  for (const std::string_view part : data) {
    text += part;
  }
  return test::prepared(stepFile(text));
}

TEST(EdgeCases, ReferencesToWhatIsDroppedAreTakenOutOfLists) {
  const Prepared result = prepared(
      {kMillimetre, kOneFace, "#30=STYLED_ITEM('',(#31),#12);\n#32=STYLED_ITEM('',(#31),#33);\n",
       "#34=LAYER('',(#12,#33,#30),(#1));\n#35=LAYER('',(#30,#12),#1);\n#36=NOTE(#35);\n",
       "#37=LAYER('',SET((#30,#32)),(#30,1.),((#30),#1));\n#38=LAYER('',((#32,#30),$));\n"});
  EXPECT_EQ(dataOf(result.file), std::string(kMillimetre) +
                                     "#32=STYLED_ITEM('',(#31),#33);\n"
                                     "#34=LAYER('',(#33),(#1));\n"
                                     "#38=LAYER('',((#32),$));\n");
  EXPECT_THAT(result.out, HasSubstr("Dropped entities: 7, changed: 2"));
}

TEST(EdgeCases, SkipsTrianglesWithIndicesOfAnyLength) {
  const Prepared result =
      prepared({kMillimetre, "#10=COORDINATES_LIST('',3,((0.,0.,0.),(1.,0.,0.),(0.,1.,0.)));\n",
                "#11=TRIANGULATED_FACE('',#10,3,(),$,(),((1,2,3),(1,2,999999999999999999),",
                "(1,2,9999999999999999999),(1,34444444444444444444444444444444,3)));\n",
                "#12=TESSELLATED_SOLID('',(#11),$);\n", kOnlyRepresentation});
  EXPECT_THAT(result.out, HasSubstr("1 bodies -> 1 faces, 1 triangles"));
  EXPECT_THAT(result.out, HasSubstr("Skipped triangles: 3\n"));
}

TEST(EdgeCases, AByteOfZeroInAStringEndsNothing) {
  using namespace std::literals;
  const Prepared result = prepared(
      {kMillimetre, kOneFace, "#13=TESSELLATED_SHAPE_REPRESENTATION('a\0b',(#12,#50),#2);\n"sv,
       "#14=LAYER(\"0\",(#12,#50),'\0');\n"sv, "#50=AXIS2_PLACEMENT_3D('',#51,$,$);\n"});
  EXPECT_THAT(result.file, HasSubstr("\n#13=SHAPE_REPRESENTATION('a\0b',(#50),#2);\n"
                                     "#14=LAYER(\"0\",(#50),'\0');\n"s));
}

TEST(EdgeCases, ATessellatedRepresentationOfOtherItemsTooKeepsThose) {
  const Prepared result =
      prepared({kMillimetre, kOneFace, "#13=TESSELLATED_SHAPE_REPRESENTATION('a',(#12,#50),#2);\n",
                "#14=(REPRESENTATION('b',(#50,#12),#2)SHAPE_REPRESENTATION()"
                "TESSELLATED_SHAPE_REPRESENTATION());\n#50=AXIS2_PLACEMENT_3D('',#51,$,$);\n"});
  EXPECT_THAT(result.file, HasSubstr("\n#13=SHAPE_REPRESENTATION('a',(#50),#2);\n"
                                     "#14=SHAPE_REPRESENTATION('b',(#50),#2);\n"));
}

constexpr std::string_view kOutsideItsList =
    "#10=COORDINATES_LIST('',3,((0.,0.,0.),(1.,0.,0.),(0.,1.,0.)));\n"
    "#11=TRIANGULATED_FACE('',#10,3,(),$,(),((1,2,4)));\n"
    "#12=TESSELLATED_SOLID('',(#11),$);\n";
constexpr std::string_view kExactPart =
    "#30=OPEN_SHELL('',(#31));\n"
    "#32=SHELL_BASED_SURFACE_MODEL('',(#30));\n"
    "#33=SHAPE_REPRESENTATION('',(#32),#2);\n"
    "#34=PRODUCT_DEFINITION_SHAPE('','',#35);\n"
    "#35=PRODUCT_DEFINITION('','',$,$);\n"
    "#36=SHAPE_DEFINITION_REPRESENTATION(#34,#33);\n";

TEST(EdgeCases, NoTessellatedInstanceIsLeftIfNoTriangleIs) {
  const Prepared result = prepared({kMillimetre, kExactPart, kOutsideItsList, kOnlyRepresentation});
  EXPECT_THAT(result.out,
              HasSubstr("  Part tessellation: 1 bodies -> 1 faces, 0 triangles, 1 placements, "
                        "1 mm a unit\n"
                        "  Skipped triangles: 1\n"
                        "  Dropped entities: 4, changed: 0\n"
                        "  Holds now: exact geometry\n"));
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_EQ(dataOf(result.file), std::string(kMillimetre) + std::string(kExactPart));
  EXPECT_EQ(result.files, 2U);
}

TEST(EdgeCases, NothingIsLeftOfTessellationWithoutATriangleAlone) {
  const Prepared result = prepared({kMillimetre, kOutsideItsList, kOnlyRepresentation});
  EXPECT_THAT(result.out, HasSubstr("  Holds now: no geometry\n"));
  EXPECT_EQ(result.exitStatus, 3);
  EXPECT_EQ(dataOf(result.file), kMillimetre);
}

TEST(EdgeCases, MorePlacementsThanCanBeKeptAreAnError) {
  // Each level maps the one below 256 times, so three of them are 16.8 million.
  std::ostringstream levels;
  levels << "#50=AXIS2_PLACEMENT_3D('',#51,$,$);\n#51=CARTESIAN_POINT('',(0.,0.,1.));\n";
  int below = 13;
  for (int map = 1000; map <= 3000; map += 1000) {
    levels << '#' << map << "=REPRESENTATION_MAP(#50,#" << below << ");\n";
    below = map + 900;
    for (int i = 1; i <= 256; ++i) {
      levels << '#' << map + i << "=MAPPED_ITEM('',#" << map << ",#50);\n";
    }
    levels << '#' << below << "=SHAPE_REPRESENTATION('',(#" << map + 1;
    for (int i = 2; i <= 256; ++i) {
      levels << ",#" << map + i;
    }
    levels << "),#2);\n";
  }
  const Prepared result = prepared({kMillimetre, kOneFace, kOnlyRepresentation, levels.str()});
  EXPECT_EQ(result.err, "Error: in.stp: too many placements\n");
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_EQ(result.files, 1U);
}

TEST(EdgeCases, AllInstancesOfANumberStay) {
  const Prepared result =
      prepared({kMillimetre, kOneFace, kOnlyRepresentation, "#007=A();\n#7=B();\n#011=A();\n"});
  EXPECT_THAT(result.out, HasSubstr("  Read 7 entities\n"));
  EXPECT_THAT(result.file, HasSubstr("\n#7=A();\n#7=B();\n"));
}

TEST(Warnings, NoUnit) {
  constexpr std::string_view kWarning = "  Warning: no unit of length, millimetres are taken\n";
  EXPECT_THAT(prepared({kOneFace, kOnlyRepresentation}).out, HasSubstr(kWarning));
  EXPECT_THAT(prepared({kMillimetre, kOneFace, kOnlyRepresentation}).out, Not(HasSubstr(kWarning)));
}

TEST(Warnings, UsageWithoutAPlacement) {
  EXPECT_THAT(prepared({kMillimetre, kOneFace, kOnlyRepresentation, kShown,
                        "#30=PRODUCT_DEFINITION('','',#98,#99);\n",
                        "#31=NEXT_ASSEMBLY_USAGE_OCCURRENCE('','','',#30,#20,$);\n"})
                  .out,
              HasSubstr("  Warning: a usage of a product has no placement, none is taken\n"));
}

TEST(Warnings, ProductInsideItself) {
  const Prepared result = prepared({kMillimetre, kOneFace, kOnlyRepresentation, kShown,
                                    "#30=PRODUCT_DEFINITION('','',#98,#99);\n",
                                    "#31=NEXT_ASSEMBLY_USAGE_OCCURRENCE('','','',#30,#20,$);\n",
                                    "#32=NEXT_ASSEMBLY_USAGE_OCCURRENCE('','','',#20,#30,$);\n"});
  EXPECT_THAT(result.out, HasSubstr("  Warning: a product is part of itself\n"));
  EXPECT_EQ(result.exitStatus, 0);
}

TEST(Warnings, PlacementOfAnUnknownKind) {
  EXPECT_THAT(
      prepared({kMillimetre, kOneFace, kOnlyRepresentation,
                "#30=REPRESENTATION_MAP(#50,#13);\n#31=MAPPED_ITEM('',#30,#50);\n"
                "#32=SHAPE_REPRESENTATION('',(#31),#2);\n#50=PLACEMENT('',#51);\n"})
          .out,
      HasSubstr("  Warning: a placement is missing or of an unknown kind, none is taken\n"));
}

/// Sets in one another, each placed in the one around it, in the representation #13.
std::string nestedSets(int count) {
  std::string sets;
  for (int i = 0; i < count; ++i) {
    sets += '#' + std::to_string(100 + i) +
            "=(GEOMETRIC_REPRESENTATION_ITEM()REPOSITIONED_TESSELLATED_ITEM(#50)"
            "REPRESENTATION_ITEM('')TESSELLATED_GEOMETRIC_SET((#" +
            (i + 1 < count ? std::to_string(101 + i) : "12") + "))TESSELLATED_ITEM());\n";
  }
  return sets +
         "#13=TESSELLATED_SHAPE_REPRESENTATION('',(#100),#2);\n"
         "#50=AXIS2_PLACEMENT_3D('',#51,$,$);\n"
         "#51=CARTESIAN_POINT('',(0.,0.,1.));\n";
}

TEST(Warnings, SetsNestedTooDeep) {
  constexpr std::string_view kWarning =
      "  Warning: sets of tessellation in more than 16 placements of sets are left out\n";
  const Prepared deepest = prepared({kMillimetre, kOneFace, nestedSets(16)});
  EXPECT_THAT(deepest.out, Not(HasSubstr("Warning")));
  EXPECT_THAT(deepest.file, HasSubstr("((0.,0.,16.),(1.,0.,16.),(0.,1.,16.))"));
  const Prepared deeper = prepared({kMillimetre, kOneFace, nestedSets(17)});
  EXPECT_THAT(deeper.out, HasSubstr(kWarning));
  EXPECT_EQ(deeper.exitStatus, 3);
}

TEST(Warnings, TooManySets) {
  constexpr std::string_view kWarning =
      "  Warning: of the sets of tessellation in a shape, those after 100,000 are left out\n";
  // The last set that is looked into holds #12, the one behind it #15.
  std::string sets;
  std::string names;
  for (int i = 1; i <= 100'001; ++i) {
    const std::string name = '#' + std::to_string(1000 + i);
    sets += name + "=TESSELLATED_GEOMETRIC_SET('',(";
    sets += i < 100'000 ? "#11" : i == 100'000 ? "#12" : "#15";
    sets += "));\n";
    names += (i == 1 ? "" : ",") + name;
  }
  const Prepared result =
      prepared({kMillimetre, kOneFace, "#15=TESSELLATED_SHELL('',(#11),$);\n", sets,
                "#13=TESSELLATED_SHAPE_REPRESENTATION('',(", names, "),#2);\n"});
  EXPECT_THAT(result.out, HasSubstr(kWarning));
  EXPECT_THAT(result.out, HasSubstr("  Part tessellation: 2 bodies -> 2 faces, 2 triangles"));
}

TEST(Warnings, CurvedTriangles) {
  EXPECT_THAT(
      prepared({kMillimetre, "#12=CUBIC_BEZIER_TRIANGULATED_FACE('',#10,1,(),$,(),((1)));\n",
                kOnlyRepresentation})
          .out,
      HasSubstr("  Warning: curved triangles (CUBIC_BEZIER_TRIANGULATED_FACE) are left "
                "out\n"));
}

TEST(Warnings, CoordinatesMissing) {
  const Prepared result = prepared(
      {kMillimetre, "#12=TRIANGULATED_FACE('',#10,3,(),$,(),((1,2,3)));\n", kOnlyRepresentation});
  EXPECT_THAT(result.out, HasSubstr("  Warning: a face without coordinates is left out\n"));
  EXPECT_EQ(result.exitStatus, 3);
}

TEST(Warnings, LongStrings) {
  const Prepared result = prepared(
      {"#1=A('" + std::string(8193, 'x') + "');\n", "#2=B('" + std::string(9000, 'y') + "');\n"});
  EXPECT_EQ(dataOf(result.file), "#1=A('');\n#2=B('');\n");
  EXPECT_THAT(result.out, HasSubstr("  Warning: strings of more than 8,192 bytes are emptied\n"));
}

}  // namespace
}  // namespace plenvorith
