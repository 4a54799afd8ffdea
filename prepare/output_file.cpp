#include "prepare/output_file.h"

#include <algorithm>
#include <charconv>
#include <cstring>

namespace plenvorith {

void OutputFile::CloseFile::operator()(std::FILE* file) const {
  // Reached only where the file is given up.
  (void)std::fclose(file);
}

OutputFile::OutputFile(const std::string& path) : file_(std::fopen(path.c_str(), "wbx")) {
  if (file_ != nullptr) {
    (void)std::setvbuf(file_.get(), nullptr, _IONBF, 0);
  }
  buffer_ = std::make_unique_for_overwrite<char[]>(kCapacity);
  isGood_ = file_ != nullptr;
}

void OutputFile::write(std::string_view text) {
  isGood_ = isGood_ && std::fwrite(text.data(), 1, text.size(), file_.get()) == text.size();
}

void OutputFile::flush() {
  write({buffer_.get(), size_});
  size_ = 0;
}

void OutputFile::put(std::string_view text) {
  if (text.size() > kCapacity - size_) {
    flush();
    if (text.size() >= kCapacity) {
      write(text);
      return;
    }
  }
  std::memcpy(buffer_.get() + size_, text.data(), text.size());
  size_ += text.size();
}

void OutputFile::put(std::uint64_t number) {
  constexpr std::size_t kLongest = 20;
  char* const to = room(kLongest);
  used(static_cast<std::size_t>(std::to_chars(to, to + kLongest, number).ptr - to));
}

bool OutputFile::close() {
  if (file_ == nullptr) {
    return false;
  }
  flush();
  isGood_ = std::fclose(file_.release()) == 0 && isGood_;
  return isGood_;
}

char* writeReal(char* to, double value) {
  constexpr std::size_t kLongest = 30;
  char* const end = std::to_chars(to, to + kLongest, value).ptr;
  char* const exponent = std::find(to, end, 'e');
  const bool hasPoint = std::find(to, exponent, '.') != exponent;
  if (exponent == end) {
    *end = '.';
    return end + (hasPoint ? 0 : 1);
  }
  // "1e-07" becomes "1.E-7", "1e+20" becomes "1.E20".
  char* digits = exponent + 1;
  const bool isNegative = *digits == '-';
  digits = std::find_if(digits + 1, end - 1, [](char c) { return c != '0'; });
  char text[8];
  char* const textEnd = std::copy(digits, end, text);
  char* place = exponent;
  if (!hasPoint) {
    *place++ = '.';
  }
  *place++ = 'E';
  if (isNegative) {
    *place++ = '-';
  }
  return std::copy(text, textEnd, place);
}

}  // namespace plenvorith
