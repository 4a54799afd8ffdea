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
  in.reader.seekBody(in.table.offset(0));
  OutputFile output(directory / "out");
  std::vector<bool> huge;
  const bool isWritten = writeCoordinates(in.reader, {7, count, false, placement}, output, huge);
  EXPECT_TRUE(output.close());
  std::string places;
  for (std::size_t i = 0; i < huge.size(); ++i) {
    places += huge[i] ? " huge " + std::to_string(i) : "";
  }
  return isWritten ? test::readFile(directory / "out") + places : "error";
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
        "COORDINATES_LIST('',1)", "COORDINATES_LIST('',1,$)"}) {
    EXPECT_EQ(written(body, 1), "error") << body;
  }
}

TEST(Coordinates, ThatEndTooEarlyAreAnError) {
  const std::string early = "COORDINATES_LIST('',2,((1.,2.,3.)).,(1.,2.,3.)))";
  EXPECT_EQ(written(early, 2), "error");
  const Placement twice = scaled(Placement(), 2.0);
  EXPECT_EQ(written(early, 2, &twice), "error");
}

TEST(Coordinates, ThatAreNextToNothingAreZero) {
  const std::string body = "COORDINATES_LIST('',3,((1.,2.,3.),(1.E-310,-1.E-999,4.50),(5.,6.,7.)))";
  EXPECT_EQ(written(body, 3), "#7=COORDINATES_LIST('',3,((1.,2.,3.),(0.,0.,4.5),(5.,6.,7.)));\n");
  const Placement tiny = scaled(Placement(), 1e-300);
  EXPECT_EQ(written("COORDINATES_LIST('',1,((1.,-1.E-9,0.)))", 1, &tiny),
            "#7=COORDINATES_LIST('',1,((1.E-300,0.,0.)));\n");
}

TEST(Coordinates, ThatOverflowKeepTheirPlace) {
  EXPECT_EQ(written("COORDINATES_LIST('',3,((1.,2.,3.),(4.,5.,-1.E999),(7.,8.,9.)))", 3),
            "#7=COORDINATES_LIST('',3,((1.,2.,3.),(0.,0.,0.),(7.,8.,9.)));\n huge 1");
  Placement placement;
  placement.m[0][0] = 1e10;
  EXPECT_EQ(written("COORDINATES_LIST('',2,((1.E300,2.,3.),(0.,2.,3.)))", 2, &placement),
            "#7=COORDINATES_LIST('',2,((0.,0.,0.),(0.,2.,3.)));\n huge 0");
}

TEST(Coordinates, OfAnyLengthAreRead) {
  const std::string zeros(200'000, '0');
  EXPECT_EQ(written("COORDINATES_LIST('',2,((" + zeros + "1.,2.,3.),(4.,5.,6.)))", 2),
            "#7=COORDINATES_LIST('',2,((1.,2.,3.),(4.,5.,6.)));\n");
}

TEST(Coordinates, OfMillionsOfDigitsKeepTheirPlace) {
  const std::string digits(3'000'000, '3');
  std::string list = "COORDINATES_LIST('',3,((1.,";
  list.append(digits).append(".,-1.").append(digits).append("E-7),(1.E").append(digits);
  list.append(",0.,0.),(4.,5.,6.)))");
  const Placement twice = scaled(Placement(), 2.0);
  for (const Placement* placement : {static_cast<const Placement*>(nullptr), &twice}) {
    const std::string last = placement == nullptr ? "(4.,5.,6.)" : "(8.,10.,12.)";
    EXPECT_EQ(written(list, 3, placement),
              "#7=COORDINATES_LIST('',3,((0.,0.,0.),(0.,0.,0.)," + last + "));\n huge 0 huge 1");
  }
  EXPECT_EQ(written("COORDINATES_LIST('',1,((1.,2.," + digits + "x)))", 1), "error");
  EXPECT_EQ(written("COORDINATES_LIST('',1,((1.,2.," + digits + ",4)))", 1), "error");
}

TEST(Coordinates, OfComplexInstancesAreTheSame) {
  const test::TempDir directory;
  test::Instances in(
      "#1=(COORDINATES_LIST(1,((1.,2.,3.)))REPRESENTATION_ITEM('')TESSELLATED_ITEM());\n");
  in.reader.seekBody(in.table.offset(0));
  OutputFile output(directory / "out");
  std::vector<bool> huge;
  EXPECT_TRUE(writeCoordinates(in.reader, {7, 1, true, nullptr}, output, huge));
  EXPECT_TRUE(output.close());
  EXPECT_EQ(test::readFile(directory / "out"), "#7=COORDINATES_LIST('',1,((1.,2.,3.)));\n");
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
  ListedPoint point;
  EXPECT_EQ(readPoint(text.data(), text.data() + text.size(), point), text.data() + 14);
  EXPECT_THAT(point.numbers, testing::ElementsAre(1.0, -2.5, 300.0));
  for (const std::string_view bad : {"", "(", "1.,2.,3.", "(1.,2.)", "(1.,2.,3.", "(1.,,3.)"}) {
    EXPECT_EQ(readPoint(bad.data(), bad.data() + bad.size(), point), nullptr) << bad;
  }
}

}  // namespace
}  // namespace plenvorith
