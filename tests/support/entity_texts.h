#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>

#include "steptext/entity_table.h"

namespace plenvorith::test {

/// The entities of a table in the plainest form: what tests write down and slow versions work on.
using EntityTexts = std::map<std::string, std::string, std::less<>>;

inline void addEntity(EntityTable& table, std::string_view name, std::string_view text) {
  table.texts().begin();
  table.texts().append(name);
  table.texts().append("=");
  table.texts().append(text);
  table.addText(name.size());
}

inline EntityTable tableWith(const EntityTexts& entities) {
  EntityTable table;
  for (const auto& [name, text] : entities) {
    addEntity(table, name, text);
  }
  return table;
}

inline EntityTexts textsIn(const EntityTable& table) {
  return {table.begin(), table.end()};
}

}  // namespace plenvorith::test
