#include "batch/report/mesh_tools.h"

#include <chrono>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <iostream>
#include <iterator>
#include <optional>
#include <string>

#include <sys/stat.h>
#include <unistd.h>

#include "batch/report/progress.h"
#include "batch/system/text.h"
#include "batch/system/tool.h"
#include "common/escaped_text.h"

namespace plenvorith {
namespace {

// Half a minute draws a mesh of ten million triangles.
constexpr std::chrono::seconds kLimit{30};

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
  std::function<ToolStart(std::size_t)> startOf;
  /// Keeps what the tool gave for a mesh, and says why that is nothing; false if it cannot be kept.
  std::function<bool(std::size_t, const ToolResult&, std::string& problem)> keep;
};

/// Runs a tool on every mesh and keeps what it gives; false if that cannot be kept.
bool runOnAll(InspectionsHandle& inspections, const std::vector<OutputRecord>& meshes,
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
  for (const OutputRecord& mesh : meshes) {
    progress.bytes += mesh.size;
  }
  const Clock::time_point start = Clock::now();
  bool isKept = beginKeeping(inspections);
  const auto take = [&](std::size_t number, const ToolResult& result) {
    std::string problem = result.ending;
    isKept = isKept && task.keep(number, result, problem);
    ++progress.done;
    progress.doneBytes += meshes[number].size;
    if (!problem.empty() && ++progress.failed <= kMostNamed) {
      showMessage(display, std::string("plenvorith-batch: ") + task.tool + " gave nothing for " +
                               printable(meshes[number].path) + ": " + problem);
    }
    progress.seconds = std::chrono::duration<double>(Clock::now() - start).count();
    showProgress(display, progress);
    if (isKept && progress.done % kTogether == 0) {
      isKept = endKeeping(inspections) && beginKeeping(inspections);
    }
    return isKept && !isInterrupted();
  };
  runTools(meshes.size(), wish.atOnce, kLimit, task.startOf, take);
  endProgress(display, progress);
  if (progress.failed > kMostNamed) {
    std::cerr << "plenvorith-batch: " << task.tool << " gave nothing for "
              << progress.failed - kMostNamed << " more" << std::endl;
  }
  std::cout << task.done << progress.done - progress.failed << " of " << meshes.size()
            << " meshes, in " << durationText(std::llround(progress.seconds)) << std::endl;
  return endKeeping(inspections) && isKept;
}

bool checkAll(InspectionsHandle& inspections, const std::string& folder, const std::string& work,
              const std::vector<OutputRecord>& meshes, const InspectionWish& wish,
              const std::function<bool()>& isInterrupted) {
  const std::string admesh = findTool("admesh");
  if (admesh.empty()) {
    std::cerr << "plenvorith-batch: no --check without admesh (Debian package admesh)" << std::endl;
    return true;
  }
  const auto startOf = [&](std::size_t number) {
    (void)makeAlias(work, folder, meshes[number].path, number);  // the tool fails without it
    // Edges that match to the last bit only: a finished mesh has no others.
    return ToolStart{.arguments = {admesh, "--exact", aliasOf(work, number)}};
  };
  const auto keep = [&](std::size_t number, const ToolResult& result, std::string& problem) {
    const std::optional<MeshCheck> check =
        result.succeeded ? checkFrom(result.output) : std::nullopt;
    if (result.succeeded && !check) {
      problem = "it does not say what is asked";
    }
    (void)unlink(aliasOf(work, number).c_str());
    return keepCheck(inspections, meshes[number].path, check);
  };
  return runOnAll(inspections, meshes, wish, isInterrupted,
                  {"admesh", "check: ", "Checked: ", startOf, keep});
}

/// Starts a display that nobody sees. Gives its name, or nothing if it does not come up.
std::string startDisplay(const std::string& server, RunningTool& tool) {
  tool = startTool(
      {.arguments = {server, "-displayfd", "1", "-screen", "0", "640x480x24", "-nolisten", "tcp"}},
      kLimit);
  // The number of the display is all that it prints.
  std::string number;
  char digit = 0;
  while (tool.process > 0 && read(tool.output, &digit, 1) == 1 && digit != '\n') {
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
             const std::vector<OutputRecord>& meshes, const InspectionWish& wish,
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
    (void)makeAlias(work, folder, meshes[number].path, number);  // the tool fails without it
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
    return keepPicture(inspections, meshes[number].path, picture);
  };
  const bool isKept = runOnAll(inspections, meshes, wish, isInterrupted,
                               {"f3d", "draw: ", "Drawn: ", startOf, keep});
  endTool(serverProcess);
  return isKept;
}

}  // namespace

bool inspectOutputs(InspectionsHandle& inspections, const std::string& folder,
                    const std::string& workFolder, const std::vector<OutputRecord>& outputs,
                    const InspectionWish& wish, const std::function<bool()>& isInterrupted) {
  std::vector<OutputRecord> toCheck;
  std::vector<OutputRecord> toDraw;
  bool isKept = beginKeeping(inspections);
  for (const OutputRecord& output : outputs) {
    struct stat status {};
    if (!output.path.ends_with(".stl") || stat((folder + output.path).c_str(), &status) != 0) {
      continue;
    }
    const std::int64_t mtime =
        std::int64_t{status.st_mtim.tv_sec} * 1000000000 + status.st_mtim.tv_nsec;
    const std::optional<Uninspected> left =
        prepareInspection(inspections, output.path, status.st_size, mtime);
    isKept = isKept && left;
    if (wish.checks && left && left->check) {
      toCheck.push_back(output);
    }
    if (wish.pictures && left && left->picture) {
      toDraw.push_back(output);
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
