#pragma once

#include <cstdint>
#include <tuple>
#include <vector>

#include "product/occurrences.h"
#include "product/product_structure.h"

namespace plenvorith {

/// One body of tessellation as a representation holds it: a TESSELLATED_SOLID or _SHELL, or a
/// triangulated face or surface set of its own (ISO 10303-42).
struct Body {
  InstanceIndex instance = kNoInstance;
  RepresentationIndex representation = 0;    ///< one that holds it
  Node node = 0;                             ///< what it is a body of
  std::vector<InstanceIndex> repositioning;  ///< placements of the items around it and of its own,
                                             ///< the outermost first

  bool operator<(const Body& other) const {
    return std::tie(instance, node, repositioning) <
           std::tie(other.instance, other.node, other.repositioning);
  }
};

/// The tessellation of a file by what it is for. Bodies are each once for what they are bodies of.
struct PartTessellation {
  std::vector<Body> bodies;           ///< to be kept, in the order of the file
  std::vector<InstanceIndex> copies;  ///< bodies that exact geometry duplicates, each once
  std::uint64_t representationCount = 0;
  std::uint64_t annotationCount = 0;  ///< representations that only annotation shows
  std::uint64_t propertyCount = 0;    ///< representations of features and properties only
  bool hasExact = false;              ///< some representation holds exact geometry
  bool mayHaveExact = false;          ///< or what the kernel may take for that
  bool hasTooMany = false;            ///< there is more of it than can be
};

/// What a face names: its coordinates list and the geometry that it lies on.
struct FaceLinks {
  InstanceIndex coordinates = kNoInstance;  ///< none if it names no coordinates list
  InstanceIndex geometry = kNoInstance;
  InstanceIndex location = kNoInstance;  ///< of a repositioned face
};

[[nodiscard]] FaceLinks readFaceLinks(const InstanceTable& table, InstanceIndex face);

/// The faces of a body, itself if it is one, in the order of its text. Curved ones are left out,
/// with a warning.
[[nodiscard]] std::vector<InstanceIndex> facesOf(const InstanceTable& table, InstanceIndex body,
                                                 Warnings& warnings);

/// Adds warnings where sets are nested too deep, or are too many.
[[nodiscard]] PartTessellation findPartTessellation(const InstanceTable& table,
                                                    const ProductStructure& structure,
                                                    Occurrences& occurrences, Warnings& warnings);

}  // namespace plenvorith
