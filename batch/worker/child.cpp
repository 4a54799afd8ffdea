#include "batch/worker/child.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <limits>
#include <memory>
#include <new>

#include <poll.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/statvfs.h>
#include <sys/wait.h>
#include <unistd.h>

#include "app/command_line.h"
#include "batch/inputs/input_facts.h"
#include "batch/records/job.h"
#include "batch/system/descriptor.h"
#include "batch/system/process.h"
#include "batch/system/signals.h"
#include "batch/worker/mesh_doubt.h"
#include "batch/worker/part_list.h"
#include "brep/part_names.h"
#include "prepare/preparation.h"

namespace plenvorith {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int kCannotStart = 127;

[[noreturn]] void endChild(int status) {
  (void)std::fflush(nullptr);  // what cannot be written is as lost as in any program
  // What the libraries clean up at the end of a process would take longer than a small file.
  _exit(status);
}

bool setLimit(__rlimit_resource_t resource, std::int64_t value) {
  const auto limit = static_cast<rlim_t>(value);
  const rlimit both{limit, limit};
  return setrlimit(resource, &both) == 0;
}

/// Sets up what is particular to a conversion.
bool setUpConversion(const ChildSettings& child) {
  closefrom(STDERR_FILENO + 1);
  return setenv("TMPDIR", child.temporaryFolder.c_str(), 1) == 0 && setLimit(RLIMIT_CORE, 0) &&
         (child.settings.memoryLimit == 0 || setLimit(RLIMIT_AS, child.settings.memoryLimit));
}

/// Puts a prepared copy in the place of the input; ends the child where there is none to convert.
void prepareInput(const ChildSettings& child, std::vector<std::string>& arguments) {
  if (child.preparedPath.empty()) {
    return;
  }
  const int status = prepareFile(arguments.front(), child.preparedPath);
  if (status != 0) {
    endChild(status);
  }
  arguments.front() = child.preparedPath;
}

/// Without a path, and for a file without exact shapes, there is nothing to write.
void writeNames(const std::string& path, const std::vector<PartName>& names) {
  if (path.empty() || names.empty()) {
    return;
  }
  std::vector<ShapeName> shapes;
  shapes.reserve(names.size());
  for (const PartName& name : names) {
    shapes.push_back({shapes.size() + 1, name.path, name.name});
  }
  std::ofstream(path) << lineFrom(shapes) << '\n';  // of a full disk the outputs tell
}

/// What a conversion that went well leaves for the worker in memory that both have. What the child
/// does after that, and how it ends then, fails nothing any more.
struct Afterwards {
  std::atomic<bool> isConverted = false;
  Clock::time_point end;
  rusage usage{};
  std::array<char, 256> doubt{};
};

struct Unmap {
  void operator()(Afterwards* memory) const {
    (void)munmap(memory, sizeof *memory);
  }
};

/// Nothing for a conversion that leaves no doubts, or if there is no memory.
std::unique_ptr<Afterwards, Unmap> shareAfterwards(const ConversionSettings& settings) {
  if (settings.prepare || !settings.program.empty()) {
    return nullptr;
  }
  void* const memory =
      mmap(nullptr, sizeof(Afterwards), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  return std::unique_ptr<Afterwards, Unmap>(memory == MAP_FAILED ? nullptr
                                                                 : new (memory) Afterwards);
}

/// Finds out, in the child, what preparing would change of the mesh.
void noteDoubt(const std::string& input, Afterwards& afterwards) {
  constexpr std::size_t kTranscriptEnds = std::size_t{1} << 17;
  constexpr unsigned kLongEnough = 60;  // seconds; nobody waits longer for this
  (void)std::fflush(nullptr);
  const std::string transcript = readEnds(STDOUT_FILENO, kTranscriptEnds);
  (void)getrusage(RUSAGE_SELF, &afterwards.usage);
  afterwards.end = Clock::now();
  afterwards.isConverted = true;
  closefrom(STDIN_FILENO);
  openStandardStreams();  // a crash shall say nothing in the transcript
  (void)alarm(kLongEnough);
  const std::optional<Forecast> forecast =
      holdsTessellation(input) ? forecastPreparation(input) : std::nullopt;
  const std::string doubt = forecast ? meshDoubt(*forecast, transcript) : std::string();
  (void)doubt.copy(afterwards.doubt.data(), afterwards.doubt.size() - 1);
}

[[noreturn]] void becomeConverter(const ChildSettings& child, Afterwards* afterwards) {
  if (!setUpConversion(child)) {
    std::cerr << "plenvorith-batch: cannot set up the conversion" << std::endl;
    endChild(kCannotStart);
  }
  std::vector<std::string> arguments = child.arguments;
  prepareInput(child, arguments);
  const std::string& program = child.settings.program;
  arguments.insert(arguments.begin(), program.empty() ? "plenvorith" : program);
  if (program.empty()) {
    std::vector<char*> pointers = pointersTo(arguments);
    std::vector<PartName> names;
    const bool withParts = child.settings.parts;
    std::vector<PartName>* const wanted = child.namesPath.empty() && !withParts ? nullptr : &names;
    int status = runConverter(static_cast<int>(arguments.size()), pointers.data(), wanted);
    writeNames(child.namesPath, names);
    if (status == 0 && withParts && !writePartList(child.arguments[1], names)) {
      status = 1;
    }
    if (status == 0 && afterwards != nullptr) {
      noteDoubt(child.arguments.front(), *afterwards);
    }
    endChild(status);
  }
  becomeProgram(program, arguments);
  std::cerr << "plenvorith-batch: cannot start " << program << std::endl;
  endChild(kCannotStart);
}

/// What a running child is watched with.
struct Watch {
  pid_t child = 0;
  Clock::time_point start;
  std::chrono::milliseconds deadline{};  ///< after the start; the next thing to happen to the child
  bool isPressed = false;
};

/// Takes all signals that have come: whether one of them asks the worker to end.
bool takeSignals(int signals) {
  bool isStop = false;
  for (int signal = 0; (signal = nextSignal(signals)) != 0;) {
    isStop = isStop || signal != SIGCHLD;
  }
  return isStop;
}

/// Asks the child and all that it has started to end; insists after some seconds.
void pressChild(Watch& watch) {
  constexpr std::chrono::seconds kGrace(5);
  kill(-watch.child, watch.isPressed ? SIGKILL : SIGTERM);
  watch.isPressed = true;
  watch.deadline =
      std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - watch.start + kGrace);
}

/// Waits until something may have happened; whether the worker is to end.
bool waitForEvent(const Watch& watch, const WorkerSignals& signals) {
  // How often the free space is looked at: a copy that was cut short stays for longer.
  constexpr std::chrono::milliseconds kLook(50);
  const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
      watch.start + watch.deadline - Clock::now());
  // Once the child is asked to end, the state of the other side tells nothing new, at once and
  // always.
  pollfd events[] = {{signals.signals, POLLIN, 0}, {watch.isPressed ? -1 : signals.results, 0, 0}};
  const auto patience = std::clamp(left, std::chrono::milliseconds(0), kLook);
  if (poll(events, 2, static_cast<int>(patience.count()) + 1) <= 0) {
    return false;
  }
  return takeSignals(signals.signals) || (events[1].revents & (POLLERR | POLLHUP)) != 0;
}

