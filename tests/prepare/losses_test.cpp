// Ways in which preparing once gave less than the file alone, or died of it.

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "tests/support/prepared_file.h"
#include "tests/support/temp_dir.h"

namespace plenvorith {
namespace {

using test::dataOf;
using test::prepared;
using test::Prepared;
using test::stepFile;
using testing::HasSubstr;
using testing::Not;

/// One triangle, #13 in the solid #15; millimetres, #2; a placement, #5.
const std::string kOneBody =
    "#1=(LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT(.MILLI.,.METRE.));\n"
    "#2=(GEOMETRIC_REPRESENTATION_CONTEXT(3)GLOBAL_UNIT_ASSIGNED_CONTEXT((#1))"
    "REPRESENTATION_CONTEXT('',''));\n"
    "#5=AXIS2_PLACEMENT_3D('',#6,$,$);\n#6=CARTESIAN_POINT('',(0.,0.,0.));\n"
    "#12=COORDINATES_LIST('',3,((0.,0.,0.),(1.,0.,0.),(0.,1.,0.)));\n"
    "#13=TRIANGULATED_FACE('',#12,3,(),$,(),((1,2,3)));\n#15=TESSELLATED_SOLID('',(#13),$);\n";
const std::string kShapeOfBody = "#16=TESSELLATED_SHAPE_REPRESENTATION('',(#15),#2);\n";

/// The product #20, whose shape is #24.
const std::string kProductOfShape =
    "#20=PRODUCT_DEFINITION('','',$,$);\n#21=PRODUCT_DEFINITION_SHAPE('','',#20);\n"
    "#22=SHAPE_DEFINITION_REPRESENTATION(#21,#24);\n";

const std::string kExactSolid =
    "#30=MANIFOLD_SOLID_BREP('',#31);\n#31=CLOSED_SHELL('',(#32));\n"
    "#32=ADVANCED_FACE('',(),$,.T.);\n";

std::string withBody(const std::string& instances) {
  return stepFile(kOneBody + instances);
}

TEST(Losses, TheShapeOfAWholeStaysWhereItsPartIsUsed) {
  // The product #50 with the exact shape #54 is used by #20.
  const std::string usage =
      kExactSolid +
      "#50=PRODUCT_DEFINITION('','',$,$);\n#51=PRODUCT_DEFINITION_SHAPE('','',#50);\n"
      "#52=SHAPE_DEFINITION_REPRESENTATION(#51,#54);\n"
      "#54=ADVANCED_BREP_SHAPE_REPRESENTATION('',(#30),#2);\n"
      "#60=NEXT_ASSEMBLY_USAGE_OCCURRENCE('','','',#20,#50,$);\n"
      "#61=PRODUCT_DEFINITION_SHAPE('','',#60);\n"
      "#62=CONTEXT_DEPENDENT_SHAPE_REPRESENTATION(#63,#61);\n"
      "#63=(REPRESENTATION_RELATIONSHIP('','',#54,#24)"
      "REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION(#64)SHAPE_REPRESENTATION_RELATIONSHIP());\n"
      "#64=ITEM_DEFINED_TRANSFORMATION('','',#5,#5);\n";
  for (const char* shape :
       {"#24=SHAPE_REPRESENTATION('',(#15),#2);\n",
        "#24=TESSELLATED_SHAPE_REPRESENTATION('',(#15),#2);\n",
        "#24=SHAPE_REPRESENTATION('',(#40),#2);\n#40=MAPPED_ITEM('',#41,#5);\n"
        "#41=REPRESENTATION_MAP(#5,#16);\n#16=TESSELLATED_SHAPE_REPRESENTATION('',(#15),#2);\n"}) {
    const Prepared result = prepared(withBody(kProductOfShape + usage + shape));
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_THAT(result.file, HasSubstr("#24=SHAPE_REPRESENTATION('',(),#2);\n")) << shape;
    EXPECT_THAT(result.file, HasSubstr("\n#22=SHAPE_DEFINITION_REPRESENTATION(#21,#24);\n"));
    EXPECT_THAT(result.file, HasSubstr("\n#62=CONTEXT_DEPENDENT_SHAPE_REPRESENTATION(#63,#61);\n"));
    EXPECT_THAT(result.file, HasSubstr("'',#54,#24)"));
    EXPECT_THAT(result.out, HasSubstr("  Holds now: exact geometry and tessellation\n")) << shape;
  }
}

std::string shapeWith(const std::string& item) {
  return kProductOfShape +
         "#24=GEOMETRICALLY_BOUNDED_SURFACE_SHAPE_REPRESENTATION('',(#70),#2);\n#70=" + item +
         ";\n#71=RECTANGULAR_TRIMMED_SURFACE('',#72,0.,1.,0.,1.,.T.,.T.);\n" +
         "#72=PLANE('',#5);\n#73=LINE('',#6,$);\n#74=GEOMETRIC_SET('',(#71));\n";
}

TEST(Losses, SetsOfBoundedSurfacesAreExact) {
  for (const char* item :
       {"GEOMETRIC_SET('',(#73,#71))", "GEOMETRIC_SET('',(#74))", "MANIFOLD_SOLID_BREP('',$)"}) {
    const Prepared result = prepared(stepFile(shapeWith(item)));
    EXPECT_EQ(result.exitStatus, 0) << item;
    EXPECT_THAT(result.out, HasSubstr("  Holds now: exact geometry\n")) << item;
    // The converter reads the surfaces besides the triangles, and needs to be told so.
    const Prepared both = prepared(withBody(shapeWith(item) + kShapeOfBody));
    EXPECT_THAT(both.out, HasSubstr("  Holds now: exact geometry and tessellation\n")) << item;
    EXPECT_THAT(both.file, HasSubstr("\n/*\n")) << item;
  }
  for (const char* item : {"GEOMETRIC_CURVE_SET('',(#73))", "GEOMETRIC_SET('',(#73))",
                           "GEOMETRIC_SET('',(#72))", "CSG_SOLID('',$)"}) {
    EXPECT_EQ(prepared(stepFile(shapeWith(item))).exitStatus, 3) << item;
  }
}

TEST(Losses, WhatNobodyKnowsInAShapeMayBeGeometry) {
  const Prepared result = prepared(withBody(shapeWith("A_SOLID_TO_COME('')") + kShapeOfBody));
  EXPECT_EQ(prepared(stepFile(shapeWith("A_SOLID_TO_COME('')"))).exitStatus, 0);
  EXPECT_THAT(result.out, HasSubstr("-> 1 faces, 1 triangles,"));
  EXPECT_THAT(result.file, HasSubstr("\n/*\n"));
  // Unless it goes with the tessellation that it names.
  const Prepared gone = prepared(withBody(shapeWith("AN_ITEM('',#13)")));
  EXPECT_EQ(gone.exitStatus, 3);
  EXPECT_EQ(prepared(gone.file).exitStatus, 3);
}

TEST(Losses, SolidsThatTheKernelDoesNotTransferMakeNoCopies) {
  for (const char* type : {"CSG_SOLID", "BLOCK", "EXTRUDED_AREA_SOLID", "SWEPT_DISK_SOLID"}) {
    const Prepared result =
        prepared(withBody(kProductOfShape + "#24=SHAPE_REPRESENTATION('',(#70),#2);\n#70=" + type +
                          "('',$);\n#80=TESSELLATED_SOLID('',(#13),#70);\n"
                          "#81=TESSELLATED_SHAPE_REPRESENTATION('',(#80),#2);\n"
                          "#82=SHAPE_REPRESENTATION_RELATIONSHIP('','',#24,#81);\n"));
    EXPECT_THAT(result.out, HasSubstr("  Paired with exact geometry: 0 bodies,")) << type;
    EXPECT_THAT(result.out, HasSubstr("  Part tessellation: 1 bodies -> 1 faces,")) << type;
    EXPECT_THAT(result.file, HasSubstr("\n#70=" + std::string(type))) << type;
  }
}

TEST(Losses, SectionsCountInAnyCase) {
  std::string file = withBody(kShapeOfBody);
  for (const auto& [word, small] :
       std::vector<std::pair<std::string, std::string>>{{"HEADER;", "Header;"},
                                                        {"DATA;", "Data;"},
                                                        {"ENDSEC;", "EndSec;"},
                                                        {"ISO-10303-21;", "iso-10303-21;"}}) {
    for (std::size_t place = file.find(word); place != std::string::npos;
         place = file.find(word, place + 1)) {
      file.replace(place, word.size(), small);
    }
  }
  EXPECT_EQ(prepared(file).file, prepared(withBody(kShapeOfBody)).file);
}

TEST(Losses, ExactGeometryThatNoProductReachesMakesNoCopies) {
  const std::string unreached =
      kExactSolid +
      "#85=SHAPE_REPRESENTATION('',(#86),#2);\n#86=MANIFOLD_SOLID_BREP('',$);\n"
      "#80=TESSELLATED_SOLID('',(#13),#86);\n"
      "#81=TESSELLATED_SHAPE_REPRESENTATION('',(#80),#2);\n";
  const Prepared kept =
      prepared(withBody(kProductOfShape + "#24=SHAPE_REPRESENTATION('',(#30),#2);\n" + unreached));
  EXPECT_THAT(kept.out, HasSubstr("  Part tessellation: 1 bodies -> 1 faces,"));
  // Where no product has any, it is tied to one.
  const Prepared tied = prepared(withBody(unreached));
  EXPECT_THAT(tied.out, HasSubstr("  Paired with exact geometry: 1 bodies, 1 triangles, left out"));
  EXPECT_THAT(tied.out, HasSubstr("  Exact representations tied to a product: 1\n"));
}

TEST(Losses, WhatDoesNotBalanceGoesAlone) {
  const Prepared result =
      prepared(withBody("#90=A('',(#1;,#2));\njunk, it's\n#91=B('');\n#92=C(#1;\n" + kShapeOfBody));
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_THAT(result.file, HasSubstr("\n#91=B('');\n"));
  EXPECT_THAT(result.file, Not(HasSubstr("#90=")));
  EXPECT_THAT(result.file, Not(HasSubstr("#92=")));
  EXPECT_THAT(result.out, HasSubstr("-> 1 faces, 1 triangles,"));
  EXPECT_THAT(result.out,
              HasSubstr("  Warning: instances whose parentheses do not balance are left out\n"));
}

TEST(Losses, OnlyPlainRelationshipsMakeEqualInPlace) {
  const std::string both = kProductOfShape + kExactSolid + kShapeOfBody +
                           "#24=ADVANCED_BREP_SHAPE_REPRESENTATION('',(#30),#2);\n#40=";
  const auto pairedBodies = [&both](const std::string& relationship) {
    const std::string out = prepared(withBody(both + relationship + ";\n")).out;
    return out.substr(out.find("geometry: ", out.find("Paired")) + 10, 8);
  };
  EXPECT_EQ(pairedBodies("SHAPE_REPRESENTATION_RELATIONSHIP('','',#24,#16)"), "1 bodies");
  EXPECT_EQ(pairedBodies("(REPRESENTATION_RELATIONSHIP('','',#24,#16)"
                         "SHAPE_REPRESENTATION_RELATIONSHIP())"),
            "1 bodies");
  for (const char* relationship :
       {"CONSTRUCTIVE_GEOMETRY_REPRESENTATION_RELATIONSHIP('','',#24,#16)",
        "(CONSTRUCTIVE_GEOMETRY_REPRESENTATION_RELATIONSHIP()"
        "REPRESENTATION_RELATIONSHIP('','',#24,#16))",
        "(MECHANICAL_DESIGN_AND_DRAUGHTING_RELATIONSHIP()"
        "REPRESENTATION_RELATIONSHIP('','',#24,#16)SHAPE_REPRESENTATION_RELATIONSHIP())"}) {
    EXPECT_EQ(pairedBodies(relationship), "0 bodies") << relationship;
  }
}

TEST(Losses, PointsThatOverflowGoWithTheirTriangles) {
  const std::string face = "#13=TRIANGULATED_FACE('',#12,4,(),$,(),((1,2,3),(2,3,4)));\n";
  const std::string list =
      "#12=COORDINATES_LIST('',4,((0.,0.,0.),(1.,0.,0.),(0.,1.E-310,0.),"
      "(1.E999,0.,0.)));\n";
  const std::string rest = "#15=TESSELLATED_SOLID('',(#13),$);\n" + kShapeOfBody;
  for (const std::string& instances : {list + face, face + list}) {
    const Prepared result = prepared(stepFile(instances + rest));
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_THAT(result.file, HasSubstr(",(0.,0.,0.),(0.,0.,0.)));\n"));
    EXPECT_THAT(result.file, HasSubstr("((1,2,3)),());\n"));
    EXPECT_THAT(result.out, HasSubstr("  Skipped triangles: 1\n"));
  }
}

TEST(Losses, ContextsAndPointsHaveAnyLength) {
  const std::string zeros(5'000, '0');
  const std::string text(5'000, 'x');
  const Prepared result = prepared(stepFile(
      "#1=(LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT($,.METRE.));\n"
      "#2=(GEOMETRIC_REPRESENTATION_CONTEXT(3)GLOBAL_UNIT_ASSIGNED_CONTEXT((#1))"
      "REPRESENTATION_CONTEXT('" +
      text +
      "',''));\n"
      "#12=COORDINATES_LIST('',3,((" +
      zeros +
      "1.,0.,0.),(1.,1.,0.),(0.,1.,0.)));\n"
      "#13=TRIANGULATED_FACE('',#12,3,(),$,(),((1,2,3)));\n#15=TESSELLATED_SOLID('',(#13),$);\n" +
      kShapeOfBody));
  EXPECT_THAT(result.file, HasSubstr("((1000.,0.,0.),(1000.,1000.,0.),(0.,1000.,0.))"));
}

TEST(Losses, PreparingAgainAddsNothing) {
  const Prepared once =
      prepared(withBody(kShapeOfBody + kProductOfShape + kExactSolid +
                        "#24=ADVANCED_BREP_SHAPE_REPRESENTATION('',(#30),#2);\n"));
  const Prepared twice = prepared(once.file);
  EXPECT_EQ(twice.file, once.file);
}

TEST(Losses, NamesInStringsAreNotUsed) {
  const std::string plain = dataOf(prepared(withBody(kShapeOfBody)).file);
  EXPECT_THAT(plain, HasSubstr("\n#10=COORDINATES_LIST("));
  const Prepared result =
      prepared(withBody(kShapeOfBody + "#7=CARTESIAN_POINT('see #12',(0.,0.,0.));\n"));
  EXPECT_THAT(result.file, HasSubstr("\n#100=COORDINATES_LIST("));
}

TEST(Losses, PlacementsAndListsMayBeComplexInstances) {
  const Prepared result = prepared(stepFile(
      "#1=(LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT(.MILLI.,.METRE.));\n"
      "#2=(GEOMETRIC_REPRESENTATION_CONTEXT(3)GLOBAL_UNIT_ASSIGNED_CONTEXT((#1))"
      "REPRESENTATION_CONTEXT('',''));\n"
      "#12=(COORDINATES_LIST(3,((0.,0.,0.),(1.,0.,0.),(0.,1.,0.)))REPRESENTATION_ITEM('')"
      "TESSELLATED_ITEM());\n"
      "#13=TRIANGULATED_FACE('',#12,3,(),$,(),((1,2,3)));\n#15=TESSELLATED_SOLID('',(#13),$);\n" +
      kShapeOfBody +
      "#17=REPRESENTATION_MAP(#18,#16);\n#18=AXIS2_PLACEMENT_3D('',#19,$,$);\n"
      "#19=CARTESIAN_POINT('',(0.,0.,0.));\n#40=MAPPED_ITEM('',#17,#41);\n"
      "#41=(AXIS2_PLACEMENT_3D($,$)GEOMETRIC_REPRESENTATION_ITEM()PLACEMENT(#42)"
      "REPRESENTATION_ITEM(''));\n#42=CARTESIAN_POINT('',(0.,0.,7.));\n"
      "#43=SHAPE_REPRESENTATION('',(#40),#2);\n"));
  EXPECT_THAT(result.file, HasSubstr("((0.,0.,7.),(1.,0.,7.),(0.,1.,7.))"));
}

TEST(Losses, CyclesGiveTheSameInAnyOrder) {
  // #24 and #54 map one another; the body stands in #24.
  std::vector<std::string> cycle = {"#24=SHAPE_REPRESENTATION('',(#44),#2);\n",
                                    "#54=SHAPE_REPRESENTATION('',(#45),#2);\n",
                                    "#44=MAPPED_ITEM('',#46,#5);\n",
                                    "#45=MAPPED_ITEM('',#47,#5);\n",
                                    "#46=REPRESENTATION_MAP(#5,#54);\n",
                                    "#47=REPRESENTATION_MAP(#5,#16);\n",
                                    "#16=TESSELLATED_SHAPE_REPRESENTATION('',(#15,#48),#2);\n",
                                    "#48=MAPPED_ITEM('',#49,#5);\n",
                                    "#49=REPRESENTATION_MAP(#5,#24);\n"};
  const auto partLineOf = [&cycle] {
    std::string instances;
    for (const std::string& instance : cycle) {
      instances += instance;
    }
    const Prepared result = prepared(withBody(instances));
    EXPECT_THAT(result.out, HasSubstr("  Warning: a representation maps itself\n"));
    const std::size_t place = result.out.find("  Part tessellation");
    return result.out.substr(place, result.out.find('\n', place) - place);
  };
  const std::string first = partLineOf();
  std::reverse(cycle.begin(), cycle.end());
  EXPECT_EQ(partLineOf(), first);
}

TEST(Losses, WhatIsLeftOutIsSaid) {
  EXPECT_THAT(prepared(withBody("#16=A_NEW_SHAPE_REPRESENTATION('',(#15),#2);\n")).out,
              HasSubstr("  Warning: tessellation in a A_NEW_SHAPE_REPRESENTATION is left out\n"));
  EXPECT_THAT(prepared(withBody(kShapeOfBody + "#40=TRIANGULATED_FACE_SET('',#12,());\n")).out,
              HasSubstr("  Warning: tessellation of an unknown kind is left out: "
                        "TRIANGULATED_FACE_SET\n"));
}

TEST(Losses, TooManyPlacementsAreSaidAtOnce) {
  // Each of 40 products is used twice by the one before it.
  std::string products;
  for (int i = 0; i <= 40; ++i) {
    const std::string name = "#" + std::to_string(1'000 + 10 * i);
    products += name + "=PRODUCT_DEFINITION('','',$,$);\n";
    for (int k = 1; k <= 2 && i > 0; ++k) {
      products += "#" + std::to_string(1'000 + 10 * i + k) +
                  "=NEXT_ASSEMBLY_USAGE_OCCURRENCE('','"
                  "',''," +
                  "#" + std::to_string(990 + 10 * i) + "," + name + ",$);\n";
    }
  }
  const Prepared result = prepared(withBody(products +
                                            "#21=PRODUCT_DEFINITION_SHAPE('','',#1400);\n"
                                            "#22=SHAPE_DEFINITION_REPRESENTATION(#21,#16);\n" +
                                            kShapeOfBody));
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_THAT(result.err, HasSubstr("too many placements\n"));
  EXPECT_FALSE(result.isWritten);
}

TEST(Losses, TheOutputKeepsItsMode) {
  const test::TempDir directory;
  const std::string input = test::writeFile(directory / "in.stp", withBody(kShapeOfBody));
  const std::string output = test::writeFile(directory / (std::string(251, 'x') + ".stp"), "old");
  using std::filesystem::perms;
  const perms mode = perms::owner_read | perms::owner_write | perms::group_read;
  std::filesystem::permissions(output, mode);
  std::filesystem::create_symlink("target.stp", directory / "link.stp");
  {
    const test::Captured out(std::cout);
    EXPECT_EQ(prepareFile(input, output), 0);
    EXPECT_EQ(prepareFile(input, directory / "link.stp"), 0);
  }
  EXPECT_EQ(std::filesystem::status(output).permissions(), mode);
  EXPECT_TRUE(std::filesystem::is_symlink(directory / "link.stp"));
  EXPECT_EQ(test::readFile(directory / "target.stp"), test::readFile(output));
}

}  // namespace
}  // namespace plenvorith
