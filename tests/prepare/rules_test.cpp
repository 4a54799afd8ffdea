// One small file for each rule about what is a part, what is a copy, and what goes with the rest.

#include <string>
#include <string_view>
#include <vector>

#include <gmock/gmock.h>

#include "tests/support/prepared_file.h"

namespace plenvorith {
namespace {

using test::dataOf;
using test::prepared;
using test::stepFile;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

/// A triangle #41, a sheet of it #42 and another triangle #44, a product #20 with the shape #21.
const std::string kParts = R"(#20=PRODUCT_DEFINITION('part','',$,$);
#21=PRODUCT_DEFINITION_SHAPE('',$,#20);
#40=COORDINATES_LIST('',3,((1.,0.,0.),(2.,0.,0.),(1.,3.,0.)));
#41=TRIANGULATED_FACE('',#40,3,(),$,(),((1,2,3)));
#42=TESSELLATED_SHELL('',(#41),$);
#43=COORDINATES_LIST('',3,((5.,0.,0.),(6.,0.,0.),(5.,3.,0.)));
#44=TRIANGULATED_FACE('',#43,3,(),$,(),((1,2,3)));
)";
const std::string kSheet = "(1.,0.,0.),(2.,0.,0.),(1.,3.,0.)";
const std::string kOther = "(5.,0.,0.),(6.,0.,0.),(5.,3.,0.)";

/// A solid #33 with its shell #32 and face #31 in the representation #34.
const std::string kExact = R"(#30=PLANE('',$);
#31=ADVANCED_FACE('',(),#30,.T.);
#32=CLOSED_SHELL('',(#31));
#33=MANIFOLD_SOLID_BREP('',#32);
#34=ADVANCED_BREP_SHAPE_REPRESENTATION('',(#33),$);
)";

std::string preparedFile(const std::string& data) {
  return prepared(stepFile(data)).file;
}

/// The points of each list in the prepared file that a face refers to, face by face.
std::vector<std::string> facesIn(const std::string& file) {
  std::vector<std::string> faces;
  const std::string face = "=COMPLEX_TRIANGULATED_FACE('',";
  for (std::size_t at = file.find(face); at != std::string::npos; at = file.find(face, at + 1)) {
    const std::size_t name = at + face.size();
    const std::string list =
        '\n' + file.substr(name, file.find(',', name) - name) + "=COORDINATES_LIST('',3,(";
    const std::size_t points = file.find(list) + list.size();
    faces.push_back(file.substr(points, file.find("));\n", points) - points));
  }
  return faces;
}

std::vector<std::string> facesOf(const std::string& data) {
  return facesIn(preparedFile(data));
}

// --- What is a part ---

TEST(Rules, TakeAShapeWithoutTheTypeForAPartOnlyIfItIsAProducts) {
  const std::string plain = kParts + "#50=SHAPE_REPRESENTATION('',(#42),$);\n";
  EXPECT_THAT(facesOf(plain), IsEmpty());
  EXPECT_THAT(facesOf(plain + "#51=SHAPE_DEFINITION_REPRESENTATION(#21,#50);\n"),
              ElementsAre(kSheet));
}

TEST(Rules, CountABodyOnceThatAProductHoldsTwice) {
  EXPECT_THAT(facesOf(kParts + R"(#50=SHAPE_REPRESENTATION('',(#42),$);
#51=SHAPE_DEFINITION_REPRESENTATION(#21,#50);
#52=TESSELLATED_SHAPE_REPRESENTATION('',(#42,#44),$);
#53=SHAPE_DEFINITION_REPRESENTATION(#21,#52);
)"),
              ElementsAre(kSheet, kOther));
}

TEST(Rules, CountABodyOnceThatIsAProductsAndLiesAboutAsWell) {
  EXPECT_THAT(facesOf(kParts + R"(#50=TESSELLATED_SHAPE_REPRESENTATION('',(#42),$);
#51=SHAPE_DEFINITION_REPRESENTATION(#21,#50);
#52=TESSELLATED_SHAPE_REPRESENTATION('',(#42,#44),$);
)"),
              ElementsAre(kSheet, kOther));
}

TEST(Rules, LeaveOutWhatOnlyAFeatureShows) {
  const std::string feature = kParts + R"(#50=SHAPE_ASPECT('','',#21,.T.);
#51=PROPERTY_DEFINITION('','',#50);
#52=TESSELLATED_SHAPE_REPRESENTATION('',(#42),$);
#53=PROPERTY_DEFINITION_REPRESENTATION(#51,#52);
)";
  EXPECT_THAT(facesOf(feature), IsEmpty());
  EXPECT_THAT(facesOf(feature + "#54=SHAPE_DEFINITION_REPRESENTATION(#21,#52);\n"),
              ElementsAre(kSheet));
}

