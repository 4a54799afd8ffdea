#include "steptext/entity_table.h"

#include <cstddef>
#include <iterator>
#include <string_view>

#include "common/block_reader.h"
#include "steptext/entity_start.h"
#include "steptext/line_reader.h"

namespace plenvorith {
namespace {

/// Makes room for an entity and returns its place. The best hint for it is behind that of the one
/// before: most files number their entities upwards, and the place of a number is then right there.
EntityTable::iterator addEntity(EntityTable& table, EntityTable::iterator previous,
                                std::string_view name) {
  const auto hint = previous == table.end() ? previous : std::next(previous);
  // Unlike operator[], this looks for the place only once.
  const auto entity = table.emplace_hint(hint, name, std::string());
  entity->second.clear();  // the last one of a name stays
  return entity;
}

/// Gives back what a text has to spare after it grew, unless that is so much that the system has
/// not backed it with memory yet.
void trim(std::string& text) {
  constexpr std::size_t kLarge = std::size_t{1} << 20;
  if (text.size() < kLarge && text.capacity() - text.size() > text.size() / 8) {
    text.shrink_to_fit();
  }
}

}  // namespace

void readEntityTable(EntityTable& table, const std::string& path) {
  BlockReader file(path);
  LineReader lines(file);
  auto entity = table.end();  // that the lines belong to; none yet
  bool isFirstLine = false;
  bool isCut = false;
  std::string_view piece;
  while (lines.next(piece)) {
    if (lines.startsLine()) {
      const std::size_t nameLength = entityNameLength(piece);
      isFirstLine = nameLength > 0;
      if (isFirstLine) {
        if (entity != table.end()) {
          trim(entity->second);
        }
        entity = addEntity(table, entity, piece.substr(0, nameLength));
        piece.remove_prefix(nameLength + 1);
        isCut = false;
      } else if (entity != table.end()) {
        entity->second += ' ';
      }
    }
    if (entity == table.end()) {
      continue;
    }
    std::string& text = entity->second;
    if (isFirstLine && !isCut) {
      const std::size_t carriageReturn = piece.find('\r');
      text += piece.substr(0, carriageReturn);
      isCut = carriageReturn != std::string_view::npos;
    } else if (!isFirstLine) {
      text += piece;
      if (lines.endsLine() && text.back() == '\r') {
        text.pop_back();
      }
    }
  }
  if (entity != table.end()) {
    trim(entity->second);
  }
}

}  // namespace plenvorith
