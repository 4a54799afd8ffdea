#pragma once

#include <vector>

#include "common/instance_names.h"
#include "common/triangle.h"
#include "steptext/entity_table.h"

namespace plenvorith {

/// Decodes complex triangulated faces (ISO 10303-42) into triangles.
///
/// Of a face only the coordinates list that it references and its seventh parameter, the triangle
/// strips, are used: every inner list of the strips is one triangle of three point numbers. Stored
/// normals, the index mapping (pnindex) and the fans are not. Vertices keep the order of the
/// indices, in the length unit of the file; normals are computed from them.
///
/// Takes   the names of the faces; names that are not those of such faces are passed over.
/// Gives   the triangles face after face in the order of the names, and in the order of the
///         indices. A face whose coordinates list is missing and a triangle with an index that fits
///         no point give nothing; a degenerate triangle stays.
/// Errors  std::invalid_argument and std::out_of_range on a malformed number, and
///         std::out_of_range "invalid string position" on a coordinates entity that is shorter than
///         its keyword. An error ends the whole call.
/// Cost    every face and every coordinates list is scanned once.
std::vector<Triangle> decodeTriangulatedFaces(const EntityTable& table,
                                              const InstanceNames& faceIds);

/// Decodes every complex triangulated face of `table`, like `decodeTriangulatedFaces`.
std::vector<Triangle> decodeAllTriangulatedFaces(const EntityTable& table);

}  // namespace plenvorith
