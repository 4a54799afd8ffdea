#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace plenvorith {

/// How often each reason was given.
using ReasonCounts = std::map<std::string, std::int64_t>;

/// Reasons with the same beginning: what stands behind it differs from file to file, as a limit, a
/// signal, a name or an advice do.
struct ReasonKind {
  std::string beginning;
  std::string title;  ///< the whole reason where all files of the kind have the same
  std::int64_t count = 0;
  std::vector<std::pair<std::string, std::int64_t>> reasons;  ///< the most frequent first
};

/// The beginning that tells the kind of a reason.
std::string_view beginningOf(std::string_view reason);

/// The kinds, the most frequent first.
std::vector<ReasonKind> kindsOf(const ReasonCounts& counts);

}  // namespace plenvorith
