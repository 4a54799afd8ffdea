#include "tests/prepare/generated_items.h"

#include "tests/support/step_text.h"

namespace plenvorith::test {

bool oneIn(File& file, std::size_t count) {
  return pick(file.random, count) == 0;
}

std::string oneOf(File& file, const Texts& texts) {
  return texts[pick(file.random, texts.size())];
}

std::string list(const Texts& items) {
  std::string text = "(";
  for (const std::string& item : items) {
    text += (text.size() == 1 ? "" : ",") + item;
  }
  return text + ")";
}

std::string call(const std::string& type, const Texts& parameters) {
  return type + list(parameters);
}

std::string add(File& file, const std::string& content) {
  file.last += 1 + pick(file.random, 30);
  std::string name = "#" + std::to_string(file.last);
  file.instances.emplace_back(name, content);
  return name;
}

std::string add(File& file, const std::string& type, const Texts& parameters) {
  return add(file, call(type, parameters));
}

std::string name(File& file) {
  return oneOf(file, {"''", "''", "'part 1'", "'it''s; #3=(,'", "'/* no comment'", "'\xC3\xA9'",
                      "'TESSELLATED_SOLID('", "'ENDSEC;'", "'&SCOPE'"});
}

namespace {

constexpr std::size_t kPoints = 8;

std::string number(File& file) {
  const std::string digits = std::to_string(pick(file.random, 1000));
  return oneOf(file, {"", "", "", "-"}) +
         oneOf(file, {digits + ".", digits + ".125", "0." + digits, digits + ".E-1",
                      "0.000" + digits + "E+03", digits + ".333333333333"});
}

std::string point(File& file) {
  return list({number(file), number(file), number(file)});
}

std::string lengthUnit(File& file) {
  const auto si = [&](const std::string& prefix) {
    return add(file, "(LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT(" + prefix + ",.METRE.))");
  };
  const auto conversion = [&](const std::string& factor, const std::string& base) {
    const std::string measure =
        oneIn(file, 2)
            ? add(file, "LENGTH_MEASURE_WITH_UNIT", {"LENGTH_MEASURE(" + factor + ")", base})
            : add(file, "MEASURE_WITH_UNIT", {"LENGTH_MEASURE(" + factor + ")", base});
    return add(file, "(CONVERSION_BASED_UNIT('INCH'," + measure + ")LENGTH_UNIT()NAMED_UNIT(*))");
  };
  switch (pick(file.random, 6)) {
    case 0:
      return si(oneOf(file, {"$", ".CENTI.", ".MICRO.", ".KILO.", ".DECI."}));
    case 1:
      return conversion("25.4", si(".MILLI."));
    case 2:
      return conversion("12.", conversion("2.54", si(".CENTI.")));
    default:
      return si(".MILLI.");
  }
}

}  // namespace

std::string context(File& file) {
  Texts units = {add(file, "(NAMED_UNIT(*)PLANE_ANGLE_UNIT()SI_UNIT($,.RADIAN.))")};
  if (!oneIn(file, 8)) {
    units.push_back(lengthUnit(file));
  }
  if (oneIn(file, 2)) {
    std::swap(units.front(), units.back());
  }
  return add(file, "(GEOMETRIC_REPRESENTATION_CONTEXT(3)GLOBAL_UNIT_ASSIGNED_CONTEXT(" +
                       list(units) + ")REPRESENTATION_CONTEXT('',''))");
}

namespace {

std::string direction(File& file, const Texts& choices) {
  return add(file, "DIRECTION", {"''", oneOf(file, choices)});
}

const Texts kUpwards = {"(0.,0.,1.)", "(0.,0.,2.)", "(0.3,0.2,0.9)", "(0.6,0.,0.8)"};

const Texts kSideways = {"(1.,0.,0.)", "(0.8,0.1,0.2)", "(0.,1.,0.)", "(-1.,0.,0.)"};

}  // namespace

std::string axisPlacement(File& file) {
  const bool isPlain = oneIn(file, 4);
  const std::string origin =
      add(file, "CARTESIAN_POINT", {"''", isPlain ? "(0.,0.,0.)" : point(file)});
  const bool hasAxis = !isPlain && !oneIn(file, 3);
  const std::string axis = hasAxis ? direction(file, kUpwards) : "$";
  const std::string reference = hasAxis ? direction(file, kSideways) : "$";
  return add(file, "AXIS2_PLACEMENT_3D", {name(file), origin, axis, reference});
}

std::string transformationOperator(File& file) {
  const std::string origin = add(file, "CARTESIAN_POINT", {"''", point(file)});
  const std::string axis1 = oneIn(file, 3) ? "$" : direction(file, {"(1.,0.,0.)", "(0.8,0.6,0.)"});
  const std::string axis2 = oneIn(file, 3) ? "$" : direction(file, {"(0.,1.,0.)", "(0.,-1.,0.)"});
  const std::string axis3 = oneIn(file, 3) ? "$" : direction(file, {"(0.,0.,1.)", "(0.,0.,-1.)"});
  const std::string scale = oneOf(file, {"$", "1.", "2.5", "0.125"});
  if (oneIn(file, 2)) {
    return add(file, "CARTESIAN_TRANSFORMATION_OPERATOR_3D",
               {"''", "''", "$", axis1, axis2, origin, scale, axis3});
  }
  return add(file, "(" + call("CARTESIAN_TRANSFORMATION_OPERATOR", {axis1, axis2, origin, scale}) +
                       call("CARTESIAN_TRANSFORMATION_OPERATOR_3D", {axis3}) +
                       "FUNCTIONALLY_DEFINED_TRANSFORMATION('',$)"
                       "GEOMETRIC_REPRESENTATION_ITEM()REPRESENTATION_ITEM(''))");
}

namespace {

std::string coordinates(File& file) {
  if (!file.lists.empty() && oneIn(file, 3)) {
    return oneOf(file, file.lists);
  }
  Texts points;
  for (std::size_t i = 0; i < kPoints; ++i) {
    points.push_back(point(file));
  }
  file.lists.push_back(
      add(file, "COORDINATES_LIST", {name(file), std::to_string(kPoints), list(points)}));
  return file.lists.back();
}

/// Mostly three different ones in a row.
std::string indices(File& file, std::size_t count, std::size_t limit) {
  Texts numbers;
  std::size_t last = pick(file.random, limit);
  for (std::size_t i = 0; i < count; ++i) {
    if (oneIn(file, 100)) {
      numbers.push_back(oneOf(file, {"0", "-1", "99", "4294967297"}));
    } else {
      last = oneIn(file, 10) ? last : (last + 1 + pick(file.random, 2)) % limit;
      numbers.push_back(std::to_string(last + 1));
    }
  }
  return list(numbers);
}

std::string indexLists(File& file, std::size_t least, std::size_t most, std::size_t limit) {
  Texts lists;
  for (std::size_t i = pick(file.random, 4); i > 0; --i) {
    lists.push_back(indices(file, least + pick(file.random, most - least + 1), limit));
  }
  return list(lists);
}

}  // namespace

std::string face(File& file, bool isFace, const std::string& link) {
  Texts shared = {coordinates(file), std::to_string(kPoints),
                  oneOf(file, {"()", "((0.,0.,1.))", "((0.6,0.,0.8),(-0.,1.E0,0.))"})};
  if (isFace) {
    shared.push_back(link);
  }
  const bool isMapped = oneIn(file, 2);
  const std::size_t limit = isMapped ? 5 : kPoints;
  const bool isComplex = oneIn(file, 2);
  Texts own = {isMapped ? indices(file, limit, kPoints) : "()"};
  own.push_back(isComplex ? indexLists(file, 3, 7, limit) : indexLists(file, 3, 3, limit));
  if (isComplex) {
    own.push_back(indexLists(file, 3, 6, limit));
  }
  const std::string kind = isFace ? "FACE" : "SURFACE_SET";
  const std::string type = (isComplex ? "COMPLEX_" : "") + ("TRIANGULATED_" + kind);
  if (oneIn(file, 5)) {
    return add(file, "(" + call(type, own) +
                         "GEOMETRIC_REPRESENTATION_ITEM()REPRESENTATION_ITEM('')" +
                         call("TESSELLATED_" + kind, shared) + "TESSELLATED_ITEM())");
  }
  Texts parameters = {name(file)};
  parameters.insert(parameters.end(), shared.begin(), shared.end());
  parameters.insert(parameters.end(), own.begin(), own.end());
  return add(file, type, parameters);
}

namespace {

std::string linkTo(File& file, const Texts& exact) {
  if (!exact.empty() && oneIn(file, 3)) {
    return oneOf(file, exact);
  }
  return oneIn(file, 4) ? add(file, "PLANE", {"''", axisPlacement(file)}) : "$";
}

/// The type may be repositioned, which makes it a complex instance.
std::string container(File& file, const std::string& type, const Texts& parameters) {
  if (!oneIn(file, 5)) {
    Texts all = {name(file)};
    all.insert(all.end(), parameters.begin(), parameters.end());
    return add(file, type, all);
  }
  return add(file, "(GEOMETRIC_REPRESENTATION_ITEM()" +
                       call("REPOSITIONED_TESSELLATED_ITEM", {axisPlacement(file)}) +
                       "REPRESENTATION_ITEM('')TESSELLATED_ITEM()" + call(type, parameters) + ")");
}

}  // namespace

std::string geometricSet(File& file, bool mayNest) {
  Texts children;
  for (std::size_t i = 1 + pick(file.random, 2); i > 0; --i) {
    children.push_back(mayNest && oneIn(file, 3) ? geometricSet(file, false)
                                                 : face(file, oneIn(file, 2), "$"));
  }
  return container(file, "TESSELLATED_GEOMETRIC_SET", {list(children)});
}

std::string body(File& file, const Texts& exact) {
  if (exact.empty() && !file.bodies.empty() && oneIn(file, 8)) {
    return oneOf(file, file.bodies);
  }
  const std::size_t kind = pick(file.random, 6);
  if (kind == 0) {
    return face(file, true, linkTo(file, exact));
  }
  if (kind == 1) {
    return face(file, false, "$");
  }
  if (kind == 2) {
    return geometricSet(file, true);
  }
  const bool linksFaces = oneIn(file, 2);
  Texts faces;
  for (std::size_t i = 1 + pick(file.random, 3); i > 0; --i) {
    faces.push_back(face(file, true, linksFaces ? linkTo(file, exact) : "$"));
  }
  std::string made = container(file, kind == 3 ? "TESSELLATED_SHELL" : "TESSELLATED_SOLID",
                               {list(faces), linksFaces ? "$" : linkTo(file, exact)});
  file.bodies.push_back(made);
  return made;
}

}  // namespace plenvorith::test
