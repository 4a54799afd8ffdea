#pragma once

#include <functional>
#include <iosfwd>
#include <string>

namespace plenvorith {

/// Writes a file under another name first, so that nobody meets half of it, and what stood at the path
/// stays if it cannot be written whole.
///
/// Takes   what writes it; it gives false if it cannot.
/// Gives   whether the file is there.
[[nodiscard]] bool writeAside(const std::string& path,
                              const std::function<bool(std::ostream&)>& write);

}  // namespace plenvorith
