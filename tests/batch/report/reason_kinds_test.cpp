#include "batch/report/reason_kinds.h"

#include <gmock/gmock.h>

namespace plenvorith {
namespace {

using testing::ElementsAre;
using testing::Pair;

TEST(BeginningOf, EndsWhereReasonsOfAKindDiffer) {
  EXPECT_EQ(beginningOf("time limit of 6 s"), "time limit");
  EXPECT_EQ(beginningOf("exit status 3"), "exit status");
  EXPECT_EQ(beginningOf("a form of 3D: try 4"), "a form");
  EXPECT_EQ(beginningOf("ends in the middle (no END-ISO-10303-21); and 3"), "ends in the middle");
  EXPECT_EQ(beginningOf("incomplete: a (1).stl"), "incomplete");
  EXPECT_EQ(beginningOf("signal; it"), "signal");
  EXPECT_EQ(beginningOf("empty"), "empty");
  EXPECT_EQ(beginningOf("of 5"), "of");
  EXPECT_EQ(beginningOf(""), "");
}

TEST(KindsOf, GivesTheMostFrequentFirst) {
  const std::vector<ReasonKind> kinds = kindsOf({{"empty", 2},
                                                 {"exit status 3", 1},
                                                 {"exit status 4", 5},
                                                 {"exit status 5", 1},
                                                 {"a: try it", 2}});
  ASSERT_EQ(kinds.size(), 3);
  EXPECT_EQ(kinds[0].title, "exit status");
  EXPECT_EQ(kinds[0].count, 7);
  EXPECT_THAT(kinds[0].reasons, ElementsAre(Pair("exit status 4", 5), Pair("exit status 3", 1),
                                            Pair("exit status 5", 1)));
  // What all files of a kind have in common is said whole.
  EXPECT_EQ(kinds[1].title, "a: try it");
  EXPECT_EQ(kinds[1].beginning, "a");
  EXPECT_EQ(kinds[2].title, "empty");
}

}  // namespace
}  // namespace plenvorith
