#include "exchange/references.h"

#include <string>
#include <string_view>

#include <gmock/gmock.h>

namespace plenvorith {
namespace {

/// What is stored of a body, given in pieces of this size: "2 record.attribute" for a reference that
/// is an attribute itself, "(3 record.attribute" for the first in a list, "4" for more, "..." where
/// a list holds other things as well.
std::string referencesIn(std::string_view body, std::size_t pieceSize) {
  ReferenceStore store;
  ReferenceScanner scanner;
  scanner.start(store);
  for (std::size_t place = 0; place < body.size(); place += pieceSize) {
    scanner.scan(body.substr(place, pieceSize));
  }
  scanner.finish();
  ReferenceWalker walker(store.begin());
  Reference reference;
  std::uint32_t list = 0;
  std::string found;
  while (walker.next(reference)) {
    const std::string place =
        ' ' + std::to_string(reference.record) + '.' + std::to_string(reference.attribute);
    found += found.empty() ? "" : " ";
    if (reference.kind == Reference::Kind::Other) {
      found += "...";
    } else if (reference.kind == Reference::Kind::Attribute) {
      found += std::to_string(reference.number) + place;
    } else if (reference.list != list) {
      list = reference.list;
      found += '(' + std::to_string(reference.number) + place;
    } else {
      found += std::to_string(reference.number);
    }
  }
  return found;
}

std::string referencesIn(std::string_view body) {
  return referencesIn(body, body.size());
}

TEST(References, OfAttributesAreStoredWithTheirPlace) {
  EXPECT_EQ(referencesIn("A('',#12,$,#7)"), "12 0.1 7 0.3");
  EXPECT_EQ(referencesIn("A(1.,.T.,'#1',\"#2\",$,*)"), "");
}

TEST(References, OfListsAreStoredWithTheList) {
  EXPECT_EQ(referencesIn("A((#1,#2),(#3),#4)"), "(1 0.0 2 (3 0.1 4 0.2");
  EXPECT_EQ(referencesIn("A(((#1),(#2,#3)))"), "(1 0.0 (2 0.0 3");
}

TEST(References, OtherThingsInAListAreNoted) {
  EXPECT_EQ(referencesIn("A((#1,1.))"), "(1 0.0 ...");
  EXPECT_EQ(referencesIn("A((1.,#1))"), "(1 0.0 ...");
  EXPECT_EQ(referencesIn("A(('',#1,$,#2))"), "(1 0.0 ... 2");
  EXPECT_EQ(referencesIn("A((#1,(#2)))"), "(1 0.0 ... (2 0.0");
}

TEST(References, EqualOnesBehindOneAnotherInAListAreStoredOnce) {
  EXPECT_EQ(referencesIn("A((#1,#1,#1,#2,#1),#1,#1)"), "(1 0.0 2 1 1 0.1 1 0.2");
}

TEST(References, OfAParameterWithAKeywordAreAttributes) {
  EXPECT_EQ(referencesIn("A(SET(#1),(B(#2),#3))"), "1 0.0 2 0.1 (3 0.1 ...");
}

TEST(References, OfComplexInstancesAreStoredWithTheRecord) {
  EXPECT_EQ(referencesIn("(A()B(#1,(#2))C('',#3))"), "1 1.0 (2 1.1 3 2.1");
}

TEST(References, HaveAnyNumber) {
  EXPECT_EQ(referencesIn("A(#99999999999999999,#0,#18014398509481984,(#1))"),
            "99999999999999999 0.0 0 0.1 18014398509481984 0.2 (1 0.3");
}

TEST(References, InPiecesOfAnySizeAreTheSame) {
  const std::string body = "(AB('it''s #1',#12,(#345,#345,1.))C2(SET((#6)),\"0F#7\")D((),#8))";
  const std::string whole = referencesIn(body);
  EXPECT_EQ(whole, "12 0.1 (345 0.2 ... (6 1.0 8 2.1");
  for (std::size_t size = 1; size < body.size(); ++size) {
    EXPECT_EQ(referencesIn(body, size), whole) << size;
  }
}

TEST(References, MalformedOnesDoNoHarm) {
  EXPECT_EQ(referencesIn(")#1"), "");
  EXPECT_EQ(referencesIn("A(#1"), "1 0.0");
  EXPECT_EQ(referencesIn("A(#,#2)"), "0 0.0 2 0.1");
}

TEST(References, ComeWithTheKeywordsOfTheirRecords) {
  const auto keywordsOf = [](std::string_view body) {
    ReferenceStore store;
    ReferenceScanner scanner;
    scanner.start(store);
    scanner.scan(body);
    scanner.finish();
    return scanner.keywords() + (scanner.isComplex() ? " complex" : "");
  };
  EXPECT_EQ(keywordsOf("A(B(#1),C)"), "A");
  EXPECT_EQ(keywordsOf("(A()B(C())D_2(#1))"), "A(B(D_2 complex");
}

TEST(ReferenceScanner, KnowsTheLargestNumberOfAllInstances) {
  ReferenceStore store;
  ReferenceScanner scanner;
  EXPECT_EQ(scanner.largestNumber(), 0U);
  for (const char* const body :
       {"A(#7,(#300,#2))", "B", "C#400", "D(#5)", "E(#100000000000000000,#99999999999999999999)"}) {
    scanner.start(store);
    scanner.scan(body);
    scanner.finish();
  }
  EXPECT_EQ(scanner.largestNumber(), 400U);
  scanner.start(store);
  scanner.scan("F(#99999999999999999)");
  scanner.finish();
  EXPECT_EQ(scanner.largestNumber(), 99'999'999'999'999'999U);
}

}  // namespace
}  // namespace plenvorith
