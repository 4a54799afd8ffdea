#pragma once

#include <iostream>
#include <sstream>
#include <string>

namespace plenvorith::test {

/// Keeps what is printed on std::cout until the end of the scope.
class CapturedCout {
 public:
  CapturedCout() : before_(std::cout.rdbuf(captured_.rdbuf())) {}
  ~CapturedCout() {
    std::cout.rdbuf(before_);
  }
  CapturedCout(const CapturedCout&) = delete;
  CapturedCout& operator=(const CapturedCout&) = delete;

  std::string text() const {
    return captured_.str();
  }

 private:
  std::ostringstream captured_;
  std::streambuf* before_;
};

}  // namespace plenvorith::test
