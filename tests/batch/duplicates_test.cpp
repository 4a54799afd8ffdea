#include "batch/duplicates.h"

#include <filesystem>
#include <string>

#include <gmock/gmock.h>

#include "batch/inputs/input_identity.h"
#include "batch/state/names.h"
#include "tests/support/temp_dir.h"

namespace plenvorith {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::Field;

/// Inputs "in/a", "in/b", ... of the same two bytes, of which "a" is converted in this run.
class DuplicatesTest : public testing::Test {
 protected:
  DuplicatesTest() {
    fs::create_directories(dir / "in");
    fs::create_directories(dir / "out");
    context.places = placesIn(dir / "out");
    context.places.run = dir / "run";
    context.base = dir / "in/";
    context.run = 7;
    std::string problem;
    fs::create_directories(context.places.state);
    state = openState(context.places.database, problem, StateUse::Write);
    EXPECT_NE(state, nullptr) << problem;
    for (const char* const name : {"a", "b", "c"}) {
      test::writeFile(dir / ("in/" + std::string(name)), "xx");
    }
    original.path = dir / "in/a";
    original.name = "a";
    original.run = 7;
    original.status = FileStatus::Converted;
    original.reason = "doubtful";
    original.hash = contentHash(original.path);
    original.triangles = 3;
    original.outputs = {{"a.stl_1.stl", 1}, {"a.stl_2.stl", 3}};
    test::writeFile(dir / "out/a.stl_1.stl", "1");
    test::writeFile(dir / "out/a.stl_2.stl", "222");
  }

  InputFile file(const std::string& name, std::int64_t size = 2) const {
    return {dir / ("in/" + std::string(name)), size};
  }

  /// Settles "b" and "c"; gives the names of what is left to convert.
  std::vector<std::string> settled() {
    EXPECT_TRUE(beginChanges(*state) && putFile(*state, original) && commitChanges(*state));
    std::vector<std::string> names;
    const std::vector<Duplicate> duplicates = {{file("b"), original.path},
                                               {file("c"), original.path}};
    for (const InputFile& rest : settleDuplicates(*state, context, duplicates, -1, summary)) {
      names.push_back(fs::path(rest.path).filename());
    }
    return names;
  }

  test::TempDir dir;
  RunContext context;
  State state;
  FileRecord original;
  Summary summary;
};

TEST_F(DuplicatesTest, AreFilesOfTheSameBytes) {
  test::writeFile(dir / "in/d", "xy");
  test::writeFile(dir / "in/e", "long");
  test::writeFile(dir / "in/f", "");
  test::writeFile(dir / "in/g", "");
  std::vector<InputFile> files = {file("d"),    file("a"),    file("b"), file("e", 4),
                                  file("f", 0), file("g", 0), file("c"), file("missing")};
  const std::vector<Duplicate> duplicates = takeDuplicates(files);
  std::string left;
  for (const InputFile& one : files) {
    left += fs::path(one.path).filename().string() + ' ';
  }
  EXPECT_EQ(left, "d a e f g missing ");
  ASSERT_EQ(duplicates.size(), 2U);
  EXPECT_EQ(duplicates[0].file.path, dir / "in/b");
  EXPECT_EQ(duplicates[1].file.path, dir / "in/c");
  EXPECT_EQ(duplicates[1].original, dir / "in/a");
}

TEST_F(DuplicatesTest, GetCopiesOfTheOutputs) {
  EXPECT_THAT(settled(), ElementsAre());
  EXPECT_EQ(summary.converted, 2);
  EXPECT_EQ(summary.duplicates, 2);
  EXPECT_EQ(summary.triangles, 6);
  EXPECT_EQ(test::readFile(dir / "out/b.stl_1.stl"), "1");
  EXPECT_EQ(test::readFile(dir / "out/c.stl_2.stl"), "222");
  const auto record = findFile(*state, dir / "in/b");
  ASSERT_TRUE(record.has_value());
  EXPECT_EQ(record->status, FileStatus::Converted);
  EXPECT_EQ(record->sameAs, dir / "in/a");
  EXPECT_EQ(record->reason, "doubtful");
  EXPECT_EQ(record->triangles, 3);
  EXPECT_THAT(record->outputs, ElementsAre(Field(&OutputRecord::path, "b.stl_1.stl"),
                                           Field(&OutputRecord::path, "b.stl_2.stl")));
  EXPECT_EQ(findTranscript(*state, dir / "in/b"),
            "The same bytes as " + (dir / "in/a") + ", whose conversion said:\n");
  EXPECT_FALSE(fs::exists(dir / "run/copies"));
}

TEST_F(DuplicatesTest, AreConvertedOnceTheyDiffer) {
  test::writeFile(dir / "in/b", "xz");
  fs::remove(dir / "in/c");
  EXPECT_THAT(settled(), ElementsAre("b", "c"));
  EXPECT_EQ(summary.converted, 0);
}

TEST_F(DuplicatesTest, AreConvertedWhereTheirOriginalWasNot) {
  original.status = FileStatus::Failed;
  EXPECT_THAT(settled(), ElementsAre("b", "c"));
  original.status = FileStatus::Converted;
  original.run = 6;
  EXPECT_THAT(settled(), ElementsAre("b", "c"));
  original.run = 7;
  fs::remove(dir / "out/a.stl_2.stl");
  EXPECT_THAT(settled(), ElementsAre("b", "c"));
  test::writeFile(dir / "out/a.stl_2.stl", "changed");
  EXPECT_THAT(settled(), ElementsAre("b", "c"));
  EXPECT_FALSE(fs::exists(dir / "run/copies"));
}

}  // namespace
}  // namespace plenvorith
