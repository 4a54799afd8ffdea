#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace plenvorith {

/// The smallest box that holds all corners of all triangles, in model units.
struct Bounds {
  std::array<double, 3> low{};
  std::array<double, 3> high{};
};

/// A file that a conversion made.
struct OutputRecord {
  std::string path;  ///< below the output folder; any bytes
  std::int64_t size = 0;
};

enum class FileStatus {
  Converted,   ///< all outputs are in their places, in the recorded sizes
  Delivering,  ///< some of the outputs may be in their places: the input counts as not converted
  Failed,      ///< no output belongs to the input, but for those that could not be deleted yet
};

/// What is known of one input and of its last conversion.
struct FileRecord {
  std::string path;  ///< absolute path of the input, its key; any bytes
  std::string name;  ///< path below the base, which the names of the outputs begin with; any bytes
  std::int64_t run = 0;  ///< id of the run that converted it last
  FileStatus status = FileStatus::Failed;
  std::string reason;    ///< why it failed, or what is doubtful about it; empty if nothing
  std::string lastLine;  ///< the last line of the transcript that tells something; any bytes
  std::optional<int> exitStatus;  ///< of the conversion, if it ended by itself
  std::optional<int> signal;      ///< that ended the conversion
  std::int64_t size = 0;          ///< bytes of the input when it was converted
  std::int64_t mtime = 0;         ///< its time of change, nanoseconds since 1970
  std::string hash;               ///< 16 bytes, of its content; empty for what cannot be read twice
  std::string settings;           ///< all that decides what is made of it, as one text
  std::string program;            ///< name and version of program and kernel
  std::int64_t triangles = 0;
  double seconds = 0.0;          ///< wall-clock time of the conversion
  double cpuSeconds = 0.0;       ///< user and system time of it
  std::int64_t peakMemory = 0;   ///< bytes, resident
  std::optional<Bounds> bounds;  ///< of the STL outputs, if they hold a triangle
  std::string host;
  std::string transcript;  ///< path below the state's folder; any bytes
  /// All files in the output folder that may come from this input, whatever the status.
  std::vector<OutputRecord> outputs;
};

/// One run of the program.
struct RunRecord {
  std::int64_t id = 0;
  std::string start;  ///< as in 2026-03-31T12:00:00Z
  std::string end;    ///< empty while it goes on, and for ever if it was killed
  double seconds = 0.0;
  std::string result;  ///< "finished" or "interrupted"; empty like `end`
  std::vector<std::string> arguments;
  std::string program;
  std::string host;
  std::string base;  ///< the folder that the names of the files begin in
};

/// An open state: a database of SQLite, which one process writes and others may read meanwhile.
struct StateHandle;
struct CloseState {
  void operator()(StateHandle* state) const;
};
using State = std::unique_ptr<StateHandle, CloseState>;

/// How a state is used.
enum class StateUse {
  Write,  ///< others may read it meanwhile
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

/// Forgets the file with this path and its outputs.
[[nodiscard]] bool removeFile(StateHandle& state, const std::string& path);

/// What is known of the file with this path.
std::optional<FileRecord> findFile(StateHandle& state, const std::string& path);

/// Calls `visit` with every file, in the order of their paths' bytes, one at a time in memory.
/// `visit` may change the state only after the last call. Gives false if the state cannot be read.
bool forEachFile(StateHandle& state, const std::function<void(const FileRecord&)>& visit);

/// All runs, the oldest first.
std::vector<RunRecord> allRuns(StateHandle& state);

/// The name of a status in the state, in exports and in reports.
const char* statusName(FileStatus status);

}  // namespace plenvorith
