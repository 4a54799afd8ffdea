// The temporary directory in trouble, and runs that share one.

#include <csignal>
#include <future>
#include <string>

#include <sys/resource.h>

#include "tests/cli/expect_run.h"
#include "tests/cli/inputs.h"

namespace plenvorith::test {
namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

/// What a file of paired tessellation and the box gives as STL: the report names the copy.
std::string pairedTranscript(const std::string& input, const std::string& copy) {
  return "Reading: " + input + R"(
[1] Analyzing file structure...
  Parsed 176 entities
  Status: all tessellation paired with BRep
  Paired tess representations: 1
  Unique tess representations: 0
  Unique tess faces to parse: 0
[2] All tessellation duplicates BRep, will use BRep only
[3] Stripping tessellation and reading BRep...
[PREPROCESS] Stripped 4 lines -> )" +
         copy + R"(
  BRep: roots=1, shapes=1
  Solids: 1, free shells: 0, free faces: 0
  Read 1 BRep shapes
[4] Meshing BRep (deflection=0.1)...
  BRep: 12 triangles
[5] Writing STL: 12 triangles (BRep: 12 + Tess: 0)
Saved: out.stl
Done
)";
}

/// The same where the copy cannot be made, so that there is nothing to read.
constexpr const char* kNoCopyTranscript = R"(Reading: in.step
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
)";

TEST(TemporaryDirectory, MayEndInASlash) {
  const Sandbox dir;
  dir.write("in.step", appendEntities(box(), paired()));
  expectRun(
      dir, {"in.step", "out.stl"},
      {.out = ownLines(pairedTranscript("in.step", "tmp/in.step.clean.stp")), .made = {"out.stl"}},
      {.environment = {"TMPDIR=tmp/"}});
}

TEST(TemporaryDirectory, MayBeAbsolute) {
  const Sandbox dir;
  dir.write("in.step", appendEntities(box(), paired()));
  const std::string absolute = dir / "tmp";
  expectRun(dir, {"in.step", "out.stl"},
            {.out = ownLines(pairedTranscript("in.step", absolute + "/in.step.clean.stp")),
             .made = {"out.stl"}},
            {.environment = {"TMPDIR=" + absolute}});
}

TEST(TemporaryDirectory, MayBeNotWritable) {
  const Sandbox dir;
  dir.write("in.step", appendEntities(box(), paired()));
  fs::permissions(dir / "tmp", fs::perms::owner_read | fs::perms::owner_exec |
                                   fs::perms::others_read | fs::perms::others_exec);
  expectRun(dir, {"in.step", "out.stl"},
            {.out = ownLines(kNoCopyTranscript),
             .err = "Error: No geometry found in file\n",
             .exitStatus = 1},
            {.withoutRights = true});
  expectRun(dir, {"in.step", "out.step"},
            {.out = ownLines(R"(Reading: in.step
[1] Analyzing file structure...
  Parsed 176 entities
  Status: all tessellation paired with BRep
[2] All tessellation duplicates BRep, stripping...
[PREPROCESS] Stripped 4 lines -> tmp/in.step.clean.stp
Failed
)"),
             .err = "Failed to read BRep\n",
             .exitStatus = 1},
            {.withoutRights = true});
}

TEST(TemporaryDirectory, MayHoldADirectoryInPlaceOfTheCopy) {
  const Sandbox dir;
  dir.write("in.step", appendEntities(box(), paired()));
  dir.makeDirectory("tmp/in.step.clean.stp");
  dir.write("tmp/in.step.clean.stp/kept", "kept");
  expectRun(dir, {"in.step", "out.stl"},
            {.out = ownLines(kNoCopyTranscript),
             .err = "Error: No geometry found in file\n",
             .exitStatus = 1});
}

TEST(TemporaryDirectory, MayHoldAStaleCopyWhichIsReplacedAndDeleted) {
  const Sandbox dir;
  dir.write("in.step", appendEntities(box(), paired()));
  dir.write("tmp/in.step.clean.stp", std::string(100000, 'x'));
  const Outcome outcome = runIn(dir, {"in.step", "out.stl"});
  EXPECT_THAT(outcome.out, ownLines(pairedTranscript("in.step", "tmp/in.step.clean.stp")));
  EXPECT_EQ(outcome.exitStatus, 0);
  EXPECT_TRUE(fs::is_empty(dir / "tmp"));
  EXPECT_EQ(volumeOf(recordsOf(dir.read("out.stl"))), 6000);
}

