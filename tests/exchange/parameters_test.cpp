#include "exchange/parameters.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "tests/support/instances.h"

namespace plenvorith {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(SplitList, GivesTheItems) {
  EXPECT_THAT(splitList("(1.,(#2,#3),$)"), ElementsAre("1.", "(#2,#3)", "$"));
  EXPECT_THAT(splitList("('a,)b',\"0,\",X(1,2))"), ElementsAre("'a,)b'", "\"0,\"", "X(1,2)"));
  EXPECT_THAT(splitList("('it''s,',*)"), ElementsAre("'it''s,'", "*"));
  EXPECT_THAT(splitList("(,)"), ElementsAre("", ""));
}

TEST(SplitList, GivesNothingOfWhatIsNoList) {
  for (const char* text : {"", "()", "$", "(1", "1)"}) {
    EXPECT_THAT(splitList(text), IsEmpty()) << text;
  }
}

/// "A[1|2]B[]".
std::string recordsOf(std::string_view body) {
  std::string text;
  for (const Record& record : splitRecords(body)) {
    text += record.keyword + '[';
    for (std::size_t i = 0; i < record.parameters.size(); ++i) {
      text += (i == 0 ? "" : "|") + record.parameters[i];
    }
    text += ']';
  }
  return text;
}

TEST(SplitRecords, GivesOneOrThoseOfAComplexInstance) {
  EXPECT_EQ(recordsOf("A('',(1.,2.))"), "A[''|(1.,2.)]");
  EXPECT_EQ(recordsOf("(A()B(#1,C(2))D('()'))"), "A[]B[#1|C(2)]D['()']");
}

TEST(SplitRecords, GivesWhatIsWholeOfMalformedBodies) {
  EXPECT_EQ(recordsOf(""), "");
  EXPECT_EQ(recordsOf("A"), "");
  EXPECT_EQ(recordsOf("A(1"), "");
  EXPECT_EQ(recordsOf("(A(1)B(2"), "");
}

TEST(NumberOf, ReadsRealsAndIntegers) {
  EXPECT_EQ(numberOf("25.4"), 25.4);
  EXPECT_EQ(numberOf("-1.E-3"), -1e-3);
  EXPECT_EQ(numberOf("+7"), 7.0);
}

TEST(NumberOf, RejectsAllElse) {
  for (const char* text :
       {"", "+", "+-1", "-+1", "++1", "--1", "1.x", "#1", "$", "1.E999", "INF", "NAN"}) {
    EXPECT_FALSE(numberOf(text).has_value()) << text;
  }
}

TEST(InstanceReader, ReadsInstancesWhereverTheyStand) {
  test::Instances in("#1=A(1.);\n#2=(B(#1)C('c'));\n");
  InstanceReader instances(in.table, in.reader);
  EXPECT_EQ(instances.read(in[2]).size(), 2U);
  EXPECT_THAT(instances.read(in[1], "A")->parameters, ElementsAre("1."));
  EXPECT_THAT(instances.read(in[2], "C")->parameters, ElementsAre("'c'"));
  EXPECT_FALSE(instances.read(in[2], "A").has_value());
  EXPECT_THAT(instances.read(kNoInstance), IsEmpty());
}

TEST(InstanceReader, FindsWhatAParameterNames) {
  test::Instances in("#1=A();\n#12=B();\n");
  const InstanceReader instances(in.table, in.reader);
  EXPECT_EQ(instances.named("#12"), in[12]);
  for (const char* text : {"#2", "12", "#", "#12x", "$", "(#12)", ""}) {
    EXPECT_EQ(instances.named(text), kNoInstance) << text;
  }
}

TEST(InstanceReader, ReadsNothingThatIsTooLongForAPlacement) {
  test::Instances in("#1=A('" + std::string(4096, 'x') + "');\n");
  InstanceReader instances(in.table, in.reader);
  EXPECT_THAT(instances.read(in[1]), IsEmpty());
}

}  // namespace
}  // namespace plenvorith
