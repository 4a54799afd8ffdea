#include "batch/report/mesh_tools.h"

#include <chrono>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <optional>
#include <string>
#include <system_error>

#include <sys/stat.h>
#include <unistd.h>

#include "batch/report/progress.h"
#include "batch/system/text.h"
#include "batch/system/tool.h"
#include "common/escaped_text.h"

namespace plenvorith {
namespace {

// Half a minute draws a mesh of ten million triangles.
constexpr std::chrono::seconds kDrawLimit{30};

/// A name without surprises for the output of a task: the tools get that.
std::string aliasOf(const std::string& work, std::size_t number) {
  return work + '/' + std::to_string(number) + ".stl";
}

bool makeAlias(const std::string& work, const std::string& folder, const std::string& path,
               std::size_t number) {
  return symlink((folder + path).c_str(), aliasOf(work, number).c_str()) == 0;
}

/// What one tool is called for.
struct Task {
  const char* tool;
  const char* progress;  ///< in front of how far it is
  const char* done;      ///< in front of what it came to
  std::chrono::seconds limit;
  std::function<ToolStart(std::size_t)> startOf;
  /// Keeps what the tool gave for a mesh, and says why that is nothing; false if it cannot be kept.
  std::function<bool(std::size_t, const ToolResult&, std::string& problem)> keep;
};

/// Runs a tool on every mesh and keeps what it gives; false if that cannot be kept.
bool runOnAll(InspectionsHandle& inspections, const std::vector<MadeMesh>& meshes,
              const InspectionWish& wish, const std::function<bool()>& isInterrupted,
              const Task& task) {
  using Clock = std::chrono::steady_clock;
  constexpr std::int64_t kTogether = 64;  // results that are written to the disk at once
  constexpr std::int64_t kMostNamed = 20;
  ProgressDisplay display;
  display.isLine = wish.isLine;
  ProgressState progress;
  progress.what = task.progress;
  progress.files = static_cast<std::int64_t>(meshes.size());
  for (const MadeMesh& mesh : meshes) {
    progress.bytes += mesh.output.size;
  }
  const Clock::time_point start = Clock::now();
  bool isKept = beginKeeping(inspections);
  const auto take = [&](std::size_t number, const ToolResult& result) {
    std::string problem = result.ending;
    isKept = isKept && task.keep(number, result, problem);
    ++progress.done;
    progress.doneBytes += meshes[number].output.size;
    if (!problem.empty() && ++progress.failed <= kMostNamed) {
      showMessage(display, std::string("plenvorith-batch: ") + task.tool + " gave nothing for " +
                               printable(meshes[number].output.path) + ": " + problem);
    }
    progress.seconds = std::chrono::duration<double>(Clock::now() - start).count();
    showProgress(display, progress);
    if (isKept && progress.done % kTogether == 0) {
      isKept = endKeeping(inspections) && beginKeeping(inspections);
    }
    return isKept && !isInterrupted();
  };
  runTools(meshes.size(), wish.atOnce, task.limit, task.startOf, take);
  endProgress(display, progress);
  if (progress.failed > kMostNamed) {
    std::cerr << "plenvorith-batch: " << task.tool << " gave nothing for "
              << progress.failed - kMostNamed << " more" << std::endl;
  }
  std::cout << task.done << progress.done - progress.failed << " of " << meshes.size()
            << " meshes, in " << durationText(std::llround(progress.seconds)) << std::endl;
  return endKeeping(inspections) && isKept;
}

/// A program of ours: it lies beside this one, or can be found like any other.
std::string findProgram(const std::string& name) {
  std::error_code ignored;
  const std::filesystem::path own = std::filesystem::read_symlink("/proc/self/exe", ignored);
  const std::string beside = own.parent_path() / name;
  return access(beside.c_str(), X_OK) == 0 ? beside : findTool(name);
}

/// How to check one input; its aliases are in `alias` and behind it.
ToolStart checking(const std::string& program, const MadeMesh& mesh, const std::string& alias) {
  ToolStart start;
  const std::string of = mesh.isWhole ? alias + ".stl" : "-";
  start.arguments = {program, alias + ".step", of, mesh.deflection};
  if (mesh.isPrepared) {
    // The prepared file has gone with the conversion.
    start.arguments = {"/bin/sh",
                       "-c",
                       R"("$1" "$3.step" "$3.ready.step" >/dev/null &&
                          exec "$2" "$3.ready.step" "$4" "$5")",
                       "sh",
                       findProgram("plenvorith-prepare"),
                       program,
                       alias,
                       of,
                       mesh.deflection};
  }
  // What is wrong is told there.
  start.errors = ToolErrors::InOutput;
  return start;
}

bool checkAll(InspectionsHandle& inspections, const std::string& folder, const std::string& work,
              const std::vector<MadeMesh>& meshes, const InspectionWish& wish,
              const std::function<bool()>& isInterrupted) {
  const std::string program = findProgram("plenvorith-check");
  if (program.empty()) {
    std::cerr << "plenvorith-batch: no --check without plenvorith-check" << std::endl;
    return true;
  }
  const auto aliasOfInput = [&work](std::size_t number) {
    return work + '/' + std::to_string(number);
  };
  const auto startOf = [&](std::size_t number) {
    const MadeMesh& mesh = meshes[number];
    (void)makeAlias(work, folder, mesh.output.path, number);  // the tool fails without it
    (void)symlink(mesh.input.c_str(), (aliasOfInput(number) + ".step").c_str());  // likewise
    ToolStart start = checking(program, mesh, aliasOfInput(number));
    // A copy of the input, if one is made, is named like it and has to be the only one.
    start.environment = {"TMPDIR=" + work};
    return start;
  };
  const auto keep = [&](std::size_t number, const ToolResult& result, std::string& problem) {
    const std::optional<MeshCheck> check = checkFrom(result.output);
    // A file with problems is not one that nothing is known of.
    const std::string last = lastLineOf(result.output);
    problem = check ? "" : last.starts_with("Error: ") ? printable(last) : problem;
    if (!check && problem.empty()) {
      problem = "it does not say what is asked";
    }
    for (const char* const extension : {".stl", ".step", ".ready.step"}) {
      (void)unlink((aliasOfInput(number) + extension).c_str());
    }
    return keepCheck(inspections, meshes[number].output.path, check);
  };
  constexpr std::chrono::seconds kForEver = std::chrono::hours(24 * 365);
  const std::chrono::seconds limit = wish.checkLimit.count() > 0 ? wish.checkLimit : kForEver;
  return runOnAll(inspections, meshes, wish, isInterrupted,
                  {"plenvorith-check", "check: ", "Checked: ", limit, startOf, keep});
}

/// Starts a display that nobody sees. Gives its name, or nothing if it does not come up.
std::string startDisplay(const std::string& server, RunningTool& tool) {
  tool = startTool(
      {.arguments = {server, "-displayfd", "1", "-screen", "0", "640x480x24", "-nolisten", "tcp"}},
      kDrawLimit);
  // The number of the display is all that it prints.
  std::string number;
  char digit = 0;
  while (tool.process > 0 && read(tool.output.get(), &digit, 1) == 1 && digit != '\n') {
    number += digit;
  }
  return number.empty() || digit != '\n' ? "" : ':' + number;
}

ToolStart drawing(const std::string& viewer, const std::string& display, const std::string& mesh) {
  ToolStart start;
  start.arguments = {viewer,
                     "--dry-run",
                     "--quiet",
                     "--resolution",
                     "160,120",
                     "--no-background",
                     "--up",
                     "+Z",
                     "--fxaa",
                     "--color",
                     "0.62,0.75,0.92",
                     "--camera-azimuth-angle",
                     "35",
                     "--camera-elevation-angle",
                     "25",
                     "--output",
                     mesh + ".png",
                     mesh};
  start.environment = {"DISPLAY=" + display};
  return start;
}

std::string contentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

bool drawAll(InspectionsHandle& inspections, const std::string& folder, const std::string& work,
             const std::vector<MadeMesh>& meshes, const InspectionWish& wish,
             const std::function<bool()>& isInterrupted) {
  const std::string viewer = findTool("f3d");
  const std::string server = findTool("Xvfb");
  if (viewer.empty() || server.empty()) {
    std::cerr << "plenvorith-batch: no --thumbnails without f3d and Xvfb (Debian packages f3d and "
              << "xvfb)" << std::endl;
    return true;
  }
  RunningTool serverProcess;
  const std::string display = startDisplay(server, serverProcess);
  if (display.empty()) {
    std::cerr << "plenvorith-batch: no --thumbnails: Xvfb does not start" << std::endl;
    endTool(serverProcess);
    return true;
  }
  const auto startOf = [&](std::size_t number) {
    (void)makeAlias(work, folder, meshes[number].output.path, number);  // the tool fails without it
    return drawing(viewer, display, aliasOf(work, number));
  };
  const auto keep = [&](std::size_t number, const ToolResult& result, std::string& problem) {
    const std::string path = aliasOf(work, number) + ".png";
    const std::string picture = result.succeeded ? contentOf(path) : "";
    (void)unlink(path.c_str());  // a tool that failed may not have made it
    (void)unlink(aliasOf(work, number).c_str());
    if (result.succeeded && picture.empty()) {
      problem = "it has drawn nothing";
    }
    return keepPicture(inspections, meshes[number].output.path, picture);
  };
  const bool isKept = runOnAll(inspections, meshes, wish, isInterrupted,
                               {"f3d", "draw: ", "Drawn: ", kDrawLimit, startOf, keep});
  endTool(serverProcess);
  return isKept;
}

}  // namespace

