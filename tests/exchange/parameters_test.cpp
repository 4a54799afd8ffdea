#include "exchange/parameters.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "tests/support/instances.h"

namespace plenvorith {
namespace {

/// "1", "[1|2]" for a list, "X[1]" behind a keyword.
std::string textOf(const Parameter& parameter) {
  std::string text = parameter.text;
  for (std::size_t i = 0; i < parameter.items.size(); ++i) {
    text += (i == 0 ? "[" : "|") + textOf(parameter.items[i]);
  }
  return text + (parameter.items.empty() ? "" : "]");
}

/// The records of an instance, "A[1|2]B[]".
std::string recordsOf(const std::string& body) {
  test::Instances in("#1=" + body + ";\n");
  std::string text;
  // By its place: a malformed one has no number.
  for (const Record& record : InstanceReader(in.table, in.reader).read(0)) {
    text += record.keyword + '[';
    for (std::size_t i = 0; i < record.parameters.size(); ++i) {
      text += (i == 0 ? "" : "|") + textOf(record.parameters[i]);
    }
    text += ']';
  }
  return text;
}

TEST(InstanceReader, GivesOneRecordOrThoseOfAComplexInstance) {
  EXPECT_EQ(recordsOf("A('',(1.,2.))"), "A[''|[1.|2.]]");
  EXPECT_EQ(recordsOf("(A()B(#1,C(2))D('()'))"), "A[]B[#1|C[2]]D['()']");
}

TEST(InstanceReader, GivesParametersOfAnyKind) {
  EXPECT_EQ(recordsOf("A(1.,(#2,#3),$)"), "A[1.|[#2|#3]|$]");
  EXPECT_EQ(recordsOf("A('a,)b',\"0F\",X(1,2))"), "A['a,)b'|\"0F\"|X[1|2]]");
  EXPECT_EQ(recordsOf("A('it''s,',*,((.T.),()))"), "A['it''s,'|*|[[.T.]|]]");
  EXPECT_EQ(recordsOf("A(,)"), "A[|]");
}

TEST(InstanceReader, GivesWhatIsWholeOfMalformedBodies) {
  EXPECT_EQ(recordsOf(""), "");
  EXPECT_EQ(recordsOf("A"), "");
  EXPECT_EQ(recordsOf("A(1"), "");
  EXPECT_EQ(recordsOf("(A(1)B(2"), "A[1]");
}

TEST(InstanceReader, ReadsNoListsInMoreListsThanAnyInstanceHas) {
  const std::string deep = std::string(60'000, '(') + '1' + std::string(60'000, ')');
  EXPECT_THAT(recordsOf("A(" + deep + ",2)"), testing::EndsWith("|2]"));
}

TEST(InstanceReader, ReadsInstancesOfAnyLength) {
  test::Instances in("#1=A('" + std::string(8'000, 'x') + "',(" + std::string(200'000, '0') +
                     "7.,#2));\n#2=B();\n");
  InstanceReader instances(in.table, in.reader);
  const std::vector<Record> records = instances.read(in[1]);
  ASSERT_EQ(records.size(), 1U);
  ASSERT_EQ(records[0].parameters.size(), 2U);
  EXPECT_EQ(numberOf(records[0].parameters[1].items.at(0)), 7.0);
  EXPECT_EQ(instances.named(records[0].parameters[1].items.at(1)), in[2]);
}

TEST(NumberOf, ReadsRealsAndIntegers) {
  EXPECT_EQ(numberOf({"25.4", {}}), 25.4);
  EXPECT_EQ(numberOf({"-1.E-3", {}}), -1e-3);
  EXPECT_EQ(numberOf({"+7", {}}), 7.0);
  EXPECT_EQ(numberOf({"10.E", {}}), 10.0);
  EXPECT_EQ(numberOf({"1.E-320", {}}), 0.0);
}

TEST(NumberOf, RejectsAllElse) {
  for (const char* text :
       {"", "+", "+-1", "-+1", "++1", "--1", "1.x", "#1", "$", "1.E999", "INF", "NAN"}) {
    EXPECT_FALSE(numberOf({text, {}}).has_value()) << text;
  }
}

TEST(InstanceReader, ReadsInstancesWhereverTheyStand) {
  test::Instances in("#1=A(1.);\n#2=(B(#1)C('c'));\n");
  InstanceReader instances(in.table, in.reader);
  EXPECT_EQ(instances.read(in[2]).size(), 2U);
  EXPECT_EQ(instances.read(in[1], "A")->parameters.at(0).text, "1.");
  EXPECT_EQ(instances.read(in[2], "C")->parameters.at(0).text, "'c'");
  EXPECT_FALSE(instances.read(in[2], "A").has_value());
  EXPECT_THAT(instances.read(kNoInstance), testing::IsEmpty());
}

TEST(InstanceReader, FindsWhatAParameterNames) {
  test::Instances in("#1=A();\n#12=B();\n");
  const InstanceReader instances(in.table, in.reader);
  EXPECT_EQ(instances.named({"#12", {}}), in[12]);
  for (const char* text : {"#2", "12", "#", "#12x", "$", "(#12)", "", "#18446744073709551617"}) {
    EXPECT_EQ(instances.named({text, {}}), kNoInstance) << text;
  }
}

}  // namespace
}  // namespace plenvorith
