#include "batch/report/mesh_tools.h"

#include <filesystem>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "tests/support/captured_cout.h"
#include "tests/support/scoped_env.h"
#include "tests/support/temp_dir.h"

namespace plenvorith {
namespace {

using test::TempDir;
using testing::HasSubstr;

/// An output folder, and a folder of programs that stand for the real ones.
struct Setting {
  TempDir directory;
  std::string outputs = directory / "out/";
  test::ScopedEnv searchPath{"PATH", directory / "bin"};
  std::string work = directory / "tmp";
  Inspections inspections;

  Setting() {
    for (const char* const folder : {"out", "bin", "tmp"}) {
      std::filesystem::create_directory(directory / folder);
    }
    std::string problem;
    inspections = openInspections(directory / "inspections.db", problem);
  }
  void addTool(const std::string& name, const std::string& script) const {
    test::writeScript((directory / "bin/") + name, "PATH=/usr/bin:/bin\n" + script);
  }
  /// Prints the size of the mesh as the volume and fails on meshes of one byte.
  void addChecker() const {
    addTool("plenvorith-check", R"sh(
echo 'a line of the kernel' >&2
[ "$TMPDIR" = "$(dirname "$1")" ] || exit 1
size=0
[ "$2" = - ] || size=$(wc -c <"$2")
[ "$size" -ne 1 ] || { echo 'Error: the mesh is not that of the file' >&2; exit 1; }
echo '{"number":1,"path":["'"$(cat "$1")"'"],"name":"'"$3"'"}'
echo '{"parts":2,"partsWithProblems":1,"openSolids":1,"facesWithoutMesh":0,"facesOverDeflection":0,'\
'"deviation":0.5,"volume":'"$size"'}'
echo . >>)sh" + (directory / "checked") +
                                    "\nexit 3");
  }
  /// Draws a picture that holds the name of the display and the bytes of the file.
  void addF3d() const {
    addTool("Xvfb", "echo 7; exec sleep 1000");
    addTool("f3d", R"sh(
while [ "$1" != --output ]; do shift; done
[ "$(wc -c <"$3")" -ne 1 ] || exit 1
{ echo "$DISPLAY"; cat "$3"; } >"$2")sh");
  }
  std::string checksMade() const {
    return test::readFile(directory / "checked");
  }
};

bool never() {
  return false;
}

TEST(InspectOutputs, ChecksAndDrawsEveryStlFile) {
  const Setting setting;
  setting.addChecker();
  setting.addF3d();
  const std::string odd = "-odd \xff\n'name.stl";
  test::writeFile(setting.outputs + odd, "1234");
  const std::string input = test::writeFile(setting.directory / "in \xff'put", "content");
  test::writeFile(setting.outputs + "b.stl", "12345");
  test::writeFile(setting.outputs + "c.stp", "123456");
  EXPECT_TRUE(inspectOutputs(
      *setting.inspections, setting.outputs, setting.work,
      {{{odd, 4}, input, "0.25"}, {{"b.stl", 5}}, {{"c.stp", 6}}, {{"missing.stl", 7}}},
      {true, true, 2}, never));
  const Inspection first = findInspection(*setting.inspections, odd);
  ASSERT_TRUE(first.check);
  EXPECT_EQ(first.check->badParts, 1);
  EXPECT_EQ(first.check->names, "content / 0.25\n");
  EXPECT_EQ(first.check->volume, 4);
  EXPECT_EQ(first.picture, ":7\n1234");
  const Inspection second = findInspection(*setting.inspections, "b.stl");
  ASSERT_TRUE(second.check);
  EXPECT_EQ(second.check->volume, 5);
  EXPECT_EQ(second.picture, ":7\n12345");
  EXPECT_FALSE(findInspection(*setting.inspections, "c.stp").check);
  EXPECT_TRUE(std::filesystem::is_empty(setting.directory / "tmp"));
}

TEST(InspectOutputs, LooksAgainOnlyAtWhatHasChanged) {
  const Setting setting;
  setting.addChecker();
  test::writeFile(setting.outputs + "a.stl", "1234");
  test::writeFile(setting.outputs + "b.stl", "1234");
  const std::vector<MadeMesh> outputs = {{{"a.stl", 4}}, {{"b.stl", 4}}};
  const InspectionWish wish = {true, false, 1};
  EXPECT_TRUE(
      inspectOutputs(*setting.inspections, setting.outputs, setting.work, outputs, wish, never));
  EXPECT_TRUE(
      inspectOutputs(*setting.inspections, setting.outputs, setting.work, outputs, wish, never));
  EXPECT_EQ(setting.checksMade(), ".\n.\n");
  test::writeFile(setting.outputs + "b.stl", "123456");
  EXPECT_TRUE(
      inspectOutputs(*setting.inspections, setting.outputs, setting.work, outputs, wish, never));
  EXPECT_EQ(setting.checksMade(), ".\n.\n.\n");
  EXPECT_EQ(findInspection(*setting.inspections, "b.stl").check->volume, 6);
}

/// A line of text without the time in it.
std::string withoutTime(std::string text) {
  for (std::size_t place = 0; (place = text.find(" in ", place)) != std::string::npos;) {
    text.erase(place, text.find('\n', place) - place);
  }
  return text;
}

TEST(InspectOutputs, NamesTheFilesThatAToolFailsOnAndWhy) {
  const Setting setting;
  setting.addChecker();
  setting.addF3d();
  test::writeFile(setting.outputs + "a\n.stl", "1");
  test::writeFile(setting.outputs + "b.stl", "12");
  const test::CapturedCout captured;
  testing::internal::CaptureStderr();
  EXPECT_TRUE(inspectOutputs(*setting.inspections, setting.outputs, setting.work,
                             {{{"a\n.stl", 1}}, {{"b.stl", 2}}}, {true, true, 1}, never));
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "plenvorith-batch: plenvorith-check gave nothing for a\\n.stl: Error: the mesh is not "
            "that of the file\n"
            "plenvorith-batch: f3d gave nothing for a\\n.stl: exit status 1\n");
  EXPECT_EQ(withoutTime(captured.text()), "Checked: 1 of 2 meshes,\nDrawn: 1 of 2 meshes,\n");
  EXPECT_FALSE(findInspection(*setting.inspections, "a\n.stl").check);
  EXPECT_TRUE(findInspection(*setting.inspections, "b.stl").check);
  EXPECT_EQ(findInspection(*setting.inspections, "a\n.stl").picture, "");
}