TEST(Rules, LeaveOutDrawingsAndWhatTheyStyle) {
  EXPECT_THAT(facesOf(kParts + R"(#50=TESSELLATED_ANNOTATION_OCCURRENCE('',(),#42);
#51=TESSELLATED_SHAPE_REPRESENTATION('',(#42,#44),$);
#52=(DRAUGHTING_MODEL()REPRESENTATION('',(#44),$)SHAPE_REPRESENTATION()TESSELLATED_SHAPE_REPRESENTATION());
)"),
              ElementsAre(kOther));
}

TEST(Rules, PlaceASetOncePerPlaceOfTheSetsAroundIt) {
  const auto faces = facesOf(kParts + R"(#45=TESSELLATED_GEOMETRIC_SET('',(#44));
#46=(GEOMETRIC_REPRESENTATION_ITEM()REPOSITIONED_TESSELLATED_ITEM(#55)REPRESENTATION_ITEM('')TESSELLATED_GEOMETRIC_SET((#45))TESSELLATED_ITEM());
#50=TESSELLATED_SHAPE_REPRESENTATION('',(#45,#46),$);
#55=AXIS2_PLACEMENT_3D('',#56,$,$);
#56=CARTESIAN_POINT('',(0.,0.,7.));
)");
  EXPECT_THAT(faces, testing::UnorderedElementsAre(kOther, "(5.,0.,7.),(6.,0.,7.),(5.,3.,7.)"));
}

// --- What is a copy ---

const std::string kTessellated = "#50=TESSELLATED_SHAPE_REPRESENTATION('',(#42),$);\n";

TEST(Rules, PairWhatIsEqualInPlaceWithExactGeometry) {
  const std::string both = kParts + kExact + kTessellated + "#60=";
  for (const char* relation :
       {"SHAPE_REPRESENTATION_RELATIONSHIP('','',#34,#50)",
        "REPRESENTATION_RELATIONSHIP('','',#50,#34)",
        "(REPRESENTATION_RELATIONSHIP('','',#50,#34)SHAPE_REPRESENTATION_RELATIONSHIP())"}) {
    EXPECT_THAT(facesOf(std::string(both).append(relation).append(";\n")), IsEmpty()) << relation;
  }
}

TEST(Rules, PairNothingByRelationshipsOfAnotherKind) {
  const std::string both = kParts + kExact + kTessellated + "#60=";
  for (const char* relation : {"CONSTRUCTIVE_GEOMETRY_REPRESENTATION_RELATIONSHIP",
                               "MECHANICAL_DESIGN_AND_DRAUGHTING_RELATIONSHIP"}) {
    EXPECT_THAT(facesOf(std::string(both).append(relation).append("('','',#34,#50);\n")),
                ElementsAre(kSheet))
        << relation;
  }
}

TEST(Rules, PairWhatIsOfOneProduct) {
  const std::string both =
      kParts + kExact + kTessellated + "#60=SHAPE_DEFINITION_REPRESENTATION(#21,#34);\n";
  EXPECT_THAT(facesOf(both), ElementsAre(kSheet));
  EXPECT_THAT(facesOf(both + "#61=SHAPE_DEFINITION_REPRESENTATION(#21,#50);\n"), IsEmpty());
}

TEST(Rules, PairWhatIsOfOneProductAlsoWhereItsExactGeometryIsMapped) {
  EXPECT_THAT(facesOf(kParts + kExact + kTessellated + R"(#60=REPRESENTATION_MAP(#63,#34);
#61=MAPPED_ITEM('',#60,#63);
#62=SHAPE_REPRESENTATION('',(#61),$);
#63=AXIS2_PLACEMENT_3D('',#64,$,$);
#64=CARTESIAN_POINT('',(0.,0.,0.));
#65=SHAPE_DEFINITION_REPRESENTATION(#21,#62);
#66=SHAPE_DEFINITION_REPRESENTATION(#21,#50);
)"),
              IsEmpty());
}

TEST(Rules, PairByLinksToSolidsShellsAndFacesThatARepresentationCarries) {
  const auto linkedTo = [](const std::string& link) {
    return facesOf(
        kParts + kExact + "#45=TESSELLATED_SHELL('',(#44)," + link +
        ");\n#50=TESSELLATED_SHAPE_REPRESENTATION('',(#42,#45),$);\n"
        "#35=CLOSED_SHELL('carried by none',(#36));\n#36=ADVANCED_FACE('',(),#30,.T.);\n");
  };
  for (const char* exact : {"#31", "#32", "#33"}) {
    EXPECT_THAT(linkedTo(exact), ElementsAre(kSheet)) << exact;
  }
  for (const char* other : {"$", "#30", "#34", "#35", "#999"}) {
    EXPECT_THAT(linkedTo(other), ElementsAre(kSheet, kOther)) << other;
  }
}

