#include "batch/system/tool.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <optional>
#include <string_view>
#include <utility>

#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include "batch/system/lines.h"
#include "batch/system/process.h"

namespace plenvorith {
namespace {

using Clock = std::chrono::steady_clock;

int statusOf(pid_t process) {
  int status = -1;
  while (waitpid(process, &status, 0) < 0 && errno == EINTR) {
  }
  return status;
}

/// How a program failed; empty if it has not.
std::string endingOf(int status) {
  if (WIFSIGNALED(status)) {
    return "signal " + std::to_string(WTERMSIG(status));
  }
  return status == 0 ? "" : "exit status " + std::to_string(WEXITSTATUS(status));
}

/// Reads what is there; false at the end.
bool readOutput(RunningTool& tool) {
  constexpr std::size_t kEnough = 1 << 20;  // no tool that is called here has to say more
  const bool isMore = readMore(tool.output.get(), tool.written);
  tool.written.resize(std::min(tool.written.size(), kEnough));
  return isMore;
}

/// Waits until one of the programs has written something or its time is over.
void waitForAny(std::vector<RunningTool>& running, std::vector<bool>& ended) {
  Clock::time_point next = Clock::time_point::max();
  std::vector<pollfd> outputs;
  for (const RunningTool& tool : running) {
    next = std::min(next, tool.end);
    outputs.push_back({tool.output.get(), POLLIN, 0});
  }
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(next - Clock::now()).count();
  // A signal ends the wait early, which does no harm.
  (void)poll(outputs.data(), outputs.size(), static_cast<int>(std::clamp<long>(left, 0, 1000)));
  for (std::size_t i = 0; i < running.size(); ++i) {
    ended[i] = outputs[i].revents != 0 && !readOutput(running[i]);
  }
}

}  // namespace

std::string findTool(const std::string& name) {
  const char* const path = std::getenv("PATH");
  std::string_view rest = path == nullptr ? "" : path;
  while (!rest.empty()) {
    std::string candidate = std::string(cutOff(rest, ':')) + '/' + name;
    if (access(candidate.c_str(), X_OK) == 0) {
      return candidate;
    }
  }
  return "";
}

RunningTool startTool(const ToolStart& start, std::chrono::milliseconds limit) {
  RunningTool tool;
  tool.end = Clock::now() + limit;
  std::optional<Pipe> output = makePipe();
  if (!output) {
    return tool;
  }
  ProcessSetup setup{.input = start.input,
                     .output = output->write.get(),
                     .folder = start.folder,
                     .endSignal = start.endSignal};
  if (start.errors != ToolErrors::Dropped) {
    setup.errors = start.errors == ToolErrors::InOutput ? setup.output : STDERR_FILENO;
  }
  tool.process = startProcess(setup, [&start] {
    for (const std::string& variable : start.environment) {
      (void)putenv(
          const_cast<char*>(variable.c_str()));  // stays, for this function does not return
    }
    becomeProgram(start.arguments.front(), start.arguments);
  });
  tool.output = std::move(output->read);
  return tool;
}

void endTool(RunningTool& tool) {
  if (tool.process > 0) {
    (void)kill(-tool.process, SIGKILL);
    (void)statusOf(tool.process);
    tool.output.close();
    tool.process = 0;
  }
}

ToolResult runTool(const ToolStart& start, std::chrono::milliseconds limit) {
  ToolResult result;
  runTools(
      1, 1, limit, [&](std::size_t) { return start; },
      [&](std::size_t, const ToolResult& one) {
        result = one;
        return true;
      });
  return result;
}

void runTools(std::size_t count, std::size_t atOnce, std::chrono::milliseconds limit,
              const std::function<ToolStart(std::size_t)>& startOf,
              const std::function<bool(std::size_t, const ToolResult&)>& take) {
  std::vector<RunningTool> running;
  bool goesOn = true;
  for (std::size_t next = 0; goesOn && (next < count || !running.empty());) {
    while (next < count && running.size() < atOnce) {
      RunningTool tool = startTool(startOf(next), limit);
      tool.number = next++;
      if (tool.process == 0) {
        goesOn = goesOn && take(tool.number, ToolResult());
      } else {
        running.push_back(std::move(tool));
      }
    }
    std::vector<bool> ended(running.size());
    waitForAny(running, ended);
    for (std::size_t i = running.size(); i-- > 0;) {
      const bool timedOut = !ended[i] && Clock::now() >= running[i].end;
      if (!ended[i] && !timedOut) {
        continue;
      }
      RunningTool tool = std::move(running[i]);
      running.erase(running.begin() + static_cast<std::ptrdiff_t>(i));
      int status = -1;
      if (timedOut) {
        endTool(tool);
      } else {
        status = statusOf(tool.process);
      }
      std::string ending = timedOut ? "out of time" : endingOf(status);
      goesOn =
          goesOn && take(tool.number, {ending.empty(), std::move(ending), std::move(tool.written)});
    }
  }
  for (RunningTool& tool : running) {
    endTool(tool);
  }
}

}  // namespace plenvorith
