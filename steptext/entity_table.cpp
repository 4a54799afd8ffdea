#include "steptext/entity_table.h"

#include <cstddef>
#include <iterator>
#include <string_view>
#include <utility>

#include "steptext/entity_start.h"
#include "steptext/line_reader.h"

namespace plenvorith {
namespace {

/// Texts from this size on are moved into the table with the spare room that they grew with, which
/// the system has not backed with memory yet; smaller ones are copied to their exact size.
constexpr std::size_t kMoveFrom = std::size_t{1} << 20;

/// Stores one entity and returns its place, the best hint for the next one: most files number their
/// entities upwards, and the place of a number is then right behind that of the number before it.
EntityTable::iterator store(EntityTable& table, EntityTable::iterator previous,
                            const std::string& name, std::string& text) {
  const auto hint = previous == table.end() ? previous : std::next(previous);
  if (text.size() >= kMoveFrom) {
    return table.insert_or_assign(hint, name, std::move(text));
  }
  // Looks for the place once, where insert_or_assign does so twice.
  const std::size_t sizeBefore = table.size();
  const auto place = table.emplace_hint(hint, name, text);
  if (table.size() == sizeBefore) {
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
