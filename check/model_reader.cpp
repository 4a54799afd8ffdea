#include "check/model_reader.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <span>
#include <utility>

#include "brep/brep_parts.h"
#include "check/mesh_identity.h"
#include "common/block_reader.h"
#include "steptext/entity_table.h"
#include "steptext/strip_tessellation.h"
#include "steptext/tessellation_analysis.h"
#include "tessellation/face_decoder.h"

namespace plenvorith {
namespace {

/// What the file's text gives. Its table is gone before the kernel needs memory.
struct DecodedText {
  bool hasExact = true;
  std::vector<Triangle> tessellation;  // that no exact geometry duplicates
};

DecodedText decodeText(const std::string& input) {
  EntityTable table;
  readEntityTable(table, input);
  const TessellationAnalysis analysis = analyzeTessellation(table);
  switch (analysis.status) {
    case TessellationStatus::PartiallyUnique:
      return {true, decodeTriangulatedFaces(table, analysis.uniqueFaces)};
    case TessellationStatus::TessellationOnly:
      return {false, decodeAllTriangulatedFaces(table)};
    default:
      return {true, {}};
  }
}

BrepModel readExact(const std::string& input, double deflection, bool withExact) {
  const std::string cleanPath = stripTessellation(input);
  BrepModel model;
  // A file without exact geometry may have tessellation.
  (void)readBrepParts(cleanPath, deflection, withExact, model);
  if (cleanPath != input) {
    // The copy is this program's own; one that cannot be deleted does no harm.
    (void)std::remove(cleanPath.c_str());
  }
  return model;
}

void addParts(CheckedModel& model, BrepModel& exact) {
  std::size_t start = 0;
  for (BrepPart& part : exact.parts) {
    CheckedPart& checked = model.parts.emplace_back();
    checked.number = model.parts.size();
    checked.mesh = meshFactsOf(std::span(exact.triangles).subspan(start, part.faces.triangles));
    start += part.faces.triangles;
    checked.part = std::move(part);
  }
  model.stated = exact.stated;
}

}  // namespace

std::string readCheckedModel(const std::string& input, const std::string& mesh, double deflection,
                             bool withExact, CheckedModel& model) {
  model = {};
  model.deflection = deflection;
  model.withExact = withExact;
  if (!BlockReader(input).isOpen()) {
    return input + " cannot be opened";
  }
  const DecodedText text = decodeText(input);
  BrepModel exact;
  if (text.hasExact) {
    exact = readExact(input, deflection, withExact);
  }
  addParts(model, exact);
  if (!text.tessellation.empty()) {
    CheckedPart& part = model.parts.emplace_back();
    part.part.kind = "tessellation";
    part.mesh = meshFactsOf(text.tessellation);
  }

  std::vector<Triangle>& triangles = exact.triangles;
  triangles.insert(triangles.end(), text.tessellation.begin(), text.tessellation.end());
  const bool hasFaces = std::any_of(
      model.parts.begin(), model.parts.end(),
      [](const CheckedPart& part) { return !part.number || part.part.faces.faces > 0; });
  if (!hasFaces) {
    return input + " has no geometry that could be meshed";
  }
  if (!mesh.empty()) {
    const std::string difference = differenceFrom(mesh, triangles);
    if (!difference.empty()) {
      return mesh + " " + difference + ": it is not the mesh of " + input;
    }
    model.hasMesh = true;
  }
  return {};
}

}  // namespace plenvorith
