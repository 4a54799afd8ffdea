#include "batch/local/conversions.h"

#include <csignal>
#include <cstddef>
#include <utility>

#include <unistd.h>

#include "batch/system/signals.h"

namespace plenvorith {
namespace {

using Clock = std::chrono::steady_clock;

void noteSettled(Conversions& conversions, const Settled& settled, const Finished& finished) {
  addToSummary(conversions.summary, settled);
  ++conversions.progress.done;
  conversions.progress.doneBytes +=
      conversions.files[static_cast<std::size_t>(finished.result.id)].size;
  if (settled.isKept) {
    showMessage(conversions.display, "not looked at: " + keptLine(settled));
  } else if (settled.record.status != FileStatus::Converted) {
    ++conversions.progress.failed;
    showMessage(conversions.display, "failed: " + failureLine(settled.record));
    if (settled.removed > 0) {
      showMessage(conversions.display, "removed: " + removedLine(settled));
    }
  }
}

void noteTime(Conversions& conversions) {
  conversions.progress.seconds =
      std::chrono::duration<double>(Clock::now() - conversions.start).count();
}

}  // namespace

Conversions beginConversions(const Options& options, StateHandle& state, const RunContext& context,
                             const std::vector<InputFile>& files, Summary& summary) {
  Conversions conversions{.options = options,
                          .state = state,
                          .context = context,
                          .files = files,
                          .summary = summary,
                          .signals = listenToSignals({SIGHUP, SIGINT, SIGTERM}),
                          .progress = {},
                          .display = {},
                          .start = Clock::now(),
                          .unsettled = {},
                          .settledAt = Clock::now(),
                          .end = {}};
  conversions.display.isLine = options.bar || isatty(STDERR_FILENO) == 1;
  conversions.progress.files = static_cast<std::int64_t>(files.size());
  for (const InputFile& file : files) {
    conversions.progress.bytes += file.size;
  }
  return conversions;
}

bool isOver(const Conversions& conversions) {
  return conversions.end.signal != 0 || !conversions.end.problem.empty();
}

void takeSignal(Conversions& conversions) {
  const int signal = nextSignal(conversions.signals.get());
  if (signal != 0) {
    conversions.end.signal = signal;
  }
}

std::vector<Finished> settleResults(Conversions& conversions, bool isUrgent) {
  constexpr std::size_t kEnough = 256;
  constexpr std::chrono::seconds kLongEnough(1);
  const bool isTime = isUrgent || conversions.unsettled.size() >= kEnough ||
                      Clock::now() - conversions.settledAt >= kLongEnough;
  if (conversions.unsettled.empty() || !isTime) {
    return {};
  }
  const std::vector<Settled> all =
      settle(conversions.state, conversions.context, conversions.unsettled);
  conversions.settledAt = Clock::now();
  if (all.empty()) {
    ++conversions.refusals;
    return {};
  }
  conversions.refusals = 0;
  for (std::size_t i = 0; i < all.size(); ++i) {
    noteSettled(conversions, all[i], conversions.unsettled[i]);
  }
  return std::exchange(conversions.unsettled, {});
}

void giveUpOnState(Conversions& conversions) {
  conversions.end.problem = "the state cannot be written: " + stateProblem(conversions.state);
}

void showConversions(Conversions& conversions) {
  noteTime(conversions);
  showProgress(conversions.display, conversions.progress);
}

void endConversions(Conversions& conversions) {
  noteTime(conversions);
  endProgress(conversions.display, conversions.progress);
}

}  // namespace plenvorith
