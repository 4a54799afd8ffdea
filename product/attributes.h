#pragma once

#include "exchange/instance_table.h"

// The attributes that say what stands where, by their names in ISO 10303-41, -43 and -44.
namespace plenvorith::attributes {

inline constexpr Attribute kItems = {"REPRESENTATION", 1, 1};
inline constexpr Attribute kContextOfItems = {"REPRESENTATION", 2, 2};
inline constexpr Attribute kRep1 = {"REPRESENTATION_RELATIONSHIP", 2, 2};
inline constexpr Attribute kRep2 = {"REPRESENTATION_RELATIONSHIP", 3, 3};
inline constexpr Attribute kTransformationOperator = {
    "REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION", 0, 4};
inline constexpr Attribute kTransformItem1 = {"ITEM_DEFINED_TRANSFORMATION", 2, 2};
inline constexpr Attribute kTransformItem2 = {"ITEM_DEFINED_TRANSFORMATION", 3, 3};
inline constexpr Attribute kMappingSource = {"MAPPED_ITEM", 0, 1};
inline constexpr Attribute kMappingTarget = {"MAPPED_ITEM", 1, 2};
inline constexpr Attribute kMappingOrigin = {"REPRESENTATION_MAP", 0, 0};
inline constexpr Attribute kMappedRepresentation = {"REPRESENTATION_MAP", 1, 1};
inline constexpr Attribute kDefinition = {"PROPERTY_DEFINITION", 2, 2};
inline constexpr Attribute kDefinitionShown = {"PROPERTY_DEFINITION_REPRESENTATION", 0, 0};
inline constexpr Attribute kUsedRepresentation = {"PROPERTY_DEFINITION_REPRESENTATION", 1, 1};
inline constexpr Attribute kRelatingProduct = {"PRODUCT_DEFINITION_RELATIONSHIP", 3, 3};
inline constexpr Attribute kRelatedProduct = {"PRODUCT_DEFINITION_RELATIONSHIP", 4, 4};
inline constexpr Attribute kRepresentationRelation = {"CONTEXT_DEPENDENT_SHAPE_REPRESENTATION", 0,
                                                      0};
inline constexpr Attribute kRepresentedProductRelation = {"CONTEXT_DEPENDENT_SHAPE_REPRESENTATION",
                                                          1, 1};

}  // namespace plenvorith::attributes
