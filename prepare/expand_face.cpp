#include "prepare/expand_face.h"

#include <array>
#include <charconv>
#include <deque>
#include <string_view>

#include "common/ascii.h"
#include "common/number.h"
#include "prepare/body_cursor.h"

namespace plenvorith {
namespace {

using Index = std::int64_t;

/// More digits are not read at once, so that no index overflows.
constexpr std::ptrdiff_t kMaxDigits = 18;

/// Reads one index. False if there is no number.
bool readIndex(BodyCursor& cursor, Index& index) {
  (void)cursor.peek();
  const char* p = cursor.position();
  const char* const end = cursor.end();
  Index value = 0;
  while (p != end && isDigit(*p) && p - cursor.position() < kMaxDigits) {
    value = value * 10 + (*p - '0');
    ++p;
  }
  if (p != cursor.position() && p != end && (*p == ',' || *p == ')')) {
    cursor.moveTo(p);
    index = value;
    return true;
  }
  double number = 0.0;
  const NumberResult result = readNumber(cursor.position(), end, number);
  if (result.error != NumberError::None) {
    return false;
  }
  cursor.moveTo(result.end);
  constexpr double kLargest = 1e15;
  index = number > -kLargest && number < kLargest ? static_cast<Index>(number) : -1;
  return true;
}

/// Calls `each` with the indices of a list, "(1,2,3)", one by one; a missing list, "$", has none.
template <typename Each>
bool readIndices(BodyCursor& cursor, Each each) {
  if (!cursor.take('(')) {
    return cursor.take('$');
  }
  if (cursor.take(')')) {
    return true;
  }
  do {
    Index index = 0;
    if (!readIndex(cursor, index)) {
      return false;
    }
    each(index);
  } while (cursor.take(','));
  return cursor.take(')');
}

/// Reads digits up to `after`. Gives the place behind that, or null where something else stands.
inline const char* readPlainIndex(const char* p, char after, std::uint64_t& index) {
  std::uint64_t value = 0;
  const char* const start = p;
  for (; isDigit(*p) && p - start < kMaxDigits; ++p) {
    value = value * 10 + static_cast<std::uint64_t>(*p - '0');
  }
  index = value;
  return *p == after && p != start ? p + 1 : nullptr;
}

/// Goes over the lists in a list. At each of them, `copy` may take some; of one that it leaves,
/// calls `each` with the indices and then `finish`.
template <typename Copy, typename Each, typename Finish>
bool readLists(BodyCursor& cursor, Copy copy, Each each, Finish finish) {
  if (!cursor.take('(')) {
    return cursor.take('$');
  }
  if (cursor.take(')')) {
    return true;
  }
  do {
    if (copy()) {
      continue;
    }
    if (!readIndices(cursor, each)) {
      return false;
    }
    finish();
  } while (cursor.take(','));
  return cursor.take(')');
}

class Expander {
 public:
  Expander(std::uint64_t pointCount, const FaceTarget& target, OutputFile* output)
      : pointCount_(static_cast<Index>(pointCount)),
        isMirrored_(target.isMirrored),
        maxSamples_(target.maxSamples),
        output_(output) {}

  bool readMapping(BodyCursor& cursor) {
    return readIndices(cursor, [this](Index index) {
      const bool isPoint = index >= 1 && index <= pointCount_ && index <= kLargestPoint;
      mapping_.push_back(isPoint ? static_cast<std::uint32_t>(index) : 0);
    });
  }
  bool readTriangles(BodyCursor& cursor);
  bool readStrips(BodyCursor& cursor);
  bool readFans(BodyCursor& cursor);

  ExpandedFace result;

 private:
  static constexpr Index kLargestPoint = 0xFFFFFFFF;

