#pragma once

#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace plenvorith::test {

/// One parameter of an instance, as ISO 10303-21 writes it.
struct Parameter {
  enum class Kind { Reference, String, Text, Omitted, Derived, List, Typed };
  Kind kind = Kind::Omitted;
  std::string text;  ///< "#7" without leading zeros, a string's content, a number, a type
  std::vector<Parameter> items;  ///< of a list, or what is in the brackets behind a type
};
using Parameters = std::vector<Parameter>;

/// One instance: its parameters by type, one type only where it is no complex instance.
struct ExchangeInstance {
  bool isComplex = false;
  std::map<std::string, Parameters> records;
};
using ExchangeInstances = std::map<std::string, ExchangeInstance>;

/// Reads all instances of an exchange structure, character by character. Scopes are flattened. Of
/// several instances of the same name the first counts that is not tessellated, or else the last.
/// Throws std::runtime_error where the text is malformed.
ExchangeInstances parseInstances(std::string_view text);

/// Whether any of its types is one of tessellation.
bool isTessellated(const ExchangeInstance& instance);

/// The type of a simple instance; nothing for a complex one.
std::string simpleType(const ExchangeInstance& instance);

/// The parameters of one type, or nullptr where the instance is not of that type.
const Parameters* recordOf(const ExchangeInstance& instance, const std::string& type);

/// The instances that a parameter refers to, in any depth.
void collectReferences(const Parameter& parameter, std::vector<std::string>& references);
std::vector<std::string> referencesOf(const ExchangeInstance& instance);

}  // namespace plenvorith::test
