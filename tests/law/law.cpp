#include "tests/law/law.h"

#include <algorithm>
#include <filesystem>
#include <set>
#include <string_view>

#include "tests/support/run_program.h"

namespace plenvorith::test {
namespace {

constexpr const char* kInput = "in.stp";
constexpr const char* kReady = "ready.stp";
constexpr const char* kMesh = "out.stl";

/// The number behind the last "BRep: " of step [5]; the triangles of exact geometry come first.
std::size_t exactCountIn(const std::string& transcript) {
  constexpr std::string_view kBefore = " triangles (BRep: ";
  const std::size_t at = transcript.rfind(kBefore);
  return at == std::string::npos ? 0 : std::stoul(transcript.substr(at + kBefore.size()));
}

Conversion convert(const TempDir& directory, const char* name, const std::string& deflection) {
  Command command;
  command.program = PLENVORITH_PROGRAM;
  command.arguments = {name, kMesh, deflection};
  command.directory = directory.path();
  command.environment = {"TMPDIR=" + directory.path().string()};
  const Outcome outcome = runProgram(command);
  Conversion result;
  result.signal = outcome.signal;
  result.isReadBrep = outcome.exitStatus == 0 && outcome.out.find("\n[3] ") != std::string::npos;
  const std::string file = readFile(directory / kMesh);
  if (outcome.exitStatus == 0 && !file.empty()) {
    result.decoded = recordsOf(file);
    const auto begin = result.decoded.begin();
    const auto end = begin + static_cast<std::ptrdiff_t>(exactCountIn(outcome.out));
    result.exact.assign(begin, end);
    result.decoded.erase(begin, end);
  }
  std::filesystem::remove(directory / kMesh);
  return result;
}

/// Whether every triangle of `few` is in `many`. Instances that are there twice may give the same
/// triangles twice.
bool holdsAll(const std::vector<StlRecord>& many, const std::vector<StlRecord>& few) {
  const std::set<StlRecord> held(many.begin(), many.end());
  return std::all_of(few.begin(), few.end(),
                     [&held](const StlRecord& triangle) { return held.contains(triangle); });
}

std::string brokenPart(const LawCase& tried) {
  if (tried.prepareStatus != 0 && tried.prepareStatus != 1 && tried.prepareStatus != 3) {
    return "preparing crashes";
  }
  if (tried.alone.signal != 0) {
    return "";
  }
  if (tried.prepared.signal != 0 && tried.alone.isReadBrep) {
    return "the converter crashes on the prepared file";
  }
  if (!holdsAll(tried.prepared.exact, tried.alone.exact)) {
    return std::to_string(tried.alone.exact.size()) + " exact triangles alone, prepared " +
           std::to_string(tried.prepared.exact.size());
  }
  if (tried.prepareStatus != 0 && !tried.alone.exact.empty()) {
    return "preparing says that there is no geometry";
  }
  return "";
}

}  // namespace

LawCase tryLaw(const TempDir& directory, const std::string& content,
               const std::string& deflection) {
  writeFile(directory / kInput, content);
  Command command;
  command.program = PLENVORITH_PREPARE;
  command.arguments = {kInput, kReady};
  command.directory = directory.path();
  LawCase tried;
  tried.alone = convert(directory, kInput, deflection);
  const Outcome preparing = runProgram(command);
  tried.prepareStatus = preparing.exitStatus;
  tried.leavesOut =
      preparing.exitStatus == 1 || preparing.out.find("  Warning: instances ") != std::string::npos;
  if (std::filesystem::exists(directory / kReady)) {
    tried.prepared = convert(directory, kReady, deflection);
  }
  for (const auto& entry : std::filesystem::directory_iterator(directory.path())) {
    std::filesystem::remove_all(entry.path());
  }
  tried.broken = brokenPart(tried);
  return tried;
}

}  // namespace plenvorith::test
