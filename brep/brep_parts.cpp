#include "brep/brep_parts.h"

#include <cstddef>
#include <ostream>
#include <utility>

#include <STEPControl_Reader.hxx>

#include "brep/brep_mesher.h"
#include "brep/brep_reader.h"
#include "brep/exact_measures.h"
#include "brep/face_deviation.h"
#include "brep/part_names.h"
#include "brep/stated_measures.h"

namespace plenvorith {
bool readBrepParts(const std::string& path, double deflection, bool withExact, BrepModel& model) {
  model = {};
  STEPControl_Reader reader;
  Shapes shapes;
  std::ostream nowhere(nullptr);
  if (!readBrepShapes(reader, path, shapes, nowhere)) {
    return false;
  }
  model.triangles = meshBrepShapes(shapes, deflection);

  std::vector<PartName> names = namesOfParts(reader, shapes);
  const std::vector<FaceFacts> faces = measureFaces(shapes, deflection);
  StatedMeasures stated = statedMeasures(reader, shapes);
  for (std::size_t i = 0; i < shapes.size(); ++i) {
    model.parts.push_back({std::move(names[i]), faces[i],
                           withExact ? exactMeasures(shapes[i]) : PartMeasures{}, stated.parts[i]});
  }
  model.stated = stated.whole;
  return true;
}

}  // namespace plenvorith