TEST(InspectOutputs, SaysWhatAToolThatEndsWellHasNotDone) {
  const Setting setting;
  setting.addTool("plenvorith-check", "echo nonsense");
  setting.addTool("Xvfb", "echo 7; exec sleep 1000");
  setting.addTool("f3d", "exit 0");
  test::writeFile(setting.outputs + "a.stl", "1");
  testing::internal::CaptureStderr();
  EXPECT_TRUE(inspectOutputs(*setting.inspections, setting.outputs, setting.work, {{{"a.stl", 1}}},
                             {true, true, 1}, never));
  EXPECT_EQ(
      testing::internal::GetCapturedStderr(),
      "plenvorith-batch: plenvorith-check gave nothing for a.stl: it does not say what is asked\n"
      "plenvorith-batch: f3d gave nothing for a.stl: it has drawn nothing\n");
}

TEST(InspectOutputs, NamesOnlyTheFirstOfManyAndShowsHowFarItIs) {
  const Setting setting;
  setting.addTool("plenvorith-check", "exit 3");
  std::vector<MadeMesh> outputs;
  for (int i = 0; i < 25; ++i) {
    outputs.push_back({{std::to_string(i) + ".stl", 1}});
    test::writeFile(setting.outputs + outputs.back().output.path, "1");
  }
  testing::internal::CaptureStderr();
  EXPECT_TRUE(inspectOutputs(*setting.inspections, setting.outputs, setting.work, outputs,
                             {.checks = true, .isLine = true}, never));
  const std::string errors = testing::internal::GetCapturedStderr();
  EXPECT_THAT(errors, HasSubstr("nothing for 19.stl: exit status 3\n"));
  EXPECT_THAT(errors, testing::Not(HasSubstr("nothing for 20.stl")));
  EXPECT_THAT(errors, HasSubstr("check: 25/25 files, 25 failed"));
  EXPECT_THAT(errors,
              testing::EndsWith("plenvorith-batch: plenvorith-check gave nothing for 5 more\n"));
}

