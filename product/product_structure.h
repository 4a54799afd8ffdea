#pragma once

#include <cstdint>
#include <map>
#include <utility>
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
  bool isExact = false;    ///< the kernel makes faces of an item, also of a mapped one, once it
                           ///< comes to the representation
  bool isReached = false;  ///< the kernel comes to it from a product
  bool holdsConstruct = false;  ///< or a solid of a kind that the kernel may come to know
  bool isOfProperty = false;    ///< a feature's or a property's
  bool isOfProduct = false;     ///< it or one of its group is the shape of a product, or such a one
                                ///< maps it
  bool isNamedByProduct = false;  ///< as its shape, or as a side of a usage's relationship
};

/// How one product is part of another: NEXT_ASSEMBLY_USAGE_OCCURRENCE of ISO 10303-44.
struct Usage {
  ProductIndex part = 0;
  ProductIndex whole = 0;
  InstanceIndex relationship = kNoInstance;  ///< with the transformation; none if unplaced
  bool isPartSecond = false;                 ///< the part is `rep_2` of the relationship
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

  /// The products of a representation, in order; none for `kNoRepresentation`.
  [[nodiscard]] const std::vector<ProductIndex>& productsOf(RepresentationIndex index) const;
  [[nodiscard]] RepresentationIndex find(InstanceIndex instance) const;

  std::vector<std::pair<InstanceIndex, RepresentationIndex>> byInstance;  ///< in order
};

[[nodiscard]] ProductStructure readProductStructure(const InstanceTable& table);

}  // namespace plenvorith
