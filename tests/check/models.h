#pragma once

#include <utility>

#include "check/checked_model.h"

namespace plenvorith::test {

/// A solid in which nothing is wrong.
inline CheckedPart soundPart() {
  CheckedPart part;
  part.number = 7;
  part.part.kind = "solid";
  part.part.path = {"lamp", "foot"};
  part.part.name = "Body";
  part.part.placement = {1, 0, 0, 10, 0, 1, 0, 20, 0, 0, 1, 30};
  part.part.faces = {12, 6, 0, 0, 0.0625};
  part.mesh.pieces = 1;
  part.mesh.measure.triangles = 12;
  part.mesh.measure.area = 24;
  part.mesh.measure.sixfoldVolume = 48;
  part.mesh.measure.high = {2, 2, 2};
  part.mesh.measure.sixfoldMoment = {48, 48, 48};
  return part;
}

/// A shell with a border.
inline CheckedPart openShell() {
  CheckedPart part = soundPart();
  part.number = 8;
  part.part.kind = "shell";
  part.part.name = "";
  part.mesh.openEdges = 4;
  return part;
}

inline CheckedModel modelOf(std::vector<CheckedPart> parts) {
  CheckedModel model;
  model.parts = std::move(parts);
  return model;
}

}  // namespace plenvorith::test
