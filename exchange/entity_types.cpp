#include "exchange/entity_types.h"

#include <algorithm>
#include <array>

namespace plenvorith {
namespace {

/// Whether an entity stays whatever it names, and whether the kernel makes faces of it where it is an
/// item of a representation that the kernel knows, or of what that representation holds.
enum Promise : std::uint8_t { None = 0, Kept = 1, Delivered = 2, Both = Kept | Delivered };

struct Row {
  std::string_view keyword;
  Kind kind = Kind::Unknown;
  Promise promise = None;
};

/// In the order of byte strings.
constexpr std::array kRows = std::to_array<Row>({
    {"ADVANCED_BREP_SHAPE_REPRESENTATION", Kind::Representation, Delivered},
    {"ADVANCED_FACE", Kind::Face, Both},
    {"AXIS1_PLACEMENT", Kind::Geometry},
    {"AXIS2_PLACEMENT_2D", Kind::Geometry},
    {"AXIS2_PLACEMENT_3D", Kind::Geometry},
    {"BEZIER_CURVE", Kind::Geometry},
    {"BEZIER_SURFACE", Kind::Surface, Delivered},
    {"BLOCK", Kind::Construct, Kept},
    {"BOOLEAN_RESULT", Kind::Construct, Kept},
    {"BOUNDARY_CURVE", Kind::Geometry},
    {"BOUNDED_CURVE", Kind::Geometry},
    {"BOUNDED_SURFACE", Kind::Surface, Delivered},
    {"BOXED_HALF_SPACE", Kind::Construct, Kept},
    {"BREP_WITH_VOIDS", Kind::Solid, Both},
    {"B_SPLINE_CURVE", Kind::Geometry},
    {"B_SPLINE_CURVE_WITH_KNOTS", Kind::Geometry},
    {"B_SPLINE_SURFACE_WITH_KNOTS", Kind::Surface, Delivered},
    {"CARTESIAN_POINT", Kind::Geometry},
    {"CIRCLE", Kind::Geometry},
    {"CLOSED_SHELL", Kind::Shell, Kept},
    {"COLOUR_RGB", Kind::Geometry},
    {"COMPLEX_TRIANGULATED_FACE", Kind::TriangulatedFace},
    {"COMPLEX_TRIANGULATED_SURFACE_SET", Kind::TriangulatedFace},
    {"COMPOSITE_CURVE", Kind::Geometry},
    {"COMPOSITE_CURVE_SEGMENT", Kind::Geometry},
    {"COMPOUND_SHAPE_REPRESENTATION", Kind::Representation, Delivered},
    {"CONICAL_SURFACE", Kind::Surface},
    {"CONNECTED_FACE_SET", Kind::Shell, Kept},
    {"CONNECTED_FACE_SUB_SET", Kind::Shell, Kept},
    {"CONTEXT_DEPENDENT_SHAPE_REPRESENTATION", Kind::ContextDependent},
    {"CONVEX_HEXAHEDRON", Kind::Construct, Kept},
    {"COORDINATES_LIST", Kind::CoordinatesList},
    {"CSG_SHAPE_REPRESENTATION", Kind::Representation, Delivered},
    {"CSG_SOLID", Kind::Construct, Kept},
    {"CUBIC_BEZIER_TESSELLATED_EDGE", Kind::OtherTessellation},
    {"CUBIC_BEZIER_TRIANGULATED_FACE", Kind::CurvedFace},
    {"CURVE_BOUNDED_SURFACE", Kind::Surface, Delivered},
    {"CURVE_STYLE", Kind::Geometry},
    {"CYCLIDE_SEGMENT_SOLID", Kind::Construct, Kept},
    {"CYLINDRICAL_SURFACE", Kind::Surface},
    {"DEGENERATE_TOROIDAL_SURFACE", Kind::Surface},
    {"DIRECTION", Kind::Geometry},
    {"DRAUGHTING_MODEL", Kind::DraughtingModel},
    {"ECCENTRIC_CONE", Kind::Construct, Kept},
    {"EDGE_BASED_WIREFRAME_MODEL", Kind::Geometry, Kept},
    {"EDGE_BASED_WIREFRAME_SHAPE_REPRESENTATION", Kind::Representation, Delivered},
    {"EDGE_CURVE", Kind::Geometry},
    {"EDGE_LOOP", Kind::Geometry},
    {"ELLIPSE", Kind::Geometry},
    {"ELLIPSOID", Kind::Construct, Kept},
    {"EXTRUDED_AREA_SOLID", Kind::Construct, Kept},
    {"EXTRUDED_FACE_SOLID", Kind::Construct, Kept},
    {"FACE", Kind::Face, Kept},
    {"FACETED_BREP", Kind::Solid, Both},
    {"FACETED_BREP_SHAPE_REPRESENTATION", Kind::Representation, Delivered},
    {"FACETED_PRIMITIVE", Kind::Construct, Kept},
    {"FACE_BASED_SURFACE_MODEL", Kind::Solid, Both},
    {"FACE_BOUND", Kind::Geometry},
    {"FACE_OUTER_BOUND", Kind::Geometry},
    {"FACE_SURFACE", Kind::Face, Both},
    {"FILL_AREA_STYLE", Kind::Geometry},
    {"FILL_AREA_STYLE_COLOUR", Kind::Geometry},
    {"GEOMETRICALLY_BOUNDED_SURFACE_SHAPE_REPRESENTATION", Kind::Representation, Delivered},
    {"GEOMETRICALLY_BOUNDED_WIREFRAME_SHAPE_REPRESENTATION", Kind::Representation, Delivered},
    {"GEOMETRIC_CURVE_SET", Kind::Geometry, Kept},
    {"GEOMETRIC_SET", Kind::SurfaceSet, Kept},
    {"HALF_SPACE_SOLID", Kind::Construct, Kept},
    {"HYPERBOLA", Kind::Geometry},
    {"ITEM_DEFINED_TRANSFORMATION", Kind::ItemTransformation, Kept},
    {"LINE", Kind::Geometry},
    {"MANIFOLD_SOLID_BREP", Kind::Solid, Both},
    {"MANIFOLD_SURFACE_SHAPE_REPRESENTATION", Kind::Representation, Delivered},
    {"MAPPED_ITEM", Kind::MappedItem},
    {"MECHANICAL_DESIGN_AND_DRAUGHTING_RELATIONSHIP", Kind::OtherRelationship},
    {"NEXT_ASSEMBLY_USAGE_OCCURRENCE", Kind::Usage, Kept},
    {"NON_MANIFOLD_SURFACE_SHAPE_REPRESENTATION", Kind::Representation, Delivered},
    {"OFFSET_SURFACE", Kind::Surface},
    {"OPEN_SHELL", Kind::Shell, Kept},
    {"ORIENTED_CLOSED_SHELL", Kind::Shell, Kept},
    {"ORIENTED_EDGE", Kind::Geometry},
    {"ORIENTED_FACE", Kind::Face, Kept},
    {"ORIENTED_OPEN_SHELL", Kind::Shell, Kept},
    {"ORIENTED_SURFACE", Kind::Surface},
    {"OUTER_BOUNDARY_CURVE", Kind::Geometry},
    {"PARABOLA", Kind::Geometry},
    {"PCURVE", Kind::Geometry},
    {"PLANE", Kind::Surface},
    {"POLYLINE", Kind::Geometry},
    {"POLY_LOOP", Kind::Geometry},
    {"PRESENTATION_STYLE_ASSIGNMENT", Kind::Geometry},
    {"PRODUCT_DEFINITION_SHAPE", Kind::ProductShape, Kept},
    {"PROPERTY_DEFINITION_REPRESENTATION", Kind::PropertyDefinition},
    {"QUASI_UNIFORM_CURVE", Kind::Geometry},
    {"QUASI_UNIFORM_SURFACE", Kind::Surface, Delivered},
    {"RECTANGULAR_COMPOSITE_SURFACE", Kind::Surface, Delivered},
    {"RECTANGULAR_PYRAMID", Kind::Construct, Kept},
    {"RECTANGULAR_TRIMMED_SURFACE", Kind::Surface, Delivered},
    {"REPOSITIONED_TESSELLATED_ITEM", Kind::RepositionedItem},
    {"REPRESENTATION", Kind::Representation},
    {"REPRESENTATION_MAP", Kind::RepresentationMap},
    {"REPRESENTATION_RELATIONSHIP", Kind::Relationship},
    {"REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION", Kind::Transformation},
    {"REVOLVED_AREA_SOLID", Kind::Construct, Kept},
    {"REVOLVED_FACE_SOLID", Kind::Construct, Kept},
    {"RIGHT_ANGULAR_WEDGE", Kind::Construct, Kept},
    {"RIGHT_CIRCULAR_CONE", Kind::Construct, Kept},
    {"RIGHT_CIRCULAR_CYLINDER", Kind::Construct, Kept},
    {"SEAM_CURVE", Kind::Geometry},
    {"SHAPE_DEFINITION_REPRESENTATION", Kind::ShapeDefinition},
    {"SHAPE_REPRESENTATION", Kind::Representation, Delivered},
    {"SHAPE_REPRESENTATION_RELATIONSHIP", Kind::Relationship},
    {"SHAPE_REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION", Kind::Transformation},
    {"SHELL_BASED_SURFACE_MODEL", Kind::Solid, Both},
    {"SHELL_BASED_WIREFRAME_MODEL", Kind::Geometry, Kept},
    {"SOLID_REPLICA", Kind::Construct, Kept},
    {"SPHERE", Kind::Construct, Kept},
    {"SPHERICAL_SURFACE", Kind::Surface},
    {"SUBFACE", Kind::Face, Kept},
    {"SURFACE_CURVE", Kind::Geometry},
    {"SURFACE_CURVE_SWEPT_AREA_SOLID", Kind::Construct, Kept},
    {"SURFACE_CURVE_SWEPT_FACE_SOLID", Kind::Construct, Kept},
    {"SURFACE_OF_LINEAR_EXTRUSION", Kind::Surface},
    {"SURFACE_OF_REVOLUTION", Kind::Surface},
    {"SURFACE_REPLICA", Kind::Surface},
    {"SURFACE_SIDE_STYLE", Kind::Geometry},
    {"SURFACE_STYLE_FILL_AREA", Kind::Geometry},
    {"SURFACE_STYLE_USAGE", Kind::Geometry},
    {"SWEPT_AREA_SOLID", Kind::Construct, Kept},
    {"SWEPT_DISK_SOLID", Kind::Construct, Kept},
    {"SWEPT_FACE_SOLID", Kind::Construct, Kept},
    {"TESSELLATED_CONNECTING_EDGE", Kind::OtherTessellation},
    {"TESSELLATED_CURVE_SET", Kind::OtherTessellation},
    {"TESSELLATED_EDGE", Kind::OtherTessellation},
    {"TESSELLATED_FACE", Kind::OtherTessellation},
    {"TESSELLATED_GEOMETRIC_SET", Kind::TessellatedSet},
    {"TESSELLATED_ITEM", Kind::OtherTessellation},
    {"TESSELLATED_POINT_SET", Kind::OtherTessellation},
    {"TESSELLATED_SHAPE_REPRESENTATION", Kind::TessellatedShape},
    {"TESSELLATED_SHAPE_REPRESENTATION_WITH_ACCURACY_PARAMETERS", Kind::TessellatedShape},
    {"TESSELLATED_SHELL", Kind::TessellatedBody},
    {"TESSELLATED_SOLID", Kind::TessellatedBody},
    {"TESSELLATED_STRUCTURED_ITEM", Kind::OtherTessellation},
    {"TESSELLATED_SURFACE_SET", Kind::OtherTessellation},
    {"TESSELLATED_VERTEX", Kind::OtherTessellation},
    {"TESSELLATED_WIRE", Kind::OtherTessellation},
    {"TETRAHEDRON", Kind::Construct, Kept},
    {"TOROIDAL_SURFACE", Kind::Surface},
    {"TORUS", Kind::Construct, Kept},
    {"TRANSITIONAL_SHAPE_REPRESENTATION", Kind::Representation, Delivered},
    {"TRIANGULATED_FACE", Kind::TriangulatedFace},
    {"TRIANGULATED_SURFACE_SET", Kind::TriangulatedFace},
    {"TRIMMED_CURVE", Kind::Geometry},
    {"TRIMMED_VOLUME", Kind::Construct, Kept},
    {"UNIFORM_CURVE", Kind::Geometry},
    {"UNIFORM_SURFACE", Kind::Surface, Delivered},
    {"VECTOR", Kind::Geometry},
    {"VERTEX_LOOP", Kind::Geometry},
    {"VERTEX_POINT", Kind::Geometry},
});
static_assert(std::is_sorted(kRows.begin(), kRows.end(),
                             [](const Row& a, const Row& b) { return a.keyword < b.keyword; }));

/// The row of a keyword, or one for it by its parts.
Row rowOf(std::string_view keyword) {
  const auto* const row =
      std::lower_bound(kRows.begin(), kRows.end(), keyword,
                       [](const Row& a, std::string_view b) { return a.keyword < b; });
  if (row != kRows.end() && row->keyword == keyword) {
    return *row;
  }
  const auto holds = [keyword](std::string_view part) {
    return keyword.find(part) != std::string_view::npos;
  };
  Kind kind = Kind::Unknown;
  if (keyword.ends_with("ANNOTATION_OCCURRENCE")) {
    kind = Kind::Annotation;
  } else if (holds("REPRESENTATION_RELATIONSHIP")) {
    kind = Kind::OtherRelationship;
  } else if (keyword.ends_with("SHAPE_REPRESENTATION")) {
    kind = Kind::Representation;
  } else if (holds("TESSELLATED") || holds("TRIANGULATED")) {
    kind =
        keyword.ends_with("REPRESENTATION") ? Kind::OtherTessellation : Kind::UnknownTessellation;
  }
  // Product structure, and the contexts and units of representations.
  const bool isKept = keyword == "PRODUCT" || keyword.starts_with("PRODUCT_") ||
                      keyword == "APPLICATION_CONTEXT" || keyword.ends_with("_CONTEXT") ||
                      keyword.ends_with("_UNIT");
  return {keyword, kind, isKept ? Kept : None};
}

/// Adds what a keyword says to what the others of its type say.
void addKeyword(EntityType& type, std::string_view keyword) {
  const Row row = rowOf(keyword);
  type.keywords.emplace_back(keyword);
  type.kinds |= std::uint64_t{1} << static_cast<unsigned>(row.kind);
  type.isTessellated = type.isTessellated || row.kind == Kind::CoordinatesList ||
                       keyword.find("TESSELLATED") != std::string_view::npos ||
                       keyword.find("TRIANGULATED") != std::string_view::npos;
  type.isKept = type.isKept || (row.promise & Kept) != 0;
  type.isDelivered = type.isDelivered || (row.promise & Delivered) != 0;
  type.namesGeometryOnly =
      row.kind == Kind::Geometry || row.kind == Kind::Surface || row.kind == Kind::Face;
}

}  // namespace

Kind kindOf(std::string_view keyword) {
  return rowOf(keyword).kind;
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
  for (std::string_view rest = keywords;; rest.remove_prefix(type.keywords.back().size() + 1)) {
    addKeyword(type, rest.substr(0, rest.find('(')));
    if (type.keywords.back().size() == rest.size()) {
      break;
    }
  }
  if (isComplex && !type.is(Kind::Surface)) {
    // The kernel knows only this one, besides surfaces.
    const auto holds = [&type](std::string_view keyword) {
      return std::find(type.keywords.begin(), type.keywords.end(), keyword) != type.keywords.end();
    };
    type.isDelivered = holds("BREP_WITH_VOIDS") && holds("FACETED_BREP");
  }
  if (type.isTessellated) {
    // A malformed complex type may have keywords of both kinds. It goes.
    type.isKept = false;
    type.isDelivered = false;
  }
  type.namesGeometryOnly = type.namesGeometryOnly && !isComplex;
  ids_.emplace(key, id);
  return id;
}

}  // namespace plenvorith
