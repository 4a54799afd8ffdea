#include "exchange/raw_text.h"

#include <cstring>
#include <utility>

#include "exchange/byte_scan.h"

namespace plenvorith {

void RawText::onBlock(std::function<void(std::uint64_t)> hook) {
  hook_ = std::move(hook);
}

void RawText::fail(const char* what) {
  if (error_.empty()) {
    error_ = what;
  }
}

bool RawText::readMore() {
  const std::size_t kept = block_.size() - begin_;
  const bool isMore = file_.next(block_, kept);
  begin_ = 0;
  blockEnd_ += block_.size() - kept;
  if (hook_) {
    hook_(blockEnd_);
  }
  if (file_.hasFailed()) {
    fail("cannot be read to its end");
    begin_ = block_.size();
    return false;
  }
  return isMore;
}

bool RawText::ensure(std::size_t size) {
  while (block_.size() - begin_ < size) {
    if (!readMore()) {
      return false;
    }
  }
  return true;
}

int RawText::peekBehindBlanks() {
  while (ensure(1)) {
    const char c = block_[begin_];
    if (isIgnored(c)) {
      ++begin_;
    } else if (c == '/' && ensure(2) && block_[begin_ + 1] == '*') {
      skipComment();
    } else {
      return begin_ == block_.size() ? -1 : static_cast<unsigned char>(c);
    }
  }
  return -1;
}

void RawText::skipComment() {
  begin_ += 2;
  while (ensure(2)) {
    const char* const start = block_.data() + begin_;
    const void* const star = std::memchr(start, '*', block_.size() - begin_ - 1);
    if (star == nullptr) {
      begin_ = block_.size() - 1;
      continue;
    }
    const char* const found = static_cast<const char*>(star);
    begin_ += static_cast<std::size_t>(found - start);
    if (found[1] == '/') {
      begin_ += 2;
      return;
    }
    ++begin_;
  }
  begin_ = block_.size();
  fail("a comment never ends");
}

bool RawText::seek(std::uint64_t offset) {
  const std::uint64_t blockStart = blockEnd_ - block_.size();
  if (offset >= blockStart && offset < blockEnd_) {
    begin_ = static_cast<std::size_t>(offset - blockStart);
  } else if (file_.seek(offset)) {
    block_ = {};
    begin_ = 0;
    blockEnd_ = offset;
  } else {
    fail("cannot be read twice");
    return false;
  }
  return true;
}

}  // namespace plenvorith
