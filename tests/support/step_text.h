#pragma once

#include <cstddef>
#include <random>
#include <string>
#include <vector>

#include "steptext/entity_table.h"
#include "tests/support/entity_texts.h"
#include "tests/support/memory_file.h"
#include "tests/support/rounds.h"

namespace plenvorith::test {

/// The table that is read from a file with this content.
inline EntityTable readTable(const std::string& content) {
  static MemoryFile file;
  EntityTable table;
  readEntityTable(table, file.write(content));
  return table;
}

/// What that table holds.
inline EntityTexts tableOf(const std::string& content) {
  return textsIn(readTable(content));
}

/// Calls `check` with every string of at most `maxLength` of the pieces; with sanitizers they are one
/// piece shorter, unless time does not matter.
template <typename Check>
void forEveryString(const std::vector<std::string>& pieces, std::size_t maxLength, Check check) {
  if (kHasSanitizers && !isThorough()) {
    --maxLength;
  }
  std::vector<std::size_t> choice;
  for (;;) {
    std::string text;
    for (const std::size_t piece : choice) {
      text += pieces[piece];
    }
    check(text);
    std::size_t place = 0;
    while (place < choice.size() && ++choice[place] == pieces.size()) {
      choice[place++] = 0;
    }
    if (place == choice.size()) {
      if (choice.size() == maxLength) {
        return;
      }
      choice.assign(choice.size() + 1, 0);
    }
  }
}

/// A number below `limit`, the same on every machine.
inline std::size_t pick(std::mt19937& random, std::size_t limit) {
  return random() % limit;
}

/// A text of fewer than `maxPieces` random pieces.
inline std::string randomText(std::mt19937& random, const std::vector<std::string>& pieces,
                              std::size_t maxPieces) {
  std::string text;
  for (std::size_t i = pick(random, maxPieces); i > 0; --i) {
    text += pieces[pick(random, pieces.size())];
  }
  return text;
}

}  // namespace plenvorith::test