TEST(Rules, PairByLinksOfFacesOnlyIfAllHaveOne) {
  const auto linkedTo = [](const std::string& first, const std::string& second) {
    return facesOf(kParts + kExact + "#45=TRIANGULATED_FACE('',#40,3,()," + first +
                   ",(),((1,2,3)));\n#46=TRIANGULATED_FACE('',#43,3,()," + second +
                   ",(),((1,2,3)));\n#47=TESSELLATED_SOLID('',(#45,#46),$);\n"
                   "#50=TESSELLATED_SHAPE_REPRESENTATION('',(#47),$);\n");
  };
  EXPECT_THAT(linkedTo("#31", "#31"), IsEmpty());
  EXPECT_THAT(linkedTo("#31", "#30"), ElementsAre(kSheet, kOther));
  EXPECT_THAT(linkedTo("$", "#31"), ElementsAre(kSheet, kOther));
}

// --- What goes ---

TEST(Rules, DropWhatRefersToWhatIsDroppedAndNothingElse) {
  const std::string data = dataOf(preparedFile(kParts + kExact + R"(#50=STYLED_ITEM('',(#51),#41);
#51=PRESENTATION_STYLE_ASSIGNMENT((#52));
#52=FILL_AREA_STYLE('',());
#53=PRESENTATION_LAYER_ASSIGNMENT('','',(#41,#33,#42));
#54=PRESENTATION_LAYER_ASSIGNMENT('','',(#41,#50));
#55=APPLIED_GROUP_ASSIGNMENT(#54,(#33));
#56=MECHANICAL_DESIGN_PRESENTATION_AREA('',(#50,#33),$);
#57=OF_TWO_LISTS((#41),(#33));
#58=OF_TWO_LISTS((#33),(#41));
)"));
  for (const char* gone : {"#40=", "#41=", "#42=", "#50=", "#54=", "#55=", "#57=", "#58="}) {
    EXPECT_THAT("\n" + data, Not(HasSubstr(std::string("\n") + gone))) << gone;
  }
  EXPECT_THAT(data, HasSubstr("#53=PRESENTATION_LAYER_ASSIGNMENT('','',(#33));\n"));
  EXPECT_THAT(data, HasSubstr("#56=MECHANICAL_DESIGN_PRESENTATION_AREA('',(#33),$);\n"));
  EXPECT_THAT(data, HasSubstr("#51=PRESENTATION_STYLE_ASSIGNMENT((#52));\n"));
  EXPECT_THAT(data, HasSubstr("#33=MANIFOLD_SOLID_BREP('',#32);\n"));
  EXPECT_THAT(data, HasSubstr("#20=PRODUCT_DEFINITION('part','',$,$);\n"));
}

TEST(Rules, KeepTheShapeOfAProductThatLosesItsTessellation) {
  const std::string data = dataOf(preparedFile(kParts + R"(#49=AXIS2_PLACEMENT_3D('',#48,$,$);
#48=CARTESIAN_POINT('',(0.,0.,0.));
#50=TESSELLATED_SHAPE_REPRESENTATION('name',(#49,#42),$);
#51=SHAPE_DEFINITION_REPRESENTATION(#21,#50);
)"));
  EXPECT_THAT(data, HasSubstr("#50=SHAPE_REPRESENTATION('name',(#49),$);\n"));
  EXPECT_THAT(data, HasSubstr("#51=SHAPE_DEFINITION_REPRESENTATION(#21,#50);\n"));
}

/// What is tied to products.
std::string tiesIn(const std::string& file) {
  std::string ties;
  const std::string type = "=SHAPE_DEFINITION_REPRESENTATION(";
  for (std::size_t at = file.find(type); at != std::string::npos; at = file.find(type, at + 1)) {
    ties += file.substr(at + type.size(), file.find(')', at) - at - type.size()) + " ";
  }
  return ties;
}

/// What the report says that a file holds when it is prepared, and when that is prepared again.
std::vector<std::string> holdings(const std::string& data) {
  const std::string start = "Holds now: ";
  std::vector<std::string> found;
  std::string content = stepFile(data);
  for (int i = 0; i < 2; ++i) {
    const test::Prepared result = prepared(content);
    const std::size_t begin = result.out.find(start) + start.size();
    found.push_back(result.out.substr(begin, result.out.find('\n', begin) - begin) + ", status " +
                    std::to_string(result.exitStatus));
    content = result.file;
  }
  return found;
}

const std::string kHoldsExact = "exact geometry, status 0";
const std::string kHoldsNothing = "no geometry, status 3";

TEST(Rules, KeepExactGeometryOfRepresentationsOfUnknownTessellatedTypes) {
  const std::string exact = kExact.substr(0, kExact.find("#34="));
  const std::string simple = exact + "#34=A_TRIANGULATED_SHAPE_REPRESENTATION('s',(#33,#30),$);\n";
  EXPECT_THAT(holdings(simple), ElementsAre(kHoldsExact, kHoldsExact));
  EXPECT_THAT(dataOf(preparedFile(simple)),
              HasSubstr("\n#34=SHAPE_REPRESENTATION('s',(#33,#30),$);\n"));
  const std::string complex =
      exact + "#34=(A_TESSELLATED_TYPE()REPRESENTATION('c',(#33),$)SHAPE_REPRESENTATION());\n";
  EXPECT_THAT(holdings(complex), ElementsAre(kHoldsExact, kHoldsExact));
  EXPECT_THAT(dataOf(preparedFile(complex)),
              HasSubstr("\n#34=SHAPE_REPRESENTATION('c',(#33),$);\n"));
}

TEST(Rules, TakeNothingOfATessellatedTypeForExact) {
  EXPECT_THAT(holdings("#33=(MANIFOLD_SOLID_BREP(#32)REPRESENTATION_ITEM('')"
                       "TESSELLATED_ITEM());\n#34=SHAPE_REPRESENTATION('',(#33),$);\n"),
              ElementsAre(kHoldsNothing, kHoldsNothing));
}

TEST(Rules, KeepMappingsOfExactGeometryWhateverTheyName) {
  const std::string mapped = kParts + kExact + R"(#60=REPRESENTATION_MAP(#41,#34);
#61=MAPPED_ITEM('',#60,#41);
#62=SHAPE_REPRESENTATION('',(#61),$);
#63=SHAPE_DEFINITION_REPRESENTATION(#21,#62);
)";
  EXPECT_THAT(dataOf(preparedFile(mapped)), HasSubstr("#60=REPRESENTATION_MAP($,#34);\n"
                                                      "#61=MAPPED_ITEM('',#60,$);\n"
                                                      "#62=SHAPE_REPRESENTATION('',(#61),$);\n"));
}

TEST(Rules, TakeNothingForExactBecauseOfAMappingThatGoes) {
  const std::string data = kExact + R"(#60=REPRESENTATION_MAP(#63,#34);
#61=(MAPPED_ITEM(#60,#63)REPRESENTATION_ITEM('')TESSELLATED_ITEM());
#62=SHAPE_REPRESENTATION('',(#61),$);
)";
  EXPECT_THAT(preparedFile(data), Not(HasSubstr("\n#62=")));
  EXPECT_THAT(tiesIn(preparedFile(data)), testing::EndsWith(",#34 "));
  EXPECT_THAT(holdings(data), ElementsAre(kHoldsExact, kHoldsExact));
}

