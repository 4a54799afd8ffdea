#include "app/stl_pipeline.h"

#include <filesystem>
#include <string>

#include <gmock/gmock.h>

#include "tests/support/dir_listing.h"
#include "tests/support/kernel_shapes.h"
#include "tests/support/sample_copies.h"
#include "tests/support/scoped_tmpdir.h"
#include "tests/support/temp_dir.h"

namespace plenvorith {
namespace {

using test::boxAt;
using test::namesIn;
using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;

// 80 bytes of header, 4 of count, 50 for each of the 12 triangles of a box.
constexpr std::size_t kBoxFileSize = 684;

TEST(WriteShapesAsStl, SkipsANullShapeAndItsNumber) {
  const test::TempDir dir;
  const std::string output = dir / "out.stl";
  const std::string printed = test::printedBy([&] {
    writeShapesAsStl({boxAt(0), TopoDS_Shape(), boxAt(100)}, output, 0.1);
  });
  EXPECT_EQ(printed, "  Saved: " + output + "_1.stl\n  Saved: " + output + "_3.stl\n");
  EXPECT_THAT(namesIn(dir.path()), ElementsAre("out.stl_1.stl", "out.stl_3.stl"));
  EXPECT_EQ(test::readFile(output + "_1.stl").size(), kBoxFileSize);
  EXPECT_EQ(test::readFile(output + "_3.stl").size(), kBoxFileSize);
}

TEST(WriteShapesAsStl, ReportsAFileThatCannotBeWrittenLikeAnyOther) {
  const test::TempDir dir;
  const std::string output = dir / "out.stl";
  std::filesystem::create_directory(output + "_1.stl");
  const std::string printed = test::printedBy([&] {
    writeShapesAsStl({boxAt(0), boxAt(100)}, output, 0.1);
  });
  EXPECT_EQ(printed, "  Saved: " + output + "_1.stl\n  Saved: " + output + "_2.stl\n");
  EXPECT_TRUE(std::filesystem::is_directory(output + "_1.stl"));
  EXPECT_EQ(test::readFile(output + "_2.stl").size(), kBoxFileSize);
}

TEST(WriteShapesAsStl, WritesNothingForNoShapes) {
  const test::TempDir dir;
  EXPECT_EQ(test::printedBy([&] { writeShapesAsStl({}, dir / "out.stl", 0.1); }), "");
  EXPECT_THAT(namesIn(dir.path()), IsEmpty());
}

TEST(ConvertToStl, SplitReportsFilesThatCannotBeWrittenAndSucceeds) {
  const test::SampleCopies samples;
  const test::TempDir dir;
  const test::ScopedTmpdir tmpdir(dir.path());
  const std::string output = dir / "missing/out.stl";
  testing::internal::CaptureStderr();
  const std::string printed = test::printedBy(
      [&] { EXPECT_TRUE(convertToStl(samples / "mixed.step", output, 0.5, true)); });
  (void)testing::internal::GetCapturedStderr();
  EXPECT_THAT(printed, EndsWith("  Read 1 BRep shapes\n"
                                "  Saved: " +
                                output +
                                "_1.stl\n"
                                "  Saved tessellation: " +
                                output + "_tess.stl\n"));
  EXPECT_THAT(namesIn(dir.path()), IsEmpty());
}

}  // namespace
}  // namespace plenvorith
