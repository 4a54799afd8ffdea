#include "prepare/coordinates.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "common/ascii.h"
#include "exchange/real_number.h"

namespace plenvorith {

bool goToPoints(TokenReader& tokens, bool isComplex) {
  return tokens.enterRecord("COORDINATES_LIST", isComplex) &&
         tokens.skipParameters(isComplex ? 1 : 2);  // name, npoints
}

const char* readPoint(const char* p, const char* end, ListedPoint& point) {
  if (p == end || *p != '(') {
    return nullptr;
  }
  point.isPlain = true;
  point.isHuge = false;
  for (std::size_t i = 0; i < 3; ++i) {
    const RealNumber number = readReal(p + 1, end);
    if (number.kind != RealNumber::Kind::Plain) {
      if (number.kind == RealNumber::Kind::None) {
        return nullptr;
      }
      point.isPlain = false;
      point.isHuge = point.isHuge || number.kind == RealNumber::Kind::Huge;
    }
    if (number.end == end || *number.end != (i < 2 ? ',' : ')')) {
      return nullptr;
    }
    point.numbers[i] = number.value;
    p = number.end;
  }
  return p + 1;
}

namespace {

constexpr bool isOfNumber(char c) {
  return isDigit(c) || c == '.' || c == '+' || c == '-' || c == 'E' || c == 'e';
}

/// Goes over a point that is too long to be read.
bool passPoint(TokenReader& tokens) {
  for (const char before : {'(', ',', ','}) {
    if (!tokens.take(before) || !isOfNumber(tokens.peek())) {
      return false;
    }
    for (; isOfNumber(tokens.peek());
         tokens.moveTo(std::find_if_not(tokens.position(), tokens.end(), isOfNumber))) {
    }
  }
  return tokens.take(')');
}

}  // namespace

bool takePoint(TokenReader& tokens, ListedPoint& point) {
  constexpr std::ptrdiff_t kLongest = std::ptrdiff_t{1} << 20U;
  (void)tokens.peek();
  const char* behind = readPoint(tokens.position(), tokens.end(), point);
  // It may only be longer than what was at hand.
  while (behind == nullptr && tokens.end() - tokens.position() <= kLongest && tokens.readMore()) {
    behind = readPoint(tokens.position(), tokens.end(), point);
  }
  if (behind != nullptr) {
    tokens.moveTo(behind);
    return true;
  }
  if (tokens.end() - tokens.position() <= kLongest) {
    return false;
  }
  point = {{}, false, true};
  return passPoint(tokens);
}

namespace {

class ListWriter {
 public:
  ListWriter(TokenReader& tokens, const ListTarget& target, OutputFile& output,
             std::vector<bool>& huge)
      : tokens_(tokens), target_(target), output_(output), huge_(huge) {}

  /// Writes the points of the list that is next.
  bool writeAll() {
    if (!tokens_.take('(')) {
      return false;
    }
    if (!tokens_.take(')')) {
      do {
        if (count_ > 0) {
          output_.put(',');
        }
        if (!writePoints()) {
          return false;
        }
      } while (tokens_.take(','));
      if (!tokens_.take(')')) {
        return false;
      }
    }
    return count_ == target_.pointCount;
  }

 private:
  /// Writes the points that are whole in what is at hand, one at least. False if there is none.
  bool writePoints() {
    (void)tokens_.peek();
    const char* const begin = tokens_.position();
    const char* const last = tokens_.end();
    const char* p = begin;
    const char* behind = begin;  // the points that can be copied, or were written
    ListedPoint point;
    do {
      const char* const next = readPoint(p, last, point);
      if (next == nullptr || (target_.placement == nullptr && !point.isPlain)) {
        break;
      }
      if (target_.placement != nullptr) {
        if (p != begin) {
          output_.put(',');
        }
        writePlaced(point, *target_.placement);
      }
      ++count_;
      behind = next;
      p = next + 1;
    } while (last - p > TokenReader::kLookahead && behind[0] == ',');
    if (behind == begin) {
      return writeUnusual();
    }
    if (target_.placement == nullptr) {
      output_.put({begin, static_cast<std::size_t>(behind - begin)});
    }
    tokens_.moveTo(behind);
    return true;
  }

  /// Writes a point that is long, or cannot be copied.
  bool writeUnusual() {
    ListedPoint point;
    const bool isPoint = takePoint(tokens_, point);
    if (isPoint) {
      writePlaced(point, target_.placement == nullptr ? Placement() : *target_.placement);
      ++count_;
    }
    return isPoint;
  }

  void writePlaced(const ListedPoint& point, const Placement& placement) {
    constexpr std::size_t kLongest = 100;
    std::array<double, 3> placed = {};
    bool isHuge = point.isHuge;
    for (std::size_t i = 0; i < 3; ++i) {
      const auto& row = placement.m[i];
      const double value = row[0] * point.numbers[0] + row[1] * point.numbers[1] +
                           row[2] * point.numbers[2] + row[3];
      isHuge = isHuge || !std::isfinite(value);
      placed[i] = std::abs(value) < std::numeric_limits<double>::min() ? 0.0 : value;
    }
    if (isHuge) {
      placed = {};
      huge_.resize(target_.pointCount);
      if (count_ < huge_.size()) {
        huge_[count_] = true;
      }
    }
    char* const start = output_.room(kLongest);
    char* to = start;
    *to++ = '(';
    for (const double value : placed) {
      to = writeReal(to, value);
      *to++ = ',';
    }
    to[-1] = ')';
    output_.used(static_cast<std::size_t>(to - start));
  }

  TokenReader& tokens_;
  const ListTarget& target_;
  OutputFile& output_;
  std::vector<bool>& huge_;
  std::uint64_t count_ = 0;
};

}  // namespace

bool writeCoordinates(StatementReader& reader, const ListTarget& target, OutputFile& output,
                      std::vector<bool>& huge) {
  output.put('#');
  output.put(target.name);
  output.put("=COORDINATES_LIST('',");
  output.put(target.pointCount);
  output.put(",(");
  TokenReader tokens(reader);
  const bool isWritten =
      goToPoints(tokens, target.isComplex) && ListWriter(tokens, target, output, huge).writeAll();
  output.put("));\n");
  return isWritten;
}

}  // namespace plenvorith
