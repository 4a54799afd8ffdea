#include "exchange/references.h"

#include <string>

#include <gmock/gmock.h>

#include "tests/support/memory_file.h"
#include "tests/support/step_file.h"

namespace plenvorith {
namespace {

/// A body as the only instance of a file, scanned.
struct Scanned {
  explicit Scanned(const std::string& body) {
    test::MemoryFile file;
    StatementReader reader(file.write(test::stepFile("#1=" + body + ";\n")));
    while (reader.next() == Statement::HeaderEntity) {
    }
    isBalanced = scanner.scan(reader, store);
  }

  ReferenceStore store;
  ReferenceScanner scanner;
  bool isBalanced = false;
};

/// What is stored of a body: "2 record.attribute" for a reference that is an attribute itself, "(3
/// record.attribute" for the first in a list, "4" for more, "..." where a list holds other things as
/// well.
std::string referencesIn(const std::string& body) {
  const Scanned in(body);
  ReferenceWalker walker(in.store.begin());
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

TEST(References, OfAttributesAreStoredWithTheirPlace) {
  EXPECT_EQ(referencesIn("A('',#12,$,#7)"), "12 0.1 7 0.3");
  EXPECT_EQ(referencesIn("A(1.,.T.,'#1',\"02\",$,*)"), "");
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

TEST(References, ThatNoInstanceCanHaveNameNothing) {
  EXPECT_EQ(referencesIn("A(#100000000000000000,#18446744073709551617,#2)"), "2 0.2");
  EXPECT_EQ(referencesIn("A((#1,#36893488147419103233))"), "(1 0.0 ...");
}

TEST(References, InListsOfFacesAreNone) {
  EXPECT_EQ(referencesIn("TRIANGULATED_FACE('',#2,3,((0.,0.,1.),(#7)),#3,(#8),((#9)))"),
            "2 0.1 3 0.4");
  EXPECT_EQ(referencesIn("(COMPLEX_TRIANGULATED_FACE((1,2),((#9)),())TESSELLATED_FACE(#2,3,$,#3))"),
            "2 1.0 3 1.3");
}

TEST(References, InABodyOfAnyLengthAreTheSame) {
  std::string body = "A((#1";
  std::string expected = "(1 0.0";
  for (int i = 2; i < 100'000; ++i) {
    body += ",#" + std::to_string(i);
    expected += ' ' + std::to_string(i);
  }
  EXPECT_EQ(referencesIn(body + "),#5,\"" + std::string(300'000, '0') + "\",#6)"),
            expected + " 5 0.1 6 0.3");
}

TEST(References, MalformedOnesDoNoHarm) {
  EXPECT_EQ(referencesIn(")#1"), "");
  EXPECT_EQ(referencesIn("A(#1"), "1 0.0");
  EXPECT_EQ(referencesIn("A(#,#2)"), "0 0.0 2 0.1");
}

TEST(References, TellBodiesWhoseParenthesesBalance) {
  for (const char* body :
       {"A()", "A", "(A()B(()))", "A('(',\"0\")", "TRIANGULATED_FACE('',#1,())"}) {
    EXPECT_TRUE(Scanned(body).isBalanced) << body;
  }
  for (const char* body : {"A(", "A())", ")(", "A(()", "(A()B(", "TRIANGULATED_FACE('',#1,("}) {
    EXPECT_FALSE(Scanned(body).isBalanced) << body;
  }
}

TEST(References, ComeWithTheKeywordsOfTheirRecords) {
  const auto keywordsOf = [](const std::string& body) {
    const Scanned in(body);
    return in.scanner.keywords() + (in.scanner.isComplex() ? " complex" : "");
  };
  EXPECT_EQ(keywordsOf("A(B(#1),C)"), "A");
  EXPECT_EQ(keywordsOf("(A()B(C())D_2(#1))"), "A(B(D_2 complex");
}

}  // namespace
}  // namespace plenvorith
