#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "batch/records/file_record.h"
#include "batch/records/run_record.h"

namespace plenvorith {

class StatementUse;

/// The status with this name.
FileStatus statusFrom(std::string_view name);

/// Binds the values of a file in the order of the queries, all but its outputs.
void bindFile(StatementUse& use, const FileRecord& file);

/// The file in a row, without its outputs, and its id.
std::pair<FileRecord, std::int64_t> fileFrom(StatementUse& use);

/// The arguments of a run as one value: each ends with a zero byte.
std::string argumentsText(const RunRecord& run);

/// Binds the values of a run, a new one if its id is 0; `arguments` is the text of its arguments,
/// which has to outlive the use.
void bindRun(StatementUse& use, const RunRecord& run, std::string_view arguments);

/// The run in a row.
RunRecord runFrom(StatementUse& use);

}  // namespace plenvorith
