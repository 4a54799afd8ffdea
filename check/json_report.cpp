#include "check/json_report.h"

#include <algorithm>

#include <nlohmann/json.hpp>

#include "check/problems.h"
#include "common/escaped_text.h"

namespace plenvorith {
namespace {

using Json = nlohmann::ordered_json;

Json jsonOf(const Point3& point) {
  return Json::array({point.x, point.y, point.z});
}

Json jsonOf(const std::optional<double>& number) {
  return number ? Json(*number) : Json();
}

/// Measures that are known of something, and how far ours are from them.
Json comparison(const PartMeasures& known, const PartMeasures& ours) {
  const MeasureDifferences differences = differencesOf(ours, known);
  Json object = Json::object();
  if (known.volume) {
    object["volume"] = *known.volume;
    object["difference"] = jsonOf(differences.volume);
  }
  if (known.area) {
    object["area"] = *known.area;
    object["areaDifference"] = jsonOf(differences.area);
  }
  if (known.centroid) {
    object["centroid"] = jsonOf(*known.centroid);
    object["centroidDistance"] = jsonOf(differences.centroid);
  }
  return object;
}

void addComparison(Json& object, const char* key, const PartMeasures& known,
                   const PartMeasures& ours) {
  Json compared = comparison(known, ours);
  if (!compared.empty()) {
    object[key] = std::move(compared);
  }
}

Json jsonOf(const CheckedPart& checked) {
  const BrepPart& part = checked.part;
  const MeshMeasure& measure = checked.mesh.measure;
  Json path = Json::array();
  for (const std::string& name : part.path) {
    path.push_back(portable(name));
  }
  Json object = {{"number", checked.number ? Json(*checked.number) : Json()},
                 {"kind", part.kind},
                 {"path", std::move(path)},
                 {"name", portable(part.name)},
                 {"triangles", measure.triangles},
                 {"closed", isClosed(checked.mesh)},
                 {"openEdges", checked.mesh.openEdges},
                 {"degenerate", measure.degenerate}};
  if (checked.number) {
    object["faces"] = part.faces.faces;
    object["facesWithoutMesh"] = part.faces.withoutMesh;
    object["facesOverDeflection"] = part.faces.overDeflection;
    object["deviation"] = part.faces.deviation;
  }
  object["volume"] = volumeOf(measure);
  object["area"] = measure.area;
  if (checked.number) {
    object["placement"] = part.placement;
  }
  addComparison(object, "exact", part.exact, measuresOf(checked.mesh));
  addComparison(object, "stated", part.stated, bestMeasures(checked));
  return object;
}

}  // namespace

std::vector<std::string> jsonReport(const CheckedModel& model, Reported reported) {
  std::vector<std::string> lines;
  for (const CheckedPart& part : model.parts) {
    if (reported == Reported::All || hasProblem(part)) {
      lines.push_back(jsonOf(part).dump());
    }
  }
  const ModelTotals totals = totalsOf(model);
  Json file = {{"parts", totals.parts},
               {"partsWithProblems", totals.partsWithProblems},
               {"openSolids", totals.openSolids},
               {"facesWithoutMesh", totals.facesWithoutMesh},
               {"facesOverDeflection", totals.facesOverDeflection},
               {"deviation", totals.deviation},
               {"triangles", totals.triangles},
               {"volume", totals.volume},
               {"deflection", model.deflection}};
  if (model.hasMesh) {
    file["meshIsOfInput"] = true;
  }
  addComparison(file, "stated", model.stated, bestMeasures(model));
  lines.push_back(file.dump());
  return lines;
}

std::string jsonReport(const MeshFacts& mesh) {
  const MeshMeasure& measure = mesh.measure;
  return Json({{"triangles", measure.triangles},
               {"closed", isClosed(mesh)},
               {"openEdges", mesh.openEdges},
               {"degenerate", measure.degenerate},
               {"pieces", mesh.pieces},
               {"volume", volumeOf(measure)},
               {"area", measure.area},
               {"bounds", Json::array({jsonOf(measure.low), jsonOf(measure.high)})}})
      .dump();
}

}  // namespace plenvorith
