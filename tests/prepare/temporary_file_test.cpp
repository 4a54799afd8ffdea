#include "prepare/temporary_file.h"

#include <csignal>
#include <filesystem>
#include <string>

#include <gmock/gmock.h>

#include "tests/support/temp_dir.h"

namespace plenvorith {
namespace {

using test::readFile;
using test::TempDir;
using test::writeFile;

constexpr int kSurvived = 7;

/// Writes a temporary file and sends itself the signal, which until then is handled so.
void raiseWhileWriting(const std::string& path, int signal, void (*handler)(int)) {
  (void)std::signal(signal, handler);
  const TemporaryFile temporary(path);
  writeFile(temporary.path(), "half");
  (void)std::raise(signal);
}

TEST(TemporaryFileDeathTest, IsRemovedWhenASignalEndsTheProgram) {
  const TempDir directory;
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE, SIGQUIT, SIGXCPU}) {
    EXPECT_EXIT(raiseWhileWriting(directory / "out.stp", signal, SIG_DFL),
                testing::KilledBySignal(signal), "");
    EXPECT_TRUE(std::filesystem::is_empty(directory.path())) << signal;
  }
}

// As nohup does with one of them.
TEST(TemporaryFileDeathTest, LeavesSignalsIgnoredThatAre) {
  const TempDir directory;
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE, SIGQUIT, SIGXCPU}) {
    EXPECT_EXIT(
        {
          raiseWhileWriting(directory / "out.stp", signal, SIG_IGN);
          std::exit(kSurvived);
        },
        testing::ExitedWithCode(kSurvived), "");
    EXPECT_TRUE(std::filesystem::is_empty(directory.path())) << signal;
  }
}

TEST(TemporaryFile, GivesTheSignalsBack) {
  const TempDir directory;
  const auto before = std::signal(SIGHUP, SIG_DFL);
  {
    const TemporaryFile temporary(directory / "out.stp");
    const auto meanwhile = std::signal(SIGHUP, SIG_DFL);
    EXPECT_NE(meanwhile, SIG_DFL);
    (void)std::signal(SIGHUP, meanwhile);
  }
  EXPECT_EQ(std::signal(SIGHUP, before), SIG_DFL);
}

TEST(TemporaryFile, GoesUnlessItTakesItsPlace) {
  const TempDir directory;
  {
    const TemporaryFile temporary(directory / "out.stp");
    writeFile(temporary.path(), "half");
  }
  EXPECT_TRUE(std::filesystem::is_empty(directory.path()));
}

TEST(TemporaryFile, TakesThePlaceOfAnOlderFile) {
  const TempDir directory;
  writeFile(directory / "out.stp", "old");
  {
    TemporaryFile temporary(directory / "out.stp");
    EXPECT_TRUE(temporary.path().starts_with(directory / "out.stp.tmp")) << temporary.path();
    writeFile(temporary.path(), "whole");
    EXPECT_EQ(readFile(directory / "out.stp"), "old");
    EXPECT_TRUE(temporary.takePlace());
  }
  EXPECT_EQ(readFile(directory / "out.stp"), "whole");
}

TEST(TemporaryFile, StandsBesideTheFileThatALinkLeadsTo) {
  const TempDir directory;
  const TempDir elsewhere;
  writeFile(elsewhere / "real.stp", "old");
  std::filesystem::create_symlink(elsewhere / "real.stp", directory / "out.stp");
  {
    TemporaryFile temporary(directory / "out.stp");
    EXPECT_TRUE(temporary.path().starts_with(elsewhere / "real.stp.tmp")) << temporary.path();
    writeFile(temporary.path(), "new");
    EXPECT_TRUE(temporary.takePlace());
  }
  EXPECT_TRUE(std::filesystem::is_symlink(directory / "out.stp"));
  EXPECT_EQ(readFile(elsewhere / "real.stp"), "new");
}

TEST(TemporaryFile, SaysWhereItCannotTakeItsPlace) {
  const TempDir directory;
  TemporaryFile temporary(directory / "out.stp");
  EXPECT_FALSE(temporary.takePlace());  // nothing was written
}

}  // namespace
}  // namespace plenvorith
