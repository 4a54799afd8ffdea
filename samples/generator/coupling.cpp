#include "samples/generator/coupling.h"

#include <cmath>
#include <cstddef>
#include <map>
#include <numbers>
#include <string>
#include <vector>

#include <TopoDS_Shape.hxx>

#include "samples/generator/coupling_shapes.h"
#include "samples/generator/facets.h"
#include "samples/generator/meshes.h"
#include "samples/generator/products.h"
#include "samples/generator/strips.h"

namespace plenvorith::samples {
namespace {

constexpr double kMillimetresPerInch = 25.4;

std::string pointInInches(const Point3& p) {
  return "(" + real(p.x / kMillimetresPerInch) + "," + real(p.y / kMillimetresPerInch) + "," +
         real(p.z / kMillimetresPerInch) + ")";
}

std::string indexLists(const std::vector<Indices>& lists) {
  return list(lists, [](const Indices& indices) {
    return list(indices, [](std::size_t index) { return std::to_string(index); });
  });
}

/// Points that several faces have in common stand in the list once.
struct SharedPoints {
  std::vector<std::string> texts;
  std::map<std::string, std::size_t> numbers;
};

Indices numbersOf(SharedPoints& points, const Facets& facets) {
  Indices numbers;
  for (const Point3& point : facets.points) {
    const std::string text = pointInInches(point);
    const auto [known, isNew] = points.numbers.try_emplace(text, points.texts.size() + 1);
    if (isNew) {
      points.texts.push_back(text);
    }
    numbers.push_back(known->second);
  }
  return numbers;
}

std::string faceText(const Facets& facets, const Indices& numbers, std::size_t pointList) {
  const StripsAndFans runs = stripsAndFansOf(facets);
  return "COMPLEX_TRIANGULATED_FACE(''," + ref(pointList) + "," + std::to_string(numbers.size()) +
         ",(),$," + list(numbers, [](std::size_t number) { return std::to_string(number); }) + "," +
         indexLists(runs.strips) + "," + indexLists(runs.fans) + ")";
}

/// Appends a solid and gives its number.
std::size_t addSolid(Entities& entities, const std::string& name, const TopoDS_Shape& shape) {
  constexpr double kDeflection = 0.15;
  const std::vector<Facets> faces = meshFaces(shape, kDeflection);
  SharedPoints points;
  std::vector<Indices> numbers;
  numbers.reserve(faces.size());
  for (const Facets& face : faces) {
    numbers.push_back(numbersOf(points, face));
  }
  const std::size_t pointList =
      add(entities, "COORDINATES_LIST(''," + std::to_string(points.texts.size()) + "," +
                        list(points.texts, [](const std::string& text) { return text; }) + ")");
  Indices instances;
  for (std::size_t i = 0; i < faces.size(); ++i) {
    instances.push_back(add(entities, faceText(faces[i], numbers[i], pointList)));
  }
  return add(entities, "TESSELLATED_SOLID('" + name + "'," + list(instances, ref) + ",$)");
}

/// A product with a plain shape, and a tessellated one tied to it.
Part addPart(Entities& entities, const std::string& name, const TopoDS_Shape& shape,
             std::size_t axes, const std::string& context) {
  const std::size_t solid = addSolid(entities, name, shape);
  const std::size_t tessellated = add(entities, "TESSELLATED_SHAPE_REPRESENTATION('" + name +
                                                    "',(" + ref(solid) + ")," + context + ")");
  Part part;
  part.representation =
      add(entities, "SHAPE_REPRESENTATION('" + name + "',(" + ref(axes) + ")," + context + ")");
  part.definition = addProduct(entities, name, part.representation);
  add(entities, "SHAPE_REPRESENTATION_RELATIONSHIP('',''," + ref(part.representation) + "," +
                    ref(tessellated) + ")");
  return part;
}

/// The places of the six holes, at a height in millimetres.
std::vector<Axes> boltCircle(double height, double z) {
  std::vector<Axes> places;
  for (int i = 0; i < kCouplingHoles; ++i) {
    const double angle = std::numbers::pi / 3 * i;
    const double radius = kCouplingHoleCircle / kMillimetresPerInch;
    places.push_back(
        {{radius * std::cos(angle), radius * std::sin(angle), height / kMillimetresPerInch},
         {0, 0, z},
         {1, 0, 0}});
  }
  return places;
}

}  // namespace

Entities couplingEntities() {
  Entities entities;
  const std::string context = addContext(entities, LengthUnit::Inch);
  const std::size_t origin = addAxes(entities, {});
  const Part half = addPart(entities, "half", makeCouplingHalf(), origin, context);
  const Part bolt = addPart(entities, "bolt", makeCouplingBolt(), origin, context);
  const Part nut = addPart(entities, "nut", makeCouplingNut(), origin, context);

  struct Usage {
    Part part;
    std::string name;
    std::size_t axes;
  };
  std::vector<Usage> usages = {
      {half, "left", addAxes(entities, {{0, 0, 0}, {0, 0, -1}, {1, 0, 0}})},
      {half, "right", addAxes(entities, {{0, 0, 0}, {0, 0, 1}, {1, 0, 0}})},
  };
  for (const Axes& place : boltCircle(kCouplingFlange, -1)) {
    usages.push_back({bolt, "bolt", addAxes(entities, place)});
  }
  for (const Axes& place : boltCircle(-kCouplingFlange, -1)) {
    usages.push_back({nut, "nut", addAxes(entities, place)});
  }
  Indices items = {origin};
  for (const Usage& usage : usages) {
    items.push_back(usage.axes);
  }
  Part whole;
  whole.representation =
      add(entities, "SHAPE_REPRESENTATION('coupling'," + list(items, ref) + "," + context + ")");
  whole.definition = addProduct(entities, "coupling", whole.representation);
  for (const Usage& usage : usages) {
    addUsage(entities, whole, usage.part, usage.name, usage.axes, origin);
  }
  return entities;
}

}  // namespace plenvorith::samples
