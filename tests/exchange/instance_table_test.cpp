#include "exchange/instance_table.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "tests/support/instances.h"

namespace plenvorith {
namespace {

using test::Instances;
using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::uint64_t> referencesOf(const Instances& in, std::uint64_t number) {
  std::vector<std::uint64_t> found;
  in.table.forEachReference(
      in[number], [&found](const Reference& reference) { found.push_back(reference.number); });
  return found;
}

TEST(InstanceTable, FindsInstancesByNumberInAnyOrder) {
  for (const char* data : {"#1=A();\n#20=B();\n#300=C();\n", "#300=C();\n#1=A();\n#20=B();\n"}) {
    const Instances in(data);
    EXPECT_EQ(in.table.size(), 3U);
    for (const std::uint64_t number : {1U, 20U, 300U}) {
      ASSERT_NE(in[number], kNoInstance);
      EXPECT_EQ(in.table.number(in[number]), number);
    }
    EXPECT_THAT(in.table.type(in[20]).keywords, ElementsAre("B"));
    EXPECT_EQ(in[2], kNoInstance);
    EXPECT_EQ(in[301], kNoInstance);
  }
}

TEST(InstanceTable, TheFirstOfOneNumberCounts) {
  const Instances in("#2=A(#1);\n#1=B();\n#02=C();\n#2=D();\n");
  EXPECT_EQ(in.table.size(), 4U);
  EXPECT_EQ(in.table.countedCount(), 2U);
  EXPECT_FALSE(in.table.isVoid(0));
  EXPECT_TRUE(in.table.isVoid(2));
  EXPECT_TRUE(in.table.isVoid(3));
  EXPECT_EQ(in[2], 0U);
}

TEST(InstanceTable, TheLastOfTessellatedOnesCountsIfThereAreNoOthers) {
  const Instances in(
      "#1=TESSELLATED_SOLID('',(),$);\n#1=COORDINATES_LIST('',0,());\n"
      "#2=TESSELLATED_SOLID('',(),$);\n#2=A();\n#2=TESSELLATED_SHELL('',(),$);\n"
      "#2=B();\n");
  EXPECT_EQ(in[1], 1U);
  EXPECT_EQ(in[2], 3U);
  EXPECT_EQ(in.table.countedCount(), 2U);
}

TEST(InstanceTable, AnInstanceThatDoesNotCountIsOfNoKind) {
  const Instances in("#1=A();\n#1=MAPPED_ITEM('',#2,#3);\n");
  EXPECT_TRUE(in.table.type(1).is(Kind::MappedItem));
  EXPECT_FALSE(in.table.is(1, Kind::MappedItem));
}

TEST(InstanceTable, InstancesWhoseParenthesesDoNotBalanceAreNone) {
  for (const char* body :
       {"A(#2", "A(#2))", "CARTESIAN_POINT('(',(0.,0.,0.)", "COORDINATES_LIST('',1,((0.,0.,0.))",
        "(A()B(", "(BOUNDED_SURFACE()B(", "TRIANGULATED_FACE('',#2,1,(),$,(),((1,2,3))"}) {
    const Instances in(std::string("#1=") + body + ";\n#2=B();\n");
    EXPECT_TRUE(in.table.hasUnbalanced()) << body;
    EXPECT_EQ(in.table.countedCount(), 1U) << body;
    EXPECT_EQ(in[1], kNoInstance) << body;
    EXPECT_NE(in[2], kNoInstance) << body;
  }
  const Instances in("#1=A();\n#1=B(;\n#2=CARTESIAN_POINT(')',(0.,0.,0.));\n");
  EXPECT_EQ(in[1], 0U);
  EXPECT_NE(in[2], kNoInstance);
}

TEST(InstanceTable, InstancesWithAStringWithoutEndAreNone) {
  for (const char* body : {"A(',#2)", "A'B('',(#3))", "CARTESIAN_POINT(',(0.,0.,0.))", "(A()B('))",
                           "COORDINATES_LIST(',1,((0.,0.,0.)))"}) {
    const Instances in(std::string("#1=") + body + ";\n#2=B();\n");
    EXPECT_TRUE(in.table.hasUnended()) << body;
    EXPECT_TRUE(in.table.isMalformed(0)) << body;
    EXPECT_EQ(in[1], kNoInstance) << body;
    EXPECT_NE(in[2], kNoInstance) << body;
  }
}

TEST(InstanceTable, AStrayQuotationMarkIsPartOfWhatItStandsIn) {
  const Instances in("#1=A((#2\",#3),#3);\n#2=B\"C();\n#3=D();\n");
  std::string named;
  in.table.forEachReference(0, [&named](const Reference& reference) {
    named += reference.kind == Reference::Kind::Other ? "" : std::to_string(reference.number);
  });
  EXPECT_EQ(named, "233");
  EXPECT_NE(in[2], kNoInstance);
}

TEST(InstanceTable, EndsAKeywordWhereOthersEndIt) {
  // Otherwise the first would be taken for a representation, and written anew as one without items.
  const Instances in("#1=,_TESSELLATED_SHAPE_REPRESENTATION('',(#3),$);\n#2=A,B('');\n#3=C;\n");
  EXPECT_FALSE(in.table.type(in[1]).isTessellated);
  EXPECT_THAT(in.table.type(in[2]).keywords, ElementsAre("A"));
  EXPECT_THAT(in.table.type(in[3]).keywords, ElementsAre("C"));
}

TEST(InstanceTable, KnowsWhereBodiesStand) {
  Instances in("#1=A();\n#2 = B ( 'b' );\n");
  in.reader.seekBody(in.table.offset(in[2]));
  EXPECT_EQ(in.reader.peek(), "B('b')");
}

TEST(InstanceTable, KeepsReferencesButThoseOfBulkGeometry) {
  const Instances in(
      "#1=SHAPE_REPRESENTATION('',(#4,#5),#6);\n#2=EDGE_CURVE('',#4,#5,#6,.T.);\n#3=A();\n"
      "#4=(BOUNDED_SURFACE()B_SPLINE_SURFACE(1,1,((#5,#6)))SURFACE());\n");
  EXPECT_THAT(referencesOf(in, 1), ElementsAre(4, 5, 6));
  EXPECT_THAT(referencesOf(in, 2), IsEmpty());
  EXPECT_THAT(referencesOf(in, 3), IsEmpty());
  EXPECT_THAT(referencesOf(in, 4), IsEmpty());
}

TEST(InstanceTable, KeepsOfFacesWhatTheyName) {
  const Instances in(
      "#1=TRIANGULATED_FACE('(#8,''',#12,3,((0.,0.,1.)),#13,(),((1,2,3)));\n"
      "#2=COMPLEX_TRIANGULATED_FACE('',#12,3,((0.,0.,1.)),$,(),(),());\n"
      "#3=TRIANGULATED_SURFACE_SET('',#12,3,(),(),((1,2,3)));\n"
      "#4=TRIANGULATED_FACE('',$,3,$,#13,(),());\n");
  EXPECT_THAT(referencesOf(in, 1), ElementsAre(12, 13));
  EXPECT_EQ(in.table.attribute(in[1], {"", 0, 1}), kNoInstance);
  EXPECT_THAT(referencesOf(in, 2), ElementsAre(12));
  EXPECT_THAT(referencesOf(in, 3), ElementsAre(12));
  EXPECT_THAT(referencesOf(in, 4), ElementsAre(13));
}

TEST(InstanceTable, CountsThePointsOfCoordinatesLists) {
  const Instances in(
      "#1=COORDINATES_LIST('((',3,((0.,0.,0.),(1.,0.,0.),(1.,1.,0.)));\n"
      "#2=COORDINATES_LIST('',0,());\n#3=COORDINATES_LIST('it''s (',9,((0.,0.,0.)));\n#4=A();\n");
  EXPECT_EQ(in.table.pointCount(in[1]), 3U);
  EXPECT_EQ(in.table.pointCount(in[2]), 0U);
  EXPECT_EQ(in.table.pointCount(in[3]), 1U);
  EXPECT_EQ(in.table.pointCount(in[4]), 0U);
}

TEST(InstanceTable, CountsThePointsOfComplexOnes) {
  const Instances in(
      "#1=(COORDINATES_LIST(2,((0.,0.,0.),(1.,0.,0.)))GEOMETRIC_REPRESENTATION_ITEM()"
      "REPRESENTATION_ITEM('(')TESSELLATED_ITEM());\n#2=A();\n");
  EXPECT_EQ(in.table.pointCount(in[1]), 2U);
  EXPECT_NE(in[2], kNoInstance);
}

TEST(InstanceTable, GivesAttributesThatNameInstances) {
  const Instances in(
      "#1=A('',#2,$,(#3),#4,#9);\n#2=B();\n#3=C();\n#4=D();\n#5=(E(#2,#3)F('',#4));\n");
  const auto attribute = [&in](std::uint64_t number, const char* record, std::uint32_t place) {
    return in.table.attribute(in[number], {record, place, place});
  };
  EXPECT_EQ(attribute(1, "", 1), in[2]);
  EXPECT_EQ(attribute(1, "", 4), in[4]);
  EXPECT_EQ(attribute(1, "", 3), kNoInstance);
  EXPECT_EQ(attribute(1, "", 5), kNoInstance);
  EXPECT_EQ(attribute(5, "E", 1), in[3]);
  EXPECT_EQ(attribute(5, "F", 1), in[4]);
  EXPECT_EQ(attribute(5, "G", 1), kNoInstance);
}

TEST(InstanceTable, GivesTheItemsOfLists) {
  std::vector<InstanceIndex> items;
  const Instances in("#1=A('',(#2,#9,#3),$)A('',(#4),$);\n#2=B();\n#3=C();\n#4=D();\n");
  in.table.forEachItem(in[1], {"", 1, 1}, [&items](InstanceIndex item) { items.push_back(item); });
  EXPECT_THAT(items, ElementsAre(in[2], in[3]));
}

TEST(InstanceTable, KnowsTheRecordsOfComplexInstances) {
  const Instances in("#1=(GEOMETRIC_REPRESENTATION_ITEM()MAPPED_ITEM(#2,#3)X());\n");
  EXPECT_TRUE(in.table.type(in[1]).isComplex);
  EXPECT_THAT(in.table.type(in[1]).keywords,
              ElementsAre("GEOMETRIC_REPRESENTATION_ITEM", "MAPPED_ITEM", "X"));
}

TEST(InstanceTable, RejectsTooManyTypes) {
  std::string data;
  for (int i = 0; i <= 65'535; ++i) {
    data += "#1=A" + std::to_string(i) + "();\n";
  }
  EXPECT_THAT([&data] { Instances{data}; },
              testing::ThrowsMessage<std::runtime_error>("too many types of entities"));
}

TEST(InstanceTable, RejectsWhatTheReaderRejects) {
  EXPECT_THAT([] { Instances{"#1=A('"}; },
              testing::ThrowsMessage<std::runtime_error>("a string never ends"));
}

}  // namespace
}  // namespace plenvorith
