#include "batch/inputs/input_header.h"

#include <string>

#include <gtest/gtest.h>

#include "tests/support/temp_dir.h"

namespace plenvorith {
namespace {

InputHeader headerOfText(const std::string& text) {
  const test::TempDir dir;
  return headerOf(test::writeFile(dir / "a.stp", text));
}

TEST(HeaderOf, TellsSchemaSystemAndTimeStamp) {
  const InputHeader header = headerOfText(
      "ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION(('a'),'2;1');\n"
      "FILE_NAME('part.stp','2026-03-31T12:00:00+02:00',('Ann','O''Neil'),(''),\n"
      "  'Pre 1','CAD ''26''; x /* no comment */','');\n"
      "FILE_SCHEMA (('AP242_MANAGED_MODEL { 1 0 }', 'OTHER'));\nENDSEC;\nDATA;\n#1=X();\n");
  EXPECT_EQ(header.schema, "AP242_MANAGED_MODEL { 1 0 }, OTHER");
  EXPECT_EQ(header.system, "CAD '26'; x /* no comment */");
  EXPECT_EQ(header.timeStamp, "2026-03-31T12:00:00+02:00");
}

TEST(HeaderOf, LeavesEmptyWhatIsNotThere) {
  for (const char* const text :
       {"", "noise", "ISO-10303-21;HEADER;", "ISO-10303-21;HEADER;FILE_NAME('a');FILE_SCHEMA();",
        "ISO-10303-21;HEADER;FILE_NAME($,$,$,$,$,$,$);FILE_SCHEMA($);ENDSEC;",
        "ISO-10303-21;DATA;#1=X();ENDSEC;HEADER;FILE_SCHEMA(('S'));ENDSEC;"}) {
    const InputHeader header = headerOfText(text);
    EXPECT_EQ(header.schema + header.system + header.timeStamp, "") << text;
  }
  EXPECT_EQ(headerOf("/missing").schema, "");
}

TEST(HeaderOf, KeepsBytesAsTheyStand) {
  EXPECT_EQ(headerOfText("ISO-10303-21;HEADER;FILE_SCHEMA(('\\X2\\00E4\\X0\\ \xff'));").schema,
            "\\X2\\00E4\\X0\\ \xff");
}

}  // namespace
}  // namespace plenvorith
