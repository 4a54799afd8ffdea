#pragma once

#include <cstddef>
#include <cstdint>

#include "exchange/token_reader.h"

namespace plenvorith {

/// An index as a file has it: legal ones count from 1, others are to be expected.
using Index = std::int64_t;

/// More digits are not read at once, so that no index overflows.
constexpr std::ptrdiff_t kMaxIndexDigits = 18;

/// Reads one index; of a real number its whole part. False if there is no number.
[[nodiscard]] bool readIndex(TokenReader& tokens, Index& index);

/// Goes over a list, "(a,b,c)", with the reader at each of its items in turn, which `readItem` reads;
/// a missing list, "$", has none.
///
/// Errors  false if `readItem` says so, or if something else stands between the items.
template <typename ReadItem>
[[nodiscard]] bool readList(TokenReader& tokens, ReadItem readItem) {
  if (!tokens.take('(')) {
    return tokens.take('$');
  }
  if (tokens.take(')')) {
    return true;
  }
  do {
    if (!readItem()) {
      return false;
    }
  } while (tokens.take(','));
  return tokens.take(')');
}

/// Calls `each` with the indices of a list, "(1,2,3)", one by one. The reader then stands behind the
/// index, and `each` may move it about if it comes back.
///
/// Errors  false if something else than numbers stands in the list.
template <typename Each>
[[nodiscard]] bool readIndices(TokenReader& tokens, Each each) {
  return readList(tokens, [&tokens, &each] {
    Index index = 0;
    if (!readIndex(tokens, index)) {
      return false;
    }
    each(index);
    return true;
  });
}

}  // namespace plenvorith