// --- What is tied to a product ---

TEST(Rules, TieExactGeometryToTheOnlyProductShape) {
  EXPECT_EQ(tiesIn(preparedFile(kParts + kExact)), "#21,#34 ");
}

TEST(Rules, TieExactGeometryToANewProductIfThereIsNoneOrMore) {
  const std::string alone = preparedFile(kExact);
  EXPECT_THAT(alone, HasSubstr("=PRODUCT('"));
  EXPECT_THAT(tiesIn(alone), testing::EndsWith(",#34 "));
  const std::string two = preparedFile(kParts + kExact + R"(#22=PRODUCT_DEFINITION('part','',$,$);
#23=PRODUCT_DEFINITION_SHAPE('',$,#22);
)");
  EXPECT_THAT(two, HasSubstr("=PRODUCT('"));
  EXPECT_THAT(tiesIn(two), testing::EndsWith(",#34 "));
}

TEST(Rules, TieNothingWhereAProductHasExactGeometry) {
  const std::string tied = preparedFile(kParts + kExact + R"(#60=ADVANCED_FACE('',(),#30,.T.);
#61=MANIFOLD_SURFACE_SHAPE_REPRESENTATION('',(#60),$);
#62=SHAPE_DEFINITION_REPRESENTATION(#21,#61);
)");
  EXPECT_EQ(tiesIn(tied), "#21,#61 ");
}