  void addJoined(Index a, Index b, Index c) {
    if (a != b && b != c && a != c) {
      add(a, b, c);
    }
  }
  void add(Index a, Index b, Index c);
  bool copyTriples(BodyCursor& cursor);
  bool map(Index& index) const;
  bool wantsSamples() const {
    return result.mayHaveNormals && result.samples.size() < maxSamples_;
  }

  // 0: outside the coordinates list. As it grows, nothing of it is copied, which would take two to
  // three times the memory.
  std::deque<std::uint32_t> mapping_;
  Index pointCount_;
  bool isMirrored_;
  std::size_t maxSamples_;
  OutputFile* output_;
};

/// Makes an index one of the coordinates list; false if it is outside.
bool Expander::map(Index& index) const {
  if (!mapping_.empty()) {
    const bool isMapped = index >= 1 && index <= static_cast<Index>(mapping_.size());
    index = isMapped ? mapping_[static_cast<std::size_t>(index - 1)] : 0;
  }
  return index >= 1 && index <= pointCount_;
}

/// Copies what is next of a list of triples as it is, where their indices need no change; false if
/// the first of them is something else. Most of what real files hold is this.
bool Expander::copyTriples(BodyCursor& cursor) {
  if (!mapping_.empty() || isMirrored_ || wantsSamples()) {
    return false;
  }
  constexpr std::ptrdiff_t kLongest = 3 * (kMaxDigits + 1) + 2;
  (void)cursor.peek();
  const char* const begin = cursor.position();
  const char* end = begin;
  const auto count = static_cast<std::uint64_t>(pointCount_);
  const char* p = begin;
  std::uint64_t copied = 0;
  while (cursor.end() - p > kLongest && *p == '(') {
    std::array<std::uint64_t, 3> index = {};
    const char* next = p + 1;
    for (std::size_t i = 0; i < 3 && next != nullptr; ++i) {
      next = readPlainIndex(next, i < 2 ? ',' : ')', index[i]);
    }
    const auto isInside = [count](std::uint64_t i) { return i - 1 < count; };
    const bool isJoint = index[0] == index[1] || index[1] == index[2] || index[0] == index[2];
    if (next == nullptr || isJoint || !isInside(index[0]) || !isInside(index[1]) ||
        !isInside(index[2])) {
      break;
    }
    ++copied;
    end = next;
    if (next[0] != ',') {
      break;
    }
    p = next + 1;
  }
  if (copied == 0) {
    return false;
  }
  if (output_ != nullptr) {
    if (result.triangles > 0) {
      output_->put(',');
    }
    output_->put({begin, static_cast<std::size_t>(end - begin)});
  }
  result.triangles += copied;
  cursor.moveTo(end);
  return true;
}

void Expander::add(Index a, Index b, Index c) {
  const auto cornersOf = [](Index first, Index second, Index third) {
    return std::array{static_cast<std::uint64_t>(first), static_cast<std::uint64_t>(second),
                      static_cast<std::uint64_t>(third)};
  };
  const std::array<std::uint64_t, 3> given = cornersOf(a, b, c);
  if (!map(a) || !map(b) || !map(c)) {
    ++result.skipped;
    return;
  }
  // Also where a mapping makes them equal, and in triples: once written, they could not be told
  // from joints, and preparing twice would give less than preparing once.
  if (a == b || b == c || a == c) {
    return;
  }
  if (wantsSamples()) {
    result.samples.push_back({given, cornersOf(a, b, c)});
  }
  if (output_ != nullptr) {
    constexpr std::size_t kLongest = 80;
    char* const start = output_->room(kLongest);
    char* p = start;
    if (result.triangles > 0) {
      *p++ = ',';
    }
    *p++ = '(';
    for (const Index index : {a, isMirrored_ ? c : b, isMirrored_ ? b : c}) {
      p = std::to_chars(p, start + kLongest, index).ptr;
      *p++ = ',';
    }
    p[-1] = ')';
    output_->used(static_cast<std::size_t>(p - start));
  }
  ++result.triangles;
}

bool Expander::readTriangles(BodyCursor& cursor) {
  std::array<Index, 3> corners = {};
  std::size_t count = 0;
  return readLists(
      cursor, [this, &cursor] { return copyTriples(cursor); },
      [&corners, &count](Index index) {
        if (count < 3) {
          corners[count] = index;
        }
        ++count;
      },
      [this, &corners, &count] {
        if (count == 3) {
          add(corners[0], corners[1], corners[2]);
        } else {
          ++result.skipped;
        }
        count = 0;
      });
}

bool Expander::readStrips(BodyCursor& cursor) {
  std::array<Index, 2> before = {};
  std::size_t count = 0;
  return readLists(
      cursor, [this, &cursor] { return copyTriples(cursor); },
      [this, &before, &count](Index index) {
        if (count >= 2 && count % 2 == 0) {
          addJoined(before[0], before[1], index);
        } else if (count >= 2) {
          addJoined(before[0], index, before[1]);
        }
        before = {before[1], index};
        ++count;
      },
      [&count] { count = 0; });
}

bool Expander::readFans(BodyCursor& cursor) {
  Index first = 0;
  Index before = 0;
  std::size_t count = 0;
  return readLists(
      cursor, [this, &cursor] { return copyTriples(cursor); },
      [this, &first, &before, &count](Index index) {
        if (count >= 2) {
          addJoined(first, before, index);
        }
        first = count == 0 ? index : first;
        before = index;
        ++count;
      },
      [&count] { count = 0; });
}

bool isFaceKeyword(std::string_view keyword) {
  return (rolesOf(keyword) & kFace) != 0;
}

/// Goes to the index mapping of a face and gives the keyword of the record that it stands in; an
/// empty one if there is none. Tells whether the face may have normals.
std::string findMapping(BodyCursor& cursor, bool isComplex, bool& mayHaveNormals) {
  mayHaveNormals = isComplex;
  if (isComplex) {
    (void)cursor.take('(');
    std::string keyword = cursor.takeKeyword();
    while (!isFaceKeyword(keyword)) {
      if (!cursor.skipRecord()) {
        return {};
      }
      keyword = cursor.takeKeyword();
    }
    return cursor.take('(') ? keyword : std::string();
  }
  std::string keyword = cursor.takeKeyword();
  // name, coordinates, pnmax, normals and, of a face only, its link
  const int before = keyword.ends_with("FACE") ? 5 : 4;
  bool isThere = cursor.take('(');
  for (int i = 0; i < before && isThere; ++i) {
    mayHaveNormals = mayHaveNormals || (i == 3 && cursor.isAtItems());
    cursor.skipParameter();
    isThere = cursor.take(',');
  }
  return isThere ? keyword : std::string();
}

}  // namespace

ExpandedFace expandFace(StatementReader& reader, const EntityType& type, std::uint64_t pointCount,
                        const FaceTarget& target, OutputFile* output) {
  if (output != nullptr) {
    output->put('#');
    output->put(target.name);
    output->put("=COMPLEX_TRIANGULATED_FACE('',#");
    output->put(target.coordinates);
    output->put(',');
    output->put(pointCount);
    output->put(",(),$,(),(");
  }
  Expander expander(pointCount, target, output);
  BodyCursor cursor(reader);
  const std::string keyword = findMapping(cursor, type.isComplex, expander.result.mayHaveNormals);
  bool isRead = !keyword.empty() && expander.readMapping(cursor) && cursor.take(',');
  if (keyword.starts_with("COMPLEX_")) {
    isRead = isRead && expander.readStrips(cursor) && cursor.take(',') && expander.readFans(cursor);
  } else {
    isRead = isRead && expander.readTriangles(cursor);
  }
  if (output != nullptr) {
    output->put("),());\n");
  }
  expander.result.hasFailed = !isRead;
  return expander.result;
}

}  // namespace plenvorith
