#pragma once

#include <array>
#include <cstddef>
#include <string>

namespace plenvorith {

/// The version of the state's tables that this program reads and writes.
constexpr int kStateVersion = 2;

/// Makes the tables where they are missing.
extern const char* const kStateSchema;

/// Makes of tables of version 1, which held the paths of transcripts, what the schema completes.
extern const char* const kUpgradeOfVersion1;

/// The statements that the state is read and written with.
enum class Query {
  PutRun,
  PutFile,
  DropOutputs,
  PutOutput,
  RemoveFile,
  FindId,
  FindFile,
  AllFiles,
  FindOutputs,
  AllRuns,
  FilesToShow,
  Totals,
  PutTranscript,
  FindTranscript,
  DropTranscript,
  FindOwner,
  Count,
};
constexpr auto kQueryCount = static_cast<std::size_t>(Query::Count);

/// The text of each statement.
///
/// A file's values are bound and come in this order: path, name, run, status, reason, last_line,
/// exit_status, signal, size, mtime, hash, settings, program, triangles, seconds, cpu_seconds,
/// peak_memory, low_x, low_y, low_z, high_x, high_y, high_z, host, changed, inode, schema, system,
/// time_stamp, same_as; its id comes last.
std::array<std::string, kQueryCount> allQueries();

}  // namespace plenvorith
