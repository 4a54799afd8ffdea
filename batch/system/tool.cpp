#include "batch/system/tool.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <string_view>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace plenvorith {
namespace {

using Clock = std::chrono::steady_clock;

std::vector<char*> pointersTo(const std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (const std::string& text : texts) {
    pointers.push_back(const_cast<char*>(text.c_str()));  // execve changes none
  }
  pointers.push_back(nullptr);
  return pointers;
}

/// The environment of the program: what is added, and of that of this process what is not replaced.
std::vector<std::string> environmentOf(const ToolStart& start) {
  std::vector<std::string> all = start.environment;
  const auto isReplaced = [&start](const std::string& entry) {
    const std::string name = entry.substr(0, entry.find('=') + 1);
    return std::any_of(start.environment.begin(), start.environment.end(),
                       [&name](const std::string& added) { return added.starts_with(name); });
  };
  for (char** entry = environ; *entry != nullptr; ++entry) {
    if (!isReplaced(*entry)) {
      all.emplace_back(*entry);
    }
  }
  return all;
}

/// In the new process: becomes the program, or ends with 127.
[[noreturn]] void becomeTool(const ToolStart& start, char* const* arguments,
                             char* const* environment, int output) {
  constexpr int kCannotStart = 127;
  (void)setpgid(0, 0);
  (void)prctl(PR_SET_PDEATHSIG, start.endSignal);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) {
    (void)::signal(signal, SIG_DFL);
  }
  sigset_t none;
  (void)sigemptyset(&none);
  (void)sigprocmask(SIG_SETMASK, &none, nullptr);
  const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
  (void)dup2(start.input >= 0 ? start.input : nothing, STDIN_FILENO);
  (void)dup2(output, STDOUT_FILENO);
  if (start.errors != ToolErrors::Shared) {
    (void)dup2(start.errors == ToolErrors::InOutput ? output : nothing, STDERR_FILENO);
  }
  if (!start.folder.empty() && chdir(start.folder.c_str()) != 0) {
    _exit(kCannotStart);
  }
  (void)execve(arguments[0], arguments, environment);
  _exit(kCannotStart);
}

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
bool readMore(RunningTool& tool) {
  constexpr std::size_t kEnough = 1 << 20;  // no tool that is called here has to say more
  char block[4096];
  const ssize_t length = read(tool.output, block, sizeof block);
  if (length <= 0) {
    return false;
  }
  if (tool.written.size() < kEnough) {
    tool.written.append(block, static_cast<std::size_t>(length));
  }
  return true;
}

/// Waits until one of the programs has written something or its time is over.
void waitForAny(std::vector<RunningTool>& running, std::vector<bool>& ended) {
  Clock::time_point next = Clock::time_point::max();
  std::vector<pollfd> outputs;
  for (const RunningTool& tool : running) {
    next = std::min(next, tool.end);
    outputs.push_back({tool.output, POLLIN, 0});
  }
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(next - Clock::now()).count();
  // A signal ends the wait early, which does no harm.
  (void)poll(outputs.data(), outputs.size(), static_cast<int>(std::clamp<long>(left, 0, 1000)));
  for (std::size_t i = 0; i < running.size(); ++i) {
    ended[i] = outputs[i].revents != 0 && !readMore(running[i]);
  }
}

}  // namespace

std::string findTool(const std::string& name) {
  const char* const path = std::getenv("PATH");
  std::string_view rest = path == nullptr ? "" : path;
  while (!rest.empty()) {
    const std::size_t end = std::min(rest.find(':'), rest.size());
    std::string candidate = std::string(rest.substr(0, end)) + '/' + name;
    if (access(candidate.c_str(), X_OK) == 0) {
      return candidate;
    }
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  return "";
}

RunningTool startTool(const ToolStart& start, std::chrono::milliseconds limit) {
  RunningTool tool;
  tool.end = Clock::now() + limit;
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) {
    return tool;
  }
  const std::vector<std::string> environment = environmentOf(start);
  const std::vector<char*> arguments = pointersTo(start.arguments);
  const std::vector<char*> variables = pointersTo(environment);
  tool.process = fork();
  if (tool.process == 0) {
    becomeTool(start, arguments.data(), variables.data(), ends[1]);
  }
  (void)close(ends[1]);
  if (tool.process < 0) {
    (void)close(ends[0]);
    return tool;
  }
  (void)setpgid(tool.process, tool.process);  // whichever of the two processes is first
  tool.output = ends[0];
  return tool;
}

void endTool(RunningTool& tool) {
  if (tool.process > 0) {
    (void)kill(-tool.process, SIGKILL);
    (void)statusOf(tool.process);
    (void)close(tool.output);
    tool.process = -1;
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
      if (tool.process < 0) {
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
        (void)close(tool.output);
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
