#pragma once

#include <filesystem>
#include <string>

#include "tests/support/temp_dir.h"

namespace plenvorith::test {

/// Copies of the samples, each made when it is first asked for, in a directory that goes at the end
/// of the scope: what is tested may do to them what it likes.
class SampleCopies {
 public:
  std::string operator/(const std::string& name) const {
    std::string copy = directory_ / name;
    if (!std::filesystem::exists(copy)) {
      std::filesystem::copy_file(std::filesystem::path(PLENVORITH_SAMPLES) / name, copy);
    }
    return copy;
  }

 private:
  TempDir directory_;
};

}  // namespace plenvorith::test
