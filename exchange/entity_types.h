#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace plenvorith {

/// What an entity type means for tessellation, product structure and exact geometry; a type may
/// have several roles. Terms are those of ISO 10303-41, -42, -43, -44 and -46.
using Roles = std::uint32_t;
inline constexpr Roles kNoRole = 0;
inline constexpr Roles kTessellated = 1U << 0;  ///< any tessellated type: none of them stays
inline constexpr Roles kCoordinates = 1U << 1;  ///< COORDINATES_LIST
inline constexpr Roles kFace = 1U << 2;        ///< triangulated face or surface set, complex or not
inline constexpr Roles kCurvedFace = 1U << 3;  ///< CUBIC_BEZIER_TRIANGULATED_FACE
inline constexpr Roles kBody = 1U << 4;        ///< TESSELLATED_SOLID or _SHELL
inline constexpr Roles kGeometricSet = 1U << 5;    ///< TESSELLATED_GEOMETRIC_SET
inline constexpr Roles kRepositioned = 1U << 6;    ///< REPOSITIONED_TESSELLATED_ITEM
inline constexpr Roles kRepresentation = 1U << 7;  ///< REPRESENTATION or ..._SHAPE_REPRESENTATION
inline constexpr Roles kShapeRepresentation = 1U << 8;  ///< SHAPE_REPRESENTATION itself
/// TESSELLATED_SHAPE_REPRESENTATION(_WITH_ACCURACY_PARAMETERS)
inline constexpr Roles kTessellatedShape = 1U << 9;
inline constexpr Roles kDraughtingModel = 1U << 10;  ///< DRAUGHTING_MODEL
inline constexpr Roles kRelationship = 1U << 11;     ///< (SHAPE_)REPRESENTATION_RELATIONSHIP
inline constexpr Roles kTransformation = 1U << 12;   ///< ..._RELATIONSHIP_WITH_TRANSFORMATION
/// any other relationship of representations
inline constexpr Roles kAnyRelationship = 1U << 13;
inline constexpr Roles kAnnotation = 1U << 14;    ///< ..._ANNOTATION_OCCURRENCE
inline constexpr Roles kDefinition = 1U << 15;    ///< SHAPE_ or PROPERTY_DEFINITION_REPRESENTATION
inline constexpr Roles kProductShape = 1U << 16;  ///< PRODUCT_DEFINITION_SHAPE
inline constexpr Roles kUsage = 1U << 17;         ///< NEXT_ASSEMBLY_USAGE_OCCURRENCE
inline constexpr Roles kContextDependent = 1U << 18;    ///< CONTEXT_DEPENDENT_SHAPE_REPRESENTATION
inline constexpr Roles kMappedItem = 1U << 19;          ///< MAPPED_ITEM
inline constexpr Roles kRepresentationMap = 1U << 20;   ///< REPRESENTATION_MAP
inline constexpr Roles kItemTransformation = 1U << 21;  ///< ITEM_DEFINED_TRANSFORMATION
inline constexpr Roles kSolid = 1U << 22;      ///< exact solid or model of shells or faces: an item
inline constexpr Roles kShell = 1U << 23;      ///< exact shell or set of faces
inline constexpr Roles kExactFace = 1U << 24;  ///< exact face
/// names nothing but exact geometry or looks: never changes
inline constexpr Roles kGeometryOnly = 1U << 25;

/// Exact geometry and product structure: what stays, whatever it names. No type is both this and
/// tessellated.
inline constexpr Roles kAlwaysKept = kProductShape | kUsage | kSolid | kShell | kExactFace;

/// A type of entity: one keyword, or those of a complex instance in their order.
struct EntityType {
  std::vector<std::string> keywords;
  std::uint32_t roles = kNoRole;
  bool isComplex = false;

  [[nodiscard]] bool has(std::uint32_t anyOf) const {
    return (roles & anyOf) != 0;
  }
};

/// The roles of one keyword.
[[nodiscard]] std::uint32_t rolesOf(std::string_view keyword);

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

 private:
  std::deque<EntityType> types_;
  std::map<std::string, std::uint16_t, std::less<>> ids_;
};

}  // namespace plenvorith
