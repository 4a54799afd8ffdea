#include "steptext/tessellation_analysis.h"

#include <random>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "tests/reference/reference_analysis.h"
#include "tests/support/rounds.h"
#include "tests/support/step_text.h"

namespace plenvorith {
namespace {

using test::EntityTexts;
using test::pick;
using test::randomText;
using test::referenceAnalysis;
using test::tableWith;
using testing::ElementsAre;
using testing::IsEmpty;

/// The analysis of a table with these entities.
TessellationAnalysis analysisOf(const EntityTexts& entities) {
  return analyzeTessellation(tableWith(entities));
}

const EntityTexts kPair = {{"#5", "TESSELLATED_SHAPE_REPRESENTATION('',(#6),#2);"},
                           {"#7", "SHAPE_REPRESENTATION('',(#8),#2);"},
                           {"#9", "SHAPE_REPRESENTATION_RELATIONSHIP('','',#7,#5);"}};

/// `kPair` with other entities added or put in place of its own.
EntityTexts pairWith(const EntityTexts& others) {
  EntityTexts table = others;
  table.insert(kPair.begin(), kPair.end());
  return table;
}

/// A unique representation of the solid #6.
EntityTexts solidWith(const EntityTexts& others) {
  EntityTexts table = others;
  table.insert({{"#5", "TESSELLATED_SHAPE_REPRESENTATION('',(#6),#2);"},
                {"#6", "TESSELLATED_SOLID('',(#10,#11),$);"},
                {"#10", "COMPLEX_TRIANGULATED_FACE('',#1,3,(),$,(),((1,2,3)),());"},
                {"#11", "COMPLEX_TRIANGULATED_FACE('',#1,3,(),$,(),((1,2,3)),());"}});
  return table;
}

void expectNothing(const EntityTexts& table) {
  const TessellationAnalysis analysis = analysisOf(table);
  EXPECT_EQ(analysis.status, TessellationStatus::NoTessellation);
  EXPECT_THAT(analysis.pairedReps, IsEmpty());
  EXPECT_THAT(analysis.uniqueReps, IsEmpty());
  EXPECT_THAT(analysis.uniqueFaces, IsEmpty());
}

void expectPaired(const EntityTexts& table) {
  const TessellationAnalysis analysis = analysisOf(table);
  EXPECT_EQ(analysis.status, TessellationStatus::AllPaired);
  EXPECT_THAT(analysis.pairedReps, ElementsAre("#5"));
  EXPECT_THAT(analysis.uniqueReps, IsEmpty());
  EXPECT_THAT(analysis.uniqueFaces, IsEmpty());
}

void expectUnpaired(const EntityTexts& table) {
  const TessellationAnalysis analysis = analysisOf(table);
  EXPECT_EQ(analysis.status, TessellationStatus::TessellationOnly);
  EXPECT_THAT(analysis.pairedReps, IsEmpty());
  EXPECT_THAT(analysis.uniqueReps, ElementsAre("#5"));
  EXPECT_THAT(analysis.uniqueFaces, IsEmpty());
}

TEST(TessellationStatus, HasTheNumbersThatIndexItsNames) {
  EXPECT_EQ(static_cast<int>(TessellationStatus::NoTessellation), 0);
  EXPECT_EQ(static_cast<int>(TessellationStatus::AllPaired), 1);
  EXPECT_EQ(static_cast<int>(TessellationStatus::PartiallyUnique), 2);
  EXPECT_EQ(static_cast<int>(TessellationStatus::TessellationOnly), 3);
}

TEST(TessellationAnalysis, FindsNoTessellationWithoutARepresentationOfIt) {
  expectNothing({});
  expectNothing({{"#1", "SHAPE_REPRESENTATION('',(#8),#2);"},
                 {"#2", "TESSELLATED_SOLID('',(#3),$);"},
                 {"#3", "COMPLEX_TRIANGULATED_FACE('',#4,3,(),$,(),((1,2,3)),());"},
                 {"#4", "SHAPE_REPRESENTATION_RELATIONSHIP('','',#1,#2);"}});
}

TEST(TessellationAnalysis, FindsNoTessellationInTypesThatOnlyBeginOrEndLikeARepresentationOfIt) {
  for (const std::string start :
       {"TESSELLATED_SHAPE_REPRESENTATION_WITH_ACCURACY_PARAMETERS(",
        "MY_TESSELLATED_SHAPE_REPRESENTATION(", "TESSELLATED_SHAPE_REPRESENTATION (",
        " TESSELLATED_SHAPE_REPRESENTATION(", "(TESSELLATED_SHAPE_REPRESENTATION(",
        "TESSELLATED_SHAPE_REPRESENTATION"}) {
    expectNothing({{"#5", start + "'',(#6),#2);"}});
  }
}

TEST(TessellationAnalysis, PairsARepresentationWithItsExactTwin) {
  expectPaired(kPair);
}

TEST(TessellationAnalysis, PairsInEitherDirection) {
  expectPaired(pairWith({{"#9", "SHAPE_REPRESENTATION_RELATIONSHIP('','',#5,#7);"}}));
}

TEST(TessellationAnalysis, PairsThroughEveryEntityThatNamesARelationship) {
  expectPaired(pairWith({{"#9",
                          "(REPRESENTATION_RELATIONSHIP('','',#7,#5)"
                          "SHAPE_REPRESENTATION_RELATIONSHIP());"}}));
  expectPaired(pairWith({{"#9", "MY_SHAPE_REPRESENTATION_RELATIONSHIP_X('','',#7,#5);"}}));
  expectPaired(pairWith({{"#9", "X('SHAPE_REPRESENTATION_RELATIONSHIP',#7,#5);"}}));
}

TEST(TessellationAnalysis, CountsReferencesInStrings) {
  expectPaired(pairWith({{"#9", "SHAPE_REPRESENTATION_RELATIONSHIP('#7','',$,#5);"}}));
}

TEST(TessellationAnalysis, PairsThroughALaterRelationship) {
  expectPaired(pairWith({{"#8", "SHAPE_REPRESENTATION_RELATIONSHIP('','',#5,#5);"}}));
}

TEST(TessellationAnalysis, DoesNotPairWithSubtypesOfShapeRepresentation) {
  expectUnpaired(pairWith({{"#7", "ADVANCED_BREP_SHAPE_REPRESENTATION('',(#8),#2);"}}));
  expectUnpaired(pairWith({{"#7", "MANIFOLD_SURFACE_SHAPE_REPRESENTATION('',(#8),#2);"}}));
  expectUnpaired(pairWith({{"#7", "(REPRESENTATION()SHAPE_REPRESENTATION());"}}));
  expectUnpaired(pairWith({{"#7", "SHAPE_REPRESENTATION ('',(#8),#2);"}}));
  expectUnpaired(pairWith({{"#7", "SHAPE_REPRESENTATION"}}));
  expectUnpaired(pairWith({{"#7", "shape_representation('',(#8),#2);"}}));
}

TEST(TessellationAnalysis, DoesNotPairThroughOtherEntities) {
  expectUnpaired(pairWith({{"#9", "REPRESENTATION_RELATIONSHIP('','',#7,#5);"}}));
  expectUnpaired(pairWith({{"#9", "shape_representation_relationship('','',#7,#5);"}}));
}

TEST(TessellationAnalysis, DoesNotPairThroughReferencesThatOnlyLookAlike) {
  expectUnpaired(pairWith({{"#9", "SHAPE_REPRESENTATION_RELATIONSHIP('','',#7,#05);"}}));
  expectUnpaired(pairWith({{"#9", "SHAPE_REPRESENTATION_RELATIONSHIP('','',#7,#55);"}}));
  expectUnpaired(pairWith({{"#9", "SHAPE_REPRESENTATION_RELATIONSHIP('','',#7,# 5);"}}));
}

TEST(TessellationAnalysis, DoesNotPairTwoTessellatedRepresentations) {
  const TessellationAnalysis analysis =
      analysisOf({{"#5", "TESSELLATED_SHAPE_REPRESENTATION('',(#6),#2);"},
                  {"#7", "TESSELLATED_SHAPE_REPRESENTATION('',(#8),#2);"},
                  {"#9", "SHAPE_REPRESENTATION_RELATIONSHIP('','',#7,#5);"}});
  EXPECT_EQ(analysis.status, TessellationStatus::TessellationOnly);
  EXPECT_THAT(analysis.pairedReps, IsEmpty());
  EXPECT_THAT(analysis.uniqueReps, ElementsAre("#5", "#7"));
}

TEST(TessellationAnalysis, PairsOnlyTheLastOfSeveralInOneRelationship) {
  const TessellationAnalysis analysis =
      analysisOf(pairWith({{"#4", "TESSELLATED_SHAPE_REPRESENTATION('',(#6),#2);"},
                           {"#9", "SHAPE_REPRESENTATION_RELATIONSHIP('','',#5,#4,#7);"}}));
  EXPECT_EQ(analysis.status, TessellationStatus::PartiallyUnique);
  EXPECT_THAT(analysis.pairedReps, ElementsAre("#4"));
  EXPECT_THAT(analysis.uniqueReps, ElementsAre("#5"));
}

TEST(TessellationAnalysis, FindsOnePairedAndOneUnique) {
  const TessellationAnalysis analysis =
      analysisOf(pairWith({{"#4", "TESSELLATED_SHAPE_REPRESENTATION('',(#6),#2);"}}));
  EXPECT_EQ(analysis.status, TessellationStatus::PartiallyUnique);
  EXPECT_THAT(analysis.pairedReps, ElementsAre("#5"));
  EXPECT_THAT(analysis.uniqueReps, ElementsAre("#4"));
  EXPECT_THAT(analysis.uniqueFaces, IsEmpty());
}

TEST(TessellationAnalysis, CollectsTheFacesOfUniqueSolids) {
  const TessellationAnalysis analysis = analysisOf(solidWith({}));
  EXPECT_EQ(analysis.status, TessellationStatus::TessellationOnly);
  EXPECT_THAT(analysis.pairedReps, IsEmpty());
  EXPECT_THAT(analysis.uniqueReps, ElementsAre("#5"));
  EXPECT_THAT(analysis.uniqueFaces, ElementsAre("#10", "#11"));
}

TEST(TessellationAnalysis, OrdersFacesByBytes) {
  EXPECT_THAT(analysisOf(solidWith({{"#6", "TESSELLATED_SOLID('',(#9,#11,#10,#11),$);"},
                                    {"#9", "COMPLEX_TRIANGULATED_FACE();"}}))
                  .uniqueFaces,
              ElementsAre("#10", "#11", "#9"));
}

TEST(TessellationAnalysis, SkipsFacesThatAreNotHeldByASolid) {
  EXPECT_THAT(analysisOf(solidWith({{"#6", "COMPLEX_TRIANGULATED_FACE('',#1);"}})).uniqueFaces,
              IsEmpty());
  EXPECT_THAT(analysisOf(solidWith({{"#6", "TESSELLATED_SHELL('',(#10,#11),$);"}})).uniqueFaces,
              IsEmpty());
  EXPECT_THAT(analysisOf(solidWith({{"#6", "TESSELLATED_SOLID('',(#12),$);"},
                                    {"#12", "TESSELLATED_SOLID('',(#10),$);"}}))
                  .uniqueFaces,
              IsEmpty());
}

TEST(TessellationAnalysis, SkipsReferencesOfOtherOrNoType) {
  EXPECT_THAT(analysisOf(solidWith({{"#10", "TRIANGULATED_FACE('',#1);"},
                                    {"#11", " COMPLEX_TRIANGULATED_FACE('',#1);"}}))
                  .uniqueFaces,
              IsEmpty());
  EXPECT_THAT(analysisOf(solidWith({{"#6", "TESSELLATED_SOLID('',(#12,#13),$);"},
                                    {"#13", "COMPLEX_TRIANGULATED_FACE ();"}}))
                  .uniqueFaces,
              IsEmpty());
  EXPECT_THAT(analysisOf(solidWith({{"#6", "TESSELLATED_SOLID ('',(#10,#11),$);"}})).uniqueFaces,
              IsEmpty());
}

TEST(TessellationAnalysis, TakesATextWithoutParenthesisAsAType) {
  EXPECT_THAT(analysisOf(solidWith({{"#10", "COMPLEX_TRIANGULATED_FACE"},
                                    {"#11", "COMPLEX_TRIANGULATED_FACE;"}}))
                  .uniqueFaces,
              ElementsAre("#10"));
}

TEST(TessellationAnalysis, DoesNotWalkPairedRepresentations) {
  EXPECT_THAT(analysisOf(solidWith(pairWith({}))).uniqueFaces, IsEmpty());
}

TEST(TessellationAnalysis, FollowsReferencesInTheLinesJoinedToALastEntity) {
  EXPECT_THAT(
      analysisOf(solidWith({{"#5", "TESSELLATED_SHAPE_REPRESENTATION('',(),#2); #6 ENDSEC;"}}))
          .uniqueFaces,
      ElementsAre("#10", "#11"));
}

TEST(TessellationAnalysis, DoesNotRecogniseATypeBehindABlank) {
  expectNothing(test::tableOf("#5= TESSELLATED_SHAPE_REPRESENTATION('',(#6),#2);\n"));
}

TEST(TessellationAnalysis, GivesTheFacesOfASharedSolidOnce) {
  const TessellationAnalysis analysis =
      analysisOf(solidWith({{"#4", "TESSELLATED_SHAPE_REPRESENTATION('',(#6,#6),#2);"}}));
  EXPECT_THAT(analysis.uniqueReps, ElementsAre("#4", "#5"));
  EXPECT_THAT(analysis.uniqueFaces, ElementsAre("#10", "#11"));
}

TEST(TessellationAnalysis, AgreesWithTheReferenceOnRandomTables) {
  const std::vector<std::string> types = {"TESSELLATED_SHAPE_REPRESENTATION(",
                                          "SHAPE_REPRESENTATION(",
                                          "SHAPE_REPRESENTATION_RELATIONSHIP(",
                                          "TESSELLATED_SOLID(",
                                          "COMPLEX_TRIANGULATED_FACE(",
                                          "COMPLEX_TRIANGULATED_FACE",
                                          " TESSELLATED_SOLID(",
                                          "X(",
                                          "("};
  const std::vector<std::string> pieces = {"#1",
                                           "#2,",
                                           "#3)",
                                           "#4",
                                           "#10",
                                           "#01",
                                           "##5",
                                           "#",
                                           "'",
                                           " ",
                                           "\r",
                                           "(",
                                           std::string(1, '\0'),
                                           "SHAPE_REPRESENTATION_RELATIONSHIP",
                                           "TESSELLATED_SOLID("};
  const std::vector<std::string> names = {"#1", "#2", "#3", "#4", "#5", "#10", "#01", "#"};
  std::mt19937 random(2);
  for (int i = 0; i < test::rounds(50'000); ++i) {
    EntityTexts table;
    for (const std::string& name : names) {
      if (pick(random, 5) != 0) {
        table[name] = types[pick(random, types.size())] + randomText(random, pieces, 8);
      }
    }
    const TessellationAnalysis analysis = analysisOf(table);
    const TessellationAnalysis reference = referenceAnalysis(table);
    ASSERT_EQ(analysis.status, reference.status) << testing::PrintToString(table);
    ASSERT_EQ(analysis.pairedReps, reference.pairedReps) << testing::PrintToString(table);
    ASSERT_EQ(analysis.uniqueReps, reference.uniqueReps) << testing::PrintToString(table);
    ASSERT_EQ(analysis.uniqueFaces, reference.uniqueFaces) << testing::PrintToString(table);
  }
}

}  // namespace
}  // namespace plenvorith
