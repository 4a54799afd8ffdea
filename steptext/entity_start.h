#pragma once

#include <cstddef>
#include <string_view>

namespace plenvorith {

/// Measures the instance name of the entity that a line of a STEP file starts.
///
/// A line starts an entity only if its very first characters are "#", one or more decimal digits
/// and "=", with nothing between them: what the expression "^#\d+=" finds.
///
/// Gives   the length of the name ("#" and digits), so that line[length] is the "="; 0 if the line
///         starts no entity.
std::size_t entityNameLength(std::string_view line);

}  // namespace plenvorith