void noteUsage(const rusage& usage, ChildEnd& end) {
  constexpr double kMicro = 1e-6;
  end.cpuSeconds = static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
                   kMicro * static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec);
  end.peakMemory = std::int64_t{1024} * usage.ru_maxrss;
}

void noteEnd(int status, const rusage& usage, const Watch& watch, const Afterwards* afterwards,
             ChildEnd& end) {
  const auto secondsTo = [&watch](Clock::time_point time) {
    return std::chrono::duration<double>(time - watch.start).count();
  };
  if (afterwards != nullptr && afterwards->isConverted) {
    end.exitStatus = 0;
    end.timedOut = false;
    end.seconds = secondsTo(afterwards->end);
    noteUsage(afterwards->usage, end);
    if (WIFEXITED(status)) {
      end.doubt = afterwards->doubt.data();
    }
    return;
  }
  if (WIFEXITED(status)) {
    end.exitStatus = WEXITSTATUS(status);
  } else {
    end.signal = WTERMSIG(status);
  }
  end.seconds = secondsTo(Clock::now());
  noteUsage(usage, end);
}

}  // namespace

ChildEnd runChild(const ChildSettings& child, const WorkerSignals& signals) {
  ChildEnd end;
  end.leastSpace = freeSpace(child.workFolder);
  const auto afterwards = shareAfterwards(child.settings);
  Watch watch;
  watch.start = Clock::now();
  watch.deadline = child.settings.timeLimit.count() == 0 ? std::chrono::hours(24 * 36600)
                                                         : child.settings.timeLimit;
  // A worker that is killed takes its child with it.
  watch.child = startProcess(
      {.output = child.transcript, .errors = child.transcript, .folder = child.workFolder},
      [&child, &afterwards] { becomeConverter(child, afterwards.get()); });
  if (watch.child == 0) {
    end.forkError = errno;
    return end;
  }

  int status = 0;
  rusage usage{};
  while (wait4(watch.child, &status, WNOHANG, &usage) != watch.child) {
    if (waitForEvent(watch, signals) && !end.isStopped) {
      end.isStopped = true;
      pressChild(watch);
    }
    if (Clock::now() - watch.start >= watch.deadline) {
      end.timedOut = !end.isStopped;
      pressChild(watch);
    }
    end.leastSpace = std::min(end.leastSpace, freeSpace(child.workFolder));
  }
  noteEnd(status, usage, watch, afterwards.get(), end);
  kill(-watch.child, SIGKILL);  // what it has started and left behind
  end.leastSpace = std::min(end.leastSpace, freeSpace(child.workFolder));
  return end;
}

std::int64_t freeSpace(const std::string& folder) {
  struct statvfs status {};
  if (statvfs(folder.c_str(), &status) != 0) {
    return std::numeric_limits<std::int64_t>::max();
  }
  return static_cast<std::int64_t>(status.f_bavail * status.f_frsize);
}

}  // namespace plenvorith
