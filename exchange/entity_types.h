#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace plenvorith {

/// What an entity is, as far as tessellation, product structure and exact geometry go, in the terms of
/// ISO 10303-41, -42, -43, -44 and -46.
enum class Kind : std::uint8_t {
  Unknown,
  Geometry,    ///< or looks, curves above all: names nothing else
  Surface,     ///< the same
  Solid,       ///< or a model of shells or faces
  Shell,       ///< or a set of faces
  Face,        ///< names nothing but geometry
  Construct,   ///< a solid by how it is made
  SurfaceSet,  ///< GEOMETRIC_SET, which may hold surfaces
  CoordinatesList,
  TriangulatedFace,  ///< or surface set, complex or not
  CurvedFace,        ///< CUBIC_BEZIER_TRIANGULATED_FACE
  TessellatedBody,   ///< TESSELLATED_SOLID or _SHELL
  TessellatedSet,    ///< TESSELLATED_GEOMETRIC_SET
  RepositionedItem,
  OtherTessellation,    ///< that is no surface, or part of what is one
  UnknownTessellation,  ///< by its name
  Representation,       ///< REPRESENTATION or ..._SHAPE_REPRESENTATION
  TessellatedShape,     ///< TESSELLATED_SHAPE_REPRESENTATION(_WITH_ACCURACY_PARAMETERS)
  DraughtingModel,
  Relationship,        ///< (SHAPE_)REPRESENTATION_RELATIONSHIP
  Transformation,      ///< ..._RELATIONSHIP_WITH_TRANSFORMATION
  OtherRelationship,   ///< of representations
  Annotation,          ///< ..._ANNOTATION_OCCURRENCE
  ShapeDefinition,     ///< SHAPE_DEFINITION_REPRESENTATION
  PropertyDefinition,  ///< PROPERTY_DEFINITION_REPRESENTATION
  ProductShape,        ///< PRODUCT_DEFINITION_SHAPE
  Usage,               ///< NEXT_ASSEMBLY_USAGE_OCCURRENCE
  ContextDependent,    ///< CONTEXT_DEPENDENT_SHAPE_REPRESENTATION
  MappedItem,
  RepresentationMap,
  ItemTransformation,  ///< ITEM_DEFINED_TRANSFORMATION
};

/// The kind that a keyword means, in a row of the table or by its parts.
[[nodiscard]] Kind kindOf(std::string_view keyword);

/// A type of entity: one keyword, or those of a complex instance in their order.
struct EntityType {
  std::vector<std::string> keywords;
  std::uint64_t kinds = 0;  ///< a bit for each
  bool isComplex = false;
  bool isTessellated = false;      ///< none of them stays
  bool isKept = false;             ///< whatever it names
  bool isDelivered = false;        ///< the kernel makes faces of it, or of what it holds
  bool namesGeometryOnly = false;  ///< so that its references say nothing

  template <typename... Kinds>
  [[nodiscard]] bool is(Kinds... anyOf) const {
    return (kinds & ((std::uint64_t{1} << static_cast<unsigned>(anyOf)) | ...)) != 0;
  }

  /// Whether all keywords are of this kind.
  [[nodiscard]] bool isOnly(Kind kind) const {
    return kinds == std::uint64_t{1} << static_cast<unsigned>(kind);
  }
};

/// The types of a file, by small numbers in the order in which they were met.
class EntityTypes {
 public:
  static constexpr std::size_t kMaxCount = 65'535;

  /// The number of a type of one keyword, or of the complex type of "A(B(C" for A, B and C.
  /// `kMaxCount` once there are so many.
  [[nodiscard]] std::uint16_t idOf(std::string_view keywords, bool isComplex);

  [[nodiscard]] const EntityType& operator[](std::uint16_t id) const {
    return types_[id];
  }
  [[nodiscard]] auto begin() const {
    return types_.begin();
  }
  [[nodiscard]] auto end() const {
    return types_.end();
  }

 private:
  struct Hash : std::hash<std::string_view> {
    // NOLINTNEXTLINE(readability-identifier-naming): the name that the library looks for
    using is_transparent = void;
  };

  std::vector<EntityType> types_;
  std::unordered_map<std::string, std::uint16_t, Hash, std::equal_to<>> ids_;
};

}  // namespace plenvorith
