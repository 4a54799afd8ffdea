// Inputs that cannot be read, outputs that cannot be written, and too little memory.

#include <atomic>
#include <chrono>
#include <csignal>
#include <string>
#include <thread>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/cli/expect_run.h"
#include "tests/cli/inputs.h"

namespace plenvorith::test {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::StartsWith;

/// Checks that both pipelines, split or not, find nothing in `input` and say so.
void expectNothingReadable(const Sandbox& dir, const std::string& input,
                           const Command& command = {}) {
  expectRun(dir, {input, "out.stl"},
            {.out = ownLines("Reading: " + input + R"(
[1] Analyzing file structure...
  Parsed 0 entities
  Status: no tessellation
[3] Stripping tessellation and reading BRep...
  No BRep geometry found
Failed
)"),
             .err = "Error: No geometry found in file\n",
             .exitStatus = 1},
            command);
  expectRun(dir, {input, "out.stl", "0.1", "x"},
            {.out = ownLines("Reading: " + input + R"(
[1] Analyzing file structure...
  Parsed 0 entities
  Status: no tessellation
[3] Stripping tessellation and reading BRep...
  No BRep geometry found
Failed
)"),
             .err = "Error: No geometry found in file\n",
             .exitStatus = 1},
            command);
  expectRun(dir, {input, "out.step"},
            {.out = ownLines("Reading: " + input + R"(
[1] Analyzing file structure...
  Parsed 0 entities
  Status: no tessellation
[2] No tessellation, saving clean STEP...
Failed
)"),
             .err = "Failed to read STEP\n",
             .exitStatus = 1},
            command);
  expectRun(
      dir, {input, "out.step", "0.1", "x"},
      {.out = ownLines("Failed\n"), .err = "Failed to read BRep from STEP\n", .exitStatus = 1},
      command);
}

TEST(UnreadableInput, MayBeMissing) {
  const Sandbox dir;
  expectNothingReadable(dir, "missing.step");
  expectNothingReadable(dir, "missing/in.step");
  expectNothingReadable(dir, "");
}

TEST(UnreadableInput, MayBeADirectory) {
  const Sandbox dir;
  dir.makeDirectory("in.step");
  expectNothingReadable(dir, "in.step");
}

TEST(UnreadableInput, MayBeForbidden) {
  const Sandbox dir;
  dir.write("in.step", box());
  fs::permissions(dir / "in.step", fs::perms::none);
  expectNothingReadable(dir, "in.step", {.withoutRights = true});
}

TEST(UnreadableInput, MayBeEmpty) {
  const Sandbox dir;
  dir.write("in.step", "");
  expectNothingReadable(dir, "in.step");
}

TEST(UnreadableInput, MayHoldZeroBytes) {
  const Sandbox dir;
  dir.write("in.step", std::string(5000, '\0'));
  expectNothingReadable(dir, "in.step");
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
  expectNothingReadable(dir, "in.step");
}

TEST(UnreadableInput, MayBeAStepFileCutShort) {
  const Sandbox dir;
  dir.write("in.step", "ISO-10303-21;\nHEADER;\n");
  expectNothingReadable(dir, "in.step");
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
  expectNothingReadable(dir, "in.step");
  done = true;
  writers.join();
}

// Outputs.

constexpr const char* kBoxTranscript = R"(Reading: box.step
[1] Analyzing file structure...
  Parsed 170 entities
  Status: no tessellation
[3] Stripping tessellation and reading BRep...
  BRep: roots=1, shapes=1
  Solids: 1, free shells: 0, free faces: 0
  Read 1 BRep shapes
[4] Meshing BRep (deflection=0.1)...
  BRep: 12 triangles
[5] Writing STL: 12 triangles (BRep: 12 + Tess: 0)
)";

constexpr const char* kBoxToStepTranscript = R"(Reading: box.step
[1] Analyzing file structure...
  Parsed 170 entities
  Status: no tessellation
[2] No tessellation, saving clean STEP...
  BRep: roots=1, shapes=1
  Solids: 1, free shells: 0, free faces: 0
)";