bool inspectOutputs(InspectionsHandle& inspections, const std::string& folder,
                    const std::string& workFolder, const std::vector<MadeMesh>& meshes,
                    const InspectionWish& wish, const std::function<bool()>& isInterrupted) {
  std::vector<MadeMesh> toCheck;
  std::vector<MadeMesh> toDraw;
  bool isKept = beginKeeping(inspections);
  for (const MadeMesh& mesh : meshes) {
    const OutputRecord& output = mesh.output;
    struct stat status {};
    if (!output.path.ends_with(".stl") || stat((folder + output.path).c_str(), &status) != 0) {
      continue;
    }
    const std::int64_t mtime =
        std::int64_t{status.st_mtim.tv_sec} * 1000000000 + status.st_mtim.tv_nsec;
    const std::optional<Uninspected> left =
        prepareInspection(inspections, output.path, status.st_size, mtime);
    isKept = isKept && left;
    if (wish.checks && mesh.isChecked && left && left->check) {
      toCheck.push_back(mesh);
    }
    if (wish.pictures && left && left->picture) {
      toDraw.push_back(mesh);
    }
  }
  isKept = endKeeping(inspections) && isKept;
  if (!toCheck.empty()) {
    isKept = isKept && checkAll(inspections, folder, workFolder, toCheck, wish, isInterrupted);
  }
  if (!toDraw.empty() && !isInterrupted()) {
    isKept = isKept && drawAll(inspections, folder, workFolder, toDraw, wish, isInterrupted);
  }
  return isKept;
}

}  // namespace plenvorith
