// What a case file cannot say: inputs that only a program can make, and limits.

#include <atomic>
#include <chrono>
#include <csignal>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/cli/expect_run.h"
#include "tests/cli/inputs.h"

namespace plenvorith::test {
namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

/// Checks that both pipelines, split or not, find nothing in `in.step` and say so.
void expectNothingReadable(const Sandbox& dir) {
  for (const std::vector<std::string>& split : {std::vector<std::string>{}, {"0.1", "x"}}) {
    std::vector<std::string> arguments = {"in.step", "out.stl"};
    arguments.insert(arguments.end(), split.begin(), split.end());
    expectRun(dir, arguments,
              {.out = ownLines(R"(Reading: in.step
[1] Analyzing file structure...
  Parsed 0 entities
  Status: no tessellation
[3] Stripping tessellation and reading BRep...
  No BRep geometry found
Failed
)"),
               .err = "Error: No geometry found in file\n",
               .exitStatus = 1});
  }
  expectRun(dir, {"in.step", "out.step"},
            {.out = ownLines(R"(Reading: in.step
[1] Analyzing file structure...
  Parsed 0 entities
  Status: no tessellation
[2] No tessellation, saving clean STEP...
Failed
)"),
             .err = "Failed to read STEP\n",
             .exitStatus = 1});
  expectRun(
      dir, {"in.step", "out.step", "0.1", "x"},
      {.out = ownLines("Failed\n"), .err = "Failed to read BRep from STEP\n", .exitStatus = 1});
}

TEST(UnreadableInput, MayHoldAnyBytes) {
  const Sandbox dir;
  std::string noise;
  unsigned state = 1;
  for (int i = 0; i < 20000; ++i) {
    state = state * 1664525U + 1013904223U;
    noise += static_cast<char>(state >> 24U);
  }
  dir.write("in.step", noise);
  expectNothingReadable(dir);
}

TEST(UnreadableInput, MayBeAPipeWhoseWritersWriteNothing) {
  const Sandbox dir;
  const fs::path pipe = dir / "in.step";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  // A writer for each time that the program opens the pipe.
  std::atomic<bool> done = false;
  std::thread writers([&] {
    while (!done) {
      const int fd = open(pipe.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
      if (fd >= 0) {
        close(fd);
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
  });
  expectNothingReadable(dir);
  done = true;
  writers.join();
}

TEST(FullDisk, LeavesACopyCutShortThatCannotBeRead) {
  const Sandbox dir;
  dir.write("in.step", appendEntities(box(), paired()));
  // The limit stands for a disk on which the copy does not fit; the copy is deleted all the same.
  expectRun(dir, {"in.step", "out.stl"},
            {.out = ownLines(R"(Reading: in.step
[1] Analyzing file structure...
  Parsed 176 entities
  Status: all tessellation paired with BRep
  Paired tess representations: 1
  Unique tess representations: 0
  Unique tess faces to parse: 0
[2] All tessellation duplicates BRep, will use BRep only
[3] Stripping tessellation and reading BRep...
[PREPROCESS] Stripped 4 lines -> tmp/in.step.clean.stp
  No BRep geometry found
Failed
)"),
             .err = "Error: No geometry found in file\n",
             .exitStatus = 1},
            {.limits = {{RLIMIT_FSIZE, 2048}}, .ignoredSignal = SIGXFSZ});
}

TEST(FileSizeLimit, EndsTheProgramWhichLeavesTheCopy) {
  const Sandbox dir;
  const std::string input = appendEntities(box(), paired());
  dir.write("in.step", input);
  const Outcome outcome = runIn(dir, {"in.step", "out.stl"}, {.limits = {{RLIMIT_FSIZE, 2048}}});
  EXPECT_EQ(outcome.signal, SIGXFSZ);
  EXPECT_THAT(outcome.out, AllOf(HasSubstr("\n[3] Stripping"), Not(HasSubstr("Failed"))));
  EXPECT_TRUE(fs::exists(dir / "tmp/in.step.clean.stp"));
  EXPECT_FALSE(fs::exists(dir / "out.stl"));
  EXPECT_EQ(dir.read("in.step"), input);
}

TEST(FullDisk, IsNotNoticedByTheStlWriter) {
  const Sandbox dir;
  dir.write("in.step", stepFile(unique()));
  const Outcome outcome = runIn(dir, {"in.step", "out.stl"},
                                {.limits = {{RLIMIT_FSIZE, 100}}, .ignoredSignal = SIGXFSZ});
  EXPECT_THAT(outcome.out, HasSubstr("\nSaved: out.stl\nDone\n"));
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(outcome.exitStatus, 0);
  EXPECT_LE(fs::file_size(dir / "out.stl"), 100U);
}

/// Without sanitizers, which want to be the first library themselves.
void expectSameWithPreloaded(const std::string& library) {
#ifdef PLENVORITH_SANITIZED
  GTEST_SKIP() << "sanitizers bring an allocator of their own";
#endif
  const Sandbox dir;
  dir.write("in.step", appendEntities(box(), paired()));
  const Outcome plain = runIn(dir, {"in.step", "plain.stl"});
  const Outcome preloaded =
      runIn(dir, {"in.step", "preloaded.stl"}, {.environment = {"LD_PRELOAD=" + library}});
  if (preloaded.err.find("cannot be preloaded") != std::string::npos) {
    GTEST_SKIP() << library << " is not installed";
  }
  EXPECT_EQ(plain.exitStatus, 0);
  EXPECT_EQ(preloaded.exitStatus, 0);
  EXPECT_EQ(preloaded.signal, 0);
  EXPECT_EQ(preloaded.err, "");
  EXPECT_EQ(dir.read("preloaded.stl"), dir.read("plain.stl"));
}

TEST(PreloadedAllocator, MayBeJemalloc) {
  expectSameWithPreloaded("libjemalloc.so.2");
}

TEST(PreloadedAllocator, MayBeTcmalloc) {
  expectSameWithPreloaded("libtcmalloc_minimal.so.4");
}

TEST(ReadError, KeepsTheLinesInFrontOfIt) {
#ifdef PLENVORITH_SANITIZED
  GTEST_SKIP() << "sanitizers want to be the first library";
#endif
  const Sandbox dir;
  // Where the library that is preloaded lets reading fail, in the middle of a line.
  constexpr std::size_t kReadable = 200'000;
  std::string input = stepFile(unique());
  input.resize(input.find("ENDSEC;\nEND-ISO"));
  std::size_t entities = 4;
  while (input.size() <= kReadable) {
    input += "#" + std::to_string(1000 + entities) + "=A('" + std::string(40, 'x') + "');\n";
    ++entities;
  }
  for (int i = 0; i < 1000; ++i) {
    input += "#" + std::to_string(900'000 + i) + "=B();\n";
  }
  dir.write("failing.step", input);
  expectRun(dir, {"failing.step", "out.stl"},
            {.out = "Reading: failing.step\n"
                    "[1] Analyzing file structure...\n"
                    "  Parsed " +
                    std::to_string(entities) +
                    " entities\n"
                    "  Status: tessellation only (no BRep)\n"
                    "  Paired tess representations: 0\n"
                    "  Unique tess representations: 1\n"
                    "  Unique tess faces to parse: 1\n"
                    "[2] Parsing all tessellation (no BRep in file)...\n"
                    "  Parsed 2 triangles from tessellation\n"
                    "[5] Writing STL: 2 triangles (BRep: 0 + Tess: 2)\n"
                    "Saved: out.stl\n"
                    "Done\n",
             .made = {"out.stl"}},
            {.environment = {"LD_PRELOAD=" PLENVORITH_FAILING_READ}});
}

TEST(AddressSpaceLimit, EndsTheProgramWithoutTouchingTheInput) {
#ifdef PLENVORITH_SANITIZED
  GTEST_SKIP() << "sanitizers themselves need more address space";
#endif
  const Sandbox dir;
  std::string input;
  for (int i = 0; i < 2'000'000; ++i) {
    input += "#" + std::to_string(i) + "=A;\n";
  }
  dir.write("in.step", input);
  expectRun(dir, {"in.step", "out.stl"},
            {.out = "Reading: in.step\n[1] Analyzing file structure...\n",
             .err = testing::_,  // what the allocator says of it, if anything
             .exitStatus = kNoExitStatus,
             .signal = SIGABRT},
            {.limits = {{RLIMIT_AS, rlim_t{96} << 20U}}});
}

}  // namespace
}  // namespace plenvorith::test
