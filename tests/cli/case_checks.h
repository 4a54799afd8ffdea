#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "tests/cli/case_file.h"
#include "tests/support/sandbox.h"

namespace plenvorith::test {

// Each gives what is wrong with a file in the directory, or "". They throw std::runtime_error where
// the check itself is not understood, or the file is not there.

/// Compares the whole content.
std::string differenceFrom(const Sandbox& dir, const std::string& name, const std::string& content);

/// Compares the bytes of an STL file with those of the triangles of an "expect-stl" section: twelve
/// numbers each, the normal first; "_" stands for any number.
std::string differenceFromTriangles(const Sandbox& dir, const Section& section);

/// Checks what a line of a "check" section says, by its words: a file and a measure of it.
std::string checkFile(const Sandbox& dir, const std::vector<std::string>& words,
                      const std::map<std::string, std::filesystem::path>& programs);

}  // namespace plenvorith::test
