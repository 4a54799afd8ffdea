#include "prepare/part_tessellation.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "tests/prepare/tied_structure.h"
#include "tests/support/instances.h"

namespace plenvorith {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct Found : test::Instances {
  explicit Found(const std::string& data)
      : Instances(data),
        structure(test::tiedStructure(table)),
        instances(table, reader),
        occurrences(structure, instances, warnings),
        part(findPartTessellation(table, structure, occurrences, warnings)) {}

  /// The numbers of the bodies, with those of what repositions them.
  [[nodiscard]] std::string bodies() const {
    std::string text;
    for (const Body& body : part.bodies) {
      text += text.empty() ? "" : " ";
      text += std::to_string(table.number(body.instance));
      for (const InstanceIndex location : body.repositioning) {
        text += '@' + std::to_string(table.number(location));
      }
    }
    return text;
  }
  [[nodiscard]] std::vector<std::uint64_t> copies() const {
    return numbersOf(part.copies);
  }
  [[nodiscard]] std::vector<std::uint64_t> faces(std::uint64_t body) {
    return numbersOf(facesOf(table, (*this)[body], warnings));
  }
  [[nodiscard]] std::vector<std::uint64_t> numbersOf(
      const std::vector<InstanceIndex>& indices) const {
    std::vector<std::uint64_t> numbers;
    numbers.reserve(indices.size());
    for (const InstanceIndex index : indices) {
      numbers.push_back(table.number(index));
    }
    return numbers;
  }

