#pragma once

#include <cstdint>
#include <map>
#include <string_view>
#include <vector>

#include "exchange/instance_table.h"

namespace plenvorith {

/// A place in `ProductStructure::representations`.
using RepresentationIndex = std::uint32_t;
constexpr RepresentationIndex kNoRepresentation = 0xFFFFFFFF;

/// A place in `ProductStructure::products`.
using ProductIndex = std::uint32_t;

/// An instance of a representation of ISO 10303-43: (name, items, context_of_items).
struct Representation {
  InstanceIndex instance = kNoInstance;
  InstanceIndex context = kNoInstance;  ///< none if the file names none
  RepresentationIndex group = 0;        ///< the first of those that are equal in place
  bool isExact = false;                 ///< holds a solid, shell model or face, also by mapping
  bool isOfProperty = false;            ///< a feature's or a property's
  bool isOfProduct = false;             ///< it or one of its group is the shape of a product, or
                                        ///< such a one maps it
};

/// How one product is part of another: NEXT_ASSEMBLY_USAGE_OCCURRENCE of ISO 10303-44.
struct Usage {
  ProductIndex part = 0;
  ProductIndex whole = 0;
  InstanceIndex relationship = kNoInstance;  ///< with the transformation; none if unplaced
  bool isPartSecond = false;                 ///< the part is the relationship's second side
};

/// A MAPPED_ITEM: the mapped representation stands once more in the one that holds the item.
struct Mapping {
  InstanceIndex item = kNoInstance;
  InstanceIndex map = kNoInstance;
  RepresentationIndex mapped = 0;
  RepresentationIndex holder = 0;
};

/// A relationship with a transformation that belongs to no usage: `part` stands in `whole`.
struct Transformation {
  InstanceIndex relationship = kNoInstance;
  RepresentationIndex part = 0;
  RepresentationIndex whole = 0;
  bool isPartSecond = false;
};

/// Products, their shapes and how they are put together, from ISO 10303-41, -43 and -44. Instances
/// are in the order of their numbers, so that the order of the file never matters.
struct ProductStructure {
  std::vector<Representation> representations;
  std::vector<InstanceIndex> products;       ///< their PRODUCT_DEFINITIONs
  std::vector<InstanceIndex> productShapes;  ///< PRODUCT_DEFINITION_SHAPEs of products
  std::map<RepresentationIndex, std::vector<ProductIndex>> productsOfGroup;
  std::vector<Usage> usages;
  std::vector<Mapping> mappings;
  std::vector<Transformation> transformations;

  [[nodiscard]] const std::vector<ProductIndex>& productsOf(RepresentationIndex index) const;
  [[nodiscard]] RepresentationIndex find(InstanceIndex instance) const;

  std::map<InstanceIndex, RepresentationIndex> byInstance;
};

/// Whether a reference stands in the record with this keyword, or in that of a simple instance.
/// What a malformed one has behind its record belongs to nothing.
[[nodiscard]] inline bool isInRecord(const EntityType& type, const Reference& reference,
                                     std::string_view keyword) {
  return type.isComplex
             ? reference.record < type.keywords.size() && type.keywords[reference.record] == keyword
             : reference.record == 0;
}

/// Calls `visit` with the number of each item of a representation.
template <typename Visit>
void forEachItem(const InstanceTable& table, InstanceIndex representation, Visit visit) {
  const EntityType& type = table.type(representation);
  table.forEachReference(representation, [&](const Reference& reference) {
    if (reference.kind == Reference::Kind::ListItem && reference.attribute == 1 &&
        isInRecord(type, reference, "REPRESENTATION")) {
      visit(reference.number);
    }
  });
}

/// The instances that attributes name which are references themselves, in the order of the text;
/// of a complex instance those of one record. `kNoInstance` for those that name none.
[[nodiscard]] std::vector<InstanceIndex> attributesOf(const InstanceTable& table,
                                                      InstanceIndex index,
                                                      std::string_view record = {});

[[nodiscard]] ProductStructure readProductStructure(const InstanceTable& table);

/// The items that an exact representation carries, however deep: solids, shells and faces.
[[nodiscard]] std::vector<bool> findCarried(const InstanceTable& table,
                                            const ProductStructure& structure);

}  // namespace plenvorith
