#include "exchange/instance_table.h"

#include <algorithm>
#include <numeric>
#include <string_view>

#include "common/ascii.h"
#include "exchange/body_cursor.h"

namespace plenvorith {
namespace {

/// How much of a body is looked at for its keyword.
constexpr std::size_t kLongestKeyword = 256;

/// Goes over a string at the start of a text.
std::size_t stringLength(std::string_view text) {
  std::size_t end = 0;
  while (end < text.size() && text[end] == '\'') {
    end = std::min(text.find('\'', end + 1), text.size() - 1) + 1;
  }
  return end;
}

/// Counts the points of the coordinates list that the reader stands at.
std::uint64_t countPoints(StatementReader& reader) {
  const std::string_view text = reader.peek(kLongestKeyword);
  const std::size_t name = std::min(text.find('('), text.size() - 1) + 1;
  reader.consume(name + stringLength(text.substr(name)));
  const std::uint64_t opened = reader.countOpened();
  return opened == 0 ? 0 : opened - 1;  // less the list itself
}

/// What a face names, as the start of an instance that names no more: its lists of normals and
/// indices are most of a file.
std::string linksOf(StatementReader& reader) {
  BodyCursor cursor(reader);
  std::string links = cursor.takeKeyword();
  const bool hasLink = links.ends_with("FACE");
  (void)cursor.take('(');
  cursor.skipParameter();  // name
  links += "('',";
  const auto copyReference = [&cursor, &links] {
    (void)cursor.take(',');
    const std::size_t size = links.size();
    while (cursor.peek() == '#' || isDigit(cursor.peek())) {
      links += cursor.peek();
      (void)cursor.take(cursor.peek());
    }
    links += links.size() == size ? "$" : "";
    cursor.skipParameter();
  };
  copyReference();  // coordinates
  if (hasLink) {
    links += ",0,(),";
    for (int i = 0; i < 2 && cursor.take(','); ++i) {  // pnmax, normals
      cursor.skipParameter();
    }
    copyReference();
  }
  return links + ")";
}

}  // namespace

bool InstanceTable::read(StatementReader& reader) {
  ReferenceScanner scanner;
  Statement statement = reader.next();
  for (; statement != Statement::End; statement = reader.next()) {
    if (statement == Statement::Instance && !add(reader, scanner)) {
      return false;
    }
  }
  error_ = reader.error();
  if (!error_.empty()) {
    return false;
  }
  largestNumber_ = std::max(largestNumber_, scanner.largestNumber());
  sortNumbers();
  return true;
}

bool InstanceTable::add(StatementReader& reader, ReferenceScanner& scanner) {
  const auto index = static_cast<InstanceIndex>(instances_.size());
  if (index == kNoInstance) {
    error_ = "too many entities";
    return false;
  }
  const std::uint64_t offset = reader.offset();
  const std::string_view start = reader.peek(kLongestKeyword);
  const std::string_view keyword = start.substr(0, start.find_first_of(kBehindKeyword));
  const bool isComplex = start.starts_with('(');
  std::uint16_t type = 0;
  // The surfaces and curves of complex instances begin with these; there are many.
  const bool isBounded =
      start.starts_with("(BOUNDED_SURFACE(") || start.starts_with("(BOUNDED_CURVE(");
  if (!isComplex || isBounded) {
    type = types_.idOf(isBounded ? "BOUNDED_SURFACE" : keyword, isBounded);
  }
  if (isComplex && !isBounded) {
    store(index, reader, scanner, false);
    type = types_.idOf(scanner.keywords(), true);
  }
  if (type == EntityTypes::kMaxCount) {
    error_ = "too many types of entities";
    return false;
  }
  if (isComplex) {
    // Its references are stored.
  } else if (types_[type].has(kCoordinates)) {
    pointCounts_.emplace_back(index, countPoints(reader));
  } else if (!types_[type].has(kGeometryOnly)) {
    store(index, reader, scanner, types_[type].has(kFace));
  }
  const std::uint64_t number = reader.number();
  largestNumber_ = std::max(largestNumber_, number);
  instances_.push_back({number << 1U, offset << 16U | type});
  return true;
}

/// Stores the references of the instance that the reader stands at.
void InstanceTable::store(InstanceIndex index, StatementReader& reader, ReferenceScanner& scanner,
                          bool isFace) {
  const std::uint64_t place = store_.size();
  scanner.start(store_);
  if (isFace) {
    scanner.scan(linksOf(reader));
  } else {
    for (std::string_view text = reader.peek(); !text.empty(); text = reader.peek()) {
      scanner.scan(text);
      reader.consume(text.size());
    }
  }
  scanner.finish();
  if (store_.size() == place + 1) {
    store_.pop_back();  // the mark of the end alone: the instance names nothing
    return;
  }
  stored_.push_back({index, static_cast<std::uint32_t>(place & 0xFFFFFFFFU),
                     static_cast<std::uint32_t>(place >> 32U)});
}

/// Finds the instances that later ones replace, and makes numbers searchable.
void InstanceTable::sortNumbers() {
  const auto isDisorder = [](const Instance& a, const Instance& b) {
    return a.numberAndFlag >= b.numberAndFlag;
  };
  if (std::adjacent_find(instances_.begin(), instances_.end(), isDisorder) == instances_.end()) {
    return;
  }
  byNumber_.resize(instances_.size());
  std::iota(byNumber_.begin(), byNumber_.end(), 0);
  std::sort(byNumber_.begin(), byNumber_.end(), [this](InstanceIndex a, InstanceIndex b) {
    return number(a) != number(b) ? number(a) < number(b) : a < b;
  });
  for (std::size_t i = 1; i < byNumber_.size(); ++i) {
    if (number(byNumber_[i]) == number(byNumber_[i - 1])) {
      instances_[byNumber_[i - 1]].numberAndFlag |= 1U;
      ++replacedCount_;
    }
  }
  std::erase_if(byNumber_, [this](InstanceIndex index) { return isReplaced(index); });
}

InstanceIndex InstanceTable::find(std::uint64_t wanted) const {
  if (byNumber_.empty()) {
    const auto found = std::lower_bound(instances_.begin(), instances_.end(), wanted,
                                        [](const Instance& instance, std::uint64_t other) {
                                          return instance.numberAndFlag >> 1U < other;
                                        });
    return found == instances_.end() || found->numberAndFlag >> 1U != wanted
               ? kNoInstance
               : static_cast<InstanceIndex>(found - instances_.begin());
  }
  const auto found = std::lower_bound(
      byNumber_.begin(), byNumber_.end(), wanted,
      [this](InstanceIndex index, std::uint64_t other) { return number(index) < other; });
  return found == byNumber_.end() || number(*found) != wanted ? kNoInstance : *found;
}

std::uint64_t InstanceTable::pointCount(InstanceIndex coordinates) const {
  const auto found = std::lower_bound(
      pointCounts_.begin(), pointCounts_.end(), coordinates,
      [](const auto& counted, InstanceIndex index) { return counted.first < index; });
  return found == pointCounts_.end() || found->first != coordinates ? 0 : found->second;
}

std::size_t InstanceTable::referencesOf(InstanceIndex index) const {
  const auto found = std::lower_bound(
      stored_.begin(), stored_.end(), index,
      [](const Stored& stored, InstanceIndex other) { return stored.instance < other; });
  if (found == stored_.end() || found->instance != index) {
    return kNone;
  }
  return std::size_t{found->placeHigh} << 32U | found->placeLow;
}

InstanceIndex InstanceTable::attribute(InstanceIndex index, std::size_t n) const {
  InstanceIndex result = kNoInstance;
  std::size_t seen = 0;
  forEachReference(index, [&](const Reference& reference) {
    if (reference.kind == Reference::Kind::Attribute && seen++ == n) {
      result = find(reference.number);
    }
  });
  return result;
}

}  // namespace plenvorith