  Warnings warnings;
  ProductStructure structure;
  InstanceReader instances;
  Occurrences occurrences;
  PartTessellation part;
};

/// Three faces, #1 to #3, with the points #4.
const std::string kFaces =
    "#1=TRIANGULATED_FACE('',#4,3,(),$,(),());\n"
    "#2=COMPLEX_TRIANGULATED_FACE('',#4,3,(),$,(),(),());\n"
    "#3=TRIANGULATED_SURFACE_SET('',#4,3,(),(),());\n#4=COORDINATES_LIST('',0,());\n";

/// An exact solid #50, which #53 holds, with the face #52; a face #54 that nothing carries.
const std::string kSolidPart =
    "#50=MANIFOLD_SOLID_BREP('',#51);\n#51=CLOSED_SHELL('',(#52));\n"
    "#52=ADVANCED_FACE('',(),$,.T.);\n#53=SHAPE_REPRESENTATION('',(#50),$);\n"
    "#54=ADVANCED_FACE('',(),$,.T.);\n";

TEST(PartTessellation, FacesComeInTheOrderOfTheText) {
  Found in(kFaces +
           "#10=TESSELLATED_SOLID('',(#3,#11,#1),$);\n#11=TESSELLATED_SHELL('',(#2,#10,#12),$);\n"
           "#12=CUBIC_BEZIER_TRIANGULATED_FACE('',#4,3,(),$,(),());\n");
  EXPECT_THAT(in.faces(10), ElementsAre(3, 2, 1));
  EXPECT_THAT(in.faces(1), ElementsAre(1));
  EXPECT_THAT(in.warnings,
              ElementsAre("curved triangles (CUBIC_BEZIER_TRIANGULATED_FACE) are left out"));
}

TEST(PartTessellation, FacesNameTheirPointsAndWhatTheyLieOn) {
  const Found in(kSolidPart +
                 "#4=COORDINATES_LIST('',0,());\n#5=AXIS2_PLACEMENT_3D('',$,$,$);\n"
                 "#1=TRIANGULATED_FACE('',#4,3,(),#52,(),());\n"
                 "#2=TRIANGULATED_FACE('',#50,3,(),$,(),());\n"
                 "#3=(REPOSITIONED_TESSELLATED_ITEM(#5)REPRESENTATION_ITEM('')"
                 "TESSELLATED_FACE(#4,3,(),#52)TRIANGULATED_FACE((),()));\n");
  const FaceLinks simple = readFaceLinks(in.table, in[1]);
  EXPECT_EQ(simple.coordinates, in[4]);
  EXPECT_EQ(simple.geometry, in[52]);
  EXPECT_EQ(simple.location, kNoInstance);
  EXPECT_EQ(readFaceLinks(in.table, in[2]).coordinates, kNoInstance);
  const FaceLinks complex = readFaceLinks(in.table, in[3]);
  EXPECT_EQ(complex.coordinates, in[4]);
  EXPECT_EQ(complex.geometry, in[52]);
  EXPECT_EQ(complex.location, in[5]);
}

TEST(PartTessellation, BodiesAreFoundInSetsWithAllThatRepositionsThem) {
  const Found in(kFaces +
                 "#5=AXIS2_PLACEMENT_3D('',$,$,$);\n#6=AXIS2_PLACEMENT_3D('',$,$,$);\n"
                 "#10=(GEOMETRIC_REPRESENTATION_ITEM()REPOSITIONED_TESSELLATED_ITEM(#5)"
                 "REPRESENTATION_ITEM('')TESSELLATED_GEOMETRIC_SET((#1,#11))TESSELLATED_ITEM());\n"
                 "#11=(GEOMETRIC_REPRESENTATION_ITEM()REPOSITIONED_TESSELLATED_ITEM(#6)"
                 "REPRESENTATION_ITEM('')TESSELLATED_GEOMETRIC_SET((#2))TESSELLATED_ITEM());\n"
                 "#20=TESSELLATED_SHAPE_REPRESENTATION('',(#10,#3,#3),$);\n");
  EXPECT_EQ(in.bodies(), "1@5 2@5@6 3");
  EXPECT_EQ(in.part.representationCount, 1U);
  EXPECT_FALSE(in.part.hasExact);
  EXPECT_THAT(in.copies(), IsEmpty());
}

TEST(PartTessellation, WhatAnnotationShowsIsLeftOut) {
  const Found in(kFaces +
                 "#10=TESSELLATED_GEOMETRIC_SET('',(#1));\n"
                 "#11=TESSELLATED_ANNOTATION_OCCURRENCE('',(),#10);\n"
                 "#20=TESSELLATED_SHAPE_REPRESENTATION('',(#10),$);\n"
                 "#21=TESSELLATED_SHAPE_REPRESENTATION('',(#10,#2),$);\n"
                 "#22=(DRAUGHTING_MODEL()REPRESENTATION('',(#3),$)SHAPE_REPRESENTATION()"
                 "TESSELLATED_SHAPE_REPRESENTATION());\n");
  EXPECT_EQ(in.bodies(), "2");
  EXPECT_EQ(in.part.representationCount, 3U);
  EXPECT_EQ(in.part.annotationCount, 2U);
}

TEST(PartTessellation, WhatAPropertyShowsIsLeftOut) {
  const Found in(kFaces +
                 "#20=TESSELLATED_SHAPE_REPRESENTATION('',(#1),$);\n"
                 "#30=PRODUCT_DEFINITION('','',$,$);\n#31=SHAPE_ASPECT('','',#32,.T.);\n"
                 "#32=PRODUCT_DEFINITION_SHAPE('','',#30);\n"
                 "#33=PROPERTY_DEFINITION('','',#31);\n"
                 "#34=PROPERTY_DEFINITION_REPRESENTATION(#33,#20);\n");
  EXPECT_EQ(in.bodies(), "");
  EXPECT_EQ(in.part.propertyCount, 1U);
}

TEST(PartTessellation, BodiesThatNameTheirExactTwinAreCopies) {
  const Found in(kFaces + kSolidPart +
                 "#10=TESSELLATED_SOLID('',(#1),#50);\n#11=TESSELLATED_SOLID('',(#2),#54);\n"
                 "#20=TESSELLATED_SHAPE_REPRESENTATION('',(#10,#11,#3),$);\n");
  EXPECT_TRUE(in.part.hasExact);
  EXPECT_EQ(in.bodies(), "3 11");
  EXPECT_THAT(in.copies(), ElementsAre(10));
}

TEST(PartTessellation, BodiesWhoseFacesAllNameExactOnesAreCopies) {
  const Found in(kSolidPart +
                 "#4=COORDINATES_LIST('',0,());\n"
                 "#1=TRIANGULATED_FACE('',#4,3,(),#52,(),());\n"
                 "#2=TRIANGULATED_FACE('',#4,3,(),$,(),());\n"
                 "#10=TESSELLATED_SHELL('',(#1,#1),$);\n"
                 "#11=TESSELLATED_SHELL('',(#1,#2),$);\n"
                 "#20=TESSELLATED_SHAPE_REPRESENTATION('',(#10,#11),$);\n");
  EXPECT_EQ(in.bodies(), "11");
  EXPECT_THAT(in.copies(), ElementsAre(10));
}

TEST(PartTessellation, AllBodiesOfAShapeThatIsEqualToAnExactOneAreCopies) {
  const std::string shape = "#20=TESSELLATED_SHAPE_REPRESENTATION('',(#1,#3),$);\n";
  const std::string equal = "#21=SHAPE_REPRESENTATION_RELATIONSHIP('','',#53,#20);\n";
  const Found paired(kFaces + kSolidPart + shape + equal);
  EXPECT_EQ(paired.bodies(), "");
  EXPECT_THAT(paired.copies(), ElementsAre(1, 3));
  const Found apart(kFaces + kSolidPart + shape);
  EXPECT_EQ(apart.bodies(), "1 3");
  EXPECT_THAT(apart.copies(), IsEmpty());
}

}  // namespace
}  // namespace plenvorith
