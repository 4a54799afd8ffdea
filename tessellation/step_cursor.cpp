#include "tessellation/step_cursor.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cerrno>
#include <charconv>
#include <clocale>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <system_error>

#include "common/ascii.h"
#include "common/reserve.h"

namespace plenvorith {
namespace {

constexpr bool isBlank(char c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

/// The eight characters at `p`, the first in the lowest byte. A digit is its value; every other
/// character has one of the upper four bits set or is above 9.
std::uint64_t loadDigits(const char* p) {
  std::uint64_t chunk = 0;
  std::memcpy(&chunk, p, 8);
  if constexpr (std::endian::native == std::endian::big) {
    chunk = __builtin_bswap64(chunk);
  }
  return chunk ^ 0x3030303030303030U;
}

/// Marks each byte that is not the value of a digit, by its top bit.
std::uint64_t markOthers(std::uint64_t digits) {
  return (((digits & 0x7F7F7F7F7F7F7F7FU) + 0x7676767676767676U) | digits) & 0x8080808080808080U;
}

/// The number of bytes below the first one that is marked; 8 if none is.
int countUnmarked(std::uint64_t marks) {
  return std::countr_zero(marks) / 8;
}

/// The number that eight digits make.
std::uint64_t combineEight(std::uint64_t digits) {
  // Puts pairs together, then fours, then all.
  digits = digits * 10 + (digits >> 8);
  return ((digits & 0x000000FF000000FFU) * 0x000F424000000064U +
          ((digits >> 16) & 0x000000FF000000FFU) * 0x0000271000000001U) >>
         32;
}

/// The number that the first `count` digits make, seven at most.
std::uint64_t combineFirst(std::uint64_t digits, int count) {
  return combineEight(digits << 8 << (56 - 8 * count));  // with zeros in front
}

/// Converts any token, with the checks of the standard string conversion.
double convert(std::string_view token) {
  double value = 0.0;
  const bool hasPlus = !token.empty() && token.front() == '+';
  const char* const first = token.data() + (hasPlus ? 1 : 0);
  const auto [end, error] = std::from_chars(first, token.data() + token.size(), value);
  if (error == std::errc::invalid_argument) {
    throw std::invalid_argument("invalid stod argument");
  }
  if (error == std::errc() && std::abs(value) > std::numeric_limits<double>::min()) {
    return value;
  }
  // Overflow, or so small that the C library may report a range error. It does so only where digits
  // get lost, which it alone can tell; such numbers are rare.
  static const locale_t cLocale = newlocale(LC_ALL_MASK, "C", nullptr);
  const std::string terminated(token);
  const int errnoBefore = errno;
  errno = 0;
  value = strtod_l(terminated.c_str(), nullptr, cLocale);
  const bool outOfRange = errno == ERANGE;
  errno = errnoBefore;
  if (outOfRange) {
    throw std::out_of_range("stod argument out of range");
  }
  return value;
}

/// The token of a number at `p`: as long as the grammar allows, and perhaps empty.
std::string_view numberToken(const char* p, const char* end) {
  const char* const begin = p;
  const auto skipOneOf = [&p, end](char a, char b) {
    const bool isHere = p != end && (*p == a || *p == b);
    p += isHere ? 1 : 0;
    return isHere;
  };
  const auto skipDigits = [&p, end] { p = std::find_if_not(p, end, isDigit); };
  skipOneOf('-', '+');
  skipDigits();
  if (skipOneOf('.', '.')) {
    skipDigits();
  }
  if (skipOneOf('E', 'e')) {
    skipOneOf('-', '+');
    skipDigits();
  }
  return {begin, static_cast<std::size_t>(p - begin)};
}

std::int32_t truncateToInt32(double value) {
  // Written so that a NaN takes the second way.
  if (value > -2147483649.0 && value < 2147483648.0) {
    return static_cast<std::int32_t>(value);
  }
  return std::numeric_limits<std::int32_t>::min();
}

/// A cursor that lives in registers, which the loops that read most of a file need. It hands its
/// place back to the cursor that it was made from when it goes out of scope, on an error too.
class FastCursor {
 public:
  explicit FastCursor(StepCursor& cursor)
      : cursor_(cursor),
        p_(cursor.text.data() + std::min(cursor.pos, cursor.text.size())),
        end_(cursor.text.data() + cursor.text.size()) {}
  ~FastCursor() {
    const auto pos = static_cast<std::size_t>(p_ - cursor_.text.data());
    cursor_.pos = std::max(cursor_.pos, pos);  // which may stand behind the end
  }
  FastCursor(const FastCursor&) = delete;
  FastCursor& operator=(const FastCursor&) = delete;

  void skipBlanks() {
    while (p_ != end_ && isBlank(*p_)) {
      ++p_;
    }
  }
  bool nextIs(char c) {
    skipBlanks();
    return isHere(c);
  }
  void consumeIf(char c) {
    if (nextIs(c)) {
      ++p_;
    }
  }
  /// What is left of the text.
  std::string_view rest() const {
    return {p_, static_cast<std::size_t>(end_ - p_)};
  }
  double parseNumber();

 private:
  bool isHere(char c) const {
    return p_ != end_ && *p_ == c;
  }
  bool parseShortNumber(double& value);

  StepCursor& cursor_;
  const char* p_;
  const char* end_;
};

[[gnu::always_inline]] inline double FastCursor::parseNumber() {
  skipBlanks();
  double value = 0.0;
  if (!parseShortNumber(value)) {
    const std::string_view token = numberToken(p_, end_);
    p_ += token.size();
    value = convert(token);
  }
  return value;
}

/// Reads the numbers that tessellations consist of, eight characters at a time and without a branch
/// for each: scanning them one by one costs more than the conversion. Of any other number, and of
/// those at the very end of the text, it reads nothing.
[[gnu::always_inline]] inline bool FastCursor::parseShortNumber(double& value) {
  // The most that is looked at: a sign and digits, ".", digits, "E", a sign, eight characters. A
  // run of digits that fills the eight characters it is last looked for in is left alone.
  constexpr std::ptrdiff_t kLongest = 7 + 1 + 15 + 1 + 1 + 8;
  if (end_ - p_ < kLongest) {
    return false;
  }
  const char* p = p_;
  std::uint64_t digits = loadDigits(p);
  // A minus is made a leading zero. It is as likely as not, so that a branch for it would cost half
  // as much as the rest; nor does the place of what follows wait for it.
  const std::uint64_t first = digits & 0xFF;
  const std::uint64_t sign = ((first ^ ('-' ^ '0')) - 1) >> 63;
  int count = countUnmarked(markOthers(digits) & ~std::uint64_t{0x80});
  int digitCount = count;
  if (first * (1 - sign) > 9 || count <= static_cast<int>(sign) || count == 8) {
    return false;
  }
  std::uint64_t mantissa = combineFirst(digits & ~(sign * 0xFF), count);
  p += count;
  int exponent = 0;
  if (*p == '.') {
    digits = loadDigits(++p);
    count = countUnmarked(markOthers(digits));
    if (count == 8) {
      mantissa = mantissa * 100'000'000 + combineEight(digits);
      exponent = -8;
      digits = loadDigits(p += 8);
      count = countUnmarked(markOthers(digits));
      if (count == 8) {
        return false;
      }
    }
    static constexpr std::array<std::uint64_t, 8> kPowersOfTen = {
        1, 10, 100, 1'000, 10'000, 100'000, 1'000'000, 10'000'000};
    mantissa =
        mantissa * kPowersOfTen[static_cast<std::size_t>(count)] + combineFirst(digits, count);
    exponent -= count;
    digitCount -= exponent;
    p += count;
  }
  if (*p == 'E' || *p == 'e') {
    const bool isNegative = *++p == '-';
    p += isNegative || *p == '+' ? 1 : 0;
    digits = loadDigits(p);
    count = countUnmarked(markOthers(digits));
    if (count == 8) {
      return false;
    }
    const auto written = static_cast<int>(combineFirst(digits, count));
    exponent += isNegative ? -written : written;
    p += count;
  }
  // A whole number and a power of ten that are both exact doubles give, in one multiplication or
  // division, the correctly rounded result. Nineteen digits fit 64 bits.
  static constexpr std::array<double, 23> kExactPowersOfTen = {
      1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
      1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
  constexpr std::uint64_t kLargestExact = std::uint64_t{1} << 53;
  if (digitCount > 19 || mantissa > kLargestExact || exponent < -22 || exponent > 22) {
    return false;
  }
  const auto whole = static_cast<double>(static_cast<std::int64_t>(mantissa));
  const double magnitude = exponent < 0
                               ? whole / kExactPowersOfTen[static_cast<std::size_t>(-exponent)]
                               : whole * kExactPowersOfTen[static_cast<std::size_t>(exponent)];
  value = std::bit_cast<double>(std::bit_cast<std::uint64_t>(magnitude) | sign << 63);
  p_ = p;
  return true;
}

/// Reads "(a,b,c)" items into `items` until something else comes, then the outer ")" if it is
/// there.
template <typename Item, typename MakeItem>
void parseTriples(StepCursor& cursor, std::vector<Item>& items, MakeItem makeItem) {
  FastCursor fast(cursor);
  reserveLarge(items, maxTripleCount(fast.rest()));
  while (fast.nextIs('(')) {
    fast.consumeIf('(');
    const double a = fast.parseNumber();
    fast.consumeIf(',');
    const double b = fast.parseNumber();
    fast.consumeIf(',');
    const double c = fast.parseNumber();
    fast.consumeIf(')');
    items.push_back(makeItem(a, b, c));
    fast.consumeIf(',');
  }
  fast.consumeIf(')');
}

}  // namespace

std::size_t maxTripleCount(std::string_view text) {
  // Counts parentheses in blocks whose count fits a byte, which the compiler turns into wide
  // instructions; with `std::count` this took a third of the time of decoding.
  constexpr std::size_t kBlock = 128;
  std::size_t parentheses = 0;
  std::string_view rest = text;
  for (; rest.size() >= kBlock; rest.remove_prefix(kBlock)) {
    std::uint8_t inBlock = 0;
    for (std::size_t i = 0; i < kBlock; ++i) {
      inBlock = static_cast<std::uint8_t>(inBlock + (rest[i] == '(' ? 1 : 0));
    }
    parentheses += inBlock;
  }
  parentheses += static_cast<std::size_t>(std::count(rest.begin(), rest.end(), '('));
  constexpr std::size_t kShortest = std::string_view("(1,2,3)").size();
  return std::min(parentheses, text.size() / kShortest);
}

void skipWhitespace(StepCursor& cursor) {
  FastCursor(cursor).skipBlanks();
}

bool nextIs(StepCursor& cursor, char c) {
  return FastCursor(cursor).nextIs(c);
}

void consumeIf(StepCursor& cursor, char c) {
  FastCursor(cursor).consumeIf(c);
}

double parseNumber(StepCursor& cursor) {
  return FastCursor(cursor).parseNumber();
}

std::string parseReference(StepCursor& cursor) {
  if (!nextIs(cursor, '#')) {
    return {};
  }
  const std::size_t start = cursor.pos++;
  while (cursor.pos < cursor.text.size() && isDigit(cursor.text[cursor.pos])) {
    ++cursor.pos;
  }
  return std::string(cursor.text.substr(start, cursor.pos - start));
}

void skipQuotedString(StepCursor& cursor) {
  if (!nextIs(cursor, '\'')) {
    return;
  }
  const std::size_t closing = cursor.text.find('\'', cursor.pos + 1);
  cursor.pos = closing == std::string_view::npos ? cursor.text.size() : closing + 1;
}

void skipParenthesisedGroup(StepCursor& cursor) {
  const std::string_view text = cursor.text;
  std::size_t depth = 0;
  while (cursor.pos < text.size()) {
    const char c = text[cursor.pos];
    if (c == '(') {
      ++depth;
    } else if (c == ')') {
      --depth;
    } else if (c == '\'') {
      cursor.pos = std::min(text.find('\'', cursor.pos + 1), text.size());
    }
    ++cursor.pos;
    if (c == ')' && depth == 0) {
      return;
    }
  }
}

std::vector<Point3> parsePointList(StepCursor& cursor) {
  std::vector<Point3> points;
  consumeIf(cursor, '(');
  parseTriples(cursor, points, [](double x, double y, double z) { return Point3{x, y, z}; });
  return points;
}

std::vector<IndexTriple> parseIndexTriples(StepCursor& cursor) {
  std::vector<IndexTriple> triples;
  if (!nextIs(cursor, '(')) {
    return triples;
  }
  ++cursor.pos;
  // An empty list ends at its ")" like any other.
  parseTriples(cursor, triples, [](double i, double j, double k) {
    return IndexTriple{truncateToInt32(i), truncateToInt32(j), truncateToInt32(k)};
  });
  return triples;
}

}  // namespace plenvorith
