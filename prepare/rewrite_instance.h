#pragma once

#include <cstdint>
#include <functional>

#include "exchange/entity_types.h"
#include "exchange/statement_reader.h"
#include "prepare/output_file.h"

namespace plenvorith {

/// Writes the body of an instance as it is.
void copyBody(StatementReader& reader, OutputFile& output);

/// Writes the body of an instance without the references that `isDropped` is true for: an attribute
/// becomes "$".
void writeWithoutDropped(StatementReader& reader,
                         const std::function<bool(std::uint64_t)>& isDropped, OutputFile& output);

/// Writes the body of a representation of this type like this, as a SHAPE_REPRESENTATION.
void writeRetyped(StatementReader& reader, const EntityType& type,
                  const std::function<bool(std::uint64_t)>& isDropped, OutputFile& output);

}  // namespace plenvorith
