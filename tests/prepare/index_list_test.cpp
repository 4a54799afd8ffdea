#include "prepare/index_list.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "tests/support/instances.h"

namespace plenvorith {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct List {
  std::vector<Index> indices;
  bool isRead = false;
  char next = '\0';  // behind the list
};

List read(const std::string& list) {
  test::Instances in("#1=A(" + list + ",Z);\n");
  in.reader.seekBody(in.table.offset(0));
  TokenReader tokens(in.reader);
  (void)tokens.takeKeyword();
  (void)tokens.take('(');
  List result;
  result.isRead = readIndices(tokens, [&result](Index index) { result.indices.push_back(index); });
  result.next = tokens.peek();
  return result;
}

TEST(IndexList, GivesItsIndices) {
  const List list = read("(1,20,3)");
  EXPECT_TRUE(list.isRead);
  EXPECT_THAT(list.indices, ElementsAre(1, 20, 3));
  EXPECT_EQ(list.next, ',');
}

TEST(IndexList, MayBeEmptyOrMissing) {
  for (const char* text : {"()", "$"}) {
    const List list = read(text);
    EXPECT_TRUE(list.isRead) << text;
    EXPECT_THAT(list.indices, IsEmpty()) << text;
    EXPECT_EQ(list.next, ',') << text;
  }
}

TEST(IndexList, GivesWhatIsNoLegalIndexAsItIs) {
  EXPECT_THAT(read("(0,-1,007,+4,2.,3.9E1)").indices, ElementsAre(0, -1, 7, 4, 2, 39));
}

TEST(IndexList, GivesNumbersOfManyDigitsOrNone) {
  EXPECT_THAT(read("(999999999999999999)").indices, ElementsAre(999999999999999999));
  EXPECT_THAT(read("(1000000000000000000,1.E300,-1.E300)").indices, ElementsAre(-1, -1, -1));
}

TEST(IndexList, RejectsWhatIsNoNumber) {
  for (const char* text : {"(1,x)", "(1,)", "(#1)", "(1;", "((1))", "1", "('1')"}) {
    EXPECT_FALSE(read(text).isRead && read(text).next == ',') << text;
  }
  EXPECT_THAT(read("(1,x,3)").indices, ElementsAre(1));
}

}  // namespace
}  // namespace plenvorith
