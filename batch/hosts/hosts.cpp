#include "batch/hosts/hosts.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>
#include <optional>

#include "batch/options.h"
#include "batch/system/lines.h"
#include "batch/system/text.h"
#include "batch/system/tool.h"
#include "common/escaped_text.h"

namespace plenvorith {
namespace {

/// What one host has said.
struct Answer {
  std::string version;
  std::string last;  ///< line that is none of the expected ones
  int cores = 0;
  bool seesFolder = false;
};

constexpr std::string_view kCores = "cores ";
constexpr std::string_view kSees = "sees";

void note(std::string_view line, Answer& answer) {
  if (line.starts_with("plenvorith-batch ")) {
    answer.version = line;
  } else if (line.starts_with(kCores)) {
    line.remove_prefix(kCores.size());
    (void)std::from_chars(line.data(), line.data() + line.size(), answer.cores);
  } else if (line == kSees) {
    answer.seesFolder = true;
  } else if (!line.empty()) {
    answer.last = line.substr(0, line.find('\r'));  // ssh ends its lines so
  }
}

std::map<std::string, Answer> answersFrom(std::string_view text) {
  std::map<std::string, Answer> answers;
  while (!text.empty()) {
    std::string_view line = cutOff(text, '\n');
    if (line.find('\t') != std::string_view::npos) {
      const std::string login(cutOff(line, '\t'));
      note(line, answers[login]);
    }
  }
  return answers;
}

/// Why a host cannot convert; empty if it can.
std::string obstacle(const Answer& answer, const HostWish& wish) {
  if (answer.version.empty()) {
    return answer.last.empty() ? "no answer" : printable(answer.last);
  }
  if (answer.version != wish.version) {
    return "it has " + printable(answer.version) + ", this is " + wish.version;
  }
  if (!answer.seesFolder && !wish.transfer) {
    return "it does not see " + printable(wish.folder) + " (--transfer sends the files)";
  }
  return "";
}

/// The number of jobs that stands before a login in the user's list, as in "4/host".
std::optional<int> jobsInList(const HostWish& wish, const std::string& login) {
  std::string_view rest = wish.logins;
  while (!rest.empty()) {
    std::string_view item = cutOff(rest, ',');
    int jobs = 0;
    const auto [end, error] = std::from_chars(item.data(), item.data() + item.size(), jobs);
    if (error == std::errc() && jobs > 0 && std::string_view(end, item.end()) == '/' + login) {
      return jobs;
    }
  }
  return std::nullopt;
}

std::string contentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

}  // namespace

const char* const kFindProgram = "p=$PLENVORITH_BATCH; [ -x \"$p\" ] || p=plenvorith-batch\n";

std::vector<std::string> hostEnvironment(const HostWish& wish) {
  std::vector<std::string> environment = {"PLENVORITH_BATCH=" + wish.program,
                                          "PLENVORITH_RUN=" + wish.folder};
  if (std::getenv("PARALLEL_SSH") == nullptr) {
    // A host that is switched off must not keep the others waiting.
    environment.emplace_back(
        "PARALLEL_SSH=ssh -o ConnectTimeout=10 -o ServerAliveInterval=15 "
        "-o ServerAliveCountMax=3");
  }
  return environment;
}

HostCheck hostsFrom(std::string_view answers, std::string_view joblog, const HostWish& wish) {
  HostCheck check;
  const std::map<std::string, Answer> answerOf = answersFrom(answers);
  (void)cutOff(joblog, '\n');  // the titles
  std::vector<std::string> logins;
  while (!joblog.empty()) {
    std::string_view line = cutOff(joblog, '\n');
    (void)cutOff(line, '\t');  // the number of the call
    const std::string login(cutOff(line, '\t'));
    // What follows a line feed in the command is no call.
    if (!login.empty() && !line.empty()) {
      logins.push_back(login);
    }
  }
  std::sort(logins.begin(), logins.end());
  for (const std::string& login : logins) {
    const auto found = answerOf.find(login);
    const Answer answer = found == answerOf.end() ? Answer() : found->second;
    const std::string problem = obstacle(answer, wish);
    if (!problem.empty()) {
      check.leftOut.push_back("host " + printable(login) + " is left out: " + problem);
      continue;
    }
    const int cores = std::max(answer.cores, 1);
    const int jobs = wish.jobs.empty() ? cores : jobsFrom(wish.jobs, cores).value_or(cores);
    check.hosts.push_back({login, jobsInList(wish, login).value_or(jobs)});
  }
  return check;
}

HostCheck checkHosts(const std::string& parallel, const HostWish& wish) {
  constexpr std::chrono::seconds kLimit(60);
  const std::string joblog = wish.folder + "/hosts";
  (void)unlink(joblog.c_str());  // of an earlier check
  ToolStart start;
  start.arguments = {parallel,
                     "--plain",
                     "--will-cite",
                     "--nonall",
                     "--tag",
                     "-j0",
                     "--timeout",
                     "30",
                     "--joblog",
                     joblog,
                     "--env",
                     "PLENVORITH_BATCH",
                     "--env",
                     "PLENVORITH_RUN",
                     "--sshlogin",
                     wish.logins,
                     kFindProgram + std::string("\"$p\" --version; echo \"cores $(nproc)\"; "
                                                "[ ! -e \"$PLENVORITH_RUN/here\" ] || echo sees")};
  start.environment = hostEnvironment(wish);
  start.errors = ToolErrors::InOutput;
  const ToolResult result = runTool(start, kLimit);
  HostCheck check = hostsFrom(result.output, contentOf(joblog), wish);
  if (check.hosts.empty() && check.leftOut.empty()) {
    check.problem = lastLineOf(result.output);
  }
  return check;
}

}  // namespace plenvorith
