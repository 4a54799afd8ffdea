// What preparing a file costs at least.
//
//   baseline_statements copy INPUT OUTPUT       one scan of the statements, as many bytes written
//   baseline_statements numbers INPUT OUTPUT    every number read and written in its shortest form,
//                                           everything else as it is
//
// A statement ends at a semicolon that is neither in a string nor in a comment. What starts with a
// digit, or with a sign or point before one, is a number, unless "#" stands before it.

#include <array>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <string_view>
#include <vector>

#include "bench/stopwatch.h"

namespace {

constexpr std::size_t kBlock = std::size_t{1} << 20;

/// Counts statements; remembers between blocks where it is.
class Scanner {
 public:
  void scan(std::string_view block) {
    for (const char c : block) {
      if (state_ == State::String) {
        state_ = c == '\'' ? State::Plain : State::String;
      } else if (state_ == State::Comment) {
        state_ = c == '/' && last_ == '*' ? State::Plain : State::Comment;
      } else if (c == '\'') {
        state_ = State::String;
      } else if (c == '*' && last_ == '/') {
        state_ = State::Comment;
      } else if (c == ';') {
        ++statements_;
      }
      last_ = c;
    }
  }

  std::size_t statements() const {
    return statements_;
  }

 private:
  enum class State { Plain, String, Comment };
  State state_ = State::Plain;
  char last_ = ' ';
  std::size_t statements_ = 0;
};

bool startsNumber(char c) {
  return (c >= '0' && c <= '9') || c == '-' || c == '.';
}

/// Copies `text` to `out`, with its numbers in their shortest form; gives how many there are.
std::size_t rewriteNumbers(std::string_view text, std::ofstream& out) {
  std::size_t count = 0;
  const char* copied = text.data();
  const char* const end = text.data() + text.size();
  for (const char* p = copied; p != end;) {
    double value = 0;
    const char* const behind = startsNumber(*p) && (p == text.data() || p[-1] != '#')
                                   ? std::from_chars(p, end, value).ptr
                                   : p;
    if (behind == p) {
      ++p;
      continue;
    }
    constexpr std::size_t kLongest = 32;
    std::array<char, kLongest> shortest{};
    const char* const last = std::to_chars(shortest.data(), shortest.data() + kLongest, value).ptr;
    out.write(copied, p - copied);
    out.write(shortest.data(), last - shortest.data());
    copied = p = behind;
    ++count;
  }
  out.write(copied, end - copied);
  return count;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    return 2;
  }
  const plenvorith::bench::Stopwatch stopwatch;
  std::ifstream in(argv[2], std::ios::binary);
  std::vector<char> buffer(kBlock);
  std::ofstream out;
  out.rdbuf()->pubsetbuf(buffer.data(), static_cast<std::streamsize>(buffer.size()));
  out.open(argv[3], std::ios::binary);
  const bool numbers = std::strcmp(argv[1], "numbers") == 0;
  std::vector<char> block(kBlock);
  std::size_t kept = 0;  // of the block before: what may be the start of a number
  std::size_t count = 0;
  Scanner scanner;
  while (in) {
    in.read(block.data() + kept, static_cast<std::streamsize>(block.size() - kept));
    std::string_view text(block.data(), kept + static_cast<std::size_t>(in.gcount()));
    if (!numbers) {
      scanner.scan(text);
      out.write(text.data(), static_cast<std::streamsize>(text.size()));
      continue;
    }
    // No number spans the end of a line.
    const std::size_t whole = in ? text.rfind('\n') + 1 : text.size();
    const std::size_t cut = whole > 0 ? whole : text.rfind(',') + 1;
    count += rewriteNumbers(text.substr(0, cut), out);
    kept = text.size() - cut;
    std::memmove(block.data(), block.data() + cut, kept);
  }
  if (!out.flush()) {
    return 1;
  }
  std::printf("statements %zu numbers %zu\n", scanner.statements(), count);
  stopwatch.report();
  return 0;
}
