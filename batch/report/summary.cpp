#include "batch/report/summary.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <iostream>
#include <span>
#include <utility>

#include "batch/report/reason_kinds.h"
#include "batch/system/text.h"
#include "common/escaped_text.h"

namespace plenvorith {
namespace {

/// As many as a person reads.
constexpr std::int64_t kExamples = 20;

void keep(ToldFiles& files, const FileRecord& record, const std::string& reason,
          const std::string& lastLine) {
  Told& told = files[std::string(beginningOf(reason))];
  if (told.count == 0) {
    told.title = reason;
  } else if (told.title != reason) {
    told.title = beginningOf(reason);
  }
  if (++told.count <= kExamples) {
    told.examples.push_back({record.name, reason, lastLine});
  }
}

std::string exampleText(const std::string& name, const std::string& reason,
                        const std::string& lastLine) {
  const std::string text = reasonWithLine(printable(reason), printable(lastLine));
  return printable(name) + (text.empty() ? "" : ": ") + text;
}

/// Counts the kinds of reasons, the most frequent first, each with a fair part of the examples.
void printTold(const ToldFiles& files) {
  std::vector<Told> kinds;
  for (const auto& [beginning, told] : files) {
    kinds.push_back(told);
  }
  std::ranges::stable_sort(kinds, std::ranges::greater(), &Told::count);
  std::int64_t left = kExamples;
  auto open = static_cast<std::int64_t>(kinds.size());
  for (const Told& kind : kinds) {
    std::cout << "  " << kind.count << ' ' << printable(kind.title) << std::endl;
    const std::int64_t part = std::min(kind.count, (left + open - 1) / open);
    left -= part;
    --open;
    for (const Example& file : std::span(kind.examples).first(static_cast<std::size_t>(part))) {
      const bool isAlike = file.reason == kind.title;
      std::cout << "    " << exampleText(file.name, isAlike ? "" : file.reason, file.lastLine)
                << std::endl;
    }
  }
}

void printCount(const char* what, std::int64_t count) {
  if (count > 0) {
    std::cout << what << count << std::endl;
  }
}

void printBefore(const Summary& summary) {
  printCount("Converted before: ", summary.convertedBefore);
  for (const auto& [difference, count] : summary.otherwiseBefore) {
    const std::size_t lineEnd = difference.find('\n');
    std::cout << "Converted with " << difference.substr(0, lineEnd) << " before: " << count << " ("
              << printable(difference.substr(lineEnd + 1)) << ')' << std::endl;
  }
}

void printProblems(const FoundFiles& found, const ToldFiles& kept) {
  const auto problems = static_cast<std::int64_t>(found.problems.size());
  if (problems == 0 && kept.empty()) {
    return;
  }
  std::cout << "Not looked at: " << problems + countOf(kept) << std::endl;
  for (const std::string& problem :
       std::span(found.problems).first(static_cast<std::size_t>(std::min(problems, kExamples)))) {
    std::cout << "  " << printable(problem) << std::endl;
  }
  if (problems > kExamples) {
    std::cout << "  and " << problems - kExamples << " more" << std::endl;
  }
  printTold(kept);
}

void printSkipped(const FoundFiles& found) {
  for (const auto& [what, skipped] : found.skipped) {
    std::cout << "Skipped: " << skippedText(what, skipped) << std::endl;
  }
}

}  // namespace

std::string skippedText(const std::string& what, const Skipped& skipped) {
  std::string text = std::to_string(skipped.count) + ' ' + what;
  const char* separator = ": ";
  for (const std::string& example : skipped.examples) {
    text += std::exchange(separator, ", ");
    text += printable(example);
  }
  const bool isAll = skipped.count == static_cast<std::int64_t>(skipped.examples.size());
  return isAll ? text : text + ", ...";
}

std::string leftOutText(const FoundFiles& found) {
  std::string text;
  for (const std::string& problem : found.problems) {
    text += printable(problem) + '\n';
  }
  for (const auto& [what, skipped] : found.skipped) {
    text += skippedText(what, skipped) + '\n';
  }
  return text;
}

std::int64_t countOf(const ToldFiles& files) {
  std::int64_t count = 0;
  for (const auto& [beginning, told] : files) {
    count += told.count;
  }
  return count;
}

void addToSummary(Summary& summary, const Settled& settled) {
  const FileRecord& record = settled.record;
  if (settled.isKept) {
    keep(summary.kept, record, settled.obstacle + "; what was converted before stays", "");
  } else if (record.status != FileStatus::Converted) {
    keep(summary.failures, record, record.reason, record.lastLine);
    summary.removed += settled.removed;
  } else {
    ++summary.converted;
    summary.triangles += record.triangles;
    if (!record.reason.empty()) {
      keep(summary.doubtful, record, record.reason, record.lastLine);
    }
  }
}

std::string failureLine(const FileRecord& record) {
  return exampleText(record.name, record.reason, record.lastLine);
}

std::string removedLine(const Settled& settled) {
  return std::to_string(settled.removed) + " earlier output" + (settled.removed == 1 ? "" : "s") +
         " of " + printable(settled.record.name);
}

std::string keptLine(const Settled& settled) {
  return exampleText(settled.record.name, settled.obstacle, "");
}

void printPlan(const Summary& summary, const FoundFiles& found) {
  std::cout << "To convert: " << summary.files << std::endl;
  printBefore(summary);
  printProblems(found, {});
  printSkipped(found);
}

bool printSummary(const Summary& summary, const FoundFiles& found, double seconds,
                  const std::string& stateFolder) {
  const std::int64_t failed = countOf(summary.failures);
  const std::int64_t kept = countOf(summary.kept);
  const std::int64_t lost = summary.files - summary.converted - failed - kept;
  std::cout << "Converted: " << summary.converted << " (" << summary.triangles << " triangles)"
            << std::endl;
  printCount("Of them, files with the bytes of another, converted once: ", summary.duplicates);
  printBefore(summary);
  if (!summary.doubtful.empty()) {
    std::cout << "Converted, but doubtful: " << countOf(summary.doubtful) << std::endl;
    printTold(summary.doubtful);
  }
  std::cout << "Failed: " << failed << std::endl;
  printTold(summary.failures);
  printCount("Removed outputs of files that fail now: ", summary.removed);
  printCount("Without a result: ", lost);
  printProblems(found, summary.kept);
  printSkipped(found);
  std::cout << "Time: " << fixedText(seconds, 0) << " s" << std::endl;
  std::cout << "State and transcripts: " << stateFolder << std::endl;
  return failed == 0 && lost == 0 && kept == 0 && found.problems.empty();
}

}  // namespace plenvorith
