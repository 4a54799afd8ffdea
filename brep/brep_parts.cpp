#include "brep/brep_parts.h"

#include <cstddef>
#include <ostream>

#include <STEPControl_Reader.hxx>
#include <gp_Trsf.hxx>

#include "brep/brep_mesher.h"
#include "brep/brep_reader.h"
#include "brep/exact_measures.h"
#include "brep/face_deviation.h"
#include "brep/part_names.h"
#include "brep/stated_measures.h"

namespace plenvorith {
namespace {

const char* kindOf(const TopoDS_Shape& shape) {
  switch (shape.ShapeType()) {
    case TopAbs_SOLID:
      return "solid";
    case TopAbs_SHELL:
      return "shell";
    case TopAbs_FACE:
      return "face";
    default:
      return "other";
  }
}

std::array<double, 12> placementOf(const TopoDS_Shape& shape) {
  const gp_Trsf transformation = shape.Location().Transformation();
  std::array<double, 12> matrix{};
  for (int i = 0; i < 12; ++i) {
    matrix[static_cast<std::size_t>(i)] = transformation.Value(i / 4 + 1, i % 4 + 1);
  }
  return matrix;
}

}  // namespace

bool readBrepParts(const std::string& path, double deflection, bool withExact, BrepModel& model) {
  model = {};
  STEPControl_Reader reader;
  Shapes shapes;
  std::ostream nowhere(nullptr);
  if (!readBrepShapes(reader, path, shapes, nowhere)) {
    return false;
  }
  model.triangles = meshBrepShapes(shapes, deflection);

  const std::vector<PartName> names = namesOfParts(reader, shapes);
  const std::vector<FaceFacts> faces = measureFaces(shapes, deflection);
  StatedMeasures stated = statedMeasures(reader, shapes);
  for (std::size_t i = 0; i < shapes.size(); ++i) {
    model.parts.push_back({kindOf(shapes[i]), names[i].path, names[i].name, placementOf(shapes[i]),
                           faces[i], withExact ? exactMeasures(shapes[i]) : PartMeasures{},
                           stated.parts[i]});
  }
  model.stated = stated.whole;
  return true;
}

}  // namespace plenvorith
