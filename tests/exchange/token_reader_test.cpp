#include "exchange/token_reader.h"

#include <string>

#include <gmock/gmock.h>

#include "tests/support/instances.h"

namespace plenvorith {
namespace {

struct OneBody : test::Instances {
  explicit OneBody(const std::string& body) : Instances("#1=" + body + ";\n") {
    reader.seekBody(table.offset(0));
  }
  /// What is left for a reader.
  static std::string rest(TokenReader& tokens) {
    std::string text;
    for (char c = tokens.peek(); !tokens.isAtEnd(); c = tokens.peek()) {
      text += c;
      (void)tokens.take(c);
    }
    return text;
  }
};

TEST(TokenReader, TakesWhatIsNext) {
  OneBody body("A(1)");
  TokenReader tokens(body.reader);
  EXPECT_FALSE(tokens.take('B'));
  EXPECT_TRUE(tokens.take('A'));
  EXPECT_EQ(tokens.peek(), '(');
  EXPECT_EQ(OneBody::rest(tokens), "(1)");
  EXPECT_EQ(tokens.peek(), '\0');
  EXPECT_FALSE(tokens.take('\0'));
}

/// The tokens of a body, a letter each with its text: "kA", "((".
std::string tokensOf(const std::string& text) {
  OneBody body(text);
  TokenReader tokens(body.reader);
  std::string all;
  for (Token token = tokens.next(); token.kind != Token::Kind::End; token = tokens.next()) {
    all += all.empty() ? "" : " ";
    all += "-(),#'k."[static_cast<std::size_t>(token.kind)];
    all += token.text;
  }
  return all;
}

TEST(TokenReader, TakesTokens) {
  EXPECT_EQ(tokensOf("A('x',#12)"), "kA (( ''x' ,, ##12 ))");
  EXPECT_EQ(tokensOf("(AB_1()C(.T.,$,*,-1.5E3))"),
            "(( kAB_1 (( )) kC (( ..T. ,, .$ ,, .* ,, .-1.5E3 )) ))");
  EXPECT_EQ(tokensOf("A('it''s','''',\"0F\",X(1))"),
            "kA (( ''it''s' ,, ''''' ,, .\"0F\" ,, kX (( .1 )) ))");
}

TEST(TokenReader, GivesReferencesTheirNumbers) {
  OneBody body("#99999999999999999,#100000000000000000,#");
  TokenReader tokens(body.reader);
  EXPECT_EQ(tokens.next().number, 99'999'999'999'999'999U);
  (void)tokens.next();
  EXPECT_EQ(tokens.next().number, Token::kNoNumber);
  (void)tokens.next();
  EXPECT_EQ(tokens.next().number, 0U);
  EXPECT_EQ(tokens.next().kind, Token::Kind::End);
}

TEST(TokenReader, HandsOutTokensOfAnyLengthInParts) {
  const std::string digits(500'000, '7');
  for (const std::string start : {"1.", "#", "ABC", "\"0"}) {
    const std::string token = start + digits + (start == "\"0" ? "\"" : "");
    OneBody body("A((" + token + ",2))");
    TokenReader tokens(body.reader);
    for (int i = 0; i < 3; ++i) {
      (void)tokens.next();
    }
    std::string text(tokens.next().text);
    Token next = tokens.next();
    for (; next.isRest; next = tokens.next()) {
      text += next.text;
    }
    EXPECT_EQ(text, token);
    EXPECT_EQ(next.kind, Token::Kind::Comma) << start;
  }
}

TEST(TokenReader, EntersRecords) {
  OneBody body("(AB('C(')C(1,2))");
  TokenReader tokens(body.reader);
  EXPECT_TRUE(tokens.enterRecord("C", true));
  EXPECT_TRUE(tokens.skipParameters(1));
  EXPECT_EQ(OneBody::rest(tokens), "2))");
  OneBody simple("C(1)");
  TokenReader ofSimple(simple.reader);
  EXPECT_FALSE(ofSimple.enterRecord("AB", false));
}

TEST(TokenReader, TakesKeywords) {
  OneBody body("(AB()C_1(2))");
  TokenReader tokens(body.reader);
  ASSERT_TRUE(tokens.take('('));
  EXPECT_EQ(tokens.takeKeyword(), "AB");
  EXPECT_TRUE(tokens.skipRecord());
  EXPECT_EQ(tokens.takeKeyword(), "C_1");
  EXPECT_TRUE(tokens.skipRecord());
  EXPECT_EQ(OneBody::rest(tokens), ")");
}

TEST(TokenReader, GoesOverParameters) {
  for (const char* parameter :
       {"$", "1.5E3", "'a,)('", "'it''s,'", "\"0F\"", "(1,2)", "((1.,2.),(3.,4.))", "()", "(())",
        "((),(1))", "((1),2)", "((1),((2),3),'))')", "((1),$)", "((1),'(')", "(((1)))", "X(1,(2))",
        ""}) {
    OneBody body("A(" + std::string(parameter) + ",Z)");
    TokenReader tokens(body.reader);
    (void)tokens.takeKeyword();
    ASSERT_TRUE(tokens.take('('));
    tokens.skipParameter();
    EXPECT_EQ(OneBody::rest(tokens), ",Z)") << parameter;
  }
}

TEST(TokenReader, GoesOverListsOfAnyLength) {
  std::string normals = "(0.,0.,1.)";
  for (int i = 0; i < 30'000; ++i) {
    normals += ",(0.,0.,1.)";
  }
  OneBody body("A((" + normals + "),Z)");
  TokenReader tokens(body.reader);
  (void)tokens.takeKeyword();
  ASSERT_TRUE(tokens.take('('));
  tokens.skipParameter();
  EXPECT_EQ(OneBody::rest(tokens), ",Z)");
}

TEST(TokenReader, TellsListsThatAreNotEmpty) {
  const auto isAtItems = [](const std::string& text) {
    OneBody body(text);
    TokenReader tokens(body.reader);
    return tokens.isAtItems();
  };
  EXPECT_TRUE(isAtItems("(1)"));
  EXPECT_TRUE(isAtItems("((1))"));
  EXPECT_FALSE(isAtItems("()"));
  EXPECT_FALSE(isAtItems("$"));
  EXPECT_FALSE(isAtItems("("));
}

TEST(TokenReader, LeavesTheRestToTheNextOne) {
  OneBody body("A(1,2)");
  {
    TokenReader tokens(body.reader);
    (void)tokens.takeKeyword();
  }
  TokenReader tokens(body.reader);
  EXPECT_EQ(OneBody::rest(tokens), "(1,2)");
}

TEST(TokenReader, GoesToTheEndOfWhatIsMalformed) {
  for (const char* text : {"A((1", "A('a'(", "A(\"0\"", "A(((1.,2."}) {
    OneBody body(text);
    TokenReader tokens(body.reader);
    (void)tokens.takeKeyword();
    EXPECT_FALSE(tokens.skipRecord()) << text;
    EXPECT_TRUE(tokens.isAtEnd()) << text;
  }
}

TEST(TokenReader, GoesToPlacesAndBack) {
  std::string list = "(0";
  for (int i = 1; i < 50'000; ++i) {
    list += ", " + std::to_string(i);
  }
  OneBody body("A(" + list + "))");
  TokenReader tokens(body.reader);
  ASSERT_EQ(tokens.takeKeyword(), "A");
  ASSERT_TRUE(tokens.take('('));
  const BodyPlace start = tokens.place();
  EXPECT_EQ(tokens.peek(), '(');
  tokens.skipParameter();
  const BodyPlace end = tokens.place();
  EXPECT_EQ(OneBody::rest(tokens), ")");
  tokens.goTo(start);
  EXPECT_TRUE(tokens.take('('));
  EXPECT_TRUE(tokens.take('0'));
  const BodyPlace second = tokens.place();
  tokens.goTo(end);
  EXPECT_EQ(OneBody::rest(tokens), ")");
  tokens.goTo(second);
  EXPECT_EQ(OneBody::rest(tokens).substr(0, 8), ",1,2,3,4");
}

}  // namespace
}  // namespace plenvorith
