#include "prepare/new_instances.h"

#include <functional>
#include <string>

#include <gmock/gmock.h>

#include "tests/support/instances.h"
#include "tests/support/temp_dir.h"

namespace plenvorith {
namespace {

/// What `write` writes.
std::string writtenBy(const std::function<void(OutputFile&)>& write) {
  const test::TempDir directory;
  OutputFile output(directory / "out");
  write(output);
  EXPECT_TRUE(output.close());
  return test::readFile(directory / "out");
}

/// As many lists, faces and solids.
TessellationPlan planOf(std::size_t lists, std::size_t faces, std::uint32_t solids) {
  TessellationPlan plan;
  plan.lists.resize(lists);
  plan.faces.resize(faces);
  plan.solidCount = solids;
  return plan;
}

TEST(NewNames, BeginWithTheFirstPowerOfTenAboveTheOldOnes) {
  NewNames names(999, {}, planOf(2, 3, 1), {});
  EXPECT_EQ(names.list(0), 1000U);
  EXPECT_EQ(names.list(1), 1001U);
  EXPECT_EQ(names.face(0), 1002U);
  EXPECT_EQ(names.face(2), 1004U);
  EXPECT_EQ(names.solid(0), 1005U);
  EXPECT_EQ(names.next(), 1006U);
  EXPECT_EQ(names.next(), 1007U);
  EXPECT_EQ(NewNames(1000, {}, planOf(1, 1, 1), {}).list(0), 10000U);
}

TEST(NewNames, AreAllOfTheSameLength) {
  // 9 and 90 numbers are too few for these and what holds them together.
  const NewNames names(3, {}, planOf(20, 40, 1), {});
  EXPECT_EQ(names.list(0), 100U);
  EXPECT_EQ(names.solid(0), 160U);
  Orphans orphans;
  orphans.representations.resize(900);
  EXPECT_EQ(NewNames(3, {}, planOf(20, 40, 1), orphans).list(0), 1000U);
}

TEST(WriteSolids, GivesEachItsFacesInTheOrderOfTheFile) {
  TessellationPlan plan = planOf(1, 5, 2);
  plan.faces[0].solid = 1;
  plan.faces[1].solid = 0;
  plan.faces[2].solid = PlannedFace::kNoSolid;
  plan.faces[3].solid = 1;
  plan.faces[4].solid = 0;
  NewNames names(99, {}, plan, {});
  EXPECT_EQ(writtenBy([&](OutputFile& output) { writeSolids(plan, names, output); }),
            "#106=TESSELLATED_SOLID('',(#102,#105),$);\n"
            "#107=TESSELLATED_SOLID('',(#101,#104),$);\n"
            "#108=(LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT(.MILLI.,.METRE.));\n"
            "#109=(GEOMETRIC_REPRESENTATION_CONTEXT(3)GLOBAL_UNIT_ASSIGNED_CONTEXT((#108))"
            "REPRESENTATION_CONTEXT('',''));\n"
            "#110=TESSELLATED_SHAPE_REPRESENTATION('',(#106,#107),#109);\n");
}

TEST(WriteMark, IsACommentToAnyReaderOfStatements) {
  NewNames names(9, {}, {}, {});
  EXPECT_EQ(writtenBy([&](OutputFile& output) { writeMark(names, output); }),
            "/*\n"
            "#10=TESSELLATED_SHAPE_REPRESENTATION('',(),$);\n"
            "#11=SHAPE_REPRESENTATION('',(),$);\n"
            "#12=SHAPE_REPRESENTATION_RELATIONSHIP('','',#11,#10);\n"
            "*/\n");
}

TEST(WriteOrphans, TiesThemToTheShapeThatIsThere) {
  test::Instances file("#5=PRODUCT_DEFINITION_SHAPE('','',$);\n#7=A();\n#8=A();\n");
  Orphans orphans;
  orphans.representations = {file[7], file[8]};
  orphans.productShape = file[5];
  NewNames names(9, {}, {}, orphans);
  EXPECT_EQ(
      writtenBy([&](OutputFile& output) { writeOrphans(orphans, file.table, names, output); }),
      "#10=SHAPE_DEFINITION_REPRESENTATION(#5,#7);\n"
      "#11=SHAPE_DEFINITION_REPRESENTATION(#5,#8);\n");
}

TEST(WriteOrphans, MakesAProductWhereThereIsNone) {
  test::Instances file("#7=A();\n");
  Orphans orphans;
  orphans.representations = {file[7]};
  NewNames names(9, {}, {}, orphans);
  EXPECT_EQ(
      writtenBy([&](OutputFile& output) { writeOrphans(orphans, file.table, names, output); }),
      "#10=APPLICATION_CONTEXT('');\n"
      "#11=PRODUCT_CONTEXT('',#10,'mechanical');\n"
      "#12=PRODUCT('','','',(#11));\n"
      "#13=PRODUCT_DEFINITION_FORMATION('','',#12);\n"
      "#14=PRODUCT_DEFINITION_CONTEXT('part definition',#10,'design');\n"
      "#15=PRODUCT_DEFINITION('','',#13,#14);\n"
      "#16=PRODUCT_DEFINITION_SHAPE('','',#15);\n"
      "#17=SHAPE_DEFINITION_REPRESENTATION(#16,#7);\n");
}

TEST(WriteOrphans, WritesNothingWithoutOrphans) {
  NewNames names(9, {}, {}, {});
  EXPECT_EQ(writtenBy([&](OutputFile& output) { writeOrphans({}, {}, names, output); }), "");
}

}  // namespace
}  // namespace plenvorith
