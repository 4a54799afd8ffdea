#include "exchange/entity_types.h"

#include <string>

#include <gmock/gmock.h>

namespace plenvorith {
namespace {

EntityType typeOf(const std::string& keywords, bool isComplex = false) {
  EntityTypes types;
  return types[types.idOf(keywords, isComplex)];
}

TEST(EntityTypes, KnowTheKindsOfKeywords) {
  EXPECT_EQ(kindOf("ADVANCED_FACE"), Kind::Face);
  EXPECT_EQ(kindOf("VERTEX_POINT"), Kind::Geometry);
  EXPECT_EQ(kindOf("COORDINATES_LIST"), Kind::CoordinatesList);
  EXPECT_EQ(kindOf("TRIANGULATED_FACE"), Kind::TriangulatedFace);
  EXPECT_EQ(kindOf("CLOSED_SHELL"), Kind::Shell);
  EXPECT_EQ(kindOf("CLOSED_SHELLS"), Kind::Unknown);
  EXPECT_EQ(kindOf(""), Kind::Unknown);
}

TEST(EntityTypes, TellUnknownKeywordsByTheirParts) {
  EXPECT_EQ(kindOf("TESSELLATED_CURVE_SET"), Kind::OtherTessellation);
  EXPECT_EQ(kindOf("TESSELLATED_CONSTRUCTIVE_GEOMETRY_REPRESENTATION"), Kind::OtherTessellation);
  EXPECT_EQ(kindOf("TRIANGULATED_FACE_SET"), Kind::UnknownTessellation);
  EXPECT_EQ(kindOf("TESSELLATED_ANNOTATION_OCCURRENCE"), Kind::Annotation);
  EXPECT_EQ(kindOf("SHAPE_REPRESENTATION"), Kind::Representation);
  EXPECT_EQ(kindOf("ELEMENTARY_BREP_SHAPE_REPRESENTATION"), Kind::Representation);
  EXPECT_EQ(kindOf("CONSTRUCTIVE_GEOMETRY_REPRESENTATION"), Kind::Unknown);
  EXPECT_EQ(kindOf("CONSTRUCTIVE_GEOMETRY_REPRESENTATION_RELATIONSHIP"), Kind::OtherRelationship);
  EXPECT_EQ(kindOf("SHAPE_REPRESENTATION_RELATIONSHIP"), Kind::Relationship);
}

TEST(EntityTypes, TellTessellatedOnesByTheirParts) {
  for (const char* keyword : {"COORDINATES_LIST", "TESSELLATED_ANNOTATION_OCCURRENCE",
                              "A_TRIANGULATED_B", "TESSELLATED_SHAPE_REPRESENTATION"}) {
    EXPECT_TRUE(typeOf(keyword).isTessellated) << keyword;
  }
  EXPECT_FALSE(typeOf("TESSELATED_ITEM").isTessellated);
}

TEST(EntityTypes, KnowWhatTheKernelDelivers) {
  for (const char* keyword : {"MANIFOLD_SOLID_BREP", "ADVANCED_FACE", "RECTANGULAR_TRIMMED_SURFACE",
                              "SHAPE_REPRESENTATION"}) {
    EXPECT_TRUE(typeOf(keyword).isDelivered) << keyword;
  }
  for (const char* keyword : {"CSG_SOLID", "CLOSED_SHELL", "PLANE", "GEOMETRIC_CURVE_SET",
                              "ELEMENTARY_BREP_SHAPE_REPRESENTATION", "ANY_OTHER"}) {
    EXPECT_FALSE(typeOf(keyword).isDelivered) << keyword;
  }
  EXPECT_FALSE(typeOf("MANIFOLD_SOLID_BREP(SOLID_MODEL", true).isDelivered);
  EXPECT_TRUE(typeOf("BREP_WITH_VOIDS(FACETED_BREP(SOLID_MODEL", true).isDelivered);
  EXPECT_TRUE(typeOf("BOUNDED_SURFACE(SURFACE", true).isDelivered);
}

TEST(EntityTypes, KnowWhatStaysWhateverItNames) {
  for (const char* keyword : {"MANIFOLD_SOLID_BREP", "CSG_SOLID", "PRODUCT_DEFINITION_SHAPE",
                              "NEXT_ASSEMBLY_USAGE_OCCURRENCE", "GEOMETRIC_SET"}) {
    EXPECT_TRUE(typeOf(keyword).isKept) << keyword;
  }
  EXPECT_FALSE(typeOf("MAPPED_ITEM").isKept);
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

TEST(EntityTypes, OfComplexInstancesAreOfTheKindsOfAllKeywords) {
  const EntityType type = typeOf("DRAUGHTING_MODEL(REPRESENTATION(X", true);
  EXPECT_TRUE(type.is(Kind::DraughtingModel));
  EXPECT_TRUE(type.is(Kind::Usage, Kind::Representation));
  EXPECT_FALSE(type.is(Kind::Usage));
  EXPECT_FALSE(type.isOnly(Kind::Representation));
  EXPECT_TRUE(typeOf("REPRESENTATION_RELATIONSHIP(SHAPE_REPRESENTATION_RELATIONSHIP", true)
                  .isOnly(Kind::Relationship));
}

TEST(EntityTypes, AreNeverBothTessellatedAndKept) {
  const EntityType type = typeOf("MANIFOLD_SOLID_BREP(TESSELLATED_ITEM", true);
  EXPECT_TRUE(type.isTessellated);
  EXPECT_FALSE(type.isKept);
  EXPECT_FALSE(type.isDelivered);
}

}  // namespace
}  // namespace plenvorith
