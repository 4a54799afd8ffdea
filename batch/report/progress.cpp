#include "batch/report/progress.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iostream>
#include <string_view>

#include <sys/ioctl.h>
#include <unistd.h>

#include "batch/system/descriptor.h"
#include "batch/system/text.h"
#include "common/escaped_text.h"

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

/// The end of a text in so many bytes, but never from the middle of a character of UTF-8; "..."
/// stands for what is left out.
std::string endOf(const std::string& text, std::size_t bytes) {
  constexpr std::string_view kLeftOut = "...";
  if (text.size() <= bytes) {
    return text;
  }
  std::size_t start = text.size() - (bytes - std::min(bytes, kLeftOut.size()));
  while (start < text.size() && (static_cast<unsigned char>(text[start]) & 0xC0U) == 0x80U) {
    ++start;
  }
  return std::string(kLeftOut) + text.substr(start);
}

/// The largest input under way in at most so many bytes; empty if they are too few to know it by.
std::string largestText(const ProgressState& state, std::size_t room) {
  constexpr std::size_t kLeast = 12;
  if (state.largest.empty()) {
    return {};
  }
  const std::string front = ", now ";
  const std::string back = " (" + sizeText(state.largestBytes) + ')';
  const std::string name = printable(state.largest);
  const std::size_t around = front.size() + back.size();
  if (around + std::min(name.size(), kLeast) > room) {
    return {};
  }
  return front + endOf(name, room - around) + back;
}

void draw(ProgressDisplay& display, const ProgressState& state) {
  // The last column stays free: some terminals go to the next line when it is filled.
  (void)writeAll(STDERR_FILENO, kClear + progressLine(state, terminalWidth() - 1));
  display.isDrawn = true;
}

}  // namespace

std::string progressLine(const ProgressState& state, int width) {
  const std::string count = state.what + std::to_string(state.done) + '/' +
                            std::to_string(state.files) + " files, " +
                            std::to_string(state.failed) + " failed";
  // UTF-8 takes no more columns than bytes.
  std::size_t room = width > 0 ? static_cast<std::size_t>(width) : std::string::npos;
  if (count.size() >= room) {
    return count.substr(0, room);
  }
  room -= count.size();
  // What is most wanted comes first here: a narrow terminal has no room for the rest.
  const auto fitting = [&room](const std::string& text) {
    if (text.size() > room) {
      return std::string();
    }
    room -= text.size();
    return text;
  };
  const bool isGoing = state.doneBytes > 0 && state.done < state.files;
  const std::string left = fitting(isGoing ? ", " + timeLeft(state) : "");
  const std::string rate =
      fitting(state.done > 0 && state.seconds > 0 ? ", " + rateText(state) : "");
  return count + rate + left + largestText(state, room);
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
