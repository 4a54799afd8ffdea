#pragma once

#include <string>
#include <vector>

namespace plenvorith::test {

/// An item that a representation may hold.
struct ExactItem {
  const char* name;       ///< what is special about it
  const char* instances;  ///< `#100` is the item; others have numbers of #101 to #109
};

/// Solids, models, faces and sets of surfaces of which the kernel makes faces.
const std::vector<ExactItem>& deliveredItems();

/// Items of which it makes no face: those of solids that are described by how they are made, and
/// those that stand where no reader looks for them.
const std::vector<ExactItem>& undeliveredItems();

/// Items of types that it makes faces of, but not of what these hold.
const std::vector<ExactItem>& malformedItems();

/// Types of representations whose items the kernel takes; all others are none of its types.
const std::vector<std::string>& deliveredRepresentations();
const std::vector<std::string>& undeliveredRepresentations();

/// What an item may refer to, and a product whose shape is #9: all but the data of #9 itself.
/// Numbers are below 200.
std::string exactItemContext();

/// A STEP file whose data are these instances.
std::string stepFileOf(const std::string& instances);

/// A STEP file of one product, whose shape is a representation of this type that holds the item;
/// further instances have numbers from 200 on.
std::string exactItemFile(const std::string& representationType, const ExactItem& item,
                          const std::string& further = {});

}  // namespace plenvorith::test
