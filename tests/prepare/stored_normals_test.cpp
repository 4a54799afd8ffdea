#include "prepare/stored_normals.h"

#include <string>

#include <gmock/gmock.h>

#include "tests/support/prepared_file.h"

namespace plenvorith {
namespace {

using test::dataOf;
using test::prepared;
using test::Prepared;
using test::stepFile;
using testing::HasSubstr;

const std::string kInMillimetres =
    "#1=(LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT(.MILLI.,.METRE.));\n"
    "#2=(GEOMETRIC_REPRESENTATION_CONTEXT(3)GLOBAL_UNIT_ASSIGNED_CONTEXT((#1))"
    "REPRESENTATION_CONTEXT('',''));\n";

/// Of (1,2,3) the normal is (0,0,1), of (1,3,4) it is (1,0,0).
const std::string kPoints =
    "#10=COORDINATES_LIST('',4,((0.,0.,0.),(1.,0.,0.),(0.,1.,0.),(0.,0.,1.)));\n";

const std::string kBodyShown = "#20=TESSELLATED_SHAPE_REPRESENTATION('',(#19),#2);\n";

const std::string kWarning =
    "  Warning: the stored normals of a body are all against its triangles, which stay\n";

Prepared withFace(const std::string& face) {
  return prepared(stepFile(kInMillimetres + kPoints + "#19=" + face + ";\n" + kBodyShown));
}

bool isWarned(const Prepared& result) {
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_EQ(result.err, "");
  return result.out.find(kWarning) != std::string::npos;
}

bool isWarnedOf(const std::string& face) {
  return isWarned(withFace(face));
}

TEST(StoredNormals, OneForAllCornersIsCompared) {
  EXPECT_TRUE(isWarnedOf("TRIANGULATED_FACE('',#10,4,((0.,0.,-1.)),$,(),((1,2,3)))"));
  EXPECT_FALSE(isWarnedOf("TRIANGULATED_FACE('',#10,4,((0.,0.,1.)),$,(),((1,2,3)))"));
  EXPECT_TRUE(isWarnedOf("TRIANGULATED_FACE('',#10,4,((0.,0.,1.)),$,(),((1,3,2)))"));
}

TEST(StoredNormals, ThoseOfTheCornersAreCompared) {
  const auto isWarnedOfNormals = [](const std::string& normals) {
    return isWarnedOf("TRIANGULATED_FACE('',#10,4,(" + normals + "),$,(),((1,3,4)))");
  };
  EXPECT_TRUE(isWarnedOfNormals("(-1.,0.,0.),(1.,0.,0.),(-1.,0.,0.),(-1.,0.,0.)"));
  EXPECT_TRUE(isWarnedOfNormals("(-1.,0.,0.),(9.,0.,0.),(.5,0.,0.),(-1.,0.,0.)"));
  EXPECT_FALSE(isWarnedOfNormals("(-1.,0.,0.),(-9.,0.,0.),(2.5,0.,0.),(-1.,0.,0.)"));
}

TEST(StoredNormals, BelongToTheEntriesOfTheIndexMapping) {
  const auto isWarnedOfNormals = [](const std::string& normals) {
    return isWarnedOf("TRIANGULATED_FACE('',#10,3,(" + normals + "),$,(4,1,3),((2,3,1)))");
  };
  EXPECT_TRUE(isWarnedOfNormals("(-3.,0.,0.),(1.,0.,0.),(1.,0.,0.)"));
  EXPECT_FALSE(isWarnedOfNormals("(3.,0.,0.),(-1.,0.,0.),(-1.,0.,0.)"));
}

TEST(StoredNormals, AreFoundInStripsFansSurfaceSetsAndComplexInstances) {
  for (const char* z : {"-1.", "1."}) {
    const std::string normals = std::string("((0.,0.,") + z + "))";
    const bool isAgainst = *z == '-';
    for (const std::string& face :
         {"COMPLEX_TRIANGULATED_FACE('',#10,4," + normals + ",$,(),((1,2,3)),())",
          "COMPLEX_TRIANGULATED_FACE('',#10,4," + normals + ",$,(),(),((3,1,2)))",
          "TRIANGULATED_SURFACE_SET('',#10,4," + normals + ",(),((1,2,3)))",
          "COMPLEX_TRIANGULATED_SURFACE_SET('',#10,4," + normals + ",(),((1,2,3)),())",
          "(COMPLEX_TRIANGULATED_FACE((),((1,2,3)),())REPRESENTATION_ITEM('')TESSELLATED_FACE(#10,"
          "4," +
              normals + ",$)TESSELLATED_ITEM())",
          "(REPRESENTATION_ITEM('')TESSELLATED_ITEM()TESSELLATED_SURFACE_SET(#10,4," + normals +
              ")TRIANGULATED_SURFACE_SET((),((1,2,3))))"}) {
      EXPECT_EQ(isWarnedOf(face), isAgainst) << face;
    }
  }
}

TEST(StoredNormals, OneTriangleThatAgreesIsEnough) {
  EXPECT_FALSE(isWarnedOf("TRIANGULATED_FACE('',#10,4,((0.,0.,-1.)),$,(),((1,2,3),(1,3,2)))"));
  std::string triangles;
  for (int i = 0; i < 30'000; ++i) {
    triangles += "(1,2,3),";
  }
  const std::string start = "TRIANGULATED_FACE('',#10,4,((0.,0.,-1.)),$,(),(" + triangles;
  EXPECT_TRUE(isWarnedOf(start + "(1,2,3)))"));
  EXPECT_FALSE(isWarnedOf(start + "(1,3,2)))"));
}

TEST(StoredNormals, OneFaceThatAgreesIsEnoughForItsBody) {
  const std::string faces = kInMillimetres + kPoints +
                            "#11=TRIANGULATED_FACE('',#10,4,((0.,0.,-1.)),$,(),((1,2,3)));\n"
                            "#12=TRIANGULATED_FACE('',#10,4,((0.,0.,1.)),$,(),((1,2,3)));\n"
                            "#13=TRIANGULATED_FACE('',#10,4,(),$,(),((1,2,3)));\n";
  EXPECT_FALSE(isWarned(
      prepared(stepFile(faces + "#19=TESSELLATED_SOLID('',(#11,#12),$);\n" + kBodyShown))));
  EXPECT_FALSE(isWarned(
      prepared(stepFile(faces + "#19=TESSELLATED_SOLID('',(#12,#13),$);\n" + kBodyShown))));
  EXPECT_TRUE(isWarned(
      prepared(stepFile(faces + "#19=TESSELLATED_SOLID('',(#13,#11),$);\n" + kBodyShown))));
  EXPECT_TRUE(
      isWarned(prepared(stepFile(faces + "#18=TESSELLATED_SOLID('',(#11),$);\n"
                                         "#19=TESSELLATED_SOLID('',(#12),$);\n"
                                         "#20=TESSELLATED_SHAPE_REPRESENTATION('',(#18,#19),#2);"
                                         "\n"))));
}

TEST(StoredNormals, NothingIsSaidOfNormalsThatTellNothing) {
  EXPECT_FALSE(isWarnedOf("TRIANGULATED_FACE('',#10,4,(),$,(),((1,2,3)))"));
  EXPECT_FALSE(isWarnedOf("TRIANGULATED_FACE('',#10,4,$,$,(),((1,2,3)))"));
  EXPECT_FALSE(isWarnedOf("TRIANGULATED_FACE('',#10,4,((0.,0.,0.)),$,(),((1,2,3)))"));
  EXPECT_FALSE(isWarnedOf("TRIANGULATED_FACE('',#10,4,((0.,-1.,0.)),$,(),((1,2,3)))"));
  EXPECT_FALSE(isWarnedOf("TRIANGULATED_FACE('',#10,4,((0.,0.,$)),$,(),((1,2,3)))"));
  EXPECT_FALSE(isWarnedOf("TRIANGULATED_FACE('',#10,4,((0.,0.,-1.),(0.,0.,-1.)),$,(),((1,2,3)))"));
}

TEST(StoredNormals, NothingIsTurned) {
  const Prepared result = withFace("TRIANGULATED_FACE('',#10,4,((0.,0.,-1.)),$,(),((1,2,3)))");
  EXPECT_THAT(dataOf(result.file), HasSubstr("((1,2,3)),());\n"));
}

TEST(StoredNormals, AMirroredPlaceChangesNothing) {
  const std::string mirrored =
      "#11=TESSELLATED_SHAPE_REPRESENTATION('',(#19),#2);\n"
      "#30=CARTESIAN_POINT('',(0.,0.,0.));\n"
      "#31=AXIS2_PLACEMENT_3D('',#30,$,$);\n"
      "#32=DIRECTION('',(0.,-1.,0.));\n"
      "#33=CARTESIAN_TRANSFORMATION_OPERATOR_3D('','',$,#32,#30,1.,$);\n"
      "#34=REPRESENTATION_MAP(#31,#11);\n"
      "#35=MAPPED_ITEM('',#34,#33);\n"
      "#36=SHAPE_REPRESENTATION('',(#35),#2);\n";
  const auto placed = [&mirrored](const char* z) {
    return prepared(stepFile(kInMillimetres + kPoints + "#19=TRIANGULATED_FACE('',#10,4,((0.,0.," +
                             z + ")),$,(),((1,2,3)));\n" + mirrored));
  };
  EXPECT_THAT(placed("1.").file, HasSubstr("((1,3,2)),());\n"));
  EXPECT_FALSE(isWarned(placed("1.")));
  EXPECT_TRUE(isWarned(placed("-1.")));
}

TEST(StoredNormals, AreFoundInListsLongerThanABlock) {
  std::string points;
  std::string normals;
  for (int i = 0; i < 20'000; ++i) {
    points += "(0.,0.,0.),";
    normals += "(0.,0.,1.),";
  }
  const auto withNormal = [&](const std::string& z) {
    return prepared(
        stepFile(kInMillimetres + "#10=COORDINATES_LIST('',20003,(" + points +
                 "(0.,0.,0.),(1.,0.,0.),(0.,1.,0.)));\n#19=TRIANGULATED_FACE('',#10,20003,(" +
                 normals + "(0.,0.," + z + "),(0.,0.," + z + "),(0.,0.," + z +
                 ")),$,(),((20001,20002,20003)));\n" + kBodyShown));
  };
  EXPECT_TRUE(isWarned(withNormal("-1.")));
  EXPECT_FALSE(isWarned(withNormal("1.")));
}

TEST(StoredNormals, AreNotLookedForWhereTooMuchWouldHaveToBeRead) {
  // Each body reads 50,000 points; only some twenty times as many are read in all.
  std::string points = "(1.,0.,0.),(0.,1.,0.)";
  for (int i = 2; i < 50'000; ++i) {
    points += ",(0.,0.,0.)";
  }
  const auto withLastAgainst = [&points](int count) {
    std::string faces;
    std::string names;
    for (int i = 0; i < count; ++i) {
      const std::string name = '#' + std::to_string(100 + i);
      names += (i == 0 ? "" : ",") + name;
      faces += name + "=TRIANGULATED_FACE('',#10,3,((0.,0.," + (i + 1 < count ? "1." : "-1.") +
               ")),$,(50000,1,2),((1,2,3)));\n";
    }
    return prepared(stepFile(kInMillimetres + "#10=COORDINATES_LIST('',50000,(" + points + "));\n" +
                             faces + "#20=TESSELLATED_SHAPE_REPRESENTATION('',(" + names +
                             "),#2);\n"));
  };
  EXPECT_TRUE(isWarned(withLastAgainst(10)));
  EXPECT_FALSE(isWarned(withLastAgainst(40)));
}

}  // namespace
}  // namespace plenvorith
