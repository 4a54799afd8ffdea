#pragma once

#include <cstddef>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace plenvorith::test {

using Texts = std::vector<std::string>;

struct Product {
  std::string definition;
  std::string shape;  ///< its product_definition_shape
  std::string representation;
  std::string context;
  Texts exact{};  ///< a solid, its shell and its face, where it has any
};

/// One file while it is made.
struct File {
  std::mt19937& random;
  std::vector<std::pair<std::string, std::string>> instances{};
  std::size_t last = 0;
  Texts contexts{};
  Texts lists{};  ///< coordinates lists of eight points each
  Texts bodies{};
  std::vector<Product> products{};
  bool hasNoise = false;
};

// The pieces of generated files. Each adds what it needs and gives the name of its instance.

bool oneIn(File& file, std::size_t count);
std::string oneOf(File& file, const Texts& texts);

/// "(first,second,...)", and the same behind a type.
std::string list(const Texts& items);
std::string call(const std::string& type, const Texts& parameters);

std::string add(File& file, const std::string& content);
std::string add(File& file, const std::string& type, const Texts& parameters);

/// A string in its quotes.
std::string name(File& file);

/// A representation context with any length unit, or none.
std::string context(File& file);

std::string axisPlacement(File& file);
std::string transformationOperator(File& file);

/// A triangulated face or surface set, simple or complex in both senses of the word.
std::string face(File& file, bool isFace, const std::string& link);
std::string geometricSet(File& file, bool mayNest);

/// Any body, which may be linked to what is exact; where nothing is, it may be one that is there.
std::string body(File& file, const Texts& exact);

}  // namespace plenvorith::test
