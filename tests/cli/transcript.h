#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace plenvorith::test {

/// How the lines of a stream are compared with those that are expected.
enum class Comparison {
  Whole,     // the stream has these lines and no others
  OwnLines,  // likewise, after lines are left out that the program did not print itself: the kernel
             // reports its doings on standard output too
  HasLines,  // these lines stand somewhere in the stream, one right behind the other
  Contains,  // each of these texts stands somewhere in a line
  Anything,  // nothing is compared
};

/// Compares what a program printed with what it should have printed.
///
/// Takes   the stream, byte for byte, and the expected lines without their ends. "<number>" in a
///         line stands for one or more digits; a line behind "<perhaps>" may be missing.
/// Gives   "", or a description of the difference for people.
std::string differenceIn(const std::string& stream, const std::vector<std::string>& expected,
                         Comparison comparison);

/// The lines of a text that the program itself prints on standard output.
std::string keepOwnLines(std::string_view text);

/// The lines of a text without their ends; of a last line without an end, a note is added to it.
std::vector<std::string> linesOf(std::string_view text);

}  // namespace plenvorith::test
