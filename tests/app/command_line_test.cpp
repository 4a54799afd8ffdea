#include "app/command_line.h"

#include <filesystem>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "tests/support/kernel_shapes.h"
#include "tests/support/temp_dir.h"

namespace plenvorith {
namespace {

constexpr const char* kTriangle = R"(ISO-10303-21;
DATA;
#1=TESSELLATED_SHAPE_REPRESENTATION('',(#2),$);
#2=TESSELLATED_SOLID('',(#3),$);
#3=COMPLEX_TRIANGULATED_FACE('',#4,3,(),$,(),((1,2,3)),());
#4=COORDINATES_LIST('',3,((0.,0.,0.),(1.,0.,0.),(0.,1.,0.)));
ENDSEC;
END-ISO-10303-21;
)";

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
  const std::string input = test::writeFile(dir / "in.step", kTriangle);
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
