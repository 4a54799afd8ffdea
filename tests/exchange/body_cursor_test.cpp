#include "exchange/body_cursor.h"

#include <string>

#include <gmock/gmock.h>

#include "tests/support/instances.h"

namespace plenvorith {
namespace {

struct OneBody : test::Instances {
  explicit OneBody(const std::string& body) : Instances("#1=" + body + ";\n") {
    reader.seekBody(table.offset((*this)[1]));
  }
  /// What is left for a cursor.
  static std::string rest(BodyCursor& cursor) {
    std::string text;
    for (char c = cursor.peek(); !cursor.isAtEnd(); c = cursor.peek()) {
      text += c;
      (void)cursor.take(c);
    }
    return text;
  }
};

TEST(BodyCursor, TakesWhatIsNext) {
  OneBody body("A(1)");
  BodyCursor cursor(body.reader);
  EXPECT_FALSE(cursor.take('B'));
  EXPECT_TRUE(cursor.take('A'));
  EXPECT_EQ(cursor.peek(), '(');
  EXPECT_EQ(OneBody::rest(cursor), "(1)");
  EXPECT_EQ(cursor.peek(), '\0');
  EXPECT_FALSE(cursor.take('\0'));
}

TEST(BodyCursor, TakesKeywords) {
  OneBody body("(AB()C_1(2))");
  BodyCursor cursor(body.reader);
  ASSERT_TRUE(cursor.take('('));
  EXPECT_EQ(cursor.takeKeyword(), "AB");
  EXPECT_TRUE(cursor.skipRecord());
  EXPECT_EQ(cursor.takeKeyword(), "C_1");
  EXPECT_TRUE(cursor.skipRecord());
  EXPECT_EQ(OneBody::rest(cursor), ")");
}

TEST(BodyCursor, GoesOverParameters) {
  for (const char* parameter :
       {"$", "1.5E3", "'a,)('", "'it''s,'", "\"0,)\"", "(1,2)", "((1.,2.),(3.,4.))", "()", "(())",
        "((),(1))", "((1),2)", "((1),((2),3),'))')", "((1),$)", "((1),'(')", "(((1)))", "X(1,(2))",
        ""}) {
    OneBody body("A(" + std::string(parameter) + ",Z)");
    BodyCursor cursor(body.reader);
    (void)cursor.takeKeyword();
    ASSERT_TRUE(cursor.take('('));
    cursor.skipParameter();
    EXPECT_EQ(OneBody::rest(cursor), ",Z)") << parameter;
  }
}

TEST(BodyCursor, GoesOverListsOfAnyLength) {
  std::string normals = "(0.,0.,1.)";
  for (int i = 0; i < 30'000; ++i) {
    normals += ",(0.,0.,1.)";
  }
  OneBody body("A((" + normals + "),Z)");
  BodyCursor cursor(body.reader);
  (void)cursor.takeKeyword();
  ASSERT_TRUE(cursor.take('('));
  cursor.skipParameter();
  EXPECT_EQ(OneBody::rest(cursor), ",Z)");
}

TEST(BodyCursor, TellsListsThatAreNotEmpty) {
  const auto isAtItems = [](const std::string& text) {
    OneBody body(text);
    BodyCursor cursor(body.reader);
    return cursor.isAtItems();
  };
  EXPECT_TRUE(isAtItems("(1)"));
  EXPECT_TRUE(isAtItems("((1))"));
  EXPECT_FALSE(isAtItems("()"));
  EXPECT_FALSE(isAtItems("$"));
  EXPECT_FALSE(isAtItems("("));
}

TEST(BodyCursor, LeavesTheRestToTheNextOne) {
  OneBody body("A(1,2)");
  {
    BodyCursor cursor(body.reader);
    (void)cursor.takeKeyword();
  }
  BodyCursor cursor(body.reader);
  EXPECT_EQ(OneBody::rest(cursor), "(1,2)");
}

TEST(BodyCursor, GoesToTheEndOfWhatIsMalformed) {
  for (const char* text : {"A((1", "A('a'(", "A(\"0\"", "A(((1.,2."}) {
    OneBody body(text);
    BodyCursor cursor(body.reader);
    (void)cursor.takeKeyword();
    EXPECT_FALSE(cursor.skipRecord()) << text;
    EXPECT_TRUE(cursor.isAtEnd()) << text;
  }
}

TEST(BodyCursor, GoesToPlacesAndBack) {
  std::string list = "(0";
  for (int i = 1; i < 50'000; ++i) {
    list += ", " + std::to_string(i);
  }
  OneBody body("A(" + list + "))");
  BodyCursor cursor(body.reader);
  ASSERT_EQ(cursor.takeKeyword(), "A");
  ASSERT_TRUE(cursor.take('('));
  const BodyPlace start = cursor.place();
  EXPECT_EQ(cursor.peek(), '(');
  cursor.skipParameter();
  const BodyPlace end = cursor.place();
  EXPECT_EQ(OneBody::rest(cursor), ")");
  cursor.goTo(start);
  EXPECT_TRUE(cursor.take('('));
  EXPECT_TRUE(cursor.take('0'));
  const BodyPlace second = cursor.place();
  cursor.goTo(end);
  EXPECT_EQ(OneBody::rest(cursor), ")");
  cursor.goTo(second);
  EXPECT_EQ(OneBody::rest(cursor).substr(0, 8), ",1,2,3,4");
}

}  // namespace
}  // namespace plenvorith
