#include "exchange/statement_body.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include <gmock/gmock.h>

#include "tests/support/memory_file.h"
#include "tests/support/step_text.h"

namespace plenvorith {
namespace {

constexpr std::size_t kLongest = StatementBody::kLongestString;

/// All that is handed out of a body, and behind that what is wrong with it, if anything is.
std::string handedOut(std::string_view content, std::size_t size = 1) {
  test::MemoryFile file;
  RawText raw(file.write(content));
  StatementBody body(raw);
  body.start();
  std::string all;
  for (std::string_view text = body.peek(size); !text.empty(); text = body.peek(size)) {
    all += text;
    body.consume(text.size());
  }
  EXPECT_TRUE(body.isWhole());
  return raw.error().empty() ? all : all + " - " + raw.error();
}

TEST(StatementBody, EndsAtItsSemicolon) {
  EXPECT_EQ(handedOut("A(1,';');B();"), "A(1,';')");
  EXPECT_EQ(handedOut(";"), "");
}

TEST(StatementBody, LeavesOutBlanksAndComments) {
  EXPECT_EQ(handedOut(" A\t( 1. ,\r\n 2. /* ; ' */)/**/ ;"), "A(1.,2.)");
}

TEST(StatementBody, LeavesOutSlashesThatCouldBeginAComment) {
  EXPECT_EQ(handedOut("A(/ *,2*/3,/***/4,//**/*/);"), "A(*,2*3,4,*)");
}

TEST(StatementBody, KeepsStrings) {
  EXPECT_EQ(handedOut("A('a  b;#02 /* x */ (''q'') \" ',\"0Ff\");"),
            "A('a  b;#02 /* x */ (''q'') \" ',\"0Ff\")");
}

TEST(StatementBody, EndsBeforeAnInstanceThatAStringWouldGoOver) {
  EXPECT_EQ(handedOut("A(1,',#2);\n#3=B('');"), "A(1,");
  EXPECT_EQ(handedOut("A'B('',1);\r\n#30  =C();"), "A");
  EXPECT_EQ(handedOut("A('x''y);\nendsec;"), "A(");
  EXPECT_EQ(handedOut("A('x\n#2 y\n#=\n #3=\nENDSEC');"), "A('x#2 y#= #3=ENDSEC')");
  EXPECT_EQ(handedOut("A('x\n#2=(,\n#3=4');"), "A('x#2=(,#3=4')");
}

TEST(StatementBody, TakesAStrayQuotationMarkForText) {
  EXPECT_EQ(handedOut("A\"(1 ,'b c');B();\""), "A\"(1,'b c')");
  EXPECT_EQ(handedOut("A(\"0F\n1\");\";"), "A(\"0F1\")");
}

TEST(StatementBody, GoesOnBehindKeywordsOfSectionsAmongParameters) {
  EXPECT_EQ(handedOut("A((#1,#2DATA;\n),#3);B();"), "A((#1,#2DATA;),#3)");
  EXPECT_EQ(handedOut("A(endsec; \n #3,HEADER;'');#4=B();"), "A(endsec;#3,HEADER;'')");
  for (const char* end : {"", "\n#4=B()", "\n#4 =B()", "END-ISO-10303-21", "DATA;"}) {
    EXPECT_EQ(handedOut(std::string("A(#1DATA;") + end), "A(#1DATA");
  }
  EXPECT_EQ(handedOut("A(METADATA;,1);"), "A(METADATA");
  EXPECT_EQ(handedOut("A(DA TA;,1);"), "A(DATA");
}

TEST(StatementBody, SkipsToTheSameEnd) {
  for (const std::string_view content :
       {"A(1,',#2);\n#3=B('');", "A'B('',1);\n#30  =C();", "A('x''y);\nendsec;", "A\"(1);B();\"",
        "A(\"0F\n1\",\"0 1\");\";", "A('x\ny','\n');", "A((#1,#2DATA;\n),#3);B();",
        "A(1ENDSEC;\n#3=B();", "A(DA TA;,1);", "A(METADATA;,1);"}) {
    for (const std::size_t size : {0U, 1U, 4U}) {
      test::MemoryFile file;
      RawText raw(file.write(content));
      StatementBody body(raw);
      body.start();
      (void)body.peek(size);
      (void)body.skip();
      const std::uint64_t skipped = raw.offset();
      const bool isMalformed = body.isMalformed();
      EXPECT_TRUE(raw.seek(0));
      body.start();
      while (!body.peek(1).empty()) {
        body.consume(body.peek(1).size());
      }
      EXPECT_EQ(skipped, raw.offset()) << content;
      EXPECT_EQ(isMalformed, body.isMalformed()) << content;
      EXPECT_EQ(raw.error(), "") << content;
    }
  }
}

TEST(StatementBody, DropsLineEndsInStringsAndBinaries) {
  EXPECT_EQ(handedOut("A('a\nb\r\nc d','it'\n's',\"0\nF\");"), "A('abc d','it''s',\"0F\")");
}

TEST(StatementBody, WritesReferencesWithoutLeadingZeros) {
  EXPECT_EQ(handedOut("A(#0012,#0,#00,#100,'#01');"), "A(#12,#0,#0,#100,'#01')");
}

TEST(StatementBody, EmptiesStringsThatAreTooLong) {
  const std::string longest(kLongest, 'x');
  EXPECT_EQ(handedOut("A('" + longest + "',1);"), "A('" + longest + "',1)");
  EXPECT_EQ(handedOut("A('" + longest + "y',1);"), "A('',1)");
  EXPECT_EQ(handedOut("A('" + std::string(1'000'000, '\'') + "',1);"), "A('',1)");
}

TEST(StatementBody, CountsTheStringsThatItEmpties) {
  test::MemoryFile file;
  const std::string longString = '\'' + std::string(kLongest + 1, 'x') + '\'';
  RawText raw(file.write("A(" + longString + "," + longString + ",'x');"));
  StatementBody body(raw);
  body.start();
  EXPECT_EQ(body.peek(100), "A('','','x')");
  EXPECT_EQ(body.emptiedStrings(), 2U);
}

TEST(StatementBody, HandsOutAsMuchAsIsAskedFor) {
  std::string content = "A(";
  for (int i = 0; i < 100'000; ++i) {
    content += "12345,";
  }
  test::MemoryFile file;
  RawText raw(file.write(content + "0);"));
  StatementBody body(raw);
  body.start();
  EXPECT_GE(body.peek(300'000).size(), 300'000U);
  EXPECT_FALSE(body.isWhole());
  body.consume(300'000);
  EXPECT_EQ(body.peek(1'000'000), content.substr(300'000) + "0)");
  EXPECT_TRUE(body.isWhole());
}

TEST(StatementBody, HandsOutTheSameInPiecesOfAnySize) {
  const std::string expected = "A('" + std::string(kLongest, 'x') + "',#12,'it''s',\"0\",1.)";
  std::string content = "A('" + std::string(kLongest, 'x') + "' ,/* */#0012,\n'it''s',\"0\",1.);";
  for (std::size_t size = 1; size < 9000; size += 997) {
    EXPECT_EQ(handedOut(content, size), expected) << size;
  }
}

TEST(StatementBody, RejectsWhatNeverEnds) {
  EXPECT_EQ(handedOut("A("), "A( - an instance never ends");
  EXPECT_EQ(handedOut("A('x;"), "A( - a string never ends");
  EXPECT_EQ(handedOut("A(/* ;"), "A( - a comment never ends");
  EXPECT_EQ(handedOut("A('x'"), "A('x' - an instance never ends");
}

TEST(StatementBody, SkipsToTheSameSemicolonAtWhichItEnds) {
  test::MemoryFile file;
  const std::vector<std::string> pieces = {"#07", "(", "'", "DATA", "/", "*", ";", "\n"};
  test::forEveryString(pieces, test::isThorough() ? 5 : 4, [&file](const std::string& text) {
    const std::string path = file.write(text + ";';*/;");
    RawText read(path);
    StatementBody body(read);
    body.start();
    std::string all;
    for (std::string_view piece = body.peek(1); !piece.empty(); piece = body.peek(1)) {
      all += piece;
      body.consume(piece.size());
    }
    RawText skipped(path);
    StatementBody other(skipped);
    other.start();
    (void)other.skip();
    ASSERT_EQ(skipped.offset(), read.offset()) << text;
    ASSERT_EQ(skipped.error(), read.error()) << text;
  });
}

TEST(StatementBody, CountsTheParenthesesThatOpen) {
  std::string content = "A('(',((1,2),(3,4)))";
  test::MemoryFile file;
  {
    RawText raw(file.write(content + ";"));
    StatementBody body(raw);
    body.start();
    EXPECT_EQ(body.skip().opened, 4U);  // all of it is passed over
  }
  content = "A(";
  for (int i = 0; i < 100'000; ++i) {
    content += "(/*(*/1,'(',\"0\"),";
  }
  RawText raw(file.write(content + "1);B"));
  StatementBody body(raw);
  body.start();
  EXPECT_EQ(body.skip().opened, 100'001U);
  EXPECT_EQ(body.peek(1), "");
  EXPECT_EQ(raw.peek(), 'B');
}

/// Goes over a body in pieces of `size` bytes and gives the places between them.
std::vector<BodyPlace> placesOf(StatementBody& body, std::size_t size) {
  std::vector<BodyPlace> places = {body.place()};
  for (std::string_view text = body.peek(size); !text.empty(); text = body.peek(size)) {
    body.consume(std::min(size, text.size()));
    places.push_back(body.place());
  }
  return places;
}

TEST(StatementBody, GoesToAnyPlaceInItself) {
  const std::string content = "A( 'it''s',#0012, /* ; */ 1.,\n\"0 F\",'" + std::string(9000, 'x') +
                              "',((2,3 ),/),'');B(1);";
  const std::string expected = handedOut(content);
  for (std::size_t size = 1; size < 20; ++size) {
    test::MemoryFile file;
    RawText raw(file.write(content));
    StatementBody body(raw);
    body.start();
    const std::vector<BodyPlace> places = placesOf(body, size);
    ASSERT_EQ(places.size(), (expected.size() + size - 1) / size + 1);
    for (std::size_t i = places.size(); i > 0; --i) {
      body.goTo(places[i - 1]);
      const std::string rest = expected.substr(std::min((i - 1) * size, expected.size()));
      ASSERT_EQ(body.peek(100), rest) << size << ' ' << i;
      ASSERT_TRUE(body.isWhole());
    }
    EXPECT_EQ(raw.peek(), 'B');
  }
}

TEST(StatementBody, GoesToPlacesInLongLists) {
  std::string content = "A(";
  for (int i = 0; i < 100'000; ++i) {
    content += std::to_string(i) + (i % 7 == 0 ? " ,/**/" : ",");
  }
  const std::string expected = handedOut(content + "0);");
  test::MemoryFile file;
  RawText raw(file.write(content + "0);"));
  StatementBody body(raw);
  body.start();
  constexpr std::size_t kSize = 997;
  const std::vector<BodyPlace> places = placesOf(body, kSize);
  for (std::size_t i = 0; i < places.size(); ++i) {
    const std::size_t place = i * 131 % places.size();
    EXPECT_LE(places[place].ahead, 40'000U);
    body.goTo(places[place]);
    ASSERT_EQ(body.peek(kSize).substr(0, kSize),
              expected.substr(std::min(place * kSize, expected.size()), kSize))
        << place;
    // From there on, places are right as well.
    body.consume(std::min<std::size_t>(10, body.peek(10).size()));
    const BodyPlace further = body.place();
    body.goTo(places.front());
    body.goTo(further);
    ASSERT_EQ(body.peek(5).substr(0, 5),
              expected.substr(std::min(place * kSize + 10, expected.size()), 5))
        << place;
  }
}

TEST(StatementBody, StartsAnewWithNothing) {
  test::MemoryFile file;
  RawText raw(file.write("A(1);B(2);"));
  StatementBody body(raw);
  body.start();
  EXPECT_EQ(body.peek(1), "A(1)");
  body.startEmpty();
  EXPECT_EQ(body.peek(1), "");
  EXPECT_TRUE(body.isWhole());
  body.start();
  EXPECT_EQ(body.peek(1), "B(2)");
}

}  // namespace
}  // namespace plenvorith
