#include "app/clean_step_pipeline.h"

#include <filesystem>
#include <string>

#include <gmock/gmock.h>

#include "tests/support/dir_listing.h"
#include "tests/support/exact_geometry.h"
#include "tests/support/kernel_shapes.h"
#include "tests/support/temp_dir.h"

namespace plenvorith {
namespace {

using test::boxAt;
using test::namesIn;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(WriteShapesAsStep, SkipsANullShapeAndItsNumber) {
  const test::TempDir dir;
  const std::string output = dir / "model.step";
  const std::string printed = test::printedBy([&] {
    writeShapesAsStep({boxAt(0), TopoDS_Shape(), boxAt(100)}, output);
  });
  EXPECT_EQ(printed, "Saved: " + output + "_1.stp\nSaved: " + output + "_3.stp\n");
  EXPECT_THAT(namesIn(dir.path()), ElementsAre("model.step_1.stp", "model.step_3.stp"));
  test::expectSameGeometry(test::exactGeometryIn(output + "_1.stp"), test::geometryOf({boxAt(0)}));
  test::expectSameGeometry(test::exactGeometryIn(output + "_3.stp"),
                           test::geometryOf({boxAt(100)}));
}

TEST(WriteShapesAsStep, SaysNothingOfAFileThatCannotBeWrittenAndGoesOn) {
  const test::TempDir dir;
  const std::string output = dir / "model.step";
  std::filesystem::create_directory(output + "_1.stp");
  const std::string printed = test::printedBy([&] {
    writeShapesAsStep({boxAt(0), boxAt(100)}, output);
  });
  EXPECT_EQ(printed, "Saved: " + output + "_2.stp\n");
  EXPECT_TRUE(std::filesystem::is_directory(output + "_1.stp"));
  test::expectSameGeometry(test::exactGeometryIn(output + "_2.stp"),
                           test::geometryOf({boxAt(100)}));
}

TEST(WriteShapesAsStep, WritesNothingForNoShapes) {
  const test::TempDir dir;
  EXPECT_EQ(test::printedBy([&] { writeShapesAsStep({}, dir / "model.step"); }), "");
  EXPECT_THAT(namesIn(dir.path()), IsEmpty());
}

}  // namespace
}  // namespace plenvorith
