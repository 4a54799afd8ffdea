// Input: a byte that chooses the operation, a character for the operations that take one, and the
// text to scan.

#include <string_view>

#include "fuzz/fuzz_target.h"
#include "tests/reference/reference_step_cursor.h"
#include "tests/support/outcome.h"

namespace plenvorith {
namespace {

template <typename Operation, typename Reference>
void compare(const std::string& text, Operation operation, Reference reference) {
  StepCursor cursor{text};
  StepCursor referenceCursor{text};
  const test::Outcome actual = test::outcomeOf([&] { return operation(cursor); });
  const test::Outcome expected = test::outcomeOf([&] { return reference(referenceCursor); });
  fuzz::require(actual == expected, "result or exception");
  fuzz::require(cursor.pos == referenceCursor.pos, "position");
}

void compareChosen(char choice, char c, const std::string& text) {
  switch (choice) {
    case 'w':
      return compare(text, skipWhitespace, test::referenceSkipWhitespace);
    case 'i':
      return compare(
          text, [c](StepCursor& cursor) { return nextIs(cursor, c) ? 1.0 : 0.0; },
          [c](StepCursor& cursor) { return test::referenceNextIs(cursor, c) ? 1.0 : 0.0; });
    case 'c':
      return compare(
          text, [c](StepCursor& cursor) { consumeIf(cursor, c); },
          [c](StepCursor& cursor) { test::referenceConsumeIf(cursor, c); });
    case 'n':
      return compare(text, parseNumber, test::referenceParseNumber);
    case 'r':
      return compare(text, parseReference, test::referenceParseReference);
    case 'q':
      return compare(text, skipQuotedString, test::referenceSkipQuotedString);
    case 'g':
      return compare("(" + text, skipParenthesisedGroup, test::referenceSkipParenthesisedGroup);
    case 'p':
      return compare(text, parsePointList, test::referenceParsePointList);
    case 't':
      return compare(text, parseIndexTriples, test::referenceParseIndexTriples);
    default:
      return;
  }
}

}  // namespace
}  // namespace plenvorith

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace plenvorith;
  if (size < 2 || size > fuzz::kMaxInput) {
    return 0;
  }
  const std::string input = fuzz::textOf(data, size);
  constexpr std::string_view kChoices = "wicnrqgpt";
  const char choice = kChoices.find(input[0]) == std::string_view::npos
                          ? kChoices[data[0] % kChoices.size()]
                          : input[0];
  compareChosen(choice, input[1], input.substr(2));
  return 0;
}
