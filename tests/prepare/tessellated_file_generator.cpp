#include "tests/prepare/tessellated_file_generator.h"

#include <cstddef>
#include <string_view>
#include <utility>
#include <vector>

#include "tests/prepare/generated_items.h"
#include "tests/support/step_text.h"

namespace plenvorith::test {
namespace {

Texts bodies(File& file, const Texts& exact) {
  Texts result;
  for (std::size_t i = 1 + pick(file.random, 2); i > 0; --i) {
    const std::string item = body(file, exact);
    if (result.empty() || result.front() != item) {
      result.push_back(item);
    }
  }
  return result;
}

std::string tessellatedRepresentation(File& file, const Texts& items, const std::string& context) {
  if (oneIn(file, 5)) {
    return add(file, "TESSELLATED_SHAPE_REPRESENTATION_WITH_ACCURACY_PARAMETERS",
               {name(file), list(items), context, "()"});
  }
  if (oneIn(file, 5)) {
    return add(file, "(" + call("REPRESENTATION", {name(file), list(items), context}) +
                         "SHAPE_REPRESENTATION()TESSELLATED_SHAPE_REPRESENTATION())");
  }
  return add(file, "TESSELLATED_SHAPE_REPRESENTATION", {name(file), list(items), context});
}

// --- Products ---

void relate(File& file, const std::string& one, const std::string& other) {
  const bool isSwapped = oneIn(file, 2);
  add(file, oneIn(file, 4) ? "REPRESENTATION_RELATIONSHIP" : "SHAPE_REPRESENTATION_RELATIONSHIP",
      {name(file), "''", isSwapped ? other : one, isSwapped ? one : other});
}

/// A ball, its shell and its only face, as the items of an exact representation.
Texts exactSolid(File& file) {
  const std::string sphere = add(file, "SPHERICAL_SURFACE", {"''", axisPlacement(file), "5."});
  const std::string point = add(file, "CARTESIAN_POINT", {"''", "(0.,0.,5.)"});
  const std::string vertex = add(file, "VERTEX_POINT", {"''", point});
  const std::string loop = add(file, "VERTEX_LOOP", {"''", vertex});
  const std::string bound = add(file, "FACE_BOUND", {"''", loop, ".T."});
  const std::string exactFace = add(file, "ADVANCED_FACE", {"''", list({bound}), sphere, ".T."});
  const std::string shell = add(file, "CLOSED_SHELL", {"''", list({exactFace})});
  return {add(file, "MANIFOLD_SOLID_BREP", {name(file), shell}), shell, exactFace};
}

void linkProduct(File& file, const Product& product, const std::string& representation) {
  add(file,
      oneIn(file, 6) ? "PROPERTY_DEFINITION_REPRESENTATION" : "SHAPE_DEFINITION_REPRESENTATION",
      {product.shape, representation});
}

Product addProduct(File& file) {
  const std::string product = add(file, "PRODUCT", {name(file), name(file), "''", "()"});
  const std::string formation = add(file, "PRODUCT_DEFINITION_FORMATION", {"''", "''", product});
  Product result;
  result.definition = add(file, "PRODUCT_DEFINITION", {"''", "''", formation, "$"});
  result.shape = add(file, "PRODUCT_DEFINITION_SHAPE", {"''", "$", result.definition});
  result.context = oneOf(file, file.contexts);
  Texts items = {axisPlacement(file)};
  if (oneIn(file, 4)) {
    result.exact = exactSolid(file);
    if (oneIn(file, 2)) {
      items.push_back(result.exact.front());
    } else {
      add(file, "ADVANCED_BREP_SHAPE_REPRESENTATION",
          {"''", list({result.exact.front()}), result.context});
    }
  }
  const std::string exactRepresentation =
      !result.exact.empty() && items.size() == 1 ? file.instances.back().first : "";
  if (oneIn(file, 3)) {
    const Texts held = bodies(file, result.exact);
    items.insert(items.end(), held.begin(), held.end());
    if (oneIn(file, 3)) {
      // The same bodies once more in a representation of their own.
      const std::string again = tessellatedRepresentation(file, held, result.context);
      linkProduct(file, result, again);
    }
  }
  result.representation =
      add(file, "SHAPE_REPRESENTATION", {name(file), list(items), result.context});
  linkProduct(file, result, result.representation);
  if (!exactRepresentation.empty()) {
    relate(file, result.representation, exactRepresentation);
  }
  if (oneIn(file, 2)) {
    const std::string context = oneIn(file, 4) ? oneOf(file, file.contexts) : result.context;
    const std::string representation =
        tessellatedRepresentation(file, bodies(file, result.exact), context);
    if (oneIn(file, 4)) {
      linkProduct(file, result, representation);
    } else {
      relate(file, result.representation, representation);
    }
  }
  return result;
}

// --- What places them ---

/// A relationship that places one representation in another.
std::string transformedRelation(File& file, const std::string& first, const std::string& second) {
  const std::string transformation = add(file, "ITEM_DEFINED_TRANSFORMATION",
                                         {"''", "$", axisPlacement(file), axisPlacement(file)});
  return add(file, "(" + call("REPRESENTATION_RELATIONSHIP", {"''", "$", first, second}) +
                       call("REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION", {transformation}) +
                       "SHAPE_REPRESENTATION_RELATIONSHIP())");
}

void addUsage(File& file, const Product& whole, const Product& part) {
  const std::string usage = add(file, "NEXT_ASSEMBLY_USAGE_OCCURRENCE",
                                {name(file), "''", "''", whole.definition, part.definition, "$"});
  if (oneIn(file, 12)) {
    return;
  }
  const std::string shape = add(file, "PRODUCT_DEFINITION_SHAPE", {"''", "$", usage});
  std::string first = part.representation;
  std::string second = whole.representation;
  if (oneIn(file, 3)) {
    std::swap(first, second);
  }
  const std::string relation = transformedRelation(file, first, second);
  add(file, "CONTEXT_DEPENDENT_SHAPE_REPRESENTATION", {relation, shape});
}

std::string mappedItem(File& file, const std::string& mapped) {
  const std::string map = add(file, "REPRESENTATION_MAP", {axisPlacement(file), mapped});
  return add(file, "MAPPED_ITEM",
             {"''", map, oneIn(file, 2) ? axisPlacement(file) : transformationOperator(file)});
}

/// A representation equal in place to a product's, which holds mapped items.
void addMappings(File& file, const Product& whole, const std::string& mapped) {
  Texts items;
  for (std::size_t i = 1 + pick(file.random, 2); i > 0; --i) {
    items.push_back(mappedItem(file, mapped));
  }
  relate(file, whole.representation,
         add(file, "SHAPE_REPRESENTATION", {"''", list(items), oneOf(file, file.contexts)}));
}

void addProducts(File& file) {
  file.products.push_back(addProduct(file));
  for (std::size_t i = pick(file.random, 4); i > 0; --i) {
    const Product product = addProduct(file);
    if (product.exact.empty() && oneIn(file, 4)) {
      addMappings(file, file.products.front(), product.representation);
    } else {
      for (std::size_t usages = pick(file.random, 3); usages > 0; --usages) {
        addUsage(file, file.products[pick(file.random, file.products.size())], product);
      }
    }
    file.products.push_back(product);
  }
  if (oneIn(file, 4)) {
    addMappings(file, file.products[pick(file.random, file.products.size())],
                tessellatedRepresentation(file, bodies(file, {}), oneOf(file, file.contexts)));
  }
  if (oneIn(file, 4)) {
    const std::string alone =
        tessellatedRepresentation(file, {face(file, true, "$")}, oneOf(file, file.contexts));
    if (oneIn(file, 2)) {
      // Placed by the relationship itself, without a usage.
      transformedRelation(file, alone, file.products.front().representation);
    }
  }
}

// --- What is no part ---

void addAnnotation(File& file) {
  const std::string& context = file.contexts.front();
  const std::string set = geometricSet(file, true);
  const std::string styled =
      add(file, "TESSELLATED_ANNOTATION_OCCURRENCE", {name(file), "()", set});
  switch (pick(file.random, 3)) {
    case 0:
      add(file, "DRAUGHTING_MODEL", {"''", list({styled}), context});
      break;
    case 1:
      add(file,
          "(DRAUGHTING_MODEL()" +
              call("REPRESENTATION", {"''", list({styled, geometricSet(file, false)}), context}) +
              "SHAPE_REPRESENTATION()TESSELLATED_SHAPE_REPRESENTATION())");
      break;
    default:
      tessellatedRepresentation(file, {styled, set}, context);
  }
  if (oneIn(file, 2)) {
    // A view of the product: no place where it stands.
    const std::string view = mappedItem(file, file.products.front().representation);
    add(file, "(CHARACTERIZED_OBJECT(*,*)CHARACTERIZED_REPRESENTATION()DRAUGHTING_MODEL()" +
                  call("REPRESENTATION", {"'view'", list({view}), context}) + ")");
  }
}

void addFeature(File& file) {
  const Product& product = file.products.front();
  const std::string aspect = add(file, "SHAPE_ASPECT", {"''", "$", product.shape, ".T."});
  const std::string property = add(file, "PROPERTY_DEFINITION", {"''", "$", aspect});
  const std::string item = body(file, {});
  const std::string representation =
      oneIn(file, 2) ? tessellatedRepresentation(file, {item}, product.context)
                     : add(file, "SHAPE_REPRESENTATION", {"''", list({item}), product.context});
  add(file,
      oneIn(file, 2) ? "SHAPE_DEFINITION_REPRESENTATION" : "PROPERTY_DEFINITION_REPRESENTATION",
      {property, representation});
}

void addOthers(File& file) {
  if (oneIn(file, 3)) {
    addAnnotation(file);
  }
  if (oneIn(file, 4)) {
    addFeature(file);
  }
  if (oneIn(file, 4)) {
    const std::string auxiliary =
        add(file, oneOf(file, {"", "TESSELLATED_"}) + "CONSTRUCTIVE_GEOMETRY_REPRESENTATION",
            {"''", list({body(file, {})}), file.contexts.front()});
    add(file, "CONSTRUCTIVE_GEOMETRY_REPRESENTATION_RELATIONSHIP",
        {"''", "$", file.products.front().representation, auxiliary});
  }
  if (oneIn(file, 4)) {
    body(file, {});
  }
}

// --- Layout ---

/// Something that means nothing between two tokens.
std::string blank(File& file) {
  return oneOf(file, {" ", "\n", "\r\n", "\t", " /* it's; a #1=comment */ ", "  \n\n "});
}

std::string withNoise(File& file, std::string_view content) {
  std::string text;
  bool isInString = false;
  for (std::size_t i = 0; i < content.size(); ++i) {
    const char c = content[i];
    isInString = isInString != (c == '\'');
    text += c;
    if (isInString) {
      text += c != '\'' && oneIn(file, 60) ? oneOf(file, {"\n", "\r\n"}) : "";
    } else if (c == '#' && oneIn(file, 12)) {
      text += oneOf(file, {"0", "00"});
    } else if ((c == ',' || c == '(' || c == ')') && oneIn(file, 12)) {
      text += blank(file);
    }
  }
  return text;
}

bool isTessellated(const std::string& content) {
  const std::string types = content.substr(0, content.find('\''));
  return types.find("TESSELLATED") != std::string::npos ||
         types.find("TRIANGULATED") != std::string::npos ||
         types.find("COORDINATES_LIST") != std::string::npos;
}

std::string statement(File& file, std::size_t i) {
  const auto& [instance, content] = file.instances[i];
  if (!file.hasNoise) {
    return instance + "=" + content + ";\n";
  }
  std::string text = withNoise(file, instance) + oneOf(file, {"=", "=", " = ", "=\n  "});
  if (oneIn(file, 20)) {
    file.last += 1;
    text += "&SCOPE\n#" + std::to_string(file.last) + "=DIRECTION('',(1.,0.,0.));\nENDSCOPE " +
            oneOf(file, {"", "/#" + std::to_string(file.last) + "/ "});
  }
  return text + withNoise(file, content) + oneOf(file, {";\n", ";\n", " ;\r\n", ";", "; "});
}

}  // namespace

std::string generateTessellatedFile(std::mt19937& random) {
  File file{random};
  for (std::size_t i = 1 + pick(random, 3); i > 0; --i) {
    file.contexts.push_back(context(file));
  }
  addProducts(file);
  addOthers(file);
  for (std::size_t i = file.instances.size(); i > 1; --i) {
    std::swap(file.instances[i - 1], file.instances[pick(random, i)]);
  }
  file.hasNoise = oneIn(file, 2);
  std::string text = file.hasNoise ? "made by hand\n" : "";
  text += "ISO-10303-21;\nHEADER;\nFILE_NAME('#1=A;','',(''),(''),'','','');\nENDSEC;\nDATA;\n";
  for (std::size_t i = 0; i < file.instances.size(); ++i) {
    if (file.hasNoise && oneIn(file, 30)) {
      text += "\nENDSEC;\nDATA('second',('A'));\n";
    }
    const bool isDouble = file.hasNoise && oneIn(file, 30);
    const std::string& name = file.instances[i].first;
    // Of instances of the same name the first counts that is not tessellated, or else the last.
    if (isDouble && isTessellated(file.instances[i].second)) {
      text += name + "=TESSELLATED_SHELL('other',(),$);\n" + statement(file, i);
    } else {
      text += statement(file, i);
      text += isDouble ? name + "=CARTESIAN_POINT('other',(1.,2.,3.));\n" : "";
    }
  }
  return text + "\nENDSEC;\nEND-ISO-10303-21;\n" +
         (file.hasNoise ? std::string("\0#1=A;'", 7) : "");
}

}  // namespace plenvorith::test
