#pragma once

#include <vector>

#include "common/instance_names.h"
#include "common/triangle.h"
#include "steptext/entity_table.h"

namespace plenvorith::test {

/// `decodeTriangulatedFaces` and `decodeAllTriangulatedFaces` with the reference scanner.
std::vector<Triangle> referenceDecode(const EntityTable& table, const InstanceNames& faceIds);
std::vector<Triangle> referenceDecodeAll(const EntityTable& table);

}  // namespace plenvorith::test
