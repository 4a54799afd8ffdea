#include "batch/worker/part_list.h"

#include <filesystem>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "tests/support/temp_dir.h"

namespace plenvorith {
namespace {

/// A folder with STL files of which only the sizes count.
class PartListTest : public testing::Test {
 protected:
  void writeMesh(const std::string& name, std::size_t triangles) const {
    test::writeFile(dir / name, std::string(84 + 50 * triangles, '\0'));
  }

  std::string list(const std::vector<PartName>& parts) const {
    EXPECT_TRUE(writePartList(dir / "a.stl", parts));
    return test::readFile(dir / "a.stl.parts.json");
  }

  /// What is printed when the list cannot be written.
  std::string problem() const {
    testing::internal::CaptureStderr();
    EXPECT_FALSE(writePartList(dir / "a.stl", {PartName()}));
    return testing::internal::GetCapturedStderr();
  }

  test::TempDir dir;
};

TEST_F(PartListTest, TellsOfEachPartAndOfTheTessellation) {
  writeMesh("a.stl_1.stl", 12);
  writeMesh("a.stl_3.stl", 0);
  writeMesh("a.stl_tess.stl", 7);
  const std::vector<PartName> parts = {
      {"solid", {"lamp", "foot"}, "Body", {1, 0, 0, 10.5, 0, 1, 0, 20, 0, 0, 1, -30}},
      {"face", {}, "", {0, 1, 0, 0, 1, 0, 0, 0, 0, 0, 1, 0}},
      {"shell", {"größe", "\xff \"x\"\n"}, "\\", {}}};
  EXPECT_EQ(list(parts),
            R"([
{"number":1,"path":["lamp","foot"],"name":"Body","kind":"solid","triangles":12,"placement":[1.0,0.0,0.0,10.5,0.0,1.0,0.0,20.0,0.0,0.0,1.0,-30.0]},
{"number":2,"path":[],"name":"","kind":"face","triangles":0,"placement":[0.0,1.0,0.0,0.0,1.0,0.0,0.0,0.0,0.0,0.0,1.0,0.0]},
{"number":3,"path":["größe","\\xff \"x\"\\n"],"name":"\\\\","kind":"shell","triangles":0,"placement":[0.0,0.0,0.0,0.0,0.0,0.0,0.0,0.0,0.0,0.0,0.0,0.0]},
{"number":null,"path":[],"name":"","kind":"tessellation","triangles":7}
]
)");
}

TEST_F(PartListTest, TakesTheOnlyMeshForTessellation) {
  writeMesh("a.stl", 2);
  EXPECT_EQ(
      list({}),
      "[\n{\"number\":null,\"path\":[],\"name\":\"\",\"kind\":\"tessellation\",\"triangles\":2}"
      "\n]\n");
}

TEST_F(PartListTest, IsNotWrittenWhereNoMeshWas) {
  EXPECT_TRUE(writePartList(dir / "a.stl", {PartName()}));
  EXPECT_TRUE(std::filesystem::is_empty(dir.path()));
}

TEST_F(PartListTest, TellsThatItCannotBeWritten) {
  writeMesh("a.stl_1.stl", 1);
  const std::string path = dir / "a.stl.parts.json";
  const std::string expected = "Error: Cannot write the list of parts: " + path + "\n";
  std::filesystem::create_directory(path);
  EXPECT_EQ(problem(), expected);
  std::filesystem::remove(path);
  std::filesystem::create_symlink("/dev/full", path);
  EXPECT_EQ(problem(), expected);
}

}  // namespace
}  // namespace plenvorith