TEST(TemporaryDirectory, MayHoldAStaleCopyThatCannotBeReplacedAndIsRead) {
  const Sandbox dir;
  dir.write("in.step", appendEntities(box(), paired()));
  dir.write("tmp/in.step.clean.stp", dataFile("line.step"));
  fs::permissions(dir / "tmp/in.step.clean.stp", fs::perms::owner_read | fs::perms::others_read);
  fs::permissions(dir / "tmp", fs::perms::owner_read | fs::perms::owner_exec |
                                   fs::perms::others_read | fs::perms::others_exec);
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
  BRep: roots=1, shapes=1
  Solids: 0, free shells: 0, free faces: 0
  Read 1 BRep shapes
[4] Meshing BRep (deflection=0.1)...
  BRep: 0 triangles
Failed
)"),
             .err = "Error: No geometry found in file\n",
             .exitStatus = 1},
            {.withoutRights = true});
}

TEST(TemporaryDirectory, MayHoldALinkInPlaceOfTheCopyWhoseTargetIsWritten) {
  const Sandbox dir;
  dir.write("in.step", appendEntities(box(), paired()));
  dir.write("target", "old");
  fs::create_symlink("../target", dir / "tmp/in.step.clean.stp");
  const Outcome outcome = runIn(dir, {"in.step", "out.stl"});
  EXPECT_THAT(outcome.out, ownLines(pairedTranscript("in.step", "tmp/in.step.clean.stp")));
  EXPECT_EQ(outcome.exitStatus, 0);
  EXPECT_TRUE(fs::is_empty(dir / "tmp"));  // the link goes, its target stays
  EXPECT_EQ(dir.read("target"),
            appendEntities(box(),
                           "#500=SHAPE_REPRESENTATION('',(#11),#165);\n"
                           "#501=SHAPE_REPRESENTATION_RELATIONSHIP('','',#500,#510);\n"));
  EXPECT_EQ(dir.read("in.step"), appendEntities(box(), paired()));
}

TEST(TemporaryDirectory, MayHoldTheInput) {
  const Sandbox dir;
  dir.write("tmp/in.step", appendEntities(box(), paired()));
  expectRun(dir, {"tmp/in.step", "out.stl"},
            {.out = ownLines(pairedTranscript("tmp/in.step", "tmp/in.step.clean.stp")),
             .made = {"out.stl"}});
}

TEST(TemporaryDirectory, MayHoldTheInputWithTheNameOfACopy) {
  const Sandbox dir;
  dir.write("tmp/in.clean.stp", appendEntities(box(), paired()));
  expectRun(dir, {"tmp/in.clean.stp", "out.stl"},
            {.out = ownLines(pairedTranscript("tmp/in.clean.stp", "tmp/in.clean.stp.clean.stp")),
             .made = {"out.stl"}});
}

TEST(FullDisk, LeavesACopyCutShortThatCannotBeRead) {
  const Sandbox dir;
  dir.write("in.step", appendEntities(box(), paired()));
  // The limit stands for a disk on which the copy does not fit; the copy is deleted all the same.
  expectRun(dir, {"in.step", "out.stl"},
            {.out = ownLines(kNoCopyTranscript),
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

// Runs at the same moment.

TEST(TwoRuns, DoNotMeetWhenTheirInputsHaveDifferentNames) {
  const Sandbox dir;
  dir.write("a.step", appendEntities(box(), paired()));
  dir.write("b.step", appendEntities(dataFile("parts.step"), paired()));
  for (int round = 0; round < 5; ++round) {
    auto first = std::async(std::launch::async, [&] { return runIn(dir, {"a.step", "a.stl"}); });
    const Outcome b = runIn(dir, {"b.step", "b.stl"});
    EXPECT_EQ(first.get().exitStatus, 0);
    EXPECT_EQ(b.exitStatus, 0);
    EXPECT_EQ(volumeOf(recordsOf(dir.read("a.stl"))), 6000);
    EXPECT_EQ(volumeOf(recordsOf(dir.read("b.stl"))), 6250);
  }
  EXPECT_TRUE(fs::is_empty(dir / "tmp"));
}

TEST(TwoRuns, DoNotMeetWhenTheyHaveDifferentTemporaryDirectories) {
  const Sandbox dir;
  dir.makeDirectory("a");
  dir.makeDirectory("b");
  dir.makeDirectory("tmp2");
  dir.write("a/in.step", appendEntities(box(), paired()));
  dir.write("b/in.step", appendEntities(dataFile("parts.step"), paired()));
  for (int round = 0; round < 5; ++round) {
    auto first = std::async(std::launch::async, [&] { return runIn(dir, {"a/in.step", "a.stl"}); });
    const Outcome b = runIn(dir, {"b/in.step", "b.stl"}, {.environment = {"TMPDIR=tmp2"}});
    EXPECT_EQ(first.get().exitStatus, 0);
    EXPECT_EQ(b.exitStatus, 0);
    EXPECT_EQ(volumeOf(recordsOf(dir.read("a.stl"))), 6000);
    EXPECT_EQ(volumeOf(recordsOf(dir.read("b.stl"))), 6250);
  }
  EXPECT_TRUE(fs::is_empty(dir / "tmp"));
  EXPECT_TRUE(fs::is_empty(dir / "tmp2"));
}

}  // namespace
}  // namespace plenvorith::test
