#pragma once

#include <string>

namespace plenvorith {

/// What the text of an input tells about why it could not be converted.
struct InputFacts {
  bool isWhole = false;          ///< the file could be read to its end
  std::string form;              ///< "packed with gzip", if it is something else; may be empty
  bool hasStart = false;         ///< ISO-10303-21 in any case, not as a part of the end
  bool hasEnd = false;           ///< END-ISO-10303-21 in any case
  bool hasTessellation = false;  ///< faces or sets of stored triangles, in whatever form
  bool hasExactGeometry = false;
};

/// Reads a file once, in blocks.
InputFacts factsOf(const std::string& path);

/// Whether a regular file may hold tessellation of any kind. Stops where it does.
bool holdsTessellation(const std::string& path);

/// Whether a regular file ends in the middle: END-ISO-10303-21 is nowhere in it, in whatever
/// case. Reads only the end of a file that is whole.
bool endsInTheMiddle(const std::string& path);

}  // namespace plenvorith
