#include "batch/report/inspection.h"

#include <optional>
#include <string>

#include <gmock/gmock.h>

#include "tests/support/temp_dir.h"

namespace plenvorith {
namespace {

using test::TempDir;

/// What admesh 0.98.4 prints.
std::string printed(const std::string& ones, const std::string& twos, const std::string& threes,
                    const std::string& volume) {
  return "ADMesh version 0.98.4, Copyright (C) 1995, 1996 Anthony D. Martin\n"
         "Opening 0.stl\n"
         "Checking exact...\n"
         "\n"
         "================= Results produced by ADMesh version 0.98.4 ================\n"
         "Input file         : 0.stl\n"
         "File type          : Binary STL file\n"
         "Header             : Volume : 7\n"
         "============== Size ==============\n"
         "Min X =  0.000000, Max X =  1.000000\n"
         "========= Facet Status ========== Original ============ Final ====\n"
         "Number of facets                 :    12                  12\n"
         "Facets with 1 disconnected edge  :     " +
         ones +
         "                   0\n"
         "Facets with 2 disconnected edges :     " +
         twos +
         "                   0\n"
         "Facets with 3 disconnected edges :     " +
         threes +
         "                   0\n"
         "Total disconnected facets        :     0                   0\n"
         "=== Processing Statistics ===     ===== Other Statistics =====\n"
         "Number of parts       :     0        Volume   :  " +
         volume +
         "\n"
         "Degenerate facets     :     0\n";
}

TEST(CheckFrom, AddsUpTheOpenEdges) {
  const std::optional<MeshCheck> closed = checkFrom(printed("0", "0", "0", "20927.792969"));
  ASSERT_TRUE(closed);
  EXPECT_EQ(closed->openEdges, 0);
  EXPECT_EQ(closed->volume, 20927.792969);
  const std::optional<MeshCheck> open = checkFrom(printed("10", "3", "2", "-1.5"));
  ASSERT_TRUE(open);
  EXPECT_EQ(open->openEdges, 22);
  EXPECT_EQ(open->volume, -1.5);
}

TEST(CheckFrom, RejectsOtherTexts) {
  EXPECT_FALSE(checkFrom(""));
  EXPECT_FALSE(checkFrom("Facets with 1 disconnected edge  :"));
  EXPECT_FALSE(checkFrom(printed("", "0", "0", "1").substr(0, 600)));
  EXPECT_FALSE(checkFrom(printed("x", "0", "0", "1")));
  EXPECT_FALSE(checkFrom(printed("0", "0", "0", "large")));
}

TEST(Inspections, KeepWhatWasFoundOut) {
  const TempDir directory;
  std::string problem;
  const std::string path("a\xff\n.stl");
  const std::string picture("\x89PNG\0\xff", 6);
  {
    const Inspections inspections = openInspections(directory / "inspections.db", problem);
    ASSERT_TRUE(inspections) << problem;
    const std::optional<Uninspected> left = prepareInspection(*inspections, path, 134, 7);
    ASSERT_TRUE(left);
    EXPECT_TRUE(left->check && left->picture);
    ASSERT_TRUE(beginKeeping(*inspections));
    EXPECT_TRUE(keepCheck(*inspections, path, MeshCheck{3, 0.5}));
    EXPECT_TRUE(keepPicture(*inspections, path, picture));
    ASSERT_TRUE(endKeeping(*inspections));
  }
  const Inspections inspections = openInspections(directory / "inspections.db", problem);
  ASSERT_TRUE(inspections) << problem;
  const Inspection found = findInspection(*inspections, path);
  ASSERT_TRUE(found.check);
  EXPECT_EQ(found.check->openEdges, 3);
  EXPECT_EQ(found.check->volume, 0.5);
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
    EXPECT_TRUE(keepCheck(*inspections, "a.stl", MeshCheck{1, 2.0}));
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

}  // namespace
}  // namespace plenvorith
