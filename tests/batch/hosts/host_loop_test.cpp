#include "batch/hosts/host_loop.h"

#include <filesystem>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "batch/records/job.h"
#include "batch/version.h"
#include "tests/batch/opened_state.h"
#include "tests/support/scoped_env.h"
#include "tests/support/scoped_signals.h"
#include "tests/support/temp_dir.h"

namespace plenvorith {
namespace {

using testing::ElementsAre;

/// Three files, and a script in the place of GNU parallel that is asked for hosts first, then given
/// the chunks.
class HostLoopTest : public testing::Test {
 protected:
  HostLoopTest() {
    context.places = placesIn(dir / "out");
    context.base = dir.path().string() + '/';
    options.sshlogin = ":";
    std::filesystem::create_directories(context.places.run);
    for (const char* const name : {"a.stp", "b.stp", "c.stp"}) {
      files.push_back({test::writeFile(dir / name, name), 5});
    }
    state = test::openedState(context.places.database);
  }

  /// Converts with this script; it finds what it needs in "../answers" of its folder.
  LoopEnd convert(const std::string& script) {
    std::filesystem::create_directory(dir / "bin");
    test::writeScript(dir / "bin/parallel", script);
    return run(dir / "bin:/usr/bin:/bin");
  }

  LoopEnd run(const std::string& path) {
    const test::ScopedEnv scopedPath("PATH", path);
    const test::ScopedSignals signals;
    testing::internal::CaptureStderr();
    LoopEnd end = convertOnHosts(options, *state, context, files, summary);
    said = testing::internal::GetCapturedStderr();
    return end;
  }

  /// What answers to being asked: this host, with the version of this program.
  std::string answerAsHost() const {
    return "case \"$*\" in *--nonall*)\n"
           "  echo round >>'" +
           (dir / "rounds") +
           "'\n"
           "  printf 'titles\\n1\\t:\\t1\\t1\\t0\\t5\\t0\\t0\\tp=x\\n' >\"$PLENVORITH_RUN/hosts\"\n"
           "  printf ':\\tplenvorith-batch " +
           versionText() + "\\n:\\tcores 2\\n:\\tsees\\n'\n  exit;;\nesac\n";
  }

  /// The line of a file that could not be converted.
  static std::string failed(std::int64_t file) {
    JobResult result;
    result.id = file;
    result.reason = "broken";
    return lineFrom(result) + '\n';
  }

  const test::TempDir dir;
  Options options;
  RunContext context;
  std::vector<InputFile> files;
  State state;
  Summary summary;
  std::string said;
};

TEST_F(HostLoopTest, NeedsGnuParallel) {
  EXPECT_EQ(run(dir / "nowhere").problem,
            "--sshlogin needs GNU parallel (Debian packages parallel, bzip2)");
}

TEST_F(HostLoopTest, GivesUpWhereNoHostCanConvert) {
  const LoopEnd end = convert("echo 'no such option'\n");
  EXPECT_EQ(end.problem, "no host can convert: no such option");
  EXPECT_EQ(countOf(summary.failures), 0);
}

TEST_F(HostLoopTest, SettlesWhatTheHostsSayAndLeavesNothingOfARound) {
  test::writeFile(dir / "answers", failed(2) + failed(0) + failed(1));
  const LoopEnd end = convert(answerAsHost() + "cat '" + (dir / "answers") + "'\n");
  EXPECT_EQ(end.problem, "");
  EXPECT_EQ(end.signal, 0);
  EXPECT_EQ(countOf(summary.failures), 3);
  EXPECT_EQ(findFile(*state, dir / "b.stp")->reason, "broken");
  EXPECT_EQ(test::readFile(dir / "rounds"), "round\n");
  EXPECT_TRUE(std::filesystem::is_empty(context.places.run));
}

TEST_F(HostLoopTest, SendsOutAnewWhatHasNoResultUntilTwoRoundsBringNone) {
  test::writeFile(dir / "answers", failed(1));
  const LoopEnd end = convert(answerAsHost() + "cat chunks *.jobs >>'" + (dir / "sent") +
                              "'\ncat '" + (dir / "answers") + "'\n");
  EXPECT_EQ(end.problem, "");
  EXPECT_EQ(countOf(summary.failures), 1);
  EXPECT_TRUE(findFile(*state, dir / "b.stp").has_value());
  EXPECT_FALSE(findFile(*state, dir / "a.stp").has_value());
  EXPECT_EQ(test::readFile(dir / "rounds"), "round\nround\nround\n");
  // The file that has a result goes out once, the others in each round.
  const std::string sent = test::readFile(dir / "sent");
  const auto timesSent = [&sent](const std::string& name) {
    int count = 0;
    for (std::size_t at = 0; (at = sent.find(name + "\"", at)) != std::string::npos; ++at) {
      ++count;
    }
    return count;
  };
  EXPECT_EQ(timesSent("/a.stp"), 3);
  EXPECT_EQ(timesSent("/b.stp"), 1);
  EXPECT_EQ(timesSent("/c.stp"), 3);
}

TEST_F(HostLoopTest, SaysOnceOfAHostWhyItIsLeftOut) {
  const std::string other =
      "case \"$*\" in *--nonall*)\n"
      "  printf "
      "'titles\\n1\\t:\\t1\\t1\\t0\\t5\\t0\\t0\\tp=x\\n1\\tx\\t1\\t1\\t0\\t5\\t0\\t0\\tp=x\\n'"
      " >\"$PLENVORITH_RUN/hosts\"\n"
      "  printf ':\\tplenvorith-batch " +
      versionText() + "\\n:\\tcores 2\\n:\\tsees\\nx\\tout of order\\n'\n  exit;;\nesac\n";
  const LoopEnd end = convert(other);
  EXPECT_EQ(end.problem, "");
  EXPECT_EQ(said, "host x is left out: out of order\n");
}

}  // namespace
}  // namespace plenvorith
