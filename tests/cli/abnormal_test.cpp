// Ends without "Done" or "Failed": nothing catches the errors of numbers, of the kernel and of the
// query for the temporary directory.

#include <csignal>
#include <string>

#include "tests/cli/expect_run.h"
#include "tests/cli/inputs.h"

namespace plenvorith::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;

/// A tessellated face that nothing duplicates, on this coordinates list.
std::string faceOn(const std::string& coordinates) {
  return stepFile(
      "#1=TESSELLATED_SHAPE_REPRESENTATION('',(#2),#9);\n"
      "#2=TESSELLATED_SOLID('',(#3),$);\n"
      "#3=COMPLEX_TRIANGULATED_FACE('',#4,3,(),$,(),((1,2,3)),());\n"
      "#4=" +
      coordinates + "\n");
}

constexpr const char* kUntilDecoding = R"(Reading: in.step
[1] Analyzing file structure...
  Parsed 4 entities
  Status: tessellation only (no BRep)
  Paired tess representations: 0
  Unique tess representations: 1
  Unique tess faces to parse: 1
[2] Parsing all tessellation (no BRep in file)...
)";

/// What the standard library says of an error that nobody caught.
testing::Matcher<std::string> uncaught(const std::string& type, const std::string& message) {
  return AllOf(HasSubstr(type), HasSubstr(message));
}

TEST(AbnormalEnd, FollowsAMalformedNumber) {
  const Sandbox dir;
  dir.write("in.step", faceOn("COORDINATES_LIST('',3,((0.,0.,0.),(1.,0.,abc),(0.,1.,0.)));"));
  expectRun(dir, {"in.step", "out.stl"},
            {.out = kUntilDecoding,
             .err = uncaught("std::invalid_argument", "invalid stod argument"),
             .exitStatus = kNoExitStatus,
             .signal = SIGABRT});
}

TEST(AbnormalEnd, FollowsANumberOutOfRange) {
  const Sandbox dir;
  dir.write("in.step", faceOn("COORDINATES_LIST('',3,((0.,0.,0.),(1E400,0.,0.),(0.,1.,0.)));"));
  expectRun(dir, {"in.step", "out.stl"},
            {.out = kUntilDecoding,
             .err = uncaught("std::out_of_range", "stod argument out of range"),
             .exitStatus = kNoExitStatus,
             .signal = SIGABRT});
}

TEST(AbnormalEnd, FollowsAnInnerListOfTwoNumbers) {
  const Sandbox dir;
  dir.write("in.step", faceOn("COORDINATES_LIST('',3,((0.,0.),(1.,0.,0.),(0.,1.,0.)));"));
  expectRun(dir, {"in.step", "out.stl"},
            {.out = kUntilDecoding,
             .err = uncaught("std::invalid_argument", "invalid stod argument"),
             .exitStatus = kNoExitStatus,
             .signal = SIGABRT});
}

TEST(AbnormalEnd, FollowsACoordinatesEntityThatIsTooShort) {
  const Sandbox dir;
  // Behind the last entity the table keeps the closing keywords: one more entity ends the short
  // one.
  dir.write("in.step", faceOn("A(1);\n#5=B;"));
  const std::string out = kUntilDecoding;
  expectRun(dir, {"in.step", "out.stl"},
            {.out = std::string(out).replace(out.find("Parsed 4"), 8, "Parsed 5"),
             .err = uncaught("std::out_of_range", ""),
             .exitStatus = kNoExitStatus,
             .signal = SIGABRT});
}

TEST(AbnormalEnd, FollowsAFaceWithoutAQuotedName) {
  const Sandbox dir;
  dir.write("in.step", stepFile("#1=TESSELLATED_SHAPE_REPRESENTATION('',(#3),#9);\n"
                                "#3=COMPLEX_TRIANGULATED_FACE($,#4,3,(),$,(),((1,2,3)),());\n"));
  expectRun(dir, {"in.step", "out.step"},
            {.out = R"(Reading: in.step
[1] Analyzing file structure...
  Parsed 2 entities
  Status: tessellation only (no BRep)
[2] No BRep geometry, only tessellation. Converting to STL...
)",
             .err = uncaught("std::invalid_argument", "invalid stod argument"),
             .exitStatus = kNoExitStatus,
             .signal = SIGABRT});
}

