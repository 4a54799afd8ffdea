#include "batch/progress.h"

#include <cmath>
#include <cstddef>
#include <iostream>

#include <sys/ioctl.h>
#include <unistd.h>

#include "batch/descriptor.h"
#include "batch/text.h"

namespace plenvorith {
namespace {

/// Goes to the start of the line and clears it.
constexpr const char* kClear = "\r\x1b[K";

int terminalWidth() {
  constexpr int kUsual = 80;
  winsize size{};
  if (ioctl(STDERR_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) {
    return kUsual;
  }
  return size.ws_col;
}

std::string rateText(const ProgressState& state) {
  const double filesPerSecond = static_cast<double>(state.done) / state.seconds;
  const double bytesPerSecond = static_cast<double>(state.doneBytes) / state.seconds;
  return fixedText(filesPerSecond, filesPerSecond < 9.95 ? 1 : 0) + " files/s, " +
         sizeText(std::llround(bytesPerSecond)) + "/s";
}

std::string timeLeft(const ProgressState& state) {
  const double rest = static_cast<double>(state.bytes - state.doneBytes) /
                      static_cast<double>(state.doneBytes) * state.seconds;
  return durationText(std::llround(rest)) + " left";
}

/// Cuts a line to a width in bytes, but never in the middle of a character of UTF-8.
std::string cut(std::string line, int width) {
  auto end = static_cast<std::size_t>(width);
  if (width <= 0 || line.size() <= end) {
    return line;
  }
  while (end > 0 && (static_cast<unsigned char>(line[end]) & 0xC0U) == 0x80U) {
    --end;
  }
  line.resize(end);
  return line;
}

void draw(ProgressDisplay& display, const ProgressState& state) {
  // The last column stays free: some terminals go to the next line when it is filled.
  (void)writeAll(STDERR_FILENO, kClear + progressLine(state, terminalWidth() - 1));
  display.isDrawn = true;
}

}  // namespace

std::string progressLine(const ProgressState& state, int width) {
  std::string line = std::to_string(state.done) + '/' + std::to_string(state.files) + " files, " +
                     std::to_string(state.failed) + " failed";
  if (state.done > 0 && state.seconds > 0) {
    line += ", " + rateText(state);
  }
  if (state.doneBytes > 0 && state.done < state.files) {
    line += ", " + timeLeft(state);
  }
  if (!state.largest.empty()) {
    line += ", now " + printable(state.largest) + " (" + sizeText(state.largestBytes) + ')';
  }
  return cut(line, width);
}

void showProgress(ProgressDisplay& display, const ProgressState& state) {
  constexpr double kDraw = 0.2;
  constexpr double kPrint = 60.0;
  if (state.seconds - display.shownAt < (display.isLine ? kDraw : kPrint)) {
    return;
  }
  display.shownAt = state.seconds;
  if (display.isLine) {
    draw(display, state);
  } else {
    std::cerr << progressLine(state, 0) << std::endl;
  }
}

void showMessage(ProgressDisplay& display, const std::string& message) {
  if (display.isDrawn) {
    (void)writeAll(STDERR_FILENO, kClear);
    display.isDrawn = false;
  }
  std::cerr << message << std::endl;
}

void endProgress(ProgressDisplay& display, const ProgressState& state) {
  if (display.isLine) {
    draw(display, state);
    std::cerr << std::endl;
    display.isDrawn = false;
  }
}

}  // namespace plenvorith
