#pragma once

#include <vector>

#include "common/instance_names.h"
#include "common/triangle.h"
#include "tests/support/entity_texts.h"

namespace plenvorith::test {

/// `decodeTriangulatedFaces` and `decodeAllTriangulatedFaces` with the reference scanner.
std::vector<Triangle> referenceDecode(const EntityTexts& table, const InstanceNames& faceIds);
std::vector<Triangle> referenceDecodeAll(const EntityTexts& table);

}  // namespace plenvorith::test
