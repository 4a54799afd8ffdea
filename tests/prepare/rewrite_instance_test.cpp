#include "prepare/rewrite_instance.h"

#include <cstdint>
#include <string>

#include <gmock/gmock.h>

#include "tests/support/instances.h"
#include "tests/support/temp_dir.h"

namespace plenvorith {
namespace {

/// What `write` makes of a body.
template <typename Write>
std::string rewritten(const std::string& body, Write write) {
  const test::TempDir directory;
  test::Instances in("#1=" + body + ";\n");
  in.reader.seekBody(in.table.offset(0));
  OutputFile output(directory / "out");
  write(in.reader, output);
  EXPECT_TRUE(output.close());
  return test::readFile(directory / "out");
}

/// #7 and #8 are dropped.
bool isDropped(std::uint64_t number) {
  return number == 7 || number == 8;
}

std::string withoutDropped(const std::string& body) {
  return rewritten(body, [](StatementReader& reader, OutputFile& output) {
    writeWithoutDropped(reader, isDropped, output);
  });
}

std::string retyped(const std::string& body) {
  const test::Instances in("#1=" + body + ";\n");
  return rewritten(body, [&in](StatementReader& reader, OutputFile& output) {
    writeRetyped(reader, in.table.type(0), isDropped, output);
  });
}

TEST(RewriteInstance, CopiesABodyOfAnyLength) {
  std::string body = "A('x',(#7";
  for (int i = 0; i < 100'000; ++i) {
    body += ",#" + std::to_string(i);
  }
  body += "))";
  EXPECT_EQ(rewritten(body, copyBody), body);
}

TEST(RewriteInstance, TakesReferencesOutOfLists) {
  EXPECT_EQ(withoutDropped("A((#7,#1,#8,#2),#3)"), "A((#1,#2),#3)");
  EXPECT_EQ(withoutDropped("A((#1,#7),(#8,#2),(#7,#8))"), "A((#1),(#2),())");
  EXPECT_EQ(withoutDropped("A(((#1,#7),(#7)),'')"), "A(((#1),()),'')");
}

TEST(RewriteInstance, LeavesAttributesWithoutTheirReferences) {
  EXPECT_EQ(withoutDropped("A(#7,*,#8,#1)"), "A($,*,$,#1)");
  EXPECT_EQ(withoutDropped("A((SELECTED(#7),#8,#1))"), "A((SELECTED($),#1))");
}

TEST(RewriteInstance, TellsRecordsOfComplexInstancesFromLists) {
  EXPECT_EQ(withoutDropped("(A(#7,(#7,#1))B()C((#8)))"), "(A($,(#1))B()C(()))");
}

TEST(RewriteInstance, KeepsStringsBinariesAndNumbers) {
  EXPECT_EQ(withoutDropped("A(('#7,(','it''s',\"0F\",#7,.T.,*,-1.E-3,#70))"),
            "A(('#7,(','it''s',\"0F\",.T.,*,-1.E-3,#70))");
}

TEST(RewriteInstance, KeepsApostrophesInStringsOfLists) {
  EXPECT_EQ(withoutDropped("A(('it''s','''',#7,'a''''b',''),#1)"),
            "A(('it''s','''','a''''b',''),#1)");
}

TEST(RewriteInstance, MakesShapesOfTessellatedOnes) {
  EXPECT_EQ(retyped("TESSELLATED_SHAPE_REPRESENTATION('n(',(#7,#1,#8),#9)"),
            "SHAPE_REPRESENTATION('n(',(#1),#9)");
  EXPECT_EQ(retyped("TESSELLATED_SHAPE_REPRESENTATION_WITH_ACCURACY_PARAMETERS('',(#1,#7),$,(#5))"),
            "SHAPE_REPRESENTATION('',(#1),$)");
  EXPECT_EQ(retyped("(CHARACTERIZED_OBJECT(*,*)REPRESENTATION('n',(#7,#1),#9)"
                    "SHAPE_REPRESENTATION()TESSELLATED_SHAPE_REPRESENTATION())"),
            "SHAPE_REPRESENTATION('n',(#1),#9)");
}

}  // namespace
}  // namespace plenvorith
