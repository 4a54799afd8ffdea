#pragma once

#include <map>
#include <string>
#include <string_view>

namespace plenvorith::test {

/// What the kernel makes faces of, straight from a list of the types that it knows: by the name of
/// an instance its text in one form, of every delivered item and all that it refers to; by the name
/// of a product's definition or of a usage an empty text. Tessellated types are left out, as they
/// are when the converter reads exact geometry.
///
/// Throws std::runtime_error where the file is malformed.
std::map<std::string, std::string> referenceDelivery(std::string_view step);

}  // namespace plenvorith::test
