#pragma once

#include <string>

namespace plenvorith::test {

/// What `stripTessellation` makes of the content of a file.
struct ReferenceStrip {
  bool makesCopy = false;
  int removedLines = 0;
  std::string copy;  ///< empty where none is made
};

/// Finds it by regular expression, for lines under 16 kB.
ReferenceStrip referenceStrip(const std::string& content);

}  // namespace plenvorith::test
