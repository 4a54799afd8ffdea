#include "tests/law/exact_cases.h"

#include "tests/support/exact_item_file.h"

namespace plenvorith::test {
namespace {

/// A body of one triangle, #302, that says to be that of #100, in a representation, #303.
const std::string kLinkedBody =
    "#300=COORDINATES_LIST('',3,((0.,0.,0.),(7.,0.,0.),(0.,7.,0.)));\n"
    "#301=TRIANGULATED_FACE('',#300,3,(),$,(),((1,2,3)));\n"
    "#302=TESSELLATED_SOLID('',(#301),#100);\n"
    "#303=TESSELLATED_SHAPE_REPRESENTATION('',(#302),#11);\n";

const std::string kTied = "#304=SHAPE_REPRESENTATION_RELATIONSHIP('','',#9,#303);\n";
const std::string kOfTheProduct = "#304=SHAPE_DEFINITION_REPRESENTATION(#7,#303);\n";

/// The same body without the link.
std::string unlinked(std::string body) {
  const std::string link = "(#301),#100)";
  return body.replace(body.find(link), link.size(), "(#301),$)");
}

/// Each item with the body beside it in one of some ways, by turns.
std::vector<ExactCase> casesOf(const std::vector<ExactItem>& items,
                               const std::vector<ExactCase>& ways) {
  std::vector<ExactCase> cases;
  for (const ExactItem& item : items) {
    const ExactCase& way = ways[cases.size() % ways.size()];
    cases.push_back(
        {item.name + (", " + way.name), exactItemFile("SHAPE_REPRESENTATION", item, way.content)});
  }
  return cases;
}

/// Ways that tell whose body it is, whatever the item is.
std::vector<ExactCase> tiedBodies() {
  return {{"linked and tied", kLinkedBody + kTied},
          {"tied", unlinked(kLinkedBody) + kTied},
          {"of the product", unlinked(kLinkedBody) + kOfTheProduct}};
}

/// A second product, whose shape #209 holds the solid #124, used in the product of #9; it stands 100
/// mm away. The shape of the whole is not here.
const std::string kUsedPart =
    "#203=PRODUCT('used','used','',(#2));\n"
    "#204=PRODUCT_DEFINITION_FORMATION('','',#203);\n"
    "#206=PRODUCT_DEFINITION('design','',#204,#5);\n"
    "#207=PRODUCT_DEFINITION_SHAPE('','',#206);\n"
    "#208=SHAPE_DEFINITION_REPRESENTATION(#207,#209);\n"
    "#209=ADVANCED_BREP_SHAPE_REPRESENTATION('',(#20,#124),#11);\n"
    "#210=NEXT_ASSEMBLY_USAGE_OCCURRENCE('1','','',#6,#206,$);\n"
    "#211=PRODUCT_DEFINITION_SHAPE('','',#210);\n"
    "#212=CONTEXT_DEPENDENT_SHAPE_REPRESENTATION(#213,#211);\n"
    "#213=(REPRESENTATION_RELATIONSHIP('','',#209,#9)"
    "REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION(#214)SHAPE_REPRESENTATION_RELATIONSHIP());\n"
    "#214=ITEM_DEFINED_TRANSFORMATION('','',#20,#215);\n"
    "#215=AXIS2_PLACEMENT_3D('',#216,#22,#23);\n"
    "#216=CARTESIAN_POINT('',(100.,0.,0.));\n";

ExactCase assembly(const std::string& name, const std::string& shapes) {
  return {name, stepFileOf(exactItemContext() + shapes + kUsedPart + unlinked(kLinkedBody))};
}

/// A solid with a body that duplicates it, with what comes first of `found` replaced.
ExactCase broken(const std::string& name, const std::string& found, const std::string& by) {
  const ExactItem solid = {"", "#100=MANIFOLD_SOLID_BREP('',#36);\n"};
  std::string content = exactItemFile("SHAPE_REPRESENTATION", solid, unlinked(kLinkedBody) + kTied);
  return {name, content.replace(content.find(found), found.size(), by)};
}

}  // namespace

std::vector<ExactCase> casesOfExactGeometry() {
  std::vector<ExactCase> cases;
  for (const ExactItem& item : deliveredItems()) {
    cases.push_back({item.name, exactItemFile("SHAPE_REPRESENTATION", item)});
  }
  return cases;
}

std::vector<ExactCase> casesOfCopies() {
  return casesOf(deliveredItems(), tiedBodies());
}

std::vector<ExactCase> casesOfTheOnlyGeometry() {
  std::vector<ExactCase> ways = tiedBodies();
  ways.push_back({"linked", kLinkedBody});
  std::vector<ExactCase> cases = casesOf(undeliveredItems(), ways);
  const ExactItem solid = {"", "#100=MANIFOLD_SOLID_BREP('',#36);\n"};
  for (const std::string& type : undeliveredRepresentations()) {
    cases.push_back({type, exactItemFile(type, solid, kLinkedBody)});
  }
  return cases;
}

std::vector<ExactCase> casesOfErrors() {
  return {
      broken("two of a number, the first taken",
             "#300=", "#36=ADVANCED_FACE('',(#34),#30,.T.);\n#124=BLOCK('',#20,1.,2.,3.);\n#300="),
      broken("two of a number, the last taken",
             "#36=", "#36=ADVANCED_FACE('',(#34),#30,.T.);\n#36="),
      broken("an apostrophe lost", "#43=VERTEX_LOOP(''", "#43=VERTEX_LOOP('"),
      broken("an apostrophe in a keyword", "#45=ADVANCED", "#45=A'DVANCED"),
      broken("a quotation mark in a keyword", "#57=POLY_", "#57=POLY\"_"),
      broken("tessellation for a context", "#2=PRODUCT_CONTEXT('',#1,",
             "#2=PRODUCT_CONTEXT('',#301,"),
      broken("tessellation for a unit", "(#12,#13,#14)", "(#301)"),
      broken("another part of the standard", "ISO-10303-21;", "ISO-3-21;"),
      broken("a section that seems to end", "#45=", "ENDSEC;\n#45="),
      broken("a section that seems to begin", "#20,#100", "#20,#100DATA;\n"),
      broken("a parenthesis lost in the header", "(''),'','','')", "(''),'','',''"),
      broken("an apostrophe in a keyword of the header", "FILE_DES", "FILE_DES'"),
      broken("an apostrophe lost in the header", "FILE_NAME('',", "FILE_NAME(',"),
      broken("a second header", "#45=", "HEADER;\n#45="),
      broken("a quotation mark beside a reference", "#20,#100", "#20\",#100"),
      broken("a quotation mark in the header", "FILE_NAME('',", "FILE_NAME('',\""),
  };
}

std::vector<ExactCase> casesOfAssemblies() {
  return {
      assembly("a solid", "#9=SHAPE_REPRESENTATION('',(#302),#11);\n"),
      assembly("a placement and a solid", "#9=SHAPE_REPRESENTATION('',(#20,#302),#11);\n"),
      assembly("a tessellated representation",
               "#9=TESSELLATED_SHAPE_REPRESENTATION('',(#302),#11);\n"),
      assembly("a tessellated representation with a placement",
               "#9=TESSELLATED_SHAPE_REPRESENTATION('',(#20,#302),#11);\n"),
      assembly("mapped tessellation",
               "#9=SHAPE_REPRESENTATION('',(#320),#11);\n"
               "#320=MAPPED_ITEM('',#321,#20);\n"
               "#321=REPRESENTATION_MAP(#20,#303);\n"),
      assembly("two shapes",
               "#9=SHAPE_REPRESENTATION('',(#20),#11);\n"
               "#320=SHAPE_DEFINITION_REPRESENTATION(#7,#303);\n"),
      assembly("a tied representation",
               "#9=SHAPE_REPRESENTATION('',(#20),#11);\n"
               "#320=SHAPE_REPRESENTATION_RELATIONSHIP('','',#9,#303);\n"),
      assembly("nothing but a body that is tied to nothing",
               "#9=SHAPE_REPRESENTATION('',(),#11);\n"),
  };
}

}  // namespace plenvorith::test
