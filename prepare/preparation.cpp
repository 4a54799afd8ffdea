#include "prepare/preparation.h"

#include <array>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <map>
#include <string_view>
#include <system_error>
#include <utility>

#include "exchange/instance_table.h"
#include "exchange/statement_reader.h"
#include "prepare/findings.h"
#include "prepare/output_file.h"
#include "prepare/progress.h"
#include "prepare/temporary_file.h"

namespace plenvorith {
namespace {

constexpr int kWritten = 0;
constexpr int kFailed = 1;
constexpr int kNoGeometry = 3;

int fail(std::string_view what) {
  std::cerr << "Error: " << what << std::endl;
  return kFailed;
}

/// What keeps the paths from being used; empty if nothing does.
std::string objectionTo(const std::string& inputPath, const std::string& outputPath) {
  std::error_code error;
  const std::filesystem::file_status input = std::filesystem::status(inputPath, error);
  if (!std::filesystem::exists(input)) {
    return "Cannot read " + inputPath;
  }
  if (!std::filesystem::is_regular_file(input)) {
    return std::filesystem::is_directory(input)
               ? "Cannot read " + inputPath + ", it is a directory"
               : "Cannot read " + inputPath + ", it is no file that can be read twice";
  }
  const std::filesystem::file_status output = std::filesystem::status(outputPath, error);
  if (std::filesystem::exists(output) && !std::filesystem::is_regular_file(output)) {
    return "Cannot write " + outputPath + ", it is no file";
  }
  if (std::filesystem::equivalent(inputPath, outputPath, error)) {
    return inputPath + " and " + outputPath + " are the same file";
  }
  return {};
}

/// "25.4", or several joined by commas.
std::string unitsText(const std::set<double>& units) {
  std::string text;
  for (const double unit : units) {
    std::array<char, 32> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), unit).ptr;
    text += text.empty() ? "" : ", ";
    text.append(digits.data(), end);
  }
  return text.empty() ? "1" : text;
}

/// How many instances that count have each fate.
std::map<Fate, std::uint64_t> countFates(const InstanceTable& table,
                                         const std::vector<Fate>& fates) {
  std::map<Fate, std::uint64_t> counts;
  for (InstanceIndex index = 0; index < table.size(); ++index) {
    if (!table.isVoid(index)) {
      ++counts[fates[index]];
    }
  }
  return counts;
}

std::uint64_t writtenFaces(const TessellationPlan& plan) {
  std::uint64_t count = 0;
  for (const PlannedFace& face : plan.faces) {
    count += face.solid != PlannedFace::kNoSolid ? 1U : 0U;
  }
  return count;
}

void printReport(const InstanceTable& table, const PartTessellation& part,
                 const Decisions& decisions, const Written& written, const Warnings& warnings) {
  const TessellationPlan& plan = decisions.plan;
  std::cout << "  Tessellated representations: " << part.representationCount
            << ", exact geometry: " << (part.hasExact ? "yes" : "no") << std::endl;
  std::cout << "  Paired with exact geometry: " << part.copies.size() << " bodies, "
            << written.copiedTriangles << " triangles, left out" << std::endl;
  std::cout << "  Only annotation: " << part.annotationCount << " representations, left out"
            << std::endl;
  std::cout << "  Only features or properties: " << part.propertyCount
            << " representations, left out" << std::endl;
  std::cout << "  Part tessellation: " << plan.bodyCount << " bodies -> " << writtenFaces(plan)
            << " faces, " << written.triangles << " triangles, " << plan.solidCount
            << " placements, " << unitsText(plan.units) << " mm a unit" << std::endl;
  if (written.skippedTriangles > 0) {
    std::cout << "  Skipped triangles: " << written.skippedTriangles << std::endl;
  }
  if (!decisions.orphans.representations.empty()) {
    std::cout << "  Exact representations tied to a product: "
              << decisions.orphans.representations.size() << std::endl;
  }
  std::map<Fate, std::uint64_t> counts = countFates(table, decisions.fates);
  std::cout << "  Dropped entities: " << counts[Fate::Dropped]
            << ", changed: " << counts[Fate::Changed] + counts[Fate::Retyped] << std::endl;
  for (const std::string& warning : warnings) {
    std::cout << "  Warning: " << warning << std::endl;
  }
  const bool hasTriangles = written.triangles > 0;
  std::cout << "  Holds now: "
            << (part.hasExact  ? hasTriangles ? "exact geometry and tessellation" : "exact geometry"
                : hasTriangles ? "tessellation"
                               : "no geometry")
            << std::endl;
}

