#include <filesystem>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include "tests/support/prepared_file.h"
#include "tests/support/run_program.h"
#include "tests/support/temp_dir.h"

namespace plenvorith {
namespace {

using test::Command;
using test::Outcome;
using test::readFile;
using test::TempDir;
using test::writeFile;

/// A file that takes more than one block when it is prepared.
std::string largeFile() {
  std::string data;
  for (int i = 1; i < 20'000; ++i) {
    data += '#' + std::to_string(i) + "=CARTESIAN_POINT('',(0.,0.,0.));\n";
  }
  return test::stepFile(data);
}

class PrepareProgram : public testing::Test {
 protected:
  Outcome run(const std::vector<std::string>& arguments) {
    command.program = PLENVORITH_PREPARE;
    command.arguments = arguments;
    command.directory = directory.path();
    return runProgram(command);
  }
  /// How many files there are.
  std::ptrdiff_t fileCount() const {
    return std::distance(std::filesystem::directory_iterator(directory.path()),
                         std::filesystem::directory_iterator());
  }

  TempDir directory;
  Command command;
  std::string input = writeFile(directory / "in.stp", largeFile());
};

TEST_F(PrepareProgram, WritesNoStepFileUnderTheNameOfAMesh) {
  const Outcome outcome = run({"in.stp", "out.stl"});
  EXPECT_EQ(outcome.exitStatus, 2);
  EXPECT_EQ(outcome.err, "Error: what is written is a STEP file, not an STL file: out.stl\n");
  EXPECT_EQ(fileCount(), 1);
}

TEST_F(PrepareProgram, TellsItsUse) {
  for (const std::vector<std::string>& arguments :
       {std::vector<std::string>{}, {"in.stp"}, {"in.stp", "out.stp", "more"}}) {
    const Outcome outcome = run(arguments);
    EXPECT_EQ(outcome.exitStatus, 2);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err, "usage: plenvorith-prepare INPUT OUTPUT\n");
  }
  EXPECT_EQ(fileCount(), 1);
}

TEST_F(PrepareProgram, ReplacesAnOlderOutput) {
  writeFile(directory / "out.stp", "old");
  const Outcome outcome = run({"in.stp", "out.stp"});
  EXPECT_EQ(outcome.exitStatus, 3);
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(readFile(directory / "out.stp"), largeFile());
  EXPECT_EQ(readFile(input), largeFile());
  EXPECT_EQ(fileCount(), 2);
}

TEST_F(PrepareProgram, RejectsInputsThatAreNoFiles) {
  std::filesystem::create_directory(directory / "folder");
  ASSERT_EQ(mkfifo((directory / "pipe").c_str(), 0600), 0);
  EXPECT_EQ(run({"none.stp", "out.stp"}).err, "Error: Cannot read none.stp\n");
  EXPECT_EQ(run({"folder", "out.stp"}).err, "Error: Cannot read folder, it is a directory\n");
  EXPECT_EQ(run({"pipe", "out.stp"}).err,
            "Error: Cannot read pipe, it is no file that can be read twice\n");
  EXPECT_EQ(run({"/dev/null", "out.stp"}).exitStatus, 1);
  EXPECT_FALSE(std::filesystem::exists(directory / "out.stp"));
}

TEST_F(PrepareProgram, RejectsAnInputThatMayNotBeRead) {
  std::filesystem::permissions(directory.path(), std::filesystem::perms::all);
  std::filesystem::permissions(input, std::filesystem::perms::none);
  command.withoutRights = true;
  const Outcome outcome = run({"in.stp", "out.stp"});
  EXPECT_EQ(outcome.exitStatus, 1);
  EXPECT_EQ(outcome.err, "Error: Cannot read in.stp\n");
  EXPECT_EQ(fileCount(), 1);
}

TEST_F(PrepareProgram, RejectsTheInputAsOutput) {
  std::filesystem::create_hard_link(input, directory / "hard.stp");
  std::filesystem::create_symlink("in.stp", directory / "soft.stp");
  for (const char* output : {"in.stp", "./in.stp", "hard.stp", "soft.stp"}) {
    const Outcome outcome = run({"in.stp", output});
    EXPECT_EQ(outcome.exitStatus, 1);
    EXPECT_EQ(outcome.err, std::string("Error: in.stp and ") + output + " are the same file\n");
  }
  EXPECT_EQ(readFile(input), largeFile());
  EXPECT_EQ(fileCount(), 3);
}

TEST_F(PrepareProgram, RejectsOutputsThatCannotBeWritten) {
  std::filesystem::create_directory(directory / "folder");
  EXPECT_EQ(run({"in.stp", "folder"}).err, "Error: Cannot write folder, it is no file\n");
  EXPECT_EQ(run({"in.stp", "/dev/null"}).err, "Error: Cannot write /dev/null, it is no file\n");
  EXPECT_EQ(run({"in.stp", "none/out.stp"}).err, "Error: Cannot write none/out.stp\n");
  EXPECT_EQ(fileCount(), 2);
}

TEST_F(PrepareProgram, LeavesNothingWhereTheDiskIsFull) {
  writeFile(directory / "out.stp", "old");
  command.limits = {{RLIMIT_FSIZE, 300'000}};
  const Outcome outcome = run({"in.stp", "out.stp"});
  EXPECT_EQ(outcome.exitStatus, 1);
  EXPECT_EQ(outcome.err, "Error: Cannot write out.stp\n");
  EXPECT_EQ(readFile(directory / "out.stp"), "old");
  EXPECT_EQ(readFile(input), largeFile());
  EXPECT_EQ(fileCount(), 2);
}

TEST_F(PrepareProgram, WritesToWhatALinkLeadsTo) {
  writeFile(directory / "real.stp", "old");
  std::filesystem::create_symlink("real.stp", directory / "out.stp");
  EXPECT_EQ(run({"in.stp", "out.stp"}).exitStatus, 3);
  EXPECT_TRUE(std::filesystem::is_symlink(directory / "out.stp"));
  EXPECT_EQ(readFile(directory / "real.stp"), largeFile());
}

}  // namespace
}  // namespace plenvorith
