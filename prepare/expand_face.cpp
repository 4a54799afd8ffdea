#include "prepare/expand_face.h"

#include <charconv>
#include <string_view>

#include "common/ascii.h"
#include "common/number.h"
#include "prepare/body_cursor.h"

namespace plenvorith {
namespace {

using Index = std::int64_t;

/// Reads one index. False if there is no number.
bool readIndex(BodyCursor& cursor, Index& index) {
  (void)cursor.peek();
  const char* p = cursor.position();
  const char* const end = cursor.end();
  constexpr std::ptrdiff_t kMaxDigits = 18;
  Index value = 0;
  while (p != end && isDigit(*p)) {
    value = value * 10 + (*p - '0');
    ++p;
  }
  const std::ptrdiff_t digits = p - cursor.position();
  if (digits > 0 && digits <= kMaxDigits && p != end && (*p == ',' || *p == ')')) {
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

/// Calls `begin` at each of the lists in a list, and `each` with their indices.
template <typename Begin, typename Each>
bool readLists(BodyCursor& cursor, Begin begin, Each each) {
  if (!cursor.take('(')) {
    return cursor.take('$');
  }
  if (cursor.take(')')) {
    return true;
  }
  do {
    begin();
    if (!readIndices(cursor, each)) {
      return false;
    }
  } while (cursor.take(','));
  return cursor.take(')');
}

class Expander {
 public:
  Expander(std::uint64_t pointCount, bool isMirrored, OutputFile* output)
      : pointCount_(static_cast<Index>(pointCount)), isMirrored_(isMirrored), output_(output) {}

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
  bool map(Index& index) const;

  std::vector<std::uint32_t> mapping_;  // 0: outside the coordinates list
  Index pointCount_;
  bool isMirrored_;
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

void Expander::add(Index a, Index b, Index c) {
  if (!map(a) || !map(b) || !map(c)) {
    ++result.skipped;
    return;
  }
  // Also where a mapping makes them equal, and in triples: once written, they could not be told
  // from joints, and preparing twice would give less than preparing once.
  if (a == b || b == c || a == c) {
    return;
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
  Index corners[3] = {};
  std::size_t count = 3;
  const auto finish = [this, &corners, &count] {
    if (count == 3) {
      add(corners[0], corners[1], corners[2]);
    } else {
      ++result.skipped;
    }
    count = 0;
  };
  bool isFirst = true;
  const bool isRead = readLists(
      cursor,
      [&isFirst, &finish, &count] {
        if (!isFirst) {
          finish();
        }
        isFirst = false;
        count = 0;
      },
      [&corners, &count](Index index) {
        if (count < 3) {
          corners[count] = index;
        }
        ++count;
      });
  if (isRead && !isFirst) {
    finish();
  }
  return isRead;
}

bool Expander::readStrips(BodyCursor& cursor) {
  Index before[2] = {};
  std::size_t count = 0;
  return readLists(
      cursor, [&count] { count = 0; },
      [this, &before, &count](Index index) {
        if (count >= 2 && count % 2 == 0) {
          addJoined(before[0], before[1], index);
        } else if (count >= 2) {
          addJoined(before[0], index, before[1]);
        }
        before[0] = before[1];
        before[1] = index;
        ++count;
      });
}

bool Expander::readFans(BodyCursor& cursor) {
  Index first = 0;
  Index before = 0;
  std::size_t count = 0;
  return readLists(
      cursor, [&count] { count = 0; },
      [this, &first, &before, &count](Index index) {
        if (count >= 2) {
          addJoined(first, before, index);
        }
        first = count == 0 ? index : first;
        before = index;
        ++count;
      });
}

bool isFaceKeyword(std::string_view keyword) {
  return (rolesOf(keyword) & kFace) != 0;
}

/// Goes to the index mapping of a face and gives the keyword of the record that it stands in; an
/// empty one if there is none.
std::string findMapping(BodyCursor& cursor, bool isComplex) {
  if (isComplex) {
    (void)cursor.take('(');
    while (true) {
      std::string keyword = cursor.takeKeyword();
      if (!cursor.take('(')) {
        return {};
      }
      if (isFaceKeyword(keyword)) {
        return keyword;
      }
      do {
        cursor.skipParameter();
      } while (cursor.take(','));
      if (!cursor.take(')')) {
        return {};
      }
    }
  }
  std::string keyword = cursor.takeKeyword();
  // name, coordinates, pnmax, normals and, of a face only, its link
  const int before = keyword.ends_with("FACE") ? 5 : 4;
  bool isThere = cursor.take('(');
  for (int i = 0; i < before && isThere; ++i) {
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
  Expander expander(pointCount, target.isMirrored, output);
  BodyCursor cursor(reader);
  const std::string keyword = findMapping(cursor, type.isComplex);
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
