#pragma once

#include <functional>
#include <set>
#include <string>

namespace plenvorith {

/// Entity instance names of a STEP file ("#123"), each once, "#" and digits exactly as written.
///
/// A name is text and never a number: the order is that of byte strings, in which "#10" comes
/// before "#9". This order decides the order of the decoded triangles in the output.
using InstanceNames = std::set<std::string, std::less<>>;

}  // namespace plenvorith
