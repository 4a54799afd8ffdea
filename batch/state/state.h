#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "batch/records/file_record.h"
#include "batch/records/run_record.h"

namespace plenvorith {

/// An open state: a database of SQLite, which one process writes and others may read meanwhile.
struct StateHandle;
struct CloseState {
  void operator()(StateHandle* state) const;
};
using State = std::unique_ptr<StateHandle, CloseState>;

/// How a state is used.
enum class StateUse {
  Write,  ///< others may read it meanwhile
  Look,   ///< somebody may be writing it; nothing is changed, and it need not be allowed
  Alone,  ///< nobody else has it open; no locks are used, which a network disk may not have
  Read,   ///< nobody changes it meanwhile; no locks, either
};

/// Opens the state at `path`, made if it is not there and is to be written; `problem` says why if
/// the result is null.
State openState(const std::string& path, std::string& problem, StateUse use = StateUse::Write);

/// What went wrong last.
std::string stateProblem(StateHandle& state);

/// Begins a change of several records, which others see, and a crash leaves, whole or not at all.
[[nodiscard]] bool beginChanges(StateHandle& state);

/// Ends it. If that fails (no space), nothing of the change is left and it can be tried again.
[[nodiscard]] bool commitChanges(StateHandle& state);

/// Drops the change, if one is under way.
void dropChanges(StateHandle& state);

/// Adds a run, or replaces the one with its id if that is not 0. Gives the id, 0 on failure.
[[nodiscard]] std::int64_t putRun(StateHandle& state, const RunRecord& run);

/// Adds a file, or replaces what is known of its path. An output that was another input's is this
/// one's from now on: the last to write a file owns it.
[[nodiscard]] bool putFile(StateHandle& state, const FileRecord& file);

/// Keeps what the conversion of a file said, in the place of what an earlier one did; the file has
/// to be known.
[[nodiscard]] bool putTranscript(StateHandle& state, const std::string& path,
                                 const std::string& transcript);

/// What the last conversion of a file said; nothing if that is not known.
std::optional<std::string> findTranscript(StateHandle& state, const std::string& path);

/// The path of the input that an output belongs to; empty if it is nobody's.
std::string ownerOf(StateHandle& state, const std::string& output);

/// Forgets the file with this path, its outputs and its transcript.
[[nodiscard]] bool removeFile(StateHandle& state, const std::string& path);

/// What is known of the file with this path.
std::optional<FileRecord> findFile(StateHandle& state, const std::string& path);

/// Calls `visit` with every file, in the order of their paths' bytes, one at a time in memory.
/// `visit` may change the state only after the last call. Gives false if the state cannot be read.
bool forEachFile(StateHandle& state, const std::function<void(const FileRecord&)>& visit);

/// All runs, the oldest first.
std::vector<RunRecord> allRuns(StateHandle& state);

}  // namespace plenvorith
