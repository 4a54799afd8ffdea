#pragma once

#include <string>
#include <vector>

#include "common/triangle.h"
#include "tessellation/step_cursor.h"

namespace plenvorith::test {

/// The scanner's operations, character by character; numbers are what strtod makes of them in the
/// "C" locale.
void referenceSkipWhitespace(StepCursor& cursor);
bool referenceNextIs(StepCursor& cursor, char c);
void referenceConsumeIf(StepCursor& cursor, char c);
double referenceParseNumber(StepCursor& cursor);
std::string referenceParseReference(StepCursor& cursor);
void referenceSkipQuotedString(StepCursor& cursor);
void referenceSkipParenthesisedGroup(StepCursor& cursor);
std::vector<Point3> referenceParsePointList(StepCursor& cursor);
std::vector<IndexTriple> referenceParseIndexTriples(StepCursor& cursor);

}  // namespace plenvorith::test
