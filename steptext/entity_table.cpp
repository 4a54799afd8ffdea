#include "steptext/entity_table.h"

#include <cstddef>
#include <iterator>
#include <string_view>
#include <utility>

#include "steptext/entity_start.h"
#include "steptext/line_reader.h"

namespace plenvorith {
namespace {

/// Whether a text may take its memory along into the table: it has little to spare, as after a
/// single line, or so much of it that the system has not backed the spare part yet.
bool isWorthMoving(const std::string& text) {
  constexpr std::size_t kLarge = std::size_t{1} << 20;
  return text.size() >= kLarge || text.capacity() - text.size() <= text.size() / 8;
}

/// Stores one entity and returns its place, the best hint for the next one: most files number their
/// entities upwards, and the place of a number is then right behind that of the number before it.
EntityTable::iterator store(EntityTable& table, EntityTable::iterator previous,
                            const std::string& name, std::string& text) {
  const auto hint = previous == table.end() ? previous : std::next(previous);
  // Unlike insert_or_assign, this looks for the place only once.
  const auto place = table.emplace_hint(hint, name, std::string());
  if (isWorthMoving(text)) {
    place->second = std::move(text);
  } else {
    place->second = text;
  }
  return place;
}

}  // namespace

void readEntityTable(EntityTable& table, const std::string& path) {
  LineReader lines(path);
  if (!lines.isOpen()) {
    return;
  }
  std::string name;
  std::string text;
  bool isFirstLine = false;
  bool isCut = false;
  auto previous = table.end();
  std::string_view piece;
  while (lines.next(piece)) {
    if (lines.startsLine()) {
      const std::size_t nameLength = entityNameLength(piece);
      isFirstLine = nameLength > 0;
      if (isFirstLine) {
        if (!name.empty()) {
          previous = store(table, previous, name, text);
        }
        name.assign(piece.substr(0, nameLength));
        text.clear();
        piece.remove_prefix(nameLength + 1);
        isCut = false;
      } else if (!name.empty()) {
        text += ' ';
      }
    }
    if (isFirstLine && !isCut) {
      const std::size_t carriageReturn = piece.find('\r');
      text += piece.substr(0, carriageReturn);
      isCut = carriageReturn != std::string_view::npos;
    } else if (!isFirstLine && !name.empty()) {
      text += piece;
      if (lines.endsLine() && text.back() == '\r') {
        text.pop_back();
      }
    }
  }
  if (!name.empty()) {
    store(table, previous, name, text);
  }
}

}  // namespace plenvorith
