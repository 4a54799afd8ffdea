#include "batch/worker/outputs.h"

#include <filesystem>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "common/triangle.h"
#include "output/stl_writer.h"
#include "tests/support/temp_dir.h"

namespace plenvorith {
namespace {

std::vector<Triangle> triangles(std::size_t count) {
  std::vector<Triangle> list;
  list.reserve(count);
  for (std::size_t i = 0; i < count; ++i) {
    list.push_back(makeTriangle({double(i), 0, -1}, {0, -2, 0}, {0, 0, 3}));
  }
  return list;
}

TEST(LookAtOutputs, AddsUpTrianglesAndBounds) {
  const test::TempDir dir;
  ASSERT_TRUE(writeBinaryStl(dir / "a.stl", triangles(10000)));
  ASSERT_TRUE(writeBinaryStl(dir / "b.stl", {makeTriangle({0, 0, 0}, {0, 7, 0}, {0, 0, 1})}));
  const MadeFiles made = lookAtOutputs(dir.path());
  EXPECT_EQ(made.triangles, 10001);
  EXPECT_EQ(made.incomplete, "");
  ASSERT_EQ(made.outputs.size(), 2U);
  EXPECT_EQ(made.outputs[0].path, "a.stl");
  EXPECT_EQ(made.outputs[0].size, 84 + 50 * 10000);
  ASSERT_TRUE(made.bounds.has_value());
  EXPECT_THAT(made.bounds->low, testing::ElementsAre(0, -2, -1));
  EXPECT_THAT(made.bounds->high, testing::ElementsAre(9999, 7, 3));
}

TEST(LookAtOutputs, ComesInTheOrderOfTheNumbers) {
  const test::TempDir dir;
  for (const char* name : {"a.stl_10.stl", "a.stl_2.stl", "a.stl_1.stl", "a.stl_tess.stl"}) {
    ASSERT_TRUE(writeBinaryStl(dir / name, triangles(1)));
  }
  std::vector<std::string> names;
  for (const OutputRecord& output : lookAtOutputs(dir.path()).outputs) {
    names.push_back(output.path);
  }
  EXPECT_THAT(names,
              testing::ElementsAre("a.stl_1.stl", "a.stl_2.stl", "a.stl_10.stl", "a.stl_tess.stl"));
}

TEST(LookAtOutputs, NamesWhatIsIncomplete) {
  const test::TempDir dir;
  ASSERT_TRUE(writeBinaryStl(dir / "a.stl", triangles(3)));
  std::filesystem::resize_file(dir / "a.stl", 84 + 149);
  EXPECT_EQ(lookAtOutputs(dir.path()).incomplete, "a.stl");
  std::filesystem::resize_file(dir / "a.stl", 83);
  EXPECT_EQ(lookAtOutputs(dir.path()).incomplete, "a.stl");
  ASSERT_TRUE(writeBinaryStl(dir / "a.stl", triangles(3)));
  test::writeFile(dir / "b.stp", "ISO-10303-21;\nDATA;\n");
  EXPECT_EQ(lookAtOutputs(dir.path()).incomplete, "b.stp");
  test::writeFile(dir / "a.step", "ISO-10303-21;\nDATA;\n");
  EXPECT_EQ(lookAtOutputs(dir.path()).incomplete, "a.step");
  std::filesystem::remove(dir / "a.step");
  test::writeFile(dir / "b.stp", "ISO-10303-21;\nDATA;\nENDSEC;\nEND-ISO-10303-21;\n");
  EXPECT_EQ(lookAtOutputs(dir.path()).incomplete, "");
}

TEST(LookAtOutputs, SkipsWhatIsNoFileAndHasNoBoundsWithoutTriangles) {
  const test::TempDir dir;
  std::filesystem::create_directory(dir / "folder.stl");
  ASSERT_TRUE(writeBinaryStl(dir / "empty.stl", {}));
  const MadeFiles made = lookAtOutputs(dir.path());
  EXPECT_EQ(made.outputs.size(), 1U);
  EXPECT_EQ(made.triangles, 0);
  EXPECT_FALSE(made.bounds.has_value());
}

}  // namespace
}  // namespace plenvorith
