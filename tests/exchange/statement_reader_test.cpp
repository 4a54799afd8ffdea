#include "exchange/statement_reader.h"

#include <string>
#include <string_view>
#include <vector>

#include <gmock/gmock.h>

#include "tests/reference/reference_statements.h"
#include "tests/support/memory_file.h"
#include "tests/support/step_file.h"
#include "tests/support/step_text.h"

namespace plenvorith {
namespace {

using test::stepFile;

/// All that a reader hands out, a line a statement; at last what is wrong, if anything is.
std::string statementsOf(std::string_view content) {
  test::MemoryFile file;
  return test::readStatements(file.write(content));
}

/// What is handed out of the DATA section.
std::string dataStatements(std::string_view data) {
  const std::string all = statementsOf(stepFile(data));
  return all.substr(all.find('\n') + 1);
}

TEST(StatementReader, HandsOutHeaderEntitiesAndInstances) {
  EXPECT_EQ(statementsOf(stepFile("#1=A('x',#2);\n#2=B();\n")),
            "FILE_SCHEMA(('AP242'))\n#1=A('x',#2)\n#2=B()\n");
}

TEST(StatementReader, LeavesOutBlanksAndComments) {
  EXPECT_EQ(dataStatements(" # 1 =\tA ( 1. ,\r\n 2. ) ;/* ; ' */#2/*'*/=/**/B(/***/3/* \" */);"),
            "#1=A(1.,2.)\n#2=B(3)\n");
}

TEST(StatementReader, HandsOutWhatIsInScopesFirst) {
  EXPECT_EQ(dataStatements("#1=&SCOPE #2=A(); #3=&SCOPE\n#4=B(#2);ENDSCOPE C();ENDSCOPE/#2,#3/"
                           "D(#3);\n#5=E();\n"),
            "#2=A()\n#4=B(#2)\n#3=C()\n#1=D(#3)\n#5=E()\n");
}

TEST(StatementReader, ReadsSeveralDataSectionsAsOne) {
  EXPECT_EQ(dataStatements("#1=A();ENDSEC;DATA('two',('S'));#2=B();\n"), "#1=A()\n#2=B()\n");
}

TEST(StatementReader, GoesOnWithTheDataBehindAStrayEnd) {
  EXPECT_EQ(dataStatements("#1=A();ENDSEC;#2=B();endsec;\n#3=C();\n"), "#1=A()\n#2=B()\n#3=C()\n");
  EXPECT_EQ(statementsOf("ISO-10303-21;HEADER;ENDSEC;#1=A();DATA;#2=B();ENDSEC;SIGNATURE;\n#3=C();"
                         "ENDSEC;END-ISO-10303-21;#4=D();"),
            "#2=B()\n");
}

TEST(StatementReader, GoesOnWithTheDataBehindAStrayHeader) {
  EXPECT_EQ(dataStatements("#1=A();HEADER;\n#2=B();\n"), "#1=A()\n#2=B()\n");
}

TEST(StatementReader, PassesOverOtherSections) {
  EXPECT_EQ(dataStatements("#1=A();ENDSEC;REFERENCE;#2=<x#y>;ENDSEC;DATA;#3=B();\n"),
            "#1=A()\n#3=B()\n");
}

TEST(StatementReader, PassesOverUrisWhateverTheyHold) {
  EXPECT_EQ(dataStatements("#1=A();ENDSEC;ANCHOR;<it's/*>=#1;ENDSEC;reference;#2=<\">;endsec ;"
                           "DATA;#3=B();\n"),
            "#1=A()\n#3=B()\n");
}

TEST(StatementReader, TakesKeywordsInAnyCase) {
  EXPECT_EQ(statementsOf("iso-10303-21;Header;File_Name('x');EndSec;Data;#1=Point('aB',.t.,1.e5);"
                         "#2=(a('b')C(x(1)));#3=POINT(1.e5,.t.);endsec;end-Iso-10303-21;#4=A();"),
            "FILE_NAME('x')\n#1=POINT('aB',.T.,1.E5)\n#2=(A('b')C(X(1)))\n#3=POINT(1.e5,.t.)\n");
}

TEST(StatementReader, GoesOnAtTheNextInstanceBehindJunk) {
  EXPECT_EQ(dataStatements("#1=A(;,#2));#3=B();it's junk\n#4=C();#5 #6 = D();#7);#8,x#9=E();"),
            "#1=A(\n#3=B()\n#4=C()\n#6=D()\n#9=E()\n");
}

TEST(StatementReader, PassesOverInstancesWhoseNumberIsTooLarge) {
  EXPECT_EQ(dataStatements("#1=A(;#99999999999999999999);#2=B();"), "#1=A(\n#2=B()\n");
  EXPECT_EQ(dataStatements("#99999999999999999999=A(#2,'x');#100000000000000000=B();#2=C();"),
            "#2=C()\n");
}

TEST(StatementReader, PassesOverWhatStandsBeforeAndBehind) {
  EXPECT_EQ(statementsOf("junk END-ISO-10303-21; ISO-10303-21 ;HEADER;ENDSEC;DATA;#1=A();ENDSEC;"
                         "END-ISO-10303-21;#2=B();\0'"),
            "#1=A()\n");
}

TEST(StatementReader, TakesTheMarkOfAnotherPartOfTheStandardAtTheBeginning) {
  for (const std::string mark : {"ISO", "iso-3-21", "ISO-10303-28"}) {
    std::string content = " \n";
    content.append(mark).append(";HEADER;ENDSEC;DATA;#1=A();ENDSEC;END-").append(mark);
    EXPECT_EQ(statementsOf(content.append(";#2=B();")), "#1=A()\n");
  }
  EXPECT_EQ(statementsOf("charset=ISO-8859-1;'\nISO-10303-21;DATA;#1=A();"), "#1=A()\n");
  EXPECT_EQ(statementsOf("ISO 3;DATA;#1=A();"), "not a STEP file");
}

TEST(StatementReader, ReadsInstancesAtAnyBoundaryOfBlocks) {
  for (std::size_t size = 131'000; size < 131'100; ++size) {
    const std::string content = stepFile("#1=A('" + std::string(1000, 'x') + "');" +
                                         std::string(size - 1100, ' ') + "#2=B(/* */'it''s',#07);");
    EXPECT_THAT(statementsOf(content), testing::EndsWith("\n#2=B('it''s',#7)\n")) << size;
  }
}

TEST(StatementReader, HandsOutWhatTheReferenceDoesOfEveryShortText) {
  test::MemoryFile file;
  const std::vector<std::string> pieces = {"#1=", "#07",     "A(",       "'",  "\"",      "/", "*",
                                           ";",   "&SCOPE ", "ENDSCOPE", "\n", "endsec;", "a("};
  test::forEveryString(pieces, 4, [&file](const std::string& text) {
    const std::string content = "ISO-10303-21;DATA;" + text;
    ASSERT_EQ(test::readStatements(file.write(content)), test::referenceStatements(content))
        << text;
  });
}

}  // namespace
}  // namespace plenvorith
