#include "exchange/entity_types.h"

#include <algorithm>
#include <array>
#include <utility>

namespace plenvorith {
namespace {

using Named = std::pair<std::string_view, std::uint32_t>;

/// In the order of byte strings.
constexpr std::array kNamed = std::to_array<Named>({
    {"ADVANCED_FACE", kExactFace | kGeometryOnly},
    {"AXIS2_PLACEMENT_3D", kGeometryOnly},
    {"BEZIER_CURVE", kGeometryOnly},
    {"BEZIER_SURFACE", kGeometryOnly},
    {"BLOCK", kSolid},
    {"BOOLEAN_RESULT", kSolid},
    {"BOUNDED_CURVE", kGeometryOnly},
    {"BOUNDED_SURFACE", kGeometryOnly},
    {"BREP_WITH_VOIDS", kSolid},
    {"B_SPLINE_CURVE_WITH_KNOTS", kGeometryOnly},
    {"B_SPLINE_SURFACE_WITH_KNOTS", kGeometryOnly},
    {"CARTESIAN_POINT", kGeometryOnly},
    {"CIRCLE", kGeometryOnly},
    {"CLOSED_SHELL", kShell},
    {"COLOUR_RGB", kGeometryOnly},
    {"COMPLEX_TRIANGULATED_FACE", kTessellated | kFace},
    {"COMPLEX_TRIANGULATED_SURFACE_SET", kTessellated | kFace},
    {"CONICAL_SURFACE", kGeometryOnly},
    {"CONNECTED_FACE_SET", kShell},
    {"CONTEXT_DEPENDENT_SHAPE_REPRESENTATION", kContextDependent},
    {"COORDINATES_LIST", kTessellated | kCoordinates},
    {"CSG_SOLID", kSolid},
    {"CUBIC_BEZIER_TRIANGULATED_FACE", kTessellated | kCurvedFace},
    {"CURVE_STYLE", kGeometryOnly},
    {"CYLINDRICAL_SURFACE", kGeometryOnly},
    {"DIRECTION", kGeometryOnly},
    {"DRAUGHTING_MODEL", kDraughtingModel},
    {"EDGE_CURVE", kGeometryOnly},
    {"EDGE_LOOP", kGeometryOnly},
    {"ELLIPSE", kGeometryOnly},
    {"EXTRUDED_AREA_SOLID", kSolid},
    {"EXTRUDED_FACE_SOLID", kSolid},
    {"FACETED_BREP", kSolid},
    {"FACE_BASED_SURFACE_MODEL", kSolid},
    {"FACE_BOUND", kGeometryOnly},
    {"FACE_OUTER_BOUND", kGeometryOnly},
    {"FACE_SURFACE", kExactFace | kGeometryOnly},
    {"FILL_AREA_STYLE", kGeometryOnly},
    {"FILL_AREA_STYLE_COLOUR", kGeometryOnly},
    {"HALF_SPACE_SOLID", kSolid},
    {"ITEM_DEFINED_TRANSFORMATION", kItemTransformation},
    {"LINE", kGeometryOnly},
    {"MANIFOLD_SOLID_BREP", kSolid},
    {"MAPPED_ITEM", kMappedItem},
    {"NEXT_ASSEMBLY_USAGE_OCCURRENCE", kUsage},
    {"OPEN_SHELL", kShell},
    {"ORIENTED_CLOSED_SHELL", kShell},
    {"ORIENTED_EDGE", kGeometryOnly},
    {"ORIENTED_FACE", kExactFace | kGeometryOnly},
    {"ORIENTED_OPEN_SHELL", kShell},
    {"PCURVE", kGeometryOnly},
    {"PLANE", kGeometryOnly},
    {"POLYLINE", kGeometryOnly},
    {"POLY_LOOP", kGeometryOnly},
    {"PRESENTATION_STYLE_ASSIGNMENT", kGeometryOnly},
    {"PRODUCT_DEFINITION_SHAPE", kProductShape},
    {"PROPERTY_DEFINITION_REPRESENTATION", kDefinition},
    {"REPOSITIONED_TESSELLATED_ITEM", kTessellated | kRepositioned},
    {"REPRESENTATION", kRepresentation},
    {"REPRESENTATION_MAP", kRepresentationMap},
    {"REPRESENTATION_RELATIONSHIP", kRelationship},
    {"REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION", kTransformation},
    {"REVOLVED_AREA_SOLID", kSolid},
    {"REVOLVED_FACE_SOLID", kSolid},
    {"RIGHT_ANGULAR_WEDGE", kSolid},
    {"RIGHT_CIRCULAR_CONE", kSolid},
    {"RIGHT_CIRCULAR_CYLINDER", kSolid},
    {"SEAM_CURVE", kGeometryOnly},
    {"SHAPE_DEFINITION_REPRESENTATION", kDefinition},
    {"SHAPE_REPRESENTATION_RELATIONSHIP", kRelationship},
    {"SHAPE_REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION", kTransformation},
    {"SHELL_BASED_SURFACE_MODEL", kSolid},
    {"SOLID_REPLICA", kSolid},
    {"SPHERE", kSolid},
    {"SPHERICAL_SURFACE", kGeometryOnly},
    {"SUBFACE", kExactFace | kGeometryOnly},
    {"SURFACE_CURVE", kGeometryOnly},
    {"SURFACE_CURVE_SWEPT_AREA_SOLID", kSolid},
    {"SURFACE_OF_LINEAR_EXTRUSION", kGeometryOnly},
    {"SURFACE_OF_REVOLUTION", kGeometryOnly},
    {"SURFACE_SIDE_STYLE", kGeometryOnly},
    {"SURFACE_STYLE_FILL_AREA", kGeometryOnly},
    {"SURFACE_STYLE_USAGE", kGeometryOnly},
    {"SWEPT_DISK_SOLID", kSolid},
    {"TESSELLATED_GEOMETRIC_SET", kTessellated | kGeometricSet},
    {"TESSELLATED_SHAPE_REPRESENTATION", kTessellated | kRepresentation | kTessellatedShape},
    {"TESSELLATED_SHAPE_REPRESENTATION_WITH_ACCURACY_PARAMETERS",
     kTessellated | kRepresentation | kTessellatedShape},
    {"TESSELLATED_SHELL", kTessellated | kBody},
    {"TESSELLATED_SOLID", kTessellated | kBody},
    {"TOROIDAL_SURFACE", kGeometryOnly},
    {"TORUS", kSolid},
    {"TRIANGULATED_FACE", kTessellated | kFace},
    {"TRIANGULATED_SURFACE_SET", kTessellated | kFace},
    {"TRIMMED_CURVE", kGeometryOnly},
    {"VECTOR", kGeometryOnly},
    {"VERTEX_LOOP", kGeometryOnly},
    {"VERTEX_POINT", kGeometryOnly},
});
static_assert(std::is_sorted(kNamed.begin(), kNamed.end(),
                             [](const Named& a, const Named& b) { return a.first < b.first; }));

}  // namespace

std::uint32_t rolesOf(std::string_view keyword) {
  const auto* const named =
      std::lower_bound(kNamed.begin(), kNamed.end(), keyword,
                       [](const Named& a, std::string_view b) { return a.first < b; });
  if (named != kNamed.end() && named->first == keyword) {
    return named->second;
  }
  std::uint32_t roles = kNoRole;
  const auto holds = [keyword](std::string_view part) {
    return keyword.find(part) != std::string_view::npos;
  };
  if (holds("TESSELLATED") || holds("TRIANGULATED")) {
    roles |= kTessellated;
  }
  if (keyword.ends_with("SHAPE_REPRESENTATION")) {
    roles |= kRepresentation | (keyword == "SHAPE_REPRESENTATION" ? kShapeRepresentation : kNoRole);
  }
  if (keyword.ends_with("ANNOTATION_OCCURRENCE")) {
    roles |= kAnnotation;
  }
  if (holds("REPRESENTATION_RELATIONSHIP")) {
    roles |= kAnyRelationship;
  }
  return roles;
}

std::uint16_t EntityTypes::idOf(std::string_view keywords, bool isComplex) {
  // A complex type is told from a simple one by its first character, which is in no keyword.
  const std::string complexKey = isComplex ? '(' + std::string(keywords) : std::string();
  const std::string_view key = isComplex ? std::string_view(complexKey) : keywords;
  const auto known = ids_.find(key);
  if (known != ids_.end()) {
    return known->second;
  }
  if (types_.size() == kMaxCount) {
    return kMaxCount;
  }
  const auto id = static_cast<std::uint16_t>(types_.size());
  EntityType& type = types_.emplace_back();
  type.isComplex = isComplex;
  std::string_view rest = keywords;
  while (true) {
    const std::string_view keyword = rest.substr(0, rest.find('('));
    type.keywords.emplace_back(keyword);
    type.roles |= rolesOf(keyword);
    if (keyword.size() == rest.size()) {
      break;
    }
    rest.remove_prefix(keyword.size() + 1);
  }
  if (type.has(kTessellated)) {
    // A malformed complex type may have keywords of both kinds. It goes.
    type.roles &= ~kAlwaysKept;
  }
  ids_.emplace(key, id);
  return id;
}

}  // namespace plenvorith
