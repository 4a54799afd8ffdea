#pragma once

#include <optional>
#include <string>
#include <vector>

namespace plenvorith {

/// What a command line asks for.
struct CheckOptions {
  std::string input;  ///< a STEP file; empty if a mesh stands for itself
  std::string mesh;   ///< an STL file; empty if there is none, as for "-"
  double deflection = 0.1;
  bool all = false;
  bool withExact = false;
  bool asText = false;
};

/// Reads the arguments behind the program's name; nothing if they are wrong.
std::optional<CheckOptions> checkOptionsFrom(const std::vector<std::string>& arguments);

}  // namespace plenvorith
