#pragma once

#include <bit>
#include <cstdint>
#include <exception>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <typeinfo>
#include <vector>

#include "common/triangle.h"
#include "tessellation/step_cursor.h"

namespace plenvorith::test {

/// What a call gave, as numbers and text that can be compared bit for bit, or what it threw.
struct Outcome {
  std::vector<std::uint64_t> numbers;
  std::string text;  ///< of a result, or type and message of an exception

  bool operator==(const Outcome&) const = default;
};

inline void append(std::vector<std::uint64_t>& numbers, double value) {
  numbers.push_back(std::bit_cast<std::uint64_t>(value));
}

inline void append(std::vector<std::uint64_t>& numbers, const Point3& point) {
  append(numbers, point.x);
  append(numbers, point.y);
  append(numbers, point.z);
}

inline void append(std::vector<std::uint64_t>& numbers, const IndexTriple& triple) {
  for (const std::int32_t index : {triple.i, triple.j, triple.k}) {
    numbers.push_back(static_cast<std::uint32_t>(index));
  }
}

inline void append(std::vector<std::uint64_t>& numbers, const Triangle& triangle) {
  append(numbers, triangle.normal);
  append(numbers, triangle.v1);
  append(numbers, triangle.v2);
  append(numbers, triangle.v3);
}

template <typename Item>
void append(std::vector<std::uint64_t>& numbers, const std::vector<Item>& items) {
  for (const Item& item : items) {
    append(numbers, item);
  }
}

/// Makes the call.
template <typename Call>
Outcome outcomeOf(Call call) {
  Outcome outcome;
  try {
    using Result = std::invoke_result_t<Call>;
    if constexpr (std::is_void_v<Result>) {
      call();
    } else if constexpr (std::is_convertible_v<Result, std::string_view>) {
      outcome.text = call();
    } else {
      append(outcome.numbers, call());
    }
  } catch (const std::exception& error) {
    outcome.text = std::string(typeid(error).name()) + ": " + error.what();
  }
  return outcome;
}

}  // namespace plenvorith::test
