#include "product/product_structure.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "product/attributes.h"
#include "product/exact_geometry.h"
#include "tests/support/instances.h"

namespace plenvorith {
namespace {

using test::Instances;
using testing::ElementsAre;
using testing::IsEmpty;

struct Structure : Instances {
  explicit Structure(const std::string& data)
      : Instances(data), structure(readProductStructure(table)) {}

  [[nodiscard]] const Representation& representation(std::uint64_t number) const {
    return structure.representations.at(structure.find((*this)[number]));
  }
  [[nodiscard]] bool areEqualInPlace(std::uint64_t a, std::uint64_t b) const {
    return representation(a).group == representation(b).group;
  }
  /// The numbers of the representations that are exact.
  [[nodiscard]] std::vector<std::uint64_t> exact() const {
    std::vector<std::uint64_t> found;
    for (const Representation& candidate : structure.representations) {
      if (candidate.isExact) {
        found.push_back(table.number(candidate.instance));
      }
    }
    return found;
  }

  ProductStructure structure;
};

/// Products #1 and #2 with the shapes #11 and #12, and three representations.
const std::string kTwo =
    "#1=PRODUCT_DEFINITION('','',$,$);\n#2=PRODUCT_DEFINITION('','',$,$);\n"
    "#11=PRODUCT_DEFINITION_SHAPE('','',#1);\n#12=PRODUCT_DEFINITION_SHAPE('','',#2);\n"
    "#21=SHAPE_REPRESENTATION('',(),#99);\n#22=SHAPE_REPRESENTATION('',(),#98);\n"
    "#23=ADVANCED_BREP_SHAPE_REPRESENTATION('',(),$);\n#98=C();\n#99=C();\n";

TEST(ProductStructure, FindsRepresentationsInTheOrderOfTheirNumbers) {
  const Structure in(
      "#5=SHAPE_REPRESENTATION('',(),#7);\n#3=REPRESENTATION('',(),#8);\n"
      "#4=(REPRESENTATION('',(#5),#7)SHAPE_REPRESENTATION());\n#6=REPRESENTATION_MAP(#1,#2);\n"
      "#7=C();\n");
  ASSERT_EQ(in.structure.representations.size(), 3U);
  EXPECT_EQ(in.structure.representations[0].instance, in[3]);
  EXPECT_EQ(in.structure.representations[1].instance, in[4]);
  EXPECT_EQ(in.structure.representations[2].instance, in[5]);
  EXPECT_EQ(in.structure.representations[0].context, kNoInstance);
  EXPECT_EQ(in.structure.representations[1].context, in[7]);
  EXPECT_EQ(in.structure.find(in[6]), kNoRepresentation);
}

TEST(ProductStructure, RelationshipsWithoutATransformationMakeEqualInPlace) {
  const Structure in(kTwo +
                     "#31=SHAPE_REPRESENTATION_RELATIONSHIP('','',#23,#21);\n"
                     "#32=(REPRESENTATION_RELATIONSHIP('','',#21,#22)"
                     "REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION(#40)"
                     "SHAPE_REPRESENTATION_RELATIONSHIP());\n#40=ITEM_DEFINED_TRANSFORMATION();\n");
  EXPECT_TRUE(in.areEqualInPlace(21, 23));
  EXPECT_FALSE(in.areEqualInPlace(21, 22));
  ASSERT_EQ(in.structure.transformations.size(), 1U);
  EXPECT_EQ(in.structure.transformations[0].relationship, in[32]);
}

TEST(ProductStructure, TiesShapesToProductsWithAllThatIsEqualInPlace) {
  const Structure in(kTwo +
                     "#31=SHAPE_REPRESENTATION_RELATIONSHIP('','',#23,#21);\n"
                     "#32=SHAPE_DEFINITION_REPRESENTATION(#12,#23);\n");
  ASSERT_THAT(in.structure.products, ElementsAre(in[1], in[2]));
  EXPECT_THAT(in.structure.productShapes, ElementsAre(in[11], in[12]));
  EXPECT_THAT(in.structure.productsOf(in.structure.find(in[21])), ElementsAre(1U));
  EXPECT_THAT(in.structure.productsOf(in.structure.find(in[22])), IsEmpty());
  EXPECT_TRUE(in.representation(21).isOfProduct);
  EXPECT_FALSE(in.representation(22).isOfProduct);
}

TEST(ProductStructure, KnowsWhatIsAFeaturesOrAPropertys) {
  const Structure in(kTwo +
                     "#31=PROPERTY_DEFINITION('','',#1);\n"
                     "#32=PROPERTY_DEFINITION_REPRESENTATION(#31,#21);\n"
                     "#33=SHAPE_DEFINITION_REPRESENTATION(#12,#22);\n");
  EXPECT_TRUE(in.representation(21).isOfProperty);
  EXPECT_FALSE(in.representation(22).isOfProperty);
}

/// The part #2 with the shape #22 in the whole #1 with the shape #21.
std::string usedBy(const std::string& sides) {
  return kTwo +
         "#31=SHAPE_DEFINITION_REPRESENTATION(#11,#21);\n"
         "#32=SHAPE_DEFINITION_REPRESENTATION(#12,#22);\n"
         "#33=NEXT_ASSEMBLY_USAGE_OCCURRENCE('','','',#1,#2,$);\n"
         "#34=PRODUCT_DEFINITION_SHAPE('','',#33);\n"
         "#35=CONTEXT_DEPENDENT_SHAPE_REPRESENTATION(#36,#34);\n"
         "#36=(REPRESENTATION_RELATIONSHIP('',''," +
         sides +
         ")"
         "REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION(#40)"
         "SHAPE_REPRESENTATION_RELATIONSHIP());\n"
         "#40=ITEM_DEFINED_TRANSFORMATION('','',$,$);\n";
}

TEST(ProductStructure, TellsThePartOfAUsageByTheProduct) {
  for (const bool isSecond : {false, true}) {
    const Structure in(usedBy(isSecond ? "#21,#22" : "#22,#21"));
    ASSERT_EQ(in.structure.usages.size(), 1U);
    const Usage& usage = in.structure.usages[0];
    EXPECT_EQ(in.structure.products[usage.part], in[2]);
    EXPECT_EQ(in.structure.products[usage.whole], in[1]);
    EXPECT_EQ(usage.relationship, in[36]);
    EXPECT_EQ(usage.isPartSecond, isSecond);
    EXPECT_THAT(in.structure.transformations, IsEmpty());
    EXPECT_THAT(in.structure.productShapes, ElementsAre(in[11], in[12]));
  }
}

TEST(ProductStructure, PassesOverUsagesWhosePartOrWholeNamesNothing) {
  for (const char* const sides : {"#1,#97", "#97,#2", "#1,$", "$,#2", "#97,#97"}) {
    const Structure in(kTwo + "#33=NEXT_ASSEMBLY_USAGE_OCCURRENCE('','',''," + sides + ",$);\n");
    EXPECT_THAT(in.structure.usages, IsEmpty()) << sides;
    EXPECT_EQ(in.structure.products.size(), 2U) << sides;
  }
}

TEST(ProductStructure, KeepsUsagesWithoutARelationship) {
  const Structure in(kTwo + "#33=NEXT_ASSEMBLY_USAGE_OCCURRENCE('','','',#1,#2,$);\n");
  ASSERT_EQ(in.structure.usages.size(), 1U);
  EXPECT_EQ(in.structure.usages[0].relationship, kNoInstance);
}

const std::string kMappedSolid =
    "#50=MANIFOLD_SOLID_BREP('',#51);\n#51=CLOSED_SHELL('',(#52));\n#52=ADVANCED_FACE('',(),$,.T.);"
    "\n#60=SHAPE_REPRESENTATION('',(#50),$);\n#61=REPRESENTATION_MAP(#90,#60);\n"
    "#62=MAPPED_ITEM('',#61,#91);\n#63=SHAPE_REPRESENTATION('',(#62),$);\n";

TEST(ProductStructure, FindsMappings) {
  const Structure in(kMappedSolid);
  ASSERT_EQ(in.structure.mappings.size(), 1U);
  const Mapping& mapping = in.structure.mappings[0];
  EXPECT_EQ(mapping.item, in[62]);
  EXPECT_EQ(mapping.map, in[61]);
  EXPECT_EQ(mapping.mapped, in.structure.find(in[60]));
  EXPECT_EQ(mapping.holder, in.structure.find(in[63]));
}

TEST(ProductStructure, FindsWhatIsExactAndWhatMapsThat) {
  EXPECT_THAT(
      Structure(kMappedSolid + "#70=SHAPE_REPRESENTATION('',(#71),$);\n#71=PLANE('',$);\n").exact(),
      ElementsAre(60, 63));
  EXPECT_THAT(Structure(kMappedSolid + "#70=(DRAUGHTING_MODEL()REPRESENTATION('',(#50,#62),$)"
                                       "SHAPE_REPRESENTATION());\n")
                  .exact(),
              ElementsAre(60, 63));
}

TEST(ProductStructure, TakesNoItemsFromBehindARecord) {
  std::vector<std::uint64_t> items;
  const Instances in(
      "#1=SHAPE_REPRESENTATION('',(#2),$)SHAPE_REPRESENTATION('',(#3),$);\n"
      "#2=A();\n#3=A();\n");
  in.table.forEachItem(in[1], attributes::kItems,
                       [&](InstanceIndex item) { items.push_back(in.table.number(item)); });
  EXPECT_THAT(items, ElementsAre(2));
}

TEST(ProductStructure, WhatIsMappedFromAProductIsOfIt) {
  const Structure in(kMappedSolid +
                     "#1=PRODUCT_DEFINITION('','',$,$);\n"
                     "#11=PRODUCT_DEFINITION_SHAPE('','',#1);\n"
                     "#31=SHAPE_DEFINITION_REPRESENTATION(#11,#63);\n");
  EXPECT_TRUE(in.representation(60).isOfProduct);
  EXPECT_TRUE(in.representation(63).isOfProduct);
}

TEST(ProductStructure, FindsWhatExactRepresentationsCarry) {
  const Structure in(kMappedSolid +
                     "#53=CLOSED_SHELL('',(#54));\n#54=ADVANCED_FACE('',(),$,.T.);\n");
  const std::vector<bool> carried =
      findCarried(in.table, in.structure, {in.structure.find(in[60])});
  for (const std::uint64_t number : {50U, 51U, 52U}) {
    EXPECT_TRUE(carried[in[number]]) << number;
  }
  for (const std::uint64_t number : {53U, 54U, 60U, 62U}) {
    EXPECT_FALSE(carried[in[number]]) << number;
  }
}

}  // namespace
}  // namespace plenvorith