/// Checks that neither pipeline can write to a path, which is given without its extension.
void expectNotWritable(const Sandbox& dir, const std::string& stem, const Command& command = {}) {
  dir.write("box.step", box());
  expectRun(dir, {"box.step", stem + ".stl"},
            {.out = std::string(kBoxTranscript) + "Failed\n",
             .err = "Error: Cannot open " + stem + ".stl for writing\n",
             .exitStatus = 1},
            command);
  expectRun(dir, {"box.step", stem + ".step"},
            {.out = ownLines(std::string(kBoxToStepTranscript) + "Failed\n"),
             .err = "Failed to write STEP\n",
             .exitStatus = 1},
            command);
}

TEST(UnwritableOutput, MayLieInAMissingDirectory) {
  expectNotWritable(Sandbox(), "missing/out");
}

TEST(UnwritableOutput, MayBeADirectory) {
  const Sandbox dir;
  dir.makeDirectory("out.stl");
  dir.makeDirectory("out.step");
  expectNotWritable(dir, "out");
}

TEST(UnwritableOutput, MayBeAReadOnlyFile) {
  const Sandbox dir;
  for (const char* name : {"out.stl", "out.step"}) {
    dir.write(name, "kept");
    fs::permissions(dir / name, fs::perms::owner_read | fs::perms::others_read);
  }
  expectNotWritable(dir, "out", {.withoutRights = true});
}

TEST(UnwritableOutput, MayLieInAReadOnlyDirectory) {
  const Sandbox dir;
  dir.makeDirectory("sub");
  fs::permissions(dir / "sub", fs::perms::owner_read | fs::perms::owner_exec |
                                   fs::perms::others_read | fs::perms::others_exec);
  expectNotWritable(dir, "sub/out", {.withoutRights = true});
}

TEST(Output, ReplacesExistingFiles) {
  const Sandbox dir;
  dir.write("box.step", box());
  dir.write("out.stl", "old");
  dir.write("out.step", "old");
  expectRun(
      dir, {"box.step", "out.stl"},
      {.out = std::string(kBoxTranscript) + "Saved: out.stl\nDone\n", .overwritten = {"out.stl"}});
  expectRun(dir, {"box.step", "out.step"},
            {.out = ownLines(std::string(kBoxToStepTranscript) + "Saved: out.step\nDone\n"),
             .overwritten = {"out.step"}});
  EXPECT_EQ(volumeOf(recordsOf(dir.read("out.stl"))), 6000);
  EXPECT_THAT(dir.read("out.step"), StartsWith("ISO-10303-21;"));
}

// The writer of STL files looks at no write; that of STEP files does.
TEST(Output, ThatIsFullIsNoticedForStepOnly) {
  const Sandbox dir;
  dir.write("box.step", box());
  fs::create_symlink("/dev/full", dir / "full.stl");
  fs::create_symlink("/dev/full", dir / "full.step");
  expectRun(dir, {"box.step", "full.stl"},
            {.out = std::string(kBoxTranscript) + "Saved: full.stl\nDone\n"});
  expectRun(dir, {"box.step", "full.step"},
            {.out = ownLines(std::string(kBoxToStepTranscript) + "Failed\n"),
             .err = "Failed to write STEP\n",
             .exitStatus = 1});
}

TEST(Output, MayBeTheInput) {
  const Sandbox dir;
  dir.write("box.step", box());
  expectRun(dir, {"box.step", "box.step"},
            {.out = ownLines(std::string(kBoxToStepTranscript) + "Saved: box.step\nDone\n"),
             .overwritten = {"box.step"}});
  EXPECT_THAT(runIn(dir, {"box.step", "out.stl"}).out, HasSubstr("  BRep: 12 triangles\n"));

  dir.write("in.stl", stepFile(unique()));
  expectRun(dir, {"in.stl", "in.stl"},
            {.out = R"(Reading: in.stl
[1] Analyzing file structure...
  Parsed 4 entities
  Status: tessellation only (no BRep)
  Paired tess representations: 0
  Unique tess representations: 1
  Unique tess faces to parse: 1
[2] Parsing all tessellation (no BRep in file)...
  Parsed 2 triangles from tessellation
[5] Writing STL: 2 triangles (BRep: 0 + Tess: 2)
Saved: in.stl
Done
)",
             .overwritten = {"in.stl"}});
  EXPECT_EQ(dir.read("in.stl"), stlFile(kUniqueTriangles));
}

// Too little of something.

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
