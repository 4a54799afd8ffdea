#include "steptext/entity_table.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <span>

#include "common/block_reader.h"
#include "common/reserve.h"
#include "steptext/entity_start.h"

namespace plenvorith {

EntityTable::EntityTable()
    : nodes_(std::make_unique<std::pmr::monotonic_buffer_resource>(largePagesResource())),
      entities_(std::pmr::polymorphic_allocator<>(nodes_.get()).new_object<Map>()),
      last_(entities_->end()) {}

void EntityTable::add(std::string_view entity, std::size_t nameLength) {
  const std::string_view name = entity.substr(0, nameLength);
  // The best hint is behind the entity added before: most files number their entities upwards, and
  // the place of a number is then right there.
  const auto hint = entities_->empty() ? entities_->end() : std::next(last_);
  last_ = entities_->insert_or_assign(hint, name, entity.substr(nameLength + 1));
}

namespace {

/// Makes entities of lines where these lie in the memory of the table: a line feed between two of
/// an entity's lines becomes the space, and what stands behind something that is dropped moves up.
///
/// The text at hand is that of the entity that the lines belong to, then lines to be taken. While
/// there is no entity, its text is empty.
class EntityLines {
 public:
  explicit EntityLines(EntityTable& table) : table_(table), texts_(table.texts()) {}

  /// Whether there is an entity that lines can belong to.
  [[nodiscard]] bool hasEntity() const {
    return nameLength_ > 0;
  }

  /// Where in the text at hand the next line starts.
  [[nodiscard]] std::size_t next() const {
    return next_;
  }

  /// Takes the next line, which has `size` characters.
  void take(std::size_t size) {
    const std::string_view line = texts_.text().substr(next_, size);
    const std::size_t newNameLength = entityNameLength(line);
    if (newNameLength > 0) {
      addEntity();
      texts_.beginAt(next_);
      next_ = 0;
      nameLength_ = newNameLength;
      size_ = std::min(line.find('\r'), size);
    } else if (hasEntity()) {
      append(line);
    }
    next_ += size + 1;
  }

  /// Drops the lines that belong to no entity, so that a file without any takes no memory.
  void dropTaken() {
    texts_.dropFirst(next_);
    next_ = 0;
  }

  /// Adds the entity that the lines so far belong to, if there is one.
  void addEntity() {
    if (hasEntity()) {
      table_.add(texts_.text().substr(0, size_), nameLength_);
    }
  }

 private:
  void append(std::string_view line) {
    char* const to = texts_.data() + size_;
    *to = ' ';
    if (to + 1 != line.data()) {
      std::memmove(to + 1, line.data(), line.size());
    }
    const bool hasCarriageReturn = !line.empty() && to[line.size()] == '\r';
    size_ += 1 + line.size() - (hasCarriageReturn ? 1 : 0);
  }

  EntityTable& table_;
  TextArena& texts_;
  std::size_t nameLength_ = 0;
  std::size_t size_ = 0;  // of the entity, name and all
  std::size_t next_ = 0;
};

}  // namespace

void readEntityTable(EntityTable& table, const std::string& path) {
  // Stays in the processor's second-level cache until it is looked at.
  constexpr std::size_t kMostAtOnce = std::size_t{1} << 17;
  BlockReader file(path);
  std::string_view start;
  if (!file.next(start)) {
    return;  // and what has no bytes, like a directory, may tell any size
  }
  TextArena& texts = table.texts();
  texts.expect(file.sizeHint() + 1);  // that it is at the end shows in a byte more
  texts.begin();
  texts.append(start);
  EntityLines lines(table);
  std::size_t searched = 0;  // bytes from the next line on that hold no line feed
  while (true) {
    const std::string_view rest = texts.text().substr(lines.next());
    const std::size_t lineFeed = rest.find('\n', searched);
    if (lineFeed != std::string_view::npos) {
      lines.take(lineFeed);
      searched = 0;
      continue;
    }
    searched = rest.size();
    if (!lines.hasEntity()) {
      lines.dropTaken();
    }
    const std::span<char> room = texts.room(1);
    const std::size_t count = file.readInto(room.first(std::min(room.size(), kMostAtOnce)));
    if (count == 0) {
      break;
    }
    texts.grow(count);
  }
  if (searched > 0) {
    lines.take(searched);  // the last line has no line feed
  }
  lines.addEntity();
}

}  // namespace plenvorith