TEST(Rules, TieWhatMapsExactGeometryAndNotWhatIsMapped) {
  EXPECT_EQ(tiesIn(preparedFile(kParts + kExact + R"(#60=REPRESENTATION_MAP(#63,#34);
#61=MAPPED_ITEM('',#60,#63);
#62=SHAPE_REPRESENTATION('',(#61),$);
#63=AXIS2_PLACEMENT_3D('',#64,$,$);
#64=CARTESIAN_POINT('',(0.,0.,0.));
)")),
            "#21,#62 ");
}

// --- What the kernel cannot take ---

TEST(Rules, EmptyStringsThatAreTooLongAndSaySoOnce) {
  const std::string longest(8192, 'x');
  const test::Prepared result = prepared(stepFile("#1=A('" + longest + "');\n#2=A('" + longest +
                                                  "y','z');\n#3=A('y" + longest + "');\n"));
  EXPECT_EQ(dataOf(result.file), "#1=A('" + longest + "');\n#2=A('','z');\n#3=A('');\n");
  EXPECT_THAT(result.out, HasSubstr("  Warning: strings of more than 8,192 bytes are emptied\n"));
}

TEST(Rules, FlattenScopes) {
  EXPECT_EQ(dataOf(preparedFile("#1=&SCOPE\n#2=A(#3);\n#4=&SCOPE #5=B();ENDSCOPE C(#5);\n"
                                "ENDSCOPE /#2,#4/\nD(#2);\n#3=E();\n")),
            "#2=A(#3);\n#5=B();\n#4=C(#5);\n#1=D(#2);\n#3=E();\n");
}

TEST(Rules, TakeTextOfAllDataSectionsAndNothingAround) {
  EXPECT_EQ(dataOf(prepared("#1=A();\nISO-10303-21;\nHEADER;\nENDSEC;\nDATA('x',('y'));\n#2=B();\n"
                            "ENDSEC;\nDATA;\n#3=C();\nENDSEC;\nEND-ISO-10303-21;\n#4=D();\n")
                       .file),
            "#2=B();\n#3=C();\n");
}

// --- How the converter takes what is written ---

TEST(Rules, MarkAPairInACommentWhereThereIsExactGeometryAsWell) {
  EXPECT_THAT(dataOf(preparedFile(kParts + kExact +
                                  "#50=TESSELLATED_SHAPE_REPRESENTATION('',(#42),"
                                  "$);\n#60=SHAPE_DEFINITION_REPRESENTATION("
                                  "#21,#34);\n")),
              testing::EndsWith("#105=TESSELLATED_SHAPE_REPRESENTATION('',(#102),#104);\n"
                                "/*\n"
                                "#106=TESSELLATED_SHAPE_REPRESENTATION('',(),$);\n"
                                "#107=SHAPE_REPRESENTATION('',(),$);\n"
                                "#108=SHAPE_REPRESENTATION_RELATIONSHIP('','',#107,#106);\n"
                                "*/\n"));
}

TEST(Rules, NameWhatIsNewByNumbersOfOneLength) {
  // Each level maps the one below twice, so nine of them hold 512 bodies in 57 instances.
  std::string levels = kParts +
                       "#50=TESSELLATED_SHAPE_REPRESENTATION('',(#42),$);\n"
                       "#51=CARTESIAN_POINT('',(0.,0.,0.));\n"
                       "#52=AXIS2_PLACEMENT_3D('',#51,$,$);\n"
                       "#53=CARTESIAN_POINT('',(0.,0.,1.));\n"
                       "#54=AXIS2_PLACEMENT_3D('',#53,$,$);\n";
  std::string below = "#50";
  for (int level = 0; level < 9; ++level) {
    const auto name = [level](int i) { return "#" + std::to_string(60 + 4 * level + i); };
    levels += name(0) + "=REPRESENTATION_MAP(#52," + below + ");\n" + name(1) + "=MAPPED_ITEM(''," +
              name(0) + ",#52);\n" + name(2) + "=MAPPED_ITEM(''," + name(0) + ",#54);\n" + name(3) +
              "=SHAPE_REPRESENTATION('',(" + name(1) + "," + name(2) + "),$);\n";
    below = name(3);
  }
  const std::string file = preparedFile(levels);
  EXPECT_EQ(facesIn(file).size(), 512U);
  const std::string solid = "=TESSELLATED_SOLID(";
  for (std::size_t at = file.find(solid); at != std::string::npos; at = file.find(solid, at + 1)) {
    ASSERT_EQ(at - file.rfind('#', at), 5U) << file.substr(at - 6, 6);
  }
}

}  // namespace
}  // namespace plenvorith
