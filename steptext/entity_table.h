#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <memory_resource>
#include <string>
#include <string_view>

#include "steptext/text_arena.h"

namespace plenvorith {

/// The entities of a STEP file (ISO 10303-21) as text: from the instance name exactly as written
/// ("#123", leading zeros kept) to what follows its "=", continuation lines joined with one space.
///
/// The order is that of byte strings, so "#10" comes before "#9". Nothing in a text is normalised;
/// the text of a file's last entity carries the lines behind it ("... ENDSEC; END-ISO-10303-21;").
///
/// Names and texts belong to the table and are valid as long as it is; it can be moved. Behind each
/// text `TextArena::kReadable` bytes may be read.
class EntityTable {
 public:
  using Map = std::pmr::map<std::string_view, std::string_view>;
  using Iterator = Map::const_iterator;

  EntityTable();
  EntityTable(EntityTable&&) = default;

  [[nodiscard]] Iterator begin() const {
    return entities_->begin();
  }
  [[nodiscard]] Iterator end() const {
    return entities_->end();
  }
  [[nodiscard]] Iterator find(std::string_view name) const {
    return entities_->find(name);
  }
  [[nodiscard]] std::size_t size() const {
    return entities_->size();
  }
  [[nodiscard]] bool empty() const {
    return entities_->empty();
  }

  /// Where the texts of entities are put together before they are added.
  TextArena& texts() {
    return texts_;
  }

  /// Adds the entity that the text at hand in `texts` holds: its name, which has `nameLength`
  /// characters, "=" and its text. Of several entities with one name the last one stays.
  void addText(std::size_t nameLength) {
    add(texts_.text(), nameLength);
  }

  /// Adds the entity that is the beginning of that text.
  void add(std::string_view entity, std::size_t nameLength);

 private:
  TextArena texts_;
  // Holds the map, too, which is never destroyed: there is nothing to do for any node, and millions
  // of them go at once with this.
  std::unique_ptr<std::pmr::monotonic_buffer_resource> nodes_;  // one behind the other
  Map* entities_ = nullptr;
  Map::iterator last_;  // added
};

/// Reads the entities of a STEP file into a table, by physical lines and without a grammar.
///
/// A line that begins with an instance name and "=" starts an entity, whether or not the one before
/// has ended; its text goes to the end of the line or to the first carriage return in it. Every
/// other line is appended to the text of the entity above it, behind one space; lines above the
/// first entity are dropped. One carriage return at the end of a line does not count. Of several
/// entities with one name the last one stays.
///
/// Takes   an empty `table`, which is filled, and the `path` of the file.
/// Errors  a file that cannot be read leaves the table empty, one that cannot be read any further
///         ends there; there is no syntax check.
/// Cost    one pass over the file; memory for every entity's text.
void readEntityTable(EntityTable& table, const std::string& path);

}  // namespace plenvorith
