#include "exchange/entity_types.h"

#include <string>

#include <gmock/gmock.h>

namespace plenvorith {
namespace {

TEST(EntityTypes, KnowTheRolesOfKeywords) {
  EXPECT_EQ(rolesOf("ADVANCED_FACE"), kExactFace | kGeometryOnly);
  EXPECT_EQ(rolesOf("VERTEX_POINT"), kGeometryOnly);
  EXPECT_EQ(rolesOf("COORDINATES_LIST"), kTessellated | kCoordinates);
  EXPECT_EQ(rolesOf("TRIANGULATED_FACE"), kTessellated | kFace);
  EXPECT_EQ(rolesOf("CLOSED_SHELL"), kShell);
  EXPECT_EQ(rolesOf("CLOSED_SHELLS"), kNoRole);
  EXPECT_EQ(rolesOf(""), kNoRole);
}

TEST(EntityTypes, TellUnknownKeywordsByTheirParts) {
  EXPECT_EQ(rolesOf("TESSELLATED_CURVE_SET"), kTessellated);
  EXPECT_EQ(rolesOf("A_TRIANGULATED_B"), kTessellated);
  EXPECT_EQ(rolesOf("TESSELLATED_ANNOTATION_OCCURRENCE"), kTessellated | kAnnotation);
  EXPECT_EQ(rolesOf("SHAPE_REPRESENTATION"), kRepresentation | kShapeRepresentation);
  EXPECT_EQ(rolesOf("FACETED_BREP_SHAPE_REPRESENTATION"), kRepresentation);
  EXPECT_EQ(rolesOf("CONSTRUCTIVE_GEOMETRY_REPRESENTATION"), kNoRole);
  EXPECT_EQ(rolesOf("CONSTRUCTIVE_GEOMETRY_REPRESENTATION_RELATIONSHIP"), kAnyRelationship);
  EXPECT_EQ(rolesOf("SHAPE_REPRESENTATION_RELATIONSHIP"), kRelationship);
}

TEST(EntityTypes, NumberTypesInTheOrderInWhichTheyAreMet) {
  EntityTypes types;
  EXPECT_EQ(types.idOf("A", false), 0U);
  EXPECT_EQ(types.idOf("B(C", true), 1U);
  EXPECT_EQ(types.idOf("A", true), 2U);
  EXPECT_EQ(types.idOf("A", false), 0U);
  EXPECT_EQ(types.idOf("B(C", true), 1U);
  EXPECT_FALSE(types[0].isComplex);
  EXPECT_TRUE(types[1].isComplex);
  EXPECT_THAT(types[1].keywords, testing::ElementsAre("B", "C"));
}

TEST(EntityTypes, OfComplexInstancesHaveTheRolesOfAllKeywords) {
  EntityTypes types;
  const EntityType& type = types[types.idOf("DRAUGHTING_MODEL(REPRESENTATION(X", true)];
  EXPECT_EQ(type.roles, kDraughtingModel | kRepresentation);
  EXPECT_TRUE(type.has(kRepresentation | kUsage));
  EXPECT_FALSE(type.has(kUsage));
}

TEST(EntityTypes, AreNeverBothTessellatedAndKept) {
  EntityTypes types;
  EXPECT_EQ(types[types.idOf("MANIFOLD_SOLID_BREP(TESSELLATED_ITEM", true)].roles, kTessellated);
  EXPECT_EQ(types[types.idOf("MAPPED_ITEM(TESSELLATED_ITEM", true)].roles,
            kTessellated | kMappedItem);
}

}  // namespace
}  // namespace plenvorith
