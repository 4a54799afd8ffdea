#pragma once

#include <functional>
#include <map>
#include <string>

namespace plenvorith {

/// The entities of a STEP file (ISO 10303-21) as text: from the instance name exactly as written
/// ("#123", leading zeros kept) to what follows its "=", continuation lines joined with one space.
///
/// The order is that of byte strings, so "#10" comes before "#9". Nothing in a text is normalised;
/// the text of a file's last entity carries the lines behind it ("... ENDSEC; END-ISO-10303-21;").
using EntityTable = std::map<std::string, std::string, std::less<>>;

/// Reads the entities of a STEP file into a table, by physical lines and without a grammar.
///
/// A line that begins with an instance name and "=" starts an entity, whether or not the one before
/// has ended; its text goes to the end of the line or to the first carriage return in it. Every
/// other line is appended to the text of the entity above it, behind one space; lines above the
/// first entity are dropped. One carriage return at the end of a line does not count. Of several
/// entities with one name the last one stays.
///
/// Takes   an empty `table`, which is filled, and the `path` of the file.
/// Errors  a file that cannot be read leaves the table empty; there is no syntax check.
/// Cost    one pass over the file; memory for every entity's text.
void readEntityTable(EntityTable& table, const std::string& path);

}  // namespace plenvorith
