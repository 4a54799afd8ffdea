#pragma once

#include <cstddef>
#include <string>

#include "tests/support/entity_texts.h"

namespace plenvorith::test {

/// `entityNameLength` by regular expression, for lines under 16 kB.
std::size_t referenceEntityNameLength(const std::string& line);

/// `readEntityTexts` for the content of a file, by regular expression, for lines under 16 kB.
EntityTexts referenceEntityTable(const std::string& content);

}  // namespace plenvorith::test
