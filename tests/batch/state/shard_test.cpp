#include "batch/state/shard.h"

#include <filesystem>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

#include "tests/support/temp_dir.h"

namespace plenvorith {
namespace {

using test::TempDir;

Division divisionOf(const std::string& settings) {
  return {3,
          settings,
          {{"/in/a\n\xff.stp", 7}, {"/in/b.stp", 0}, {"/in/c 1.stp", 500000}, {"/in/d.stp", 7}}};
}

TEST(Shards, HaveFoldersOfTheirOwn) {
  const Places places = placesOfShard(placesIn("/out"), {2, 8});
  EXPECT_EQ(places.output, "/out");
  EXPECT_EQ(places.state, "/out/.plenvorith-batch");
  EXPECT_EQ(places.database, "/out/.plenvorith-batch/shards/2-of-8/state.db");
  EXPECT_EQ(places.lock, "/out/.plenvorith-batch/shards/2-of-8/lock");
  EXPECT_EQ(places.run, "/out/.plenvorith-batch/shards/2-of-8/run");
}

TEST(AgreeOnDivision, KeepsWhatTheFirstProposes) {
  const TempDir directory;
  const std::string path = directory / "shards/division";
  std::string problem;
  const Division first = agreeOnDivision(path, divisionOf("first"), problem);
  EXPECT_EQ(problem, "");
  const Division second = agreeOnDivision(path, {2, "second", {}}, problem);
  EXPECT_EQ(problem, "");
  for (const Division& division : {first, second}) {
    EXPECT_EQ(division.count, 3);
    EXPECT_EQ(division.settings, "first");
    ASSERT_EQ(division.files.size(), 4U);
    EXPECT_EQ(division.files[0].path, "/in/a\n\xff.stp");
    EXPECT_EQ(division.files[0].size, 7);
    EXPECT_EQ(division.files[2].path, "/in/c 1.stp");
    EXPECT_EQ(division.files[2].size, 500000);
  }
  // Nothing else stays.
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(directory / "shards"), {}), 1);
}

TEST(AgreeOnDivision, GivesAllProcessesTheSameWhenTheyComeTogether) {
  const TempDir directory;
  std::vector<std::string> settings(8);
  std::vector<std::thread> threads;
  for (std::size_t i = 0; i < settings.size(); ++i) {
    threads.emplace_back([&, i] {
      std::string problem;
      settings[i] =
          agreeOnDivision(directory / "division", divisionOf(std::to_string(i)), problem).settings;
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_NE(settings[0], "");
  EXPECT_EQ(std::set<std::string>(settings.begin(), settings.end()).size(), 1U);
}

TEST(AgreeOnDivision, TellsWhyItCannot) {
  const TempDir directory;
  test::writeFile(directory / "file", "");
  std::string problem;
  (void)agreeOnDivision(directory / "file/division", divisionOf(""), problem);
  EXPECT_THAT(problem, testing::StartsWith((directory / "file/division") + ": "));
}

TEST(ReadDivision, RejectsWhatIsNone) {
  const TempDir directory;
  EXPECT_FALSE(readDivision(directory / "missing"));
  const std::string title = "plenvorith-batch division 1\n";
  for (const std::string& text :
       {std::string(), std::string("other\n"), title, title + "x\n", title + "3\nno end",
        title + "3\nall" + std::string("\0", 1) + "12",
        title + "3\nall" + std::string("\0", 1) + "12 no end"}) {
    EXPECT_FALSE(readDivision(test::writeFile(directory / "division", text))) << text;
  }
  EXPECT_TRUE(readDivision(
      test::writeFile(directory / "division", title + "3\nall" + std::string("\0", 1))));
}

TEST(FilesOfShard, DividesAllFilesByBytes) {
  const Division division = divisionOf("");
  std::multiset<std::string> paths;
  for (int number = 1; number <= 3; ++number) {
    for (const InputFile& file : filesOfShard(division, number)) {
      paths.insert(file.path);
    }
  }
  EXPECT_EQ(paths.size(), 4U);
  const std::vector<InputFile> first = filesOfShard(division, 1);
  ASSERT_EQ(first.size(), 1U);
  EXPECT_EQ(first[0].path, "/in/c 1.stp");
}

}  // namespace
}  // namespace plenvorith
