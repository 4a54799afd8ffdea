#include "steptext/entity_table.h"

#include <iterator>

#include "common/block_reader.h"
#include "common/reserve.h"
#include "steptext/entity_start.h"
#include "steptext/line_reader.h"

namespace plenvorith {

EntityTable::EntityTable()
    : nodes_(std::make_unique<std::pmr::monotonic_buffer_resource>(largePagesResource())),
      entities_(std::pmr::polymorphic_allocator<>(nodes_.get()).new_object<Map>()),
      last_(entities_->end()) {}

void EntityTable::addText(std::size_t nameLength) {
  const std::string_view entity = texts_.text();
  const std::string_view name = entity.substr(0, nameLength);
  // The best hint is behind the entity added before: most files number their entities upwards, and
  // the place of a number is then right there.
  const auto hint = entities_->empty() ? entities_->end() : std::next(last_);
  last_ = entities_->insert_or_assign(hint, name, entity.substr(nameLength + 1));
}

void readEntityTable(EntityTable& table, const std::string& path) {
  BlockReader file(path);
  LineReader lines(file);
  TextArena& texts = table.texts();
  texts.expect(file.sizeHint());
  std::size_t nameLength = 0;  // of the entity that the lines belong to; 0 if there is none yet
  bool isFirstLine = false;
  bool isCut = false;
  std::string_view piece;
  while (lines.next(piece)) {
    if (lines.startsLine()) {
      const std::size_t newNameLength = entityNameLength(piece);
      isFirstLine = newNameLength > 0;
      isCut = false;
      if (isFirstLine) {
        if (nameLength > 0) {
          table.addText(nameLength);
        }
        nameLength = newNameLength;
        texts.begin();
      } else if (nameLength > 0) {
        texts.append(" ");
      }
    }
    if (nameLength == 0 || isCut) {
      continue;
    }
    if (isFirstLine) {
      const std::size_t carriageReturn = piece.find('\r');
      texts.append(piece.substr(0, carriageReturn));
      isCut = carriageReturn != std::string_view::npos;
    } else {
      texts.append(piece);
      if (lines.endsLine() && texts.text().back() == '\r') {
        texts.dropLast();
      }
    }
  }
  if (nameLength > 0) {
    table.addText(nameLength);
  }
}

}  // namespace plenvorith
