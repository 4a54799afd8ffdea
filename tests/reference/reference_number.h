#pragma once

#include <cstddef>
#include <string_view>

#include "common/number.h"

namespace plenvorith::test {

/// What reading one number gave.
struct ReferenceNumber {
  std::size_t length = 0;  ///< of the token
  NumberError error = NumberError::None;
  double value = 0.0;
};

/// The number that a text begins with: its token found character by character, its value what
/// strtod makes of it in the "C" locale, with the checks of std::stod.
ReferenceNumber referenceNumber(std::string_view text);

}  // namespace plenvorith::test
