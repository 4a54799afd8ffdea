#include "app/pipeline_steps.h"

#include <filesystem>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "tests/support/temp_dir.h"

namespace plenvorith {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// A triangle that can be told from others by its number.
Triangle numbered(double number) {
  return makeTriangle({number, 0, 0}, {number, 1, 0}, {number, 0, 1});
}

std::vector<double> numbersOf(const std::vector<Triangle>& triangles) {
  std::vector<double> numbers;
  numbers.reserve(triangles.size());
  for (const Triangle& t : triangles) {
    numbers.push_back(t.v1.x);
  }
  return numbers;
}

TEST(MergeTriangles, PutsTheExactGeometryFirstAndKeepsBothOrders) {
  EXPECT_THAT(numbersOf(mergeTriangles({numbered(3), numbered(1)},
                                       {numbered(9), numbered(2), numbered(4)})),
              ElementsAre(3, 1, 9, 2, 4));
}

TEST(MergeTriangles, EitherPartMayBeEmpty) {
  EXPECT_THAT(numbersOf(mergeTriangles({numbered(3), numbered(1)}, {})), ElementsAre(3, 1));
  EXPECT_THAT(numbersOf(mergeTriangles({}, {numbered(9), numbered(2)})), ElementsAre(9, 2));
  EXPECT_THAT(mergeTriangles({}, {}), IsEmpty());
}

TEST(ShapePath, CountsFromOneBehindTheWholeOutputPath) {
  EXPECT_EQ(shapePath("out.stl", 0, ".stl"), "out.stl_1.stl");
  EXPECT_EQ(shapePath("out.stl", 9, ".stl"), "out.stl_10.stl");
  EXPECT_EQ(shapePath("a.b/model.step", 2, ".stp"), "a.b/model.step_3.stp");
  EXPECT_EQ(shapePath("step", 0, ".stp"), "step_1.stp");
}

TEST(RemoveCleanCopy, DeletesTheCopy) {
  const test::TempDir dir;
  const std::string input = test::writeFile(dir / "part.step", "input");
  const std::string copy = test::writeFile(dir / "part.step.clean.stp", "copy");
  removeCleanCopy(copy, input);
  EXPECT_FALSE(std::filesystem::exists(copy));
  EXPECT_EQ(test::readFile(input), "input");
}

TEST(RemoveCleanCopy, NeverDeletesTheInput) {
  const test::TempDir dir;
  const std::string input = test::writeFile(dir / "part.step.clean.stp", "input");
  removeCleanCopy(input, input);
  EXPECT_EQ(test::readFile(input), "input");
}

TEST(RemoveCleanCopy, PassesOverACopyThatIsNotThere) {
  const test::TempDir dir;
  const std::string input = test::writeFile(dir / "part.step", "input");
  removeCleanCopy(dir / "missing.clean.stp", input);
  EXPECT_EQ(test::readFile(input), "input");
}

struct Analysis {
  AnalyzedFile file;
  std::string printed;
};

Analysis analyze(const std::string& path) {
  testing::internal::CaptureStdout();
  Analysis analysis{readAndAnalyze(path), ""};
  analysis.printed = testing::internal::GetCapturedStdout();
  return analysis;
}

TEST(ReadAndAnalyze, ReportsAFileWithoutTessellation) {
  const test::TempDir dir;
  const std::string path = test::writeFile(dir / "a.step", "#1=POINT();\n#2=LINE(#1);\n");
  const Analysis analysis = analyze(path);
  EXPECT_EQ(analysis.printed, "Reading: " + path +
                                  "\n"
                                  "[1] Analyzing file structure...\n"
                                  "  Parsed 2 entities\n"
                                  "  Status: no tessellation\n");
  EXPECT_EQ(analysis.file.table.size(), 2u);
  EXPECT_EQ(analysis.file.analysis.status, TessellationStatus::NoTessellation);
}

TEST(ReadAndAnalyze, NamesEveryStatus) {
  const test::TempDir dir;
  const std::string path = dir / "a.step";
  const std::string unique = "#1=TESSELLATED_SHAPE_REPRESENTATION('',(),#9);\n";
  const std::string paired =
      "#2=TESSELLATED_SHAPE_REPRESENTATION('',(),#9);\n"
      "#3=SHAPE_REPRESENTATION('',(),#9);\n"
      "#4=SHAPE_REPRESENTATION_RELATIONSHIP('','',#3,#2);\n";
  const auto printedFor = [&](const std::string& text) {
    test::writeFile(path, text);
    const std::string printed = analyze(path).printed;
    return printed.substr(printed.find("  Parsed"));
  };
  EXPECT_EQ(printedFor(""), "  Parsed 0 entities\n  Status: no tessellation\n");
  EXPECT_EQ(printedFor(paired),
            "  Parsed 3 entities\n  Status: all tessellation paired with BRep\n");
  EXPECT_EQ(printedFor(unique + paired),
            "  Parsed 4 entities\n  Status: partially unique tessellation\n");
  EXPECT_EQ(printedFor(unique), "  Parsed 1 entities\n  Status: tessellation only (no BRep)\n");
}

}  // namespace
}  // namespace plenvorith
