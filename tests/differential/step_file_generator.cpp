#include "tests/differential/step_file_generator.h"

#include <algorithm>
#include <cstddef>
#include <vector>

#include "tests/support/step_text.h"

namespace plenvorith::test {
namespace {

using Texts = std::vector<std::string>;

/// One file while it is made.
struct File {
  std::mt19937& random;
  bool isWild = false;     ///< whether anything may be wrong
  std::string lineEnd{};   ///< of most lines
  bool isWrapped = false;  ///< whether entities go over several lines
  bool hasBlanks = false;  ///< whether there may be blanks round "="
  std::size_t points = 0;  ///< in each coordinates list
  std::vector<std::string> entities{};
};

bool oneIn(File& file, std::size_t count) {
  return pick(file.random, count) == 0;
}

std::string oneOf(File& file, const Texts& texts) {
  return texts[pick(file.random, texts.size())];
}

// Instance names by kind, so that references mostly fit. Some are equal but for leading zeros or
// differ in length, which decides their order.
const Texts kRepresentations = {"#5", "#50", "#500"};
const Texts kExact = {"#7", "#70"};
const Texts kSolids = {"#6", "#60", "#600"};
const Texts kFaces = {"#3", "#20", "#100", "#9", "#030"};
const Texts kCoordinates = {"#2", "#40", "#4"};
const Texts kRelationships = {"#8", "#80", "#800"};

std::string referenceTo(File& file, const Texts& names) {
  if (oneIn(file, 15)) {
    return oneOf(file, {"#1", "#999", "#02", "$", "#"});
  }
  return oneOf(file, names);
}

std::string referencesTo(File& file, const Texts& names) {
  std::string text = "(";
  for (std::size_t i = pick(file.random, 5); i > 0; --i) {
    text += referenceTo(file, names) + (i > 1 ? "," : "");
  }
  return text + ")";
}

std::string digits(File& file, std::size_t count) {
  std::string text;
  for (std::size_t i = 0; i < count; ++i) {
    text += static_cast<char>('0' + pick(file.random, 10));
  }
  return text;
}

std::string coordinate(File& file) {
  if (file.isWild && oneIn(file, 60)) {
    return oneOf(file, {"", "1E400", "1E-400", "-", ".T.", "2.2250738585072011E-308", "$", "#1"});
  }
  switch (pick(file.random, 8)) {
    case 0:
      return oneOf(file, {"0.", "-0.", "1.E", "+1", ".5", "1E0", "2.E+", "007.", "-1.e-05"});
    case 1:
      return oneOf(file, {"1E30", "-1E150", "1E-30", "1.5E200", "3.4028236E38", "1E-46",
                          "2.2250738585072014E-308", "1.7976931348623157E308"});
    case 2:
      return "0." + digits(file, 25);
    default:
      return oneOf(file, {"", "", "-"}) + digits(file, 1 + pick(file.random, 3)) + "." +
             digits(file, pick(file.random, 8)) + oneOf(file, {"", "", "E1", "E-3", "e+2"});
  }
}

std::string index(File& file) {
  if (oneIn(file, 25)) {
    return oneOf(file, {"0", "-1", "99", "2147483648", "4294967297", "1.9", "1E0", "2.E"});
  }
  return std::to_string(1 + pick(file.random, file.points));
}

/// A separator between items, at times with blanks or with none of it.
std::string comma(File& file) {
  if (oneIn(file, 20)) {
    return oneOf(file, {" , ", ", ", "\t,", " "});
  }
  return ",";
}

std::string pointList(File& file) {
  std::string text = "(";
  for (std::size_t i = 0; i < file.points; ++i) {
    text += (i == 0 ? "" : comma(file)) + "(" + coordinate(file) + comma(file) + coordinate(file) +
            comma(file) + coordinate(file);
    if (file.isWild && oneIn(file, 60)) {
      text += "," + coordinate(file);
    }
    text += ")";
  }
  return text + ")";
}

/// The number of indices in one strip: mostly three, in wild files any from none to six.
std::size_t stripLength(File& file) {
  if (file.isWild && oneIn(file, 15)) {
    return pick(file.random, 7);
  }
  return oneIn(file, 12) ? 3 + pick(file.random, 4) : 3;
}

std::string strips(File& file) {
  std::string text = "(";
  const std::size_t count = pick(file.random, 7);
  for (std::size_t i = 0; i < count; ++i) {
    text += i == 0 ? "(" : comma(file) + "(";
    const std::size_t length = stripLength(file);
    for (std::size_t j = 0; j < length; ++j) {
      text += (j == 0 ? "" : comma(file)) + index(file);
    }
    text += ")";
  }
  return text + ")";
}

std::string name(File& file) {
  if (file.isWild && oneIn(file, 30)) {
    return oneOf(file, {"$", "'it''s'", "'never ends", "*", ""});
  }
  return oneOf(file, {"''", "''", "'part 1'", "'#3'", "'a,(b'", "'\xC3\xA9'", "'\xFF'",
                      std::string("'\0'", 3), "'TESSELLATED_SOLID('", "';'"});
}

std::string face(File& file) {
  return "COMPLEX_TRIANGULATED_FACE(" + name(file) + comma(file) + referenceTo(file, kCoordinates) +
         comma(file) + std::to_string(file.points) + comma(file) +
         oneOf(file, {"()", "()", "((0.,0.,1.))", "((0.,0.,1.),(')',1.,0.))"}) + comma(file) +
         oneOf(file, {"$", "$", "#77"}) + comma(file) + oneOf(file, {"()", "()", "(1,2,3)"}) +
         comma(file) + strips(file) + ",())";
}

std::string shapeText(File& file, const std::string& type, const Texts& items) {
  return type + "(" + name(file) + "," + referencesTo(file, items) + ",#1)";
}

std::string relationship(File& file) {
  std::string first = referenceTo(file, oneIn(file, 8) ? kRepresentations : kExact);
  std::string second = referenceTo(file, kRepresentations);
  if (oneIn(file, 2)) {
    std::swap(first, second);
  }
  const std::string parameters = "(" + name(file) + ",''," + first + "," + second + ")";
  return oneOf(
      file, {"SHAPE_REPRESENTATION_RELATIONSHIP" + parameters,
             "SHAPE_REPRESENTATION_RELATIONSHIP" + parameters,
             "(REPRESENTATION_RELATIONSHIP" + parameters + "SHAPE_REPRESENTATION_RELATIONSHIP())",
             "REPRESENTATION_RELATIONSHIP" + parameters});
}

std::string equalsSign(File& file) {
  return file.hasBlanks && oneIn(file, 3) ? oneOf(file, {" = ", "= ", " ="}) : "=";
}

std::string semicolon(File& file) {
  if (oneIn(file, 25)) {
    return oneOf(file, {"", "; ", "; /* comment */", ";\r", "; #3 /* ; */ ;"});
  }
  return ";";
}

void add(File& file, const Texts& names, std::size_t oneInThatIsLeftOut,
         std::string (*text)(File&)) {
  for (const std::string& entityName : names) {
    if (oneIn(file, oneInThatIsLeftOut)) {
      continue;
    }
    file.entities.push_back(entityName + equalsSign(file) + text(file) + semicolon(file));
    if (oneIn(file, 30)) {
      file.entities.push_back(entityName + "=" + text(file) + ";");
    }
  }
}

void addEntities(File& file) {
  add(file, kRepresentations, 3, [](File& f) {
    return shapeText(f,
                     oneIn(f, 10) ? "TESSELLATED_SHAPE_REPRESENTATION_WITH_ACCURACY"
                                  : "TESSELLATED_SHAPE_REPRESENTATION",
                     oneIn(f, 10) ? kFaces : kSolids);
  });
  add(file, kExact, 4, [](File& f) {
    return shapeText(f, oneIn(f, 4) ? "ADVANCED_BREP_SHAPE_REPRESENTATION" : "SHAPE_REPRESENTATION",
                     {"#1"});
  });
  add(file, kSolids, 5, [](File& f) {
    return shapeText(f, oneIn(f, 8) ? "TESSELLATED_SHELL" : "TESSELLATED_SOLID", kFaces);
  });
  add(file, kFaces, 5, [](File& f) {
    return oneIn(f, 20) ? "TRIANGULATED_FACE('',#2,3,(),$,(),((1,2,3)))" : face(f);
  });
  add(file, kCoordinates, 6, [](File& f) {
    if (f.isWild && oneIn(f, 20)) {
      return oneOf(f, {"COORDINATES_LIST", "", "COORDINATES_LIST(", "A('',1,((0,0,0)))"});
    }
    return "COORDINATES_LIST(" + oneOf(f, {"''", "' ('"}) + "," + std::to_string(f.points) + "," +
           pointList(f) + ")";
  });
  add(file, kRelationships, 3, relationship);
  add(file, {"#1", "#77"}, 2, [](File& f) {
    return oneOf(f, {"CARTESIAN_POINT('',(0.,0.,0.))", "(A()B('#5'))", "PLANE('',#3)"});
  });
}

/// Breaks a text behind some of its commas, or anywhere in a wild file.
std::string wrapped(File& file, const std::string& text) {
  std::string result;
  for (const char c : text) {
    result += c;
    if ((c == ',' && oneIn(file, 6)) || (file.isWild && oneIn(file, 400))) {
      result += file.lineEnd + oneOf(file, {"", "", " ", "  ", file.lineEnd});
    }
  }
  return result;
}

std::string lineEnd(File& file) {
  if (oneIn(file, 30)) {
    return oneOf(file, {"\n", "\r\n", "\r\r\n", "\n\n", " \n", ""});
  }
  return file.lineEnd;
}

void damage(File& file, std::string& text) {
  const std::string bytes("\0\xFF\r\n#='();,1.E$ \xC3", 17);
  for (std::size_t i = pick(file.random, 3); i > 0 && !text.empty(); --i) {
    const std::size_t place = pick(file.random, text.size());
    switch (pick(file.random, 3)) {
      case 0:
        text[place] = bytes[pick(file.random, bytes.size())];
        break;
      case 1:
        text.insert(place, 1, bytes[pick(file.random, bytes.size())]);
        break;
      default:
        text.erase(place, 1 + pick(file.random, 5));
    }
  }
}

}  // namespace

std::string generateStepFile(std::mt19937& random) {
  File file{random};
  file.isWild = oneIn(file, 2);
  file.lineEnd = oneOf(file, {"\n", "\n", "\r\n"});
  file.isWrapped = oneIn(file, 2);
  file.hasBlanks = oneIn(file, 4);
  file.points = 3 + pick(random, 10);
  addEntities(file);
  for (std::size_t i = file.entities.size(); i > 1; --i) {
    std::swap(file.entities[i - 1], file.entities[pick(random, i)]);
  }
  std::string text = "ISO-10303-21;" + file.lineEnd + "HEADER;" + file.lineEnd +
                     oneOf(file, {"", "FILE_NAME('TESSELLATED_X');" + file.lineEnd}) + "ENDSEC;" +
                     file.lineEnd + "DATA;" + file.lineEnd;
  for (const std::string& entity : file.entities) {
    text += (file.isWrapped ? wrapped(file, entity) : entity) + lineEnd(file);
  }
  text += "ENDSEC;" + file.lineEnd + "END-ISO-10303-21;" + oneOf(file, {"", file.lineEnd});
  if (file.isWild && oneIn(file, 2)) {
    damage(file, text);
  }
  return text;
}

}  // namespace plenvorith::test
