#include "tests/law/mutation.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstddef>
#include <string_view>
#include <vector>

#include "common/ascii.h"
#include "tests/support/step_text.h"

namespace plenvorith::test {
namespace {

constexpr std::array kTypes =
    std::to_array<const char*>({"SHAPE_REPRESENTATION",
                                "ADVANCED_BREP_SHAPE_REPRESENTATION",
                                "TESSELLATED_SHAPE_REPRESENTATION",
                                "ELEMENTARY_BREP_SHAPE_REPRESENTATION",
                                "REPRESENTATION",
                                "DRAUGHTING_MODEL",
                                "SHAPE_REPRESENTATION_RELATIONSHIP",
                                "REPRESENTATION_RELATIONSHIP",
                                "CONSTRUCTIVE_GEOMETRY_REPRESENTATION_RELATIONSHIP",
                                "SHAPE_DEFINITION_REPRESENTATION",
                                "PROPERTY_DEFINITION_REPRESENTATION",
                                "PRODUCT_DEFINITION_SHAPE",
                                "PRODUCT_DEFINITION",
                                "MANIFOLD_SOLID_BREP",
                                "FACETED_BREP",
                                "SHELL_BASED_SURFACE_MODEL",
                                "GEOMETRIC_SET",
                                "GEOMETRIC_CURVE_SET",
                                "OPEN_SHELL",
                                "CLOSED_SHELL",
                                "ADVANCED_FACE",
                                "FACE_SURFACE",
                                "CSG_SOLID",
                                "BLOCK",
                                "MAPPED_ITEM",
                                "STYLED_ITEM",
                                "TESSELLATED_SOLID",
                                "TESSELLATED_SHELL",
                                "TESSELLATED_GEOMETRIC_SET",
                                "TRIANGULATED_FACE",
                                "COORDINATES_LIST",
                                "CARTESIAN_POINT",
                                "AXIS2_PLACEMENT_3D",
                                "UNKNOWN_TYPE"});

/// None is a blank or a comment, which would make one word of two as preparing leaves them out.
constexpr std::array kInserted = std::to_array<const char*>(
    {";", "(",         ")",       "'",        "#",      "/*", "*/", ",",   "$",
     "*", "=",         "\"",      "\\",       "()",     "''", "&",  "#1=", ";;",
     "!", "ENDSEC;\n", "DATA;\n", "\xc3\xa4", "1.E400", "-",  "@"});

/// Where a place of this kind begins: `first` begins it, and what follows is told by `isPart`.
struct Span {
  std::size_t begin = 0;
  std::size_t end = 0;
};

template <typename IsFirst, typename IsPart>
std::vector<Span> spansOf(const std::string& text, IsFirst isFirst, IsPart isPart) {
  std::vector<Span> spans;
  for (std::size_t i = 0; i < text.size();) {
    if (!isFirst(text[i])) {
      ++i;
      continue;
    }
    std::size_t end = i + 1;
    while (end < text.size() && isPart(text[end])) {
      ++end;
    }
    spans.push_back({i, end});
    i = end;
  }
  return spans;
}

bool isWord(char c) {
  return (c >= 'A' && c <= 'Z') || c == '_' || c == '-';
}

std::vector<Span> referencesIn(const std::string& text) {
  return spansOf(
      text, [](char c) { return c == '#'; }, isDigit);
}

std::vector<Span> wordsIn(const std::string& text) {
  return spansOf(text, isWord, [](char c) { return isWord(c) || isDigit(c); });
}

/// The keywords of sections and the marks of the file. (Types in small letters are left alone: the
/// kernel takes none of them, but takes all as preparing writes them.)
std::vector<Span> sectionsIn(const std::string& text) {
  std::vector<Span> words = wordsIn(text);
  std::erase_if(words, [&text](Span word) { return text[word.end] != ';'; });
  return words;
}

std::vector<Span> numbersIn(const std::string& text) {
  return spansOf(text, isDigit, [](char c) { return isDigit(c) || c == '.'; });
}

std::vector<Span> linesIn(const std::string& text) {
  return spansOf(
      text, [](char) { return true; }, [](char c) { return c != '\n'; });
}

Span oneOf(std::mt19937& random, const std::vector<Span>& spans) {
  return spans.empty() ? Span{} : spans[pick(random, spans.size())];
}

std::string textOf(const std::string& text, Span span) {
  return text.substr(span.begin, span.end - span.begin);
}

void replace(std::string& text, Span span, const std::string& by) {
  text.replace(span.begin, span.end - span.begin, by);
}

std::string otherReference(std::mt19937& random, const std::string& text) {
  constexpr std::array kOdd = std::to_array<const char*>(
      {"#999999", "#0", "$", "*", "#18446744073709551617", "#007", "()", "(#20)"});
  return pick(random, 4) == 0 ? kOdd.at(pick(random, kOdd.size()))
                              : textOf(text, oneOf(random, referencesIn(text)));
}

std::string lowered(std::string text) {
  for (char& c : text) {
    c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  }
  return text;
}

void changeLines(std::mt19937& random, std::string& text) {
  const std::vector<Span> lines = linesIn(text);
  const Span one = oneOf(random, lines);
  const Span other = oneOf(random, lines);
  switch (pick(random, 4)) {
    case 0:
      return replace(text, one, "");
    case 1:
      return replace(text, other, textOf(text, other) + textOf(text, one));
    case 2:
      return replace(text, other, textOf(text, one));
    default: {
      const std::string copied = textOf(text, other);
      const std::size_t equals = std::min(copied.find('='), copied.size());
      return replace(text, one, textOf(text, one) + "\n#777777" + copied.substr(equals));
    }
  }
}

void changeOnce(std::mt19937& random, std::string& text) {
  const std::size_t place = pick(random, text.size() + 1);
  switch (pick(random, 9)) {
    case 0:
    case 1:
      return changeLines(random, text);
    case 2:
    case 3:
      return replace(text, oneOf(random, referencesIn(text)), otherReference(random, text));
    case 4:
      return replace(text, oneOf(random, wordsIn(text)), kTypes.at(pick(random, kTypes.size())));
    case 5: {
      const Span word = oneOf(random, sectionsIn(text));
      return replace(text, word, lowered(textOf(text, word)));
    }
    case 6:
      return replace(text, oneOf(random, numbersIn(text)),
                     std::to_string(pick(random, 3) == 0 ? random() >> 1U : pick(random, 200)));
    case 7:
      text.insert(place, kInserted.at(pick(random, kInserted.size())));
      return;
    default:
      text.erase(place, 1 + pick(random, pick(random, 8) == 0 ? 300 : 2));
  }
}

}  // namespace

std::string mutated(std::mt19937& random, std::string content) {
  for (std::size_t changes = 1 + pick(random, 3); changes > 0; --changes) {
    changeOnce(random, content);
  }
  return content;
}

}  // namespace plenvorith::test
