#pragma once

#include <cstddef>
#include <string>

#include "steptext/entity_table.h"

namespace plenvorith::test {

/// `entityNameLength` by regular expression, for lines under 16 kB.
std::size_t referenceEntityNameLength(const std::string& line);

/// `readEntityTable` for the content of a file, by regular expression, for lines under 16 kB.
EntityTable referenceEntityTable(const std::string& content);

}  // namespace plenvorith::test
