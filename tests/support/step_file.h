#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace plenvorith::test {

/// A STEP file with these lines in its DATA section.
inline std::string stepFile(std::string_view data) {
  return "ISO-10303-21;\nHEADER;\nFILE_SCHEMA(('AP242'));\nENDSEC;\nDATA;\n" + std::string(data) +
         "ENDSEC;\nEND-ISO-10303-21;\n";
}

/// The lines of the DATA section of a file.
inline std::string dataOf(const std::string& file) {
  const std::string start = "\nDATA;\n";
  const std::size_t begin = file.find(start);
  const std::size_t end = file.rfind("ENDSEC;\n");
  return begin == std::string::npos || end == std::string::npos
             ? std::string()
             : file.substr(begin + start.size(), end - begin - start.size());
}

}  // namespace plenvorith::test
