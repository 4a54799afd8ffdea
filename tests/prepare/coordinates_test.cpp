#include "prepare/coordinates.h"

#include <string>
#include <string_view>

#include <gmock/gmock.h>

#include "tests/support/instances.h"
#include "tests/support/temp_dir.h"

namespace plenvorith {
namespace {

/// What a list is written as, with the name #7; "error" if it is malformed.
std::string written(const std::string& body, std::uint64_t count,
                    const Placement* placement = nullptr) {
  const test::TempDir directory;
  test::Instances in("#1=" + body + ";\n");
  in.reader.seekBody(in.table.offset(in[1]));
  OutputFile output(directory / "out");
  const bool isWritten = writeCoordinates(in.reader, 7, count, placement, output);
  EXPECT_TRUE(output.close());
  return isWritten ? test::readFile(directory / "out") : "error";
}

TEST(Coordinates, WithoutAPlacementStayAsTheyAre) {
  EXPECT_EQ(written("COORDINATES_LIST('na(me',2,((1.,-2.50,3.E-1),(+4,0005.,.6)))", 2),
            "#7=COORDINATES_LIST('',2,((1.,-2.50,3.E-1),(+4,0005.,.6)));\n");
  EXPECT_EQ(written("COORDINATES_LIST('',0,())", 0), "#7=COORDINATES_LIST('',0,());\n");
}

TEST(Coordinates, ArePlacedAndWrittenShortest) {
  Placement placement;
  placement.m = {{{0, -1, 0, 10}, {1, 0, 0, 0.5}, {0, 0, 25.4, 0}}};
  EXPECT_EQ(written("COORDINATES_LIST('',2,((1.,2.,2.),(0.,0.,1.E-7)))", 2, &placement),
            "#7=COORDINATES_LIST('',2,((8.,1.5,50.8),(10.,0.5,2.54E-6)));\n");
}

TEST(Coordinates, MalformedOnesAreAnError) {
  for (const char* body :
       {"COORDINATES_LIST('',1,((1.,2.)))", "COORDINATES_LIST('',1,((1.,2.,3.,4.)))",
        "COORDINATES_LIST('',1,((1.,x,3.)))", "COORDINATES_LIST('',1,(1.,2.,3.))",
        "COORDINATES_LIST('',1,((1.,2.,3.)", "COORDINATES_LIST('',1,((1.,2.,3.),))",
        "COORDINATES_LIST('',1)", "COORDINATES_LIST('',1,$)",
        "COORDINATES_LIST('',1,((1.,2.,1.E999)))"}) {
    EXPECT_EQ(written(body, 1), "error") << body;
  }
}

TEST(Coordinates, ThatEndTooEarlyAreAnError) {
  const std::string early = "COORDINATES_LIST('',2,((1.,2.,3.)).,(1.,2.,3.)))";
  EXPECT_EQ(written(early, 2), "error");
  const Placement twice = scaled(Placement(), 2.0);
  EXPECT_EQ(written(early, 2, &twice), "error");
}

TEST(Coordinates, ThatBecomeTooLargeAreAnError) {
  Placement placement;
  placement.m[0][0] = 1e10;
  EXPECT_EQ(written("COORDINATES_LIST('',1,((1.E300,2.,3.)))", 1, &placement), "error");
}

TEST(Coordinates, OfAnyNumberAreWrittenWhole) {
  std::string points = "(0.,0.,0.)";
  std::string doubled = points;
  for (int i = 1; i < 30'000; ++i) {
    points += ",(" + std::to_string(i) + ".,0.5,-1.)";
    doubled += ",(" + std::to_string(2 * i) + ".,1.,-2.)";
  }
  const std::string body = "COORDINATES_LIST('',30000,(" + points + "))";
  EXPECT_EQ(written(body, 30'000), "#7=COORDINATES_LIST('',30000,(" + points + "));\n");
  const Placement twice = scaled(Placement(), 2.0);
  EXPECT_EQ(written(body, 30'000, &twice), "#7=COORDINATES_LIST('',30000,(" + doubled + "));\n");
}

TEST(Coordinates, APointIsReadToItsEnd) {
  const std::string_view text = "(1.,-2.5,3.E2),";
  std::array<double, 3> numbers{};
  EXPECT_EQ(readPoint(text.data(), text.data() + text.size(), numbers), text.data() + 14);
  EXPECT_THAT(numbers, testing::ElementsAre(1.0, -2.5, 300.0));
  for (const std::string_view bad : {"", "(", "1.,2.,3.", "(1.,2.)", "(1.,2.,3.", "(1.,,3.)"}) {
    EXPECT_EQ(readPoint(bad.data(), bad.data() + bad.size(), numbers), nullptr) << bad;
  }
}

}  // namespace
}  // namespace plenvorith
