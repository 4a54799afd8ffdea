#include "tessellation/short_triple.h"

#include <cmath>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include <gmock/gmock.h>

#include "tessellation/step_cursor.h"

namespace plenvorith {
namespace {

/// What may be looked at behind an item, and what in front of it.
constexpr std::string_view kRest =
    ",(9.,9.,9.),(9.,9.,9.),(9.,9.,9.),(9.,9.,9.),(9.,9.,9.),(9.,9.,9.)";
constexpr std::string_view kInFront = "((9.,9.,9.),";

/// Reads the point by one of the two ways alone.
template <typename Read>
std::optional<Point3> pointFrom(const std::string& written, Read read) {
  const std::string text = std::string(kInFront) + written + std::string(kRest);
  const char* const first = text.data() + kInFront.size() + 1;
  Point3 point;
  const char* const end = read(first, markNonDigits<64>(first), point);
  if (end == nullptr) {
    return std::nullopt;
  }
  EXPECT_EQ(end - first + 1, static_cast<std::ptrdiff_t>(written.size())) << written;
  return point;
}

std::optional<Point3> shortPoint(const std::string& written) {
  return pointFrom(written, [](const char* p, std::uint64_t marks, Point3& point) {
    return shorttriple::readShortPoint(p, marks, point);
  });
}

std::optional<Point3> longPoint(const std::string& written) {
  return pointFrom(written, [](const char* p, std::uint64_t marks, Point3& point) {
    return shorttriple::readLongPoint(p, marks, point);
  });
}

TEST(ShortPoint, IsReadWithAllItsSignsAndPlaces) {
  const auto read = shortPoint("(-1.5,1234567.12345678,-0.)");
  ASSERT_TRUE(read);
  EXPECT_EQ(read->x, -1.5);
  EXPECT_EQ(read->y, 1234567.12345678);
  EXPECT_EQ(read->z, 0.0);
  EXPECT_TRUE(std::signbit(read->z));
}

TEST(ShortPoint, TakesEachOfItsThreeNumbersFromItsOwnPlace) {
  const auto read = shortPoint("(12.25,-345.5,6789.0625)");
  ASSERT_TRUE(read);
  EXPECT_EQ(read->x, 12.25);
  EXPECT_EQ(read->y, -345.5);
  EXPECT_EQ(read->z, 6789.0625);
}

TEST(ShortPoint, RejectsWhatIsLonger) {
  EXPECT_FALSE(shortPoint("(12345678.,0.,0.)"));
  EXPECT_FALSE(shortPoint("(0.,0.123456789,0.)"));
  EXPECT_FALSE(shortPoint("(0.,0.,-12345678.)"));
}

TEST(ShortPoint, RejectsWhatIsNoSuchPoint) {
  for (const char* const written :
       {"(.5,0.,0.)", "(0,0.,0.)", "(0.,0.)", "(0.,0.,0.,0.)", "(0.,+1.,0.)", "(0.,1.E1,0.)",
        "(0., 1.,0.)", "(0.,-.5,0.)", "(0.,0.;0.)", "(--1.,0.,0.)"}) {
    EXPECT_FALSE(shortPoint(written)) << written;
  }
}

TEST(LongPoint, IsReadUpToSixteenPlaces) {
  const auto read = longPoint("(-12345678.,0.1234567890123456,7.)");
  ASSERT_TRUE(read);
  EXPECT_EQ(read->x, -12345678.0);
  EXPECT_EQ(read->y, 0.1234567890123456);
  EXPECT_EQ(read->z, 7.0);
}

TEST(LongPoint, RejectsWhatIsLongerOrNoSuchPoint) {
  for (const char* const written :
       {"(123456789.,0.,0.)", "(0.,0.12345678901234567,0.)", "(.5,0.,0.)", "(0,0.,0.)", "(0.,0.)",
        "(0.,0.,0.,0.)", "(0.,+1.,0.)", "(0.,1.E1,0.)"}) {
    EXPECT_FALSE(longPoint(written)) << written;
  }
}

TEST(ShortTriple, ReadsAPointWithOrWithoutRoomInFrontOfIt) {
  for (const std::string inFront : {"", "(", "1234567", "12345678", "((9.,9.,9.),"}) {
    const std::string text = inFront + "(1.5,-2.25,3.)" + std::string(kRest);
    Point3 point;
    const char* const first = text.data() + inFront.size();
    ASSERT_EQ(shorttriple::readPoint(first, text, 0, point), first + 14) << inFront;
    EXPECT_EQ(point.x, 1.5);
    EXPECT_EQ(point.y, -2.25);
    EXPECT_EQ(point.z, 3.0);
  }
}

TEST(ShortTriple, ReadsNothingThatEndsBehindTheText) {
  const std::string all = "(1.5,-2.25,3.)" + std::string(kRest);
  const std::string indices = "(1,2,3)" + std::string(kRest);
  Point3 point;
  IndexTriple triple;
  EXPECT_EQ(shorttriple::readPoint(all.data(), std::string_view(all).substr(0, 13), 100, point),
            nullptr);
  EXPECT_NE(shorttriple::readPoint(all.data(), std::string_view(all).substr(0, 14), 59, point),
            nullptr);
  EXPECT_EQ(shorttriple::readPoint(all.data(), std::string_view(all).substr(0, 14), 58, point),
            nullptr);
  const std::string_view text = indices;
  EXPECT_EQ(shorttriple::readIndices(text.data(), text.substr(0, 6), 100, triple), nullptr);
  EXPECT_NE(shorttriple::readIndices(text.data(), text.substr(0, 7), 34, triple), nullptr);
  EXPECT_EQ(shorttriple::readIndices(text.data(), text.substr(0, 7), 33, triple), nullptr);
}

TEST(ShortTriple, ReadsIndicesOfUpToEightDigits) {
  const std::string text = "(1,12345678,99999999)" + std::string(kRest);
  IndexTriple triple;
  ASSERT_EQ(shorttriple::readIndices(text.data(), text, 0, triple), text.data() + 21);
  EXPECT_EQ(triple.i, 1);
  EXPECT_EQ(triple.j, 12'345'678);
  EXPECT_EQ(triple.k, 99'999'999);
}

TEST(ShortTriple, RejectsIndicesThatAreNoneOrLonger) {
  for (const char* const written : {"(123456789,1,1)", "(,1,1)", "(1,2)", "(1,2,3,4)", "(1,-2,3)",
                                    "(1.,2,3)", "(1, 2,3)", "(1,2;3)"}) {
    const std::string text = written + std::string(kRest);
    IndexTriple triple;
    EXPECT_EQ(shorttriple::readIndices(text.data(), text, 0, triple), nullptr) << written;
  }
}

}  // namespace
}  // namespace plenvorith
