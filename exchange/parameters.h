#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "exchange/instance_table.h"
#include "exchange/statement_reader.h"

namespace plenvorith {

/// One keyword of an instance with its parameters, "TYPE(1.,(#2,#3),$)".
struct Record {
  std::string keyword;
  std::vector<std::string> parameters;  ///< their texts: "1.", "(#2,#3)", "$"
};

/// The items of a list, "(1.,(#2,#3),$)"; nothing if the text is no list.
[[nodiscard]] std::vector<std::string> splitList(std::string_view text);

/// The records of a body without blanks: one, or those of a complex instance.
[[nodiscard]] std::vector<Record> splitRecords(std::string_view body);

/// Reads single small instances, wherever they stand in the file.
class InstanceReader {
 public:
  /// `reader` is moved about in the file; both must outlive this.
  InstanceReader(const InstanceTable& table, StatementReader& reader);

  /// The records of an instance; none if there is no such instance or it is longer than any
  /// placement or unit.
  [[nodiscard]] std::vector<Record> read(InstanceIndex index);

  /// The record with this keyword, if the instance has one.
  [[nodiscard]] std::optional<Record> read(InstanceIndex index, std::string_view keyword);

  [[nodiscard]] const InstanceTable& table() const {
    return table_;
  }

  /// The instance that a parameter names, "#12".
  [[nodiscard]] InstanceIndex named(std::string_view parameter) const;

 private:
  const InstanceTable& table_;
  StatementReader& reader_;
};

/// The value of a parameter, "1.5E3"; nothing if it is no number or not a finite one.
[[nodiscard]] std::optional<double> numberOf(std::string_view parameter);

}  // namespace plenvorith
