#pragma once

#include <cstdint>
#include <string>

namespace plenvorith {

/// How far a run is.
struct ProgressState {
  std::string what = {};   ///< stands in front: "check: "
  std::int64_t files = 0;  ///< to convert in this run
  std::int64_t done = 0;   ///< with a result, failures included
  std::int64_t failed = 0;
  std::int64_t bytes = 0;      ///< of all inputs to convert
  std::int64_t doneBytes = 0;  ///< of the inputs with a result
  double seconds = 0.0;        ///< since the start
  std::string largest;         ///< name of the largest input under way; empty if there is none
  std::int64_t largestBytes = 0;
};

/// The state in one line: "120/400 files, 2 failed, 3.1 files/s, 12 MB/s, 1 min 30 s left, now
/// x.stp (15 MB)". The time left is that which the bytes left take at the rate so far.
///
/// Takes   how many columns the line may have; 0 for as many as it needs. Where they are few, the
///         front of the name goes first, then the largest input, the rate and the time left; what
///         stands there is whole.
std::string progressLine(const ProgressState& state, int width);

/// Where and how often progress is shown.
struct ProgressDisplay {
  bool isLine = false;  ///< one line that is drawn again and again, for a terminal
  double shownAt = 0.0;
  bool isDrawn = false;  ///< the line stands on the screen now
};

/// Shows the state on standard error if it is time: several times a second as a line on a terminal,
/// once a minute as a line of its own elsewhere.
void showProgress(ProgressDisplay& display, const ProgressState& state);

/// Prints a message on standard error, above the line on a terminal.
void showMessage(ProgressDisplay& display, const std::string& message);

/// Shows the state for the last time, and leaves the line.
void endProgress(ProgressDisplay& display, const ProgressState& state);

}  // namespace plenvorith
