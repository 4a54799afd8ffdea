#include "batch/report/summary.h"

#include <iostream>
#include <utility>

#include "batch/system/text.h"
#include "common/escaped_text.h"

namespace plenvorith {
namespace {

void printLines(const std::vector<std::string>& lines) {
  for (const std::string& line : lines) {
    std::cout << "  " << line << std::endl;
  }
}

void printCount(const char* what, std::int64_t count) {
  if (count > 0) {
    std::cout << what << count << std::endl;
  }
}

void printProblems(const FoundFiles& found, const std::vector<std::string>& kept) {
  if (!found.problems.empty() || !kept.empty()) {
    std::cout << "Not looked at: " << found.problems.size() + kept.size() << std::endl;
    for (const std::string& problem : found.problems) {
      std::cout << "  " << printable(problem) << std::endl;
    }
    printLines(kept);
  }
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

void addToSummary(Summary& summary, const Settled& settled) {
  const FileRecord& record = settled.record;
  if (settled.isKept) {
    summary.kept.push_back(keptLine(settled));
    return;
  }
  if (record.status != FileStatus::Converted) {
    summary.failures.push_back(failureLine(record));
    return;
  }
  ++summary.converted;
  summary.triangles += record.triangles;
  if (!record.reason.empty()) {
    summary.doubtful.push_back(failureLine(record));
  }
}

std::string failureLine(const FileRecord& record) {
  return printable(record.path) + ": " +
         reasonWithLine(printable(record.reason), printable(record.lastLine));
}

std::string keptLine(const Settled& settled) {
  return printable(settled.record.path) + ": " + printable(settled.obstacle) +
         "; what was converted before stays";
}

void printPlan(const Summary& summary, const FoundFiles& found) {
  std::cout << "To convert: " << summary.files << std::endl;
  printCount("Converted before: ", summary.convertedBefore);
  printProblems(found, {});
  printSkipped(found);
}

bool printSummary(const Summary& summary, const FoundFiles& found, double seconds,
                  const std::string& stateFolder) {
  const auto failed = static_cast<std::int64_t>(summary.failures.size());
  const auto kept = static_cast<std::int64_t>(summary.kept.size());
  const std::int64_t lost = summary.files - summary.converted - failed - kept;
  std::cout << "Converted: " << summary.converted << " (" << summary.triangles << " triangles)"
            << std::endl;
  printCount("Converted before: ", summary.convertedBefore);
  if (!summary.doubtful.empty()) {
    std::cout << "Converted, but doubtful: " << summary.doubtful.size() << std::endl;
    printLines(summary.doubtful);
  }
  std::cout << "Failed: " << failed << std::endl;
  printLines(summary.failures);
  printCount("Without a result: ", lost);
  printProblems(found, summary.kept);
  printSkipped(found);
  std::cout << "Time: " << fixedText(seconds, 0) << " s" << std::endl;
  std::cout << "State and transcripts: " << stateFolder << std::endl;
  return failed == 0 && lost == 0 && kept == 0 && found.problems.empty();
}

}  // namespace plenvorith
