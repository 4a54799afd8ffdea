#pragma once

#include <string>
#include <string_view>

namespace plenvorith::test {

/// What a reader of statements hands out, a line each: "#12=TYPE(...)" for an instance, "FILE_NAME(
/// ...)" for a header entity; at last what is wrong with the file, if anything is.
///
/// Slow and obvious: the whole text is first cut into tokens, and then put together.
std::string referenceStatements(std::string_view content);

/// Whether a line begins as no line of a string does: with an instance or with "ENDSEC;".
bool beginsStatement(std::string_view line);

/// The same of the product's reader.
std::string readStatements(const std::string& path);

}  // namespace plenvorith::test
