#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "exchange/instance_table.h"
#include "exchange/statement_reader.h"

namespace plenvorith {

/// A parameter of an instance.
struct Parameter {
  std::string text;              ///< "1.", "#2", "$"; nothing of a list; of "TYPE(1.)" the keyword
  std::vector<Parameter> items;  ///< of a list, or in the parentheses behind a keyword
};

/// One keyword of an instance with its parameters, "TYPE(1.,(#2,#3),$)".
struct Record {
  std::string keyword;
  std::vector<Parameter> parameters;
};

/// Reads single instances, wherever they stand in the file.
class InstanceReader {
 public:
  /// `reader` is moved about in the file; both must outlive this.
  InstanceReader(const InstanceTable& table, StatementReader& reader);

  /// The records of an instance, as far as they are well formed; none if there is no such instance.
  /// Lists in lists are read to any depth that an instance of a schema has.
  [[nodiscard]] std::vector<Record> read(InstanceIndex index);

  /// The record with this keyword, if the instance has one.
  [[nodiscard]] std::optional<Record> read(InstanceIndex index, std::string_view keyword);

  [[nodiscard]] const InstanceTable& table() const {
    return table_;
  }

  /// The instance that a parameter names, "#12".
  [[nodiscard]] InstanceIndex named(const Parameter& parameter) const;

 private:
  const InstanceTable& table_;
  StatementReader& reader_;
};

/// The value of a parameter, "1.5E3", read as in a list of coordinates; 0 for one next to nothing.
/// Nothing if it is no number or not a finite one.
[[nodiscard]] std::optional<double> numberOf(const Parameter& parameter);

}  // namespace plenvorith
