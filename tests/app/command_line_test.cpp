#include "app/command_line.h"

#include <filesystem>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "tests/support/kernel_shapes.h"
#include "tests/support/temp_dir.h"
#include "tests/support/triangle_step.h"

namespace plenvorith {
namespace {

int run(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), "plenvorith");
  std::vector<char*> pointers;
  pointers.reserve(arguments.size() + 1);
  for (std::string& argument : arguments) {
    pointers.push_back(argument.data());
  }
  pointers.push_back(nullptr);
  return runConverter(static_cast<int>(arguments.size()), pointers.data());
}

TEST(RunConverter, GivesTheSameBytesAndLinesEachTimeInOneProcess) {
  const test::TempDir dir;
  const std::string input = test::writeFile(dir / "in.step", test::kTriangleStep);
  const std::string output = dir / "out.stl";
  std::vector<std::string> printed;
  std::vector<std::string> written;
  for (int round = 0; round < 2; ++round) {
    printed.push_back(test::printedBy([&] { EXPECT_EQ(run({input, output}), 0); }));
    written.push_back(test::readFile(output));
    std::filesystem::remove(output);
  }
  EXPECT_THAT(printed[0], testing::EndsWith("Saved: " + output + "\nDone\n"));
  EXPECT_EQ(printed[0], printed[1]);
  EXPECT_EQ(written[0].size(), 134U);
  EXPECT_EQ(written[0], written[1]);
}

TEST(RunConverter, GivesOneWithoutAWordWhereArgumentsAreMissing) {
  EXPECT_EQ(test::printedBy([] { EXPECT_EQ(run({"in.step"}), 1); }), "");
}

}  // namespace
}  // namespace plenvorith
