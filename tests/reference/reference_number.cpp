#include "tests/reference/reference_number.h"

#include <cerrno>
#include <string>

#include <locale.h>
#include <stdlib.h>

namespace plenvorith::test {
namespace {

/// The characters of the token at the start of `text`, one by one.
std::string tokenOf(std::string_view text) {
  std::string token;
  const auto isNow = [&](char c) { return token.size() < text.size() && text[token.size()] == c; };
  const auto take = [&] { token += text[token.size()]; };
  const auto takeSign = [&] {
    if (isNow('-') || isNow('+')) {
      take();
    }
  };
  const auto takeDigits = [&] {
    while (token.size() < text.size() && text[token.size()] >= '0' && text[token.size()] <= '9') {
      take();
    }
  };
  takeSign();
  takeDigits();
  if (isNow('.')) {
    take();
    takeDigits();
  }
  if (isNow('E') || isNow('e')) {
    take();
    takeSign();
    takeDigits();
  }
  return token;
}

}  // namespace

ReferenceNumber referenceNumber(std::string_view text) {
  static const locale_t cLocale = newlocale(LC_ALL_MASK, "C", nullptr);
  const std::string token = tokenOf(text);
  ReferenceNumber number;
  number.length = token.size();
  errno = 0;
  char* end = nullptr;
  const double value = strtod_l(token.c_str(), &end, cLocale);
  if (end == token.c_str()) {
    number.error = NumberError::NoNumber;
  } else if (errno == ERANGE) {
    number.error = NumberError::OutOfRange;
  } else {
    number.value = value;
  }
  return number;
}

}  // namespace plenvorith::test
