#include "check/options.h"

#include <charconv>
#include <cmath>
#include <string_view>

namespace plenvorith {
namespace {

/// Whether a file is named like a mesh: in upper or lower case.
bool isNamedStl(const std::string& path) {
  constexpr std::string_view kExtension = ".stl";
  if (path.size() < kExtension.size()) {
    return false;
  }
  for (std::size_t i = 0; i < kExtension.size(); ++i) {
    const char c = path[path.size() - kExtension.size() + i];
    if ((c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c) != kExtension[i]) {
      return false;
    }
  }
  return true;
}

/// A length above 0.
std::optional<double> lengthFrom(const std::string& text) {
  double length = 0.0;
  const auto end = std::from_chars(text.data(), text.data() + text.size(), length);
  if (end.ec != std::errc() || end.ptr != text.data() + text.size() || !(length > 0.0)) {
    return std::nullopt;
  }
  return length;
}

}  // namespace

std::optional<CheckOptions> checkOptionsFrom(const std::vector<std::string>& arguments) {
  CheckOptions options;
  std::vector<std::string> operands;
  bool hasEnded = false;
  for (const std::string& argument : arguments) {
    if (hasEnded || !argument.starts_with("-") || argument == "-") {
      operands.push_back(argument);
    } else if (argument == "--") {
      hasEnded = true;
    } else if (argument == "--all") {
      options.all = true;
    } else if (argument == "--exact") {
      options.withExact = true;
    } else if (argument == "--text") {
      options.asText = true;
    } else {
      return std::nullopt;
    }
  }
  if (operands.empty() || operands.size() > 3 || operands.front().empty()) {
    return std::nullopt;
  }
  if (isNamedStl(operands[0])) {
    options.mesh = operands[0];
    // There are no parts in it.
    return operands.size() == 1 && !options.all && !options.withExact ? std::optional(options)
                                                                      : std::nullopt;
  }
  options.input = operands[0];
  if (operands.size() > 1 && operands[1].empty()) {
    return std::nullopt;
  }
  if (operands.size() > 1 && operands[1] != "-") {
    options.mesh = operands[1];
  }
  if (operands.size() == 3) {
    const std::optional<double> deflection = lengthFrom(operands[2]);
    if (!deflection) {
      return std::nullopt;
    }
    options.deflection = *deflection;
  }
  return options;
}

}  // namespace plenvorith
