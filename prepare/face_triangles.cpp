#include "prepare/face_triangles.h"

#include <algorithm>
#include <charconv>

#include "common/ascii.h"

namespace plenvorith {
namespace {

/// Reads digits up to `after`. Gives the place behind that, or null where something else stands.
inline const char* readPlainIndex(const char* p, char after, std::uint64_t& index) {
  std::uint64_t value = 0;
  const char* const start = p;
  for (; isDigit(*p) && p - start < kMaxIndexDigits; ++p) {
    value = value * 10 + static_cast<std::uint64_t>(*p - '0');
  }
  index = value;
  return *p == after && p != start ? p + 1 : nullptr;
}

bool hasEqual(const std::array<std::uint64_t, 3>& corners) {
  return corners[0] == corners[1] || corners[1] == corners[2] || corners[0] == corners[2];
}

}  // namespace

FaceTriangles::FaceTriangles(TokenReader& tokens, std::uint64_t pointCount,
                             const FaceTarget& target, OutputFile* output)
    : tokens_(tokens),
      mapping_(pointCount, target.mappingLimits),
      pointCount_(pointCount),
      huge_(target.huge),
      isMirrored_(target.isMirrored),
      maxSamples_(target.maxSamples),
      maxWaiting_(3 * target.triangleLimit),
      output_(output) {}

/// The place behind a triple of different indices inside the list; null where something else stands.
inline const char* FaceTriangles::passTriple(const char* p) const {
  Corners index = {};
  ++p;
  for (std::size_t i = 0; i < 3 && p != nullptr; ++i) {
    p = readPlainIndex(p, i < 2 ? ',' : ')', index[i]);
  }
  const bool isTriangle = index[0] - 1 < pointCount_ && index[1] - 1 < pointCount_ &&
                          index[2] - 1 < pointCount_ && !hasEqual(index);
  return isTriangle ? p : nullptr;
}

bool FaceTriangles::copyTriples() {
  if (!mapping_.isEmpty() || isMirrored_ || huge_ != nullptr || wantsSamples()) {
    return false;
  }
  constexpr std::ptrdiff_t kLongest = 3 * (kMaxIndexDigits + 1) + 2;
  (void)tokens_.peek();
  const char* const begin = tokens_.position();
  const char* end = begin;
  std::uint64_t copied = 0;
  for (const char* p = begin; tokens_.end() - p > kLongest && *p == '('; p = end + 1) {
    const char* const next = passTriple(p);
    if (next == nullptr) {
      break;
    }
    ++copied;
    end = next;
    if (*end != ',') {
      break;
    }
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
  tokens_.moveTo(end);
  return true;
}

/// The point of an index of a face whose mapping is held; outside 1..`pointCount_` if there is none.
Index FaceTriangles::pointOf(Index index) const {
  if (mapping_.isEmpty()) {
    return index;
  }
  return mapping_.has(index) ? mapping_.held(index) : 0;
}

void FaceTriangles::add(Index a, Index b, Index c) {
  const auto cornersOf = [](Index first, Index second, Index third) {
    return std::array{static_cast<std::uint64_t>(first), static_cast<std::uint64_t>(second),
                      static_cast<std::uint64_t>(third)};
  };
  if (mapping_.isHeld()) {
    addPoints(cornersOf(a, b, c), cornersOf(pointOf(a), pointOf(b), pointOf(c)));
    return;
  }
  if (waiting_.empty()) {
    waiting_.reserve(maxWaiting_);
  }
  for (const Index index : {a, b, c}) {
    const bool isEntry = mapping_.has(index) && index <= IndexMapping::kLargest;
    waiting_.push_back(isEntry ? static_cast<std::uint32_t>(index) : 0);
  }
  if (waiting_.size() >= maxWaiting_) {
    flush();
  }
}

void FaceTriangles::flush() {
  if (waiting_.empty()) {
    return;
  }
  const std::vector<std::uint32_t> given = wantsSamples() ? waiting_ : std::vector<std::uint32_t>();
  mapping_.lookUp(tokens_, waiting_);
  for (std::size_t i = 0; i < waiting_.size(); i += 3) {
    const Corners points = {waiting_[i], waiting_[i + 1], waiting_[i + 2]};
    addPoints(given.empty() ? points : Corners{given[i], given[i + 1], given[i + 2]}, points);
  }
  waiting_.clear();
}

bool FaceTriangles::isHuge(const Corners& points) const {
  return huge_ != nullptr && std::any_of(points.begin(), points.end(), [this](std::uint64_t index) {
           return index - 1 < huge_->size() && (*huge_)[static_cast<std::size_t>(index - 1)];
         });
}

/// Adds a triangle by its indices as the face has them and by its points.
void FaceTriangles::addPoints(const Corners& given, const Corners& points) {
  // An index of 0 becomes the largest of all numbers, as a negative one is.
  if (points[0] - 1 >= pointCount_ || points[1] - 1 >= pointCount_ ||
      points[2] - 1 >= pointCount_ || isHuge(points)) {
    ++result.skipped;
    return;
  }
  if (hasEqual(points)) {
    ++result.equal;
    return;
  }
  if (wantsSamples()) {
    result.samples.push_back({given, points});
  }
  if (output_ != nullptr) {
    write(points);
  }
  ++result.triangles;
}

void FaceTriangles::write(const Corners& points) {
  constexpr std::size_t kLongest = 80;
  char* const start = output_->room(kLongest);
  char* p = start;
  if (result.triangles > 0) {
    *p++ = ',';
  }
  *p++ = '(';
  for (const std::uint64_t index :
       {points[0], points[isMirrored_ ? 2 : 1], points[isMirrored_ ? 1 : 2]}) {
    p = std::to_chars(p, start + kLongest, index).ptr;
    *p++ = ',';
  }
  p[-1] = ')';
  output_->used(static_cast<std::size_t>(p - start));
}

}  // namespace plenvorith
