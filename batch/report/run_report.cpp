#include "batch/report/run_report.h"

#include <csignal>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <unistd.h>

#include "batch/report/export.h"
#include "batch/report/inspection.h"
#include "batch/report/mesh_tools.h"
#include "batch/report/report.h"
#include "batch/state/names.h"
#include "batch/state/totals.h"
#include "common/escaped_text.h"

namespace plenvorith {
namespace {

/// More would make a page that no browser likes; those that need attention come first.
constexpr std::int64_t kMostRows = 10000;

/// Whether a signal that ends a run has come since the conversions, which have left them blocked.
bool isInterrupted() {
  sigset_t pending;
  sigemptyset(&pending);
  sigpending(&pending);
  return sigismember(&pending, SIGHUP) == 1 || sigismember(&pending, SIGINT) == 1 ||
         sigismember(&pending, SIGTERM) == 1;
}

/// Whether a file can be written without loss: it is not there, or is a report.
bool mayReplace(const std::string& path) {
  if (access(path.c_str(), F_OK) != 0) {
    return true;
  }
  // All releases have it in the head, which has grown and may again.
  constexpr std::string_view kMark = "\n<title>Plenvorith report</title>\n";
  std::string start(4096, '\0');
  std::ifstream file(path, std::ios::binary);
  file.read(start.data(), static_cast<std::streamsize>(start.size()));
  return start.find(kMark) != std::string::npos;
}

std::string inspectionsPath(const Places& places) {
  return places.state + "/inspections.db";
}

/// Appends the STL files of one input.
void addMeshes(const FileRecord& record, std::vector<MadeMesh>& meshes) {
  const ConversionSettings settings = settingsFrom(record.settings);
  bool isFirst = true;
  for (const OutputRecord& output : record.outputs) {
    if (!output.path.ends_with(".stl")) {
      continue;
    }
    // In split mode, too, an input without exact geometry has one mesh, which has the input's name.
    const bool isWhole = output.path == record.name + ".stl";
    meshes.push_back(
        {output, record.path, settings.deflection, settings.prepare, isWhole, isFirst});
    isFirst = false;
  }
}

bool inspectAll(const Options& options, StateHandle& state, const Places& places,
                InspectionsHandle& inspections) {
  std::vector<MadeMesh> meshes;
  const bool isRead =
      forEachFile(state, [&](const FileRecord& record) { addMeshes(record, meshes); });
  const InspectionWish wish{options.checks, options.pictures,
                            static_cast<std::size_t>(options.jobs),
                            options.bar || isatty(STDERR_FILENO) == 1, options.settings.timeLimit};
  return isRead &&
         inspectOutputs(inspections, places.output + '/', places.run, meshes, wish, isInterrupted);
}

/// The last lines of a transcript.
std::string endOfTranscript(std::string transcript) {
  transcript.erase(transcript.find_last_not_of('\n') + 1);
  constexpr std::size_t kShown = 500;  // a page may hold ten thousand
  if (transcript.size() <= kShown) {
    return transcript;
  }
  transcript.erase(0, transcript.size() - kShown);
  return transcript.substr(transcript.find('\n') + 1);
}

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    lines.push_back(line);
  }
  return lines;
}

ReportFile reportedFile(StateHandle& state, const FileRecord& record,
                        InspectionsHandle* inspections) {
  ReportFile file{record, {}, record.lastLine};
  if (record.status != FileStatus::Converted) {
    file.transcriptEnd =
        endOfTranscript(findTranscript(state, record.path).value_or(record.lastLine));
  }
  for (const OutputRecord& output : record.outputs) {
    file.inspections.push_back(inspections != nullptr ? findInspection(*inspections, output.path)
                                                      : Inspection());
  }
  return file;
}

std::string aboutRuns(const std::vector<RunRecord>& runs) {
  if (runs.empty()) {
    return "";
  }
  const RunRecord& last = runs.back();
  std::string about = "Plenvorith " + last.program + ", on " + last.host + ", " + last.start;
  if (runs.size() > 1) {
    about += ", the last of " + std::to_string(runs.size()) + " runs";
  }
  about += ": plenvorith-batch";
  for (const std::string& argument : last.arguments) {
    about += ' ' + portable(argument);
  }
  return about;
}

}  // namespace

bool reportState(const Options& options, StateHandle& state, const Places& places) {
  const std::string path = places.output + "/index.html";
  if (!mayReplace(path)) {
    std::cerr << "plenvorith-batch: no report, for this is not one: " << printable(path)
              << std::endl;
    return false;
  }
  std::string problem;
  const std::string database = inspectionsPath(places);
  Inspections inspections;
  if (options.checks || options.pictures || access(database.c_str(), F_OK) == 0) {
    inspections = openInspections(database, problem);
  }
  bool isInspected = problem.empty();
  if (inspections && (options.checks || options.pictures)) {
    isInspected = inspectAll(options, state, places, *inspections);
    problem = isInspected ? "" : database + " cannot be written";
  }
  if (!problem.empty()) {
    std::cerr << "plenvorith-batch: " << printable(problem) << std::endl;
  }
  const std::vector<RunRecord> runs = allRuns(state);
  ReportHead head{aboutRuns(runs), runs.empty() ? "" : runs.back().base, totalsOf(state), {}};
  head.notes = runs.empty() ? std::vector<std::string>() : linesOf(runs.back().leftOut);
  const bool isWritten = writeReport(path, head, [&](const auto& visit) {
    return forEachFileToShow(state, kMostRows, [&](const FileRecord& record) {
      visit(reportedFile(state, record, inspections.get()));
    });
  });
  if (isWritten) {
    std::cout << "Report: " << printable(path) << std::endl;
  }
  return isWritten && isInspected;
}

bool exportAll(const std::string& path, StateHandle& state, const Places& places) {
  const std::string database = inspectionsPath(places);
  std::string problem;
  const Inspections inspections =
      access(database.c_str(), F_OK) == 0 ? openInspections(database, problem) : nullptr;
  return exportState(state, path, inspections.get());
}

}  // namespace plenvorith
