#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "tests/cli/case_file.h"

namespace plenvorith::test {

/// Where cases find what they name.
struct CaseSetting {
  std::filesystem::path root;                             // of the project
  std::map<std::string, std::filesystem::path> programs;  // by name; "" for one that is not built
};

/// The folder of the texts that cases share.
std::filesystem::path commonTexts(const CaseSetting& setting);

/// The first program that a case runs and that is not built; "" if all are there.
std::string missingProgram(const Case& testCase, const CaseSetting& setting);

/// Runs the programs of a case in a fresh directory and checks all that can be seen of them: both
/// streams, how they end, and that they made, changed and removed the files named and no others.
///
/// Gives   what is wrong, a text for people each; nothing if the case holds. A case that cannot be
///         run as it is written is wrong, too.
std::vector<std::string> failuresOf(const Case& testCase, const CaseSetting& setting);

}  // namespace plenvorith::test
