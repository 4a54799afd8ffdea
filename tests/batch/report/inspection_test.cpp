#include "batch/report/inspection.h"

#include <optional>
#include <string>

#include <gmock/gmock.h>
#include <sqlite3.h>

#include "batch/state/statement.h"
#include "tests/support/temp_dir.h"

namespace plenvorith {
namespace {

using test::TempDir;

const std::string kFile =
    R"({"parts":163,"partsWithProblems":2,"openSolids":1,"facesWithoutMesh":3,)"
    R"("facesOverDeflection":4,"deviation":1.25,"triangles":9,"volume":-0.5,"deflection":0.1})";

TEST(CheckFrom, TakesTheLineOfTheFileAndTheNamesOfTheParts) {
  const std::optional<MeshCheck> check = checkFrom(
      "[PREPROCESS] a line of another\n"
      R"({"number":85,"kind":"solid","path":["arm","side"],"name":"Body"})"
      "\n"
      R"({"number":86,"kind":"solid","path":["arm","\\\\xff"],"name":""})"
      "\n" +
      kFile + "\n");
  EXPECT_TRUE(check ==
              (MeshCheck{163, 2, 1, 3, 4, 1.25, -0.5, "arm / side / Body\narm / \\\\xff\n"}));
}

TEST(CheckFrom, KeepsTheFirstOfManyNames) {
  std::string printed;
  for (int i = 0; i < 30; ++i) {
    printed += R"({"number":1,"path":[],"name":"a"})" + std::string("\n");
  }
  EXPECT_EQ(checkFrom(printed + kFile)->names.size(), 40U);
}

TEST(CheckFrom, RejectsOtherTexts) {
  EXPECT_FALSE(checkFrom(""));
  EXPECT_FALSE(checkFrom("Error: a.stl cannot be opened\n"));
  EXPECT_FALSE(checkFrom(kFile.substr(0, kFile.size() - 1)));
  EXPECT_FALSE(checkFrom(R"({"parts":1})"));
  EXPECT_FALSE(checkFrom(R"({"parts":"1"})"));
  EXPECT_FALSE(checkFrom("[1,2]\n{}\n{\"path\":7,\"name\":[]}\n"));
}

TEST(Inspections, KeepWhatWasFoundOut) {
  const TempDir directory;
  std::string problem;
  const std::string path("a\xff\n.stl");
  const std::string picture("\x89PNG\0\xff", 6);
  const MeshCheck made{163, 2, 1, 3, 4, 1.25, 0.5, "arm / side\n"};
  {
    const Inspections inspections = openInspections(directory / "inspections.db", problem);
    ASSERT_TRUE(inspections) << problem;
    const std::optional<Uninspected> left = prepareInspection(*inspections, path, 134, 7);
    ASSERT_TRUE(left);
    EXPECT_TRUE(left->check && left->picture);
    ASSERT_TRUE(beginKeeping(*inspections));
    EXPECT_TRUE(keepCheck(*inspections, path, made));
    EXPECT_TRUE(keepPicture(*inspections, path, picture));
    ASSERT_TRUE(endKeeping(*inspections));
  }
  const Inspections inspections = openInspections(directory / "inspections.db", problem);
  ASSERT_TRUE(inspections) << problem;
  const Inspection found = findInspection(*inspections, path);
  EXPECT_TRUE(found.check == made);
  EXPECT_EQ(found.picture, picture);
  const std::optional<Uninspected> left = prepareInspection(*inspections, path, 134, 7);
  ASSERT_TRUE(left);
  EXPECT_FALSE(left->check || left->picture);
}

TEST(Inspections, ForgetAnotherFileOfTheSameName) {
  const TempDir directory;
  std::string problem;
  const Inspections inspections = openInspections(directory / "inspections.db", problem);
  ASSERT_TRUE(inspections) << problem;
  for (const auto& [size, mtime] : {std::pair{134, 7}, {135, 7}, {135, 6}}) {
    ASSERT_TRUE(prepareInspection(*inspections, "a.stl", size, mtime));
    const Inspection found = findInspection(*inspections, "a.stl");
    EXPECT_FALSE(found.check);
    EXPECT_EQ(found.picture, "");
    EXPECT_TRUE(keepCheck(*inspections, "a.stl", MeshCheck{.parts = 1}));
    EXPECT_TRUE(keepPicture(*inspections, "a.stl", "picture"));
  }
}

TEST(Inspections, KnowThatAToolGaveNothing) {
  const TempDir directory;
  std::string problem;
  const Inspections inspections = openInspections(directory / "inspections.db", problem);
  ASSERT_TRUE(inspections) << problem;
  ASSERT_TRUE(prepareInspection(*inspections, "a.stl", 134, 7));
  EXPECT_TRUE(keepCheck(*inspections, "a.stl", {}));
  const std::optional<Uninspected> left = prepareInspection(*inspections, "a.stl", 134, 7);
  ASSERT_TRUE(left);
  EXPECT_FALSE(left->check);
  EXPECT_TRUE(left->picture);
  EXPECT_FALSE(findInspection(*inspections, "a.stl").check);
}

TEST(Inspections, TellWhyTheyCannotBeOpened) {
  const TempDir directory;
  std::string problem;
  EXPECT_FALSE(openInspections(directory / "missing/inspections.db", problem));
  EXPECT_EQ(problem, (directory / "missing/inspections.db") + ": unable to open database file");
}

TEST(Inspections, NeedNoLocks) {
  const TempDir dir;
  std::string problem;
  ASSERT_NE(openInspections(dir / "inspections.db", problem), nullptr) << problem;
  sqlite3* other = nullptr;
  ASSERT_EQ(sqlite3_open((dir / "inspections.db").c_str(), &other), SQLITE_OK);
  ASSERT_TRUE(executeStatements(other, "BEGIN EXCLUSIVE"));
  const Inspections inspections = openInspections(dir / "inspections.db", problem);
  ASSERT_NE(inspections, nullptr) << problem;
  EXPECT_TRUE(prepareInspection(*inspections, "a.stl", 684, 1));
  sqlite3_close(other);
}

}  // namespace
}  // namespace plenvorith
