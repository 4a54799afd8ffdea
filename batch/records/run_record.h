#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace plenvorith {

/// One run of the program.
struct RunRecord {
  std::int64_t id = 0;
  std::string start;  ///< as in 2026-03-31T12:00:00Z
  std::string end;    ///< empty while it goes on, and for ever if it was killed
  double seconds = 0.0;
  std::string result;  ///< "finished" or "interrupted"; empty like `end`
  std::vector<std::string> arguments;
  std::string program;
  std::string host;
  std::string base;     ///< the folder that the names of the files begin in
  std::string leftOut;  ///< what was not looked at, in printable lines

  bool operator==(const RunRecord&) const = default;
};

}  // namespace plenvorith
