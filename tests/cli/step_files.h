#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace plenvorith::test {

/// A STEP file with these entities, each line ended by "\n", and an empty header.
std::string stepFile(std::string_view entities);

/// The file with more entities at the end of its last DATA section.
std::string appendEntities(const std::string& file, std::string_view entities);

/// Puts a STEP file together.
///
/// Takes   a folder; names of files in it, of which the first may be a whole one (`NAME.step`) and
///         all others hold entities (`NAME.entities`); and more entities. Without a whole file, the
///         entities get an empty header.
/// Errors  throws std::runtime_error if there is no file of such a name.
std::string composeStepFile(const std::filesystem::path& folder,
                            const std::vector<std::string>& names, std::string_view entities);

}  // namespace plenvorith::test
