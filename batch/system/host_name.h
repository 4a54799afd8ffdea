#pragma once

#include <string>

namespace plenvorith {

/// The name of this host; empty if it has none.
std::string hostName();

}  // namespace plenvorith
