#include "batch/system/process.h"

#include <csignal>
#include <string>
#include <utility>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "batch/system/lines.h"
#include "batch/system/signals.h"
#include "tests/support/scoped_signals.h"

namespace plenvorith {
namespace {

/// What a process wrote to its standard output and error, and how it ended.
std::string outcomeOf(ProcessSetup setup, const std::function<void()>& become) {
  Pipe pipe = std::move(*makePipe());
  setup.output = setup.errors = pipe.write.get();
  const pid_t process = startProcess(setup, become);
  EXPECT_GT(process, 0);
  pipe.write.close();
  std::string text;
  while (readMore(pipe.read.get(), text)) {
  }
  int status = 0;
  EXPECT_EQ(waitpid(process, &status, 0), process);
  return text + (WIFSIGNALED(status) ? "signal " + std::to_string(WTERMSIG(status))
                                     : std::to_string(WEXITSTATUS(status)));
}

TEST(StartProcess, RunsAFunctionInAGroupOfItsOwn) {
  EXPECT_EQ(outcomeOf({.folder = "/"}, [] { _exit(getpgrp() == getpid() ? 5 : 6); }), "5");
}

TEST(StartProcess, EndsAsAShellDoesWhereTheFunctionComesBack) {
  EXPECT_EQ(outcomeOf({}, [] { becomeProgram("/no/such/program", {"program"}); }), "127");
}

TEST(StartProcess, TellsThatAFolderIsMissing) {
  EXPECT_EQ(outcomeOf({.folder = "/no/such/folder"}, [] { _exit(0); }),
            "plenvorith-batch: cannot set up the process\n127");
}

TEST(StartProcess, KeepsWhatThisProcessDoesWithSignalsFromIt) {
  const test::ScopedSignals before;
  (void)std::signal(SIGPIPE, SIG_IGN);
  const Descriptor listener = listenToSignals({SIGTERM});
  EXPECT_EQ(outcomeOf({},
                      [] {
                        becomeProgram("/bin/sh", {"sh", "-c",
                                                  "wc -c; grep ^SigBlk /proc/self/status; "
                                                  "kill -PIPE $$"});
                      }),
            "0\nSigBlk:\t0000000000000000\nsignal 13");
}

}  // namespace
}  // namespace plenvorith