/// What is read to be written anew.
struct Source {
  const std::string& path;
  StatementReader& again;
  const InstanceTable& table;
  Progress& progress;
};

/// Writes the file under this name; false if that cannot be done.
bool writeTo(const std::string& path, const Source& source, const Decisions& decisions,
             Written& written) {
  OutputFile output(path);
  if (!output.isOpen()) {
    return false;
  }
  StatementReader reader(source.path);
  reader.onBlock([&source](std::uint64_t place) { source.progress.show("Writing", place); });
  written = writePrepared(reader, source.again, source.table, decisions, output);
  return output.close();
}

/// Writes the file once more where writing it showed that some of it has to be left out: triangles
/// with points that overflow, or, if not one triangle is left, all faces. The converter would take the
/// file for one of another kind because of faces that hold nothing.
bool writeWithout(const std::string& path, const Source& source, Decisions& decisions,
                  Written& written) {
  if (!written.error.empty()) {
    return true;
  }
  if (!written.huge.empty()) {
    decisions.huge = std::move(written.huge);
    if (std::remove(path.c_str()) != 0 || !writeTo(path, source, decisions, written)) {
      return false;
    }
  }
  if (!written.error.empty() || written.triangles > 0 || decisions.plan.solidCount == 0) {
    return true;
  }
  Decisions rest = decisions;
  rest.plan = {};
  Written again;
  const bool isWritten = std::remove(path.c_str()) == 0 && writeTo(path, source, rest, again);
  written.error = again.error;
  return isWritten;
}

/// Writes what was decided, and reports it.
int writeDecided(const std::string& outputPath, const Source& source, Findings& findings) {
  TemporaryFile temporary(outputPath);
  Written written;
  const bool isWritten = writeTo(temporary.path(), source, findings.decisions, written) &&
                         writeWithout(temporary.path(), source, findings.decisions, written);
  source.progress.wipe();
  if (!written.error.empty()) {
    return fail(source.path + ": " + written.error);
  }
  if (!isWritten) {
    return fail("Cannot write " + outputPath);
  }
  if (written.emptiedStrings > 0) {
    findings.warnings.insert("strings of more than 8,192 bytes are emptied");
  }
  if (written.hasMalformedHeader) {
    findings.warnings.insert("malformed entities of the header are left out");
  }
  if (written.hasNormalsAgainst) {
    findings.warnings.insert(
        "the stored normals of a body are all against its triangles, which stay");
  }
  printReport(source.table, findings.part, findings.decisions, written, findings.warnings);
  if (!std::cout) {
    return fail("Cannot print the report");
  }
  if (!temporary.takePlace()) {
    return fail("Cannot write " + outputPath);
  }
  std::cout << "Saved: " << outputPath << std::endl;
  if (!std::cout) {
    return fail("Cannot print the report");
  }
  return findings.part.hasExact || written.triangles > 0 ? kWritten : kNoGeometry;
}

}  // namespace

int prepareFile(const std::string& inputPath, const std::string& outputPath) {
  std::cout << "Preparing: " << inputPath << std::endl;
  const std::string objection = objectionTo(inputPath, outputPath);
  if (!objection.empty()) {
    return fail(objection);
  }
  StatementReader reader(inputPath);
  StatementReader again(inputPath);
  if (!reader.isOpen() || !again.isOpen()) {
    return fail("Cannot read " + inputPath);
  }
  std::error_code ignored;
  Progress progress(std::filesystem::file_size(inputPath, ignored));
  reader.onBlock([&progress](std::uint64_t place) { progress.show("Reading", place); });
  InstanceTable table;
  const bool isRead = table.read(reader);
  progress.wipe();
  if (!isRead) {
    return fail(inputPath + ": " + table.error());
  }
  std::cout << "  Read " << table.countedCount() << " entities" << std::endl;
  Findings findings = decide(table, again);
  if (findings.decisions.plan.hasTooMany) {
    return fail(inputPath + ": too many placements");
  }
  const Source source = {inputPath, again, table, progress};
  return writeDecided(outputPath, source, findings);
}

}  // namespace plenvorith
