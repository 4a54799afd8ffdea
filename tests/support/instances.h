#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

#include "exchange/instance_table.h"
#include "exchange/statement_reader.h"
#include "tests/support/memory_file.h"
#include "tests/support/step_file.h"

namespace plenvorith::test {

/// A STEP file with these lines in its DATA section, its instances, and a reader to move about.
struct Instances {
  explicit Instances(std::string_view data) : path(file.write(stepFile(data))), reader(path) {
    StatementReader first(path);
    if (!table.read(first)) {
      throw std::runtime_error(table.error());
    }
  }
  /// The instance of this number.
  [[nodiscard]] InstanceIndex operator[](std::uint64_t number) const {
    return table.find(number);
  }

  MemoryFile file;
  std::string path;
  InstanceTable table;
  StatementReader reader;
};

}  // namespace plenvorith::test
