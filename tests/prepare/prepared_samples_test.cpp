// Preparing leaves exact geometry as it is, and does nothing to a file that it has been done to.

#include <filesystem>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "app/stl_pipeline.h"
#include "prepare/preparation.h"
#include "tests/support/captured_cout.h"
#include "tests/support/exact_geometry.h"
#include "tests/support/sample_copies.h"
#include "tests/support/scoped_tmpdir.h"
#include "tests/support/temp_dir.h"

namespace plenvorith {
namespace {

using test::readFile;

/// Those that the program converts in full as they are.
const std::vector<std::string> kPlain = {"bracket", "assembly", "tessellated", "paired", "mixed"};

void prepare(const std::string& input, const std::string& output) {
  const test::CapturedCout report;
  EXPECT_EQ(prepareFile(input, output), 0) << input;
}

class PreparedSamples : public testing::Test {
 protected:
  std::string sample(const std::string& name) const {
    return samples / (name + ".step");
  }

  /// The STL file made of a STEP file.
  std::string convert(const std::string& input) const {
    (void)test::printedBy([&] { EXPECT_TRUE(convertToStl(input, dir / "out.stl", 0.1, false)); });
    return readFile(dir / "out.stl");
  }

  std::string convertPrepared(const std::string& name) const {
    prepare(sample(name), dir / "ready.stp");
    return convert(dir / "ready.stp");
  }

  const test::SampleCopies samples{};
  const test::TempDir dir;
  const test::ScopedTmpdir tmpdir{dir.path()};
};

TEST_F(PreparedSamples, AreAllLookedAt) {
  std::size_t count = 0;
  for (const auto& entry : std::filesystem::directory_iterator(PLENVORITH_SAMPLES)) {
    count += entry.path().extension() == ".step" ? 1U : 0U;
  }
  EXPECT_EQ(count, kPlain.size() + 2);
}

TEST_F(PreparedSamples, GiveTheSameFileWhereNothingHadToBePrepared) {
  for (const std::string& name : kPlain) {
    SCOPED_TRACE(name);
    EXPECT_EQ(convertPrepared(name), convert(sample(name)));
  }
}

TEST_F(PreparedSamples, GiveTheBracketWithoutItsDimensions) {
  EXPECT_EQ(convertPrepared("annotated"), convert(sample("bracket")));
}

TEST_F(PreparedSamples, GiveTheSameFileWhenPreparedTwice) {
  for (const char* name : {"coupling", "annotated", "mixed", "paired", "tessellated", "assembly"}) {
    SCOPED_TRACE(name);
    const std::string once = convertPrepared(name);
    prepare(dir / "ready.stp", dir / "twice.stp");
    EXPECT_EQ(convert(dir / "twice.stp"), once);
  }
}

TEST_F(PreparedSamples, KeepTheirExactGeometry) {
  for (const char* name : {"bracket", "assembly", "paired", "mixed", "annotated"}) {
    SCOPED_TRACE(name);
    prepare(sample(name), dir / "ready.stp");
    test::expectUntouchedGeometry(test::exactGeometryIn(dir / "ready.stp"),
                                  test::exactGeometryIn(sample(name)));
  }
}

}  // namespace
}  // namespace plenvorith