TEST(InspectOutputs, ChecksAnInputOnceWithoutTheMeshesOfItsShapes) {
  const Setting setting;
  setting.addChecker();
  test::writeFile(setting.outputs + "a_1.stl", "1234");
  test::writeFile(setting.outputs + "a_2.stl", "12345");
  const std::string input = test::writeFile(setting.directory / "input", "content");
  EXPECT_TRUE(inspectOutputs(*setting.inspections, setting.outputs, setting.work,
                             {{{"a_1.stl", 4}, input, "0.1", false, false, true},
                              {{"a_2.stl", 5}, input, "0.1", false, false, false}},
                             {true, false, 1}, never));
  EXPECT_EQ(setting.checksMade(), ".\n");
  EXPECT_EQ(findInspection(*setting.inspections, "a_1.stl").check->volume, 0);
  EXPECT_FALSE(findInspection(*setting.inspections, "a_2.stl").check);
}

TEST(InspectOutputs, PreparesWhatWasPreparedForTheConversion) {
  const Setting setting;
  setting.addChecker();
  setting.addTool("plenvorith-prepare", R"(echo report; { echo -n 'prepared '; cat "$1"; } >"$2")");
  test::writeFile(setting.outputs + "a.stl", "1234");
  const std::string input = test::writeFile(setting.directory / "input", "content");
  EXPECT_TRUE(inspectOutputs(*setting.inspections, setting.outputs, setting.work,
                             {{{"a.stl", 4}, input, "0.5", true}}, {true, false, 1}, never));
  const Inspection found = findInspection(*setting.inspections, "a.stl");
  ASSERT_TRUE(found.check);
  EXPECT_EQ(found.check->names, "prepared content / 0.5\n");
  EXPECT_EQ(found.check->volume, 4);
  EXPECT_TRUE(std::filesystem::is_empty(setting.directory / "tmp"));
}

TEST(InspectOutputs, SaysOnceThatAToolIsMissing) {
  const Setting setting;
  test::writeFile(setting.outputs + "a.stl", "1234");
  test::writeFile(setting.outputs + "b.stl", "1234");
  testing::internal::CaptureStderr();
  EXPECT_TRUE(inspectOutputs(*setting.inspections, setting.outputs, setting.work,
                             {{{"a.stl", 4}}, {{"b.stl", 4}}}, {true, true, 1}, never));
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "plenvorith-batch: no --check without plenvorith-check\n"
            "plenvorith-batch: no --thumbnails without f3d and Xvfb (Debian packages f3d and "
            "xvfb)\n");
  setting.addChecker();
  EXPECT_TRUE(inspectOutputs(*setting.inspections, setting.outputs, setting.work, {{{"a.stl", 4}}},
                             {true, false, 1}, never));
  EXPECT_TRUE(findInspection(*setting.inspections, "a.stl").check);
}

TEST(InspectOutputs, DoesWithoutADisplayThatDoesNotComeUp) {
  const Setting setting;
  setting.addF3d();
  setting.addTool("Xvfb", "exit 1");
  test::writeFile(setting.outputs + "a.stl", "1234");
  testing::internal::CaptureStderr();
  EXPECT_TRUE(inspectOutputs(*setting.inspections, setting.outputs, setting.work, {{{"a.stl", 4}}},
                             {false, true, 1}, never));
  EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("Xvfb does not start"));
}

TEST(InspectOutputs, StopsWhenItIsInterrupted) {
  const Setting setting;
  setting.addChecker();
  for (const char* const name : {"a.stl", "b.stl", "c.stl"}) {
    test::writeFile(setting.outputs + name, "1234");
  }
  int calls = 0;
  EXPECT_TRUE(inspectOutputs(*setting.inspections, setting.outputs, setting.work,
                             {{{"a.stl", 4}}, {{"b.stl", 4}}, {{"c.stl", 4}}}, {true, true, 1},
                             [&] { return ++calls >= 2; }));
  EXPECT_EQ(setting.checksMade(), ".\n.\n");
  EXPECT_TRUE(findInspection(*setting.inspections, "b.stl").check);
  EXPECT_FALSE(findInspection(*setting.inspections, "c.stl").check);
}

}  // namespace
}  // namespace plenvorith