TEST(AbnormalEnd, LeavesOutTheTrianglesOfFacesThatWereInOrder) {
  const Sandbox dir;
  dir.write("in.step", appendEntities(stepFile(unique()),
                                      "#99=COMPLEX_TRIANGULATED_FACE('',#523,x,(),$,(),(),());\n"));
  const std::string out = kUntilDecoding;
  expectRun(dir, {"in.step", "out.stl"},
            {.out = std::string(out).replace(out.find("Parsed 4"), 8, "Parsed 5"),
             .err = uncaught("std::invalid_argument", "invalid stod argument"),
             .exitStatus = kNoExitStatus,
             .signal = SIGABRT});
}

TEST(AbnormalEnd, LeavesTheCopyWhenTheKernelRefusesTheDeflection) {
  const Sandbox dir;
  dir.write("paired.step", appendEntities(box(), paired()));
  expectRun(dir, {"paired.step", "out.stl", "1e-9"},
            {.out = ownLines(R"(Reading: paired.step
[1] Analyzing file structure...
  Parsed 176 entities
  Status: all tessellation paired with BRep
  Paired tess representations: 1
  Unique tess representations: 0
  Unique tess faces to parse: 0
[2] All tessellation duplicates BRep, will use BRep only
[3] Stripping tessellation and reading BRep...
[PREPROCESS] Stripped 4 lines -> tmp/paired.step.clean.stp
  BRep: roots=1, shapes=1
  Solids: 1, free shells: 0, free faces: 0
  Read 1 BRep shapes
[4] Meshing BRep (deflection=1e-09)...
)"),
             .err = HasSubstr("Standard_NumericError"),
             .exitStatus = kNoExitStatus,
             .signal = SIGABRT,
             .made = {"tmp/paired.step.clean.stp"}});
}

TEST(AbnormalEnd, LeavesTheInputWhenTheKernelRefusesTheDeflection) {
  const Sandbox dir;
  dir.write("box.step", box());
  expectRun(dir, {"box.step", "out.stl", "1e-9", "x"},
            {.out = R"(Reading: box.step
[1] Analyzing file structure...
  Parsed 170 entities
  Status: no tessellation
[3] Stripping tessellation and reading BRep...
  BRep: roots=1, shapes=1
  Solids: 1, free shells: 0, free faces: 0
  Read 1 BRep shapes
)",
             .err = HasSubstr("Standard_NumericError"),
             .exitStatus = kNoExitStatus,
             .signal = SIGABRT});
}

TEST(AbnormalEnd, FollowsATemporaryDirectoryThatIsMissing) {
  const Sandbox dir;
  dir.write("paired.step", appendEntities(box(), paired()));
  expectRun(dir, {"paired.step", "out.step"},
            {.out = R"(Reading: paired.step
[1] Analyzing file structure...
  Parsed 176 entities
  Status: all tessellation paired with BRep
[2] All tessellation duplicates BRep, stripping...
)",
             .err = uncaught("filesystem_error", "temp_directory_path"),
             .exitStatus = kNoExitStatus,
             .signal = SIGABRT},
            {.environment = {"TMPDIR=missing"}});
}

TEST(AbnormalEnd, FollowsATemporaryDirectoryThatIsAFile) {
  const Sandbox dir;
  dir.write("paired.step", appendEntities(box(), paired()));
  expectRun(dir, {"paired.step", "out.step", "0.1", "x"},
            {.err = uncaught("filesystem_error", "temp_directory_path"),
             .exitStatus = kNoExitStatus,
             .signal = SIGABRT},
            {.environment = {"TMPDIR=paired.step"}});
}

TEST(AbnormalEnd, DoesNotFollowAMissingTemporaryDirectoryThatIsNotNeeded) {
  const Sandbox dir;
  dir.write("in.step", stepFile(unique()));
  expectRun(dir, {"in.step", "out.stl"},
            {.out = std::string(kUntilDecoding) + R"(  Parsed 2 triangles from tessellation
[5] Writing STL: 2 triangles (BRep: 0 + Tess: 2)
Saved: out.stl
Done
)",
             .made = {"out.stl"}},
            {.environment = {"TMPDIR=missing"}});
}

}  // namespace
}  // namespace plenvorith::test
