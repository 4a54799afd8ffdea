#include "exchange/instance_table.h"

#include <algorithm>
#include <numeric>

#include "common/ascii.h"

namespace plenvorith {
namespace {

/// Goes to the points of the COORDINATES_LIST that the reader stands at and counts them. `isWhole` is
/// whether all parentheses balance.
std::uint64_t countPoints(StatementReader& reader, bool isComplex, bool& isBalanced) {
  std::uint64_t opened = 0;
  bool isThere = false;
  {
    TokenReader tokens(reader);
    isThere = tokens.enterRecord("COORDINATES_LIST", isComplex) &&
              tokens.skipParameters(isComplex ? 1 : 2);  // name, npoints
    // Of a complex instance other records follow, so that each has to be looked at.
    std::int64_t depth = 0;
    while (isThere && isComplex && !tokens.isAtEnd() && !(depth == 0 && opened > 0)) {
      const Token::Kind kind = tokens.next().kind;
      depth += kind == Token::Kind::Open ? 1 : kind == Token::Kind::Close ? -1 : 0;
      opened += kind == Token::Kind::Open ? 1 : 0;
    }
  }
  const Parentheses rest = reader.skipBody();
  if (!isComplex) {
    opened = rest.opened;
    isBalanced = isThere && rest.opened + 1 == rest.closed;
  }
  return opened == 0 ? 0 : opened - 1;  // less the list itself
}

/// The keyword, right behind it a parenthesis, that a body begins with; empty if something else
/// stands there.
std::string_view keywordOf(std::string_view body) {
  const auto end = std::find_if_not(body.begin(), body.end(), [](char c) {
    return (c >= 'A' && c <= 'Z') || c == '_' || isDigit(c);
  });
  return end != body.end() && *end == '('
             ? body.substr(0, static_cast<std::size_t>(end - body.begin()))
             : std::string_view();
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
  namedInStrings_ = reader.namedInStrings();
  if (!error_.empty()) {
    return false;
  }
  sortNumbers();
  gatherStructure();
  return true;
}

bool InstanceTable::add(StatementReader& reader, ReferenceScanner& scanner) {
  const auto index = static_cast<InstanceIndex>(instances_.size());
  if (index == kNoInstance) {
    error_ = "too many entities";
    return false;
  }
  const std::uint64_t offset = reader.offset();
  std::uint16_t type = 0;
  const bool isBalanced = readBody(index, reader, scanner, type);
  if (!reader.isWhole()) {
    (void)reader.skipBody();
  }
  const bool isUnended = reader.isMalformed();
  const bool isSound = isBalanced && !isUnended;
  if (type == EntityTypes::kMaxCount) {
    error_ = "too many types of entities";
    return false;
  }
  hasUnbalanced_ = hasUnbalanced_ || !(isBalanced || isUnended);
  hasUnended_ = hasUnended_ || isUnended;
  voidCount_ += isSound ? 0 : 1;
  instances_.push_back(
      {reader.number() << 2U | (isSound ? 0U : kVoid | kMalformed), offset << 16U | type});
  return true;
}

/// Takes from the body that the reader stands at what is kept of it, and its type. False if its
/// parentheses do not balance.
bool InstanceTable::readBody(InstanceIndex index, StatementReader& reader,
                             ReferenceScanner& scanner, std::uint16_t& type) {
  constexpr std::size_t kUsual = 256;
  // The surfaces and curves of complex instances begin with these; there are many.
  constexpr std::string_view kSurface = "(BOUNDED_SURFACE(";
  constexpr std::string_view kCurve = "(BOUNDED_CURVE(";
  // Nearly all instances can be told from how they stand in the file, and need not be read further.
  std::string_view start = reader.ahead();
  if (keywordOf(start).empty() && !start.starts_with(kSurface) && !start.starts_with(kCurve)) {
    start = reader.peek(kUsual);
  }
  const bool isSurface = start.starts_with(kSurface);
  if (isSurface || start.starts_with(kCurve)) {
    type = types_.idOf(isSurface ? "BOUNDED_SURFACE" : "BOUNDED_CURVE", true);
    const Parentheses all = reader.skipBody();
    return all.opened == all.closed;
  }
  const std::string_view keyword = keywordOf(start);
  if (!keyword.empty()) {
    type = types_.idOf(keyword, false);
    if (type == EntityTypes::kMaxCount) {
      return true;
    }
    if (types_[type].is(Kind::CoordinatesList)) {
      bool isBalanced = true;
      pointCounts_.emplace_back(index, countPoints(reader, false, isBalanced));
      return isBalanced;
    }
    if (types_[type].namesGeometryOnly) {
      const Parentheses all = reader.skipBody();
      return all.opened == all.closed;
    }
  }
  const bool isBalanced = store(index, reader, scanner);
  type = types_.idOf(scanner.keywords(), scanner.isComplex());
  if (type != EntityTypes::kMaxCount && types_[type].is(Kind::CoordinatesList)) {
    const std::uint64_t place = reader.offset();
    bool ignored = true;
    reader.seekBody(place);
    pointCounts_.emplace_back(index, countPoints(reader, true, ignored));
  }
  return isBalanced;
}

/// Stores the references of the instance that the reader stands at. False if its parentheses do not
/// balance.
bool InstanceTable::store(InstanceIndex index, StatementReader& reader, ReferenceScanner& scanner) {
  const std::uint64_t place = store_.size();
  const bool isBalanced = scanner.scan(reader, store_);
  if (store_.size() == place + 1) {
    store_.pop_back();  // the mark of the end alone: the instance names nothing
  } else {
    stored_.push_back({index, static_cast<std::uint32_t>(place & 0xFFFFFFFFU),
                       static_cast<std::uint32_t>(place >> 32U)});
  }
  return isBalanced;
}

/// Gathers the instances whose kind says something of how the file is built, in the order of numbers.
void InstanceTable::gatherStructure() {
  const auto add = [this](InstanceIndex index) {
    const EntityType& type = this->type(index);
    if (!isVoid(index) && !type.namesGeometryOnly && !type.isOnly(Kind::Unknown)) {
      structural_.push_back(index);
    }
  };
  if (!byNumber_.empty()) {
    std::for_each(byNumber_.begin(), byNumber_.end(), add);
    return;
  }
  for (InstanceIndex index = 0; index < size(); ++index) {
    add(index);
  }
}

/// Finds the instances that count for nothing beside others of their number, and makes numbers
/// searchable. Of several the first counts that is not tessellated: which one the kernel takes depends
/// on where it is named. Tessellated ones are read by the converter's own decoder, which takes the last.
void InstanceTable::sortNumbers() {
  const auto isDisorder = [](const Instance& a, const Instance& b) {
    return a.numberAndFlags >> 2U >= b.numberAndFlags >> 2U;
  };
  if (std::adjacent_find(instances_.begin(), instances_.end(), isDisorder) == instances_.end()) {
    return;
  }
  byNumber_.resize(instances_.size());
  std::iota(byNumber_.begin(), byNumber_.end(), 0);
  std::erase_if(byNumber_, [this](InstanceIndex index) { return isVoid(index); });
  std::sort(byNumber_.begin(), byNumber_.end(), [this](InstanceIndex a, InstanceIndex b) {
    return number(a) != number(b) ? number(a) < number(b) : a < b;
  });
  InstanceIndex counted = byNumber_.empty() ? kNoInstance : byNumber_.front();
  for (std::size_t i = 1; i < byNumber_.size(); ++i) {
    const InstanceIndex next = byNumber_[i];
    if (number(next) != number(counted)) {
      counted = next;
      continue;
    }
    const bool isReplaced = type(counted).isTessellated;
    instances_[isReplaced ? counted : next].numberAndFlags |= kVoid;
    ++voidCount_;
    counted = isReplaced ? next : counted;
  }
  std::erase_if(byNumber_, [this](InstanceIndex index) { return isVoid(index); });
}

InstanceIndex InstanceTable::find(std::uint64_t wanted) const {
  if (byNumber_.empty()) {
    const auto found = std::lower_bound(instances_.begin(), instances_.end(), wanted,
                                        [](const Instance& instance, std::uint64_t other) {
                                          return instance.numberAndFlags >> 2U < other;
                                        });
    return found == instances_.end() || found->numberAndFlags != wanted << 2U
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
  if (type(index).namesGeometryOnly) {
    return kNone;
  }
  const auto found = std::lower_bound(
      stored_.begin(), stored_.end(), index,
      [](const Stored& stored, InstanceIndex other) { return stored.instance < other; });
  if (found == stored_.end() || found->instance != index) {
    return kNone;
  }
  return std::size_t{found->placeHigh} << 32U | found->placeLow;
}

InstanceIndex InstanceTable::attribute(InstanceIndex index, const Attribute& attribute) const {
  InstanceIndex result = kNoInstance;
  if (index != kNoInstance) {
    const EntityType& entityType = type(index);
    forEachReference(index, [&](const Reference& reference) {
      if (reference.kind == Reference::Kind::Attribute && isOf(entityType, reference, attribute)) {
        result = find(reference.number);
      }
    });
  }
  return result;
}

}  // namespace plenvorith
