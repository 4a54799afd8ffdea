#pragma once

#include <string>

#include <gtest/gtest.h>

#include "brep/brep_parts.h"
#include "tests/support/kernel_shapes.h"
#include "tests/support/sample_copies.h"

namespace plenvorith::test {

inline BrepModel modelOf(const std::string& path, bool withExact = false) {
  silenceKernel();
  BrepModel model;
  EXPECT_TRUE(readBrepParts(path, 0.1, withExact, model));
  return model;
}

/// The path of a copy of a sample.
inline std::string sample(const std::string& name) {
  static const SampleCopies samples{};
  return samples / name;
}

/// Replaces every occurrence.
inline std::string replaced(std::string text, const std::string& from, const std::string& to) {
  for (std::size_t at = text.find(from); at != std::string::npos;
       at = text.find(from, at + to.size())) {
    text.replace(at, from.size(), to);
  }
  return text;
}

}  // namespace plenvorith::test
