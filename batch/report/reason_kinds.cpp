#include "batch/report/reason_kinds.h"

#include <algorithm>
#include <cstddef>

#include "common/ascii.h"

namespace plenvorith {
namespace {

/// The place of " 12" or " of 12", whichever comes first; the size of the text if there is none.
std::size_t placeOfNumber(std::string_view text) {
  constexpr std::string_view kOf = " of";
  for (std::size_t i = 0; i + 1 < text.size(); ++i) {
    if (text[i] == ' ' && isDigit(text[i + 1])) {
      return text.substr(0, i).ends_with(kOf) ? i - kOf.size() : i;
    }
  }
  return text.size();
}

}  // namespace

std::string_view beginningOf(std::string_view reason) {
  std::size_t end = placeOfNumber(reason);
  for (const char* const mark : {": ", "; ", " ("}) {
    end = std::min(end, reason.find(mark));
  }
  return reason.substr(0, end);
}

std::vector<ReasonKind> kindsOf(const ReasonCounts& counts) {
  std::map<std::string_view, ReasonKind> kinds;
  for (const auto& [reason, count] : counts) {
    ReasonKind& kind = kinds[beginningOf(reason)];
    kind.count += count;
    kind.reasons.emplace_back(reason, count);
  }
  std::vector<ReasonKind> sorted;
  for (auto& [beginning, kind] : kinds) {
    std::ranges::stable_sort(kind.reasons, std::ranges::greater(),
                             [](const auto& reason) { return reason.second; });
    kind.beginning = beginning;
    kind.title = kind.reasons.size() == 1 ? kind.reasons.front().first : kind.beginning;
    sorted.push_back(std::move(kind));
  }
  std::ranges::stable_sort(sorted, std::ranges::greater(), &ReasonKind::count);
  return sorted;
}

}  // namespace plenvorith
