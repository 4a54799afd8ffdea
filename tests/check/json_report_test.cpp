#include "check/json_report.h"

#include <gmock/gmock.h>

#include "tests/check/meshes.h"
#include "tests/check/models.h"

namespace plenvorith {
namespace {

using test::modelOf;
using test::openShell;
using test::soundPart;
using testing::ElementsAre;

CheckedPart openSolid() {
  CheckedPart part = soundPart();
  part.mesh.openEdges = 3;
  return part;
}

TEST(JsonReport, OfAModelWithoutProblemsIsOneLine) {
  CheckedModel model = modelOf({soundPart(), openShell()});
  model.deflection = 0.25;
  EXPECT_THAT(
      jsonReport(model, Reported::Problems),
      ElementsAre(R"({"parts":2,"partsWithProblems":0,"openSolids":0,"facesWithoutMesh":0,)"
                  R"("facesOverDeflection":0,"deviation":0.0625,"triangles":24,"volume":8.0,)"
                  R"("deflection":0.25})"));
  model.hasMesh = true;
  EXPECT_THAT(
      jsonReport(model, Reported::Problems),
      ElementsAre(R"({"parts":2,"partsWithProblems":0,"openSolids":0,"facesWithoutMesh":0,)"
                  R"("facesOverDeflection":0,"deviation":0.0625,"triangles":24,"volume":8.0,)"
                  R"("deflection":0.25,)"
                  R"("meshIsOfInput":true})"));
}

TEST(JsonReport, TellsOfEachPartWithAProblem) {
  EXPECT_THAT(
      jsonReport(modelOf({soundPart(), openSolid()}), Reported::Problems),
      ElementsAre(
          R"({"number":7,"kind":"solid","path":["lamp","foot"],"name":"Body","triangles":12,)"
          R"("closed":false,"openEdges":3,"degenerate":0,"faces":6,"facesWithoutMesh":0,)"
          R"("facesOverDeflection":0,"deviation":0.0625,"volume":8.0,"area":24.0,)"
          R"("placement":[1.0,0.0,0.0,10.0,0.0,1.0,0.0,20.0,0.0,0.0,1.0,30.0]})",
          R"({"parts":2,"partsWithProblems":1,"openSolids":1,"facesWithoutMesh":0,)"
          R"("facesOverDeflection":0,"deviation":0.0625,"triangles":24,"volume":8.0,"deflection":0.1})"));
}

TEST(JsonReport, TellsOfAllPartsInTheirOrder) {
  const std::vector<std::string> lines =
      jsonReport(modelOf({soundPart(), openSolid(), openShell()}), Reported::All);
  ASSERT_EQ(lines.size(), 4U);
  EXPECT_THAT(lines[0], testing::HasSubstr("\"closed\":true"));
  EXPECT_THAT(lines[1], testing::HasSubstr("\"openEdges\":3"));
  EXPECT_THAT(lines[2], testing::StartsWith(R"({"number":8,"kind":"shell",)"));
}

TEST(JsonReport, LeavesOutWhatTessellationDoesNotHave) {
  CheckedPart part = openShell();
  part.number.reset();
  part.part = {};
  part.part.kind = "tessellation";
  EXPECT_EQ(jsonReport(modelOf({part}), Reported::All).front(),
            R"({"number":null,"kind":"tessellation","path":[],"name":"","triangles":12,)"
            R"("closed":false,"openEdges":4,"degenerate":0,"volume":8.0,"area":24.0})");
}

TEST(JsonReport, EscapesNamesThatAreNoText) {
  CheckedPart part = soundPart();
  part.part.path = {"Größe", "a\"b\\c", "\xE9\n"};
  EXPECT_THAT(jsonReport(modelOf({part}), Reported::All).front(),
              testing::HasSubstr(R"("path":["Größe","a\"b\\\\c","\\xe9\\n"])"));
}

TEST(JsonReport, ComparesMeasures) {
  CheckedPart part = soundPart();
  part.part.exact = {10.0, 24.0, Point3{1, 1, 3}};
  part.part.stated = {10.0, {}, {}};
  CheckedModel model = modelOf({part, openShell()});
  model.stated = {{}, 48.0, {}};
  const std::vector<std::string> lines = jsonReport(model, Reported::All);
  EXPECT_THAT(lines[0],
              testing::HasSubstr(
                  R"(,"exact":{"volume":10.0,"difference":-0.2,"area":24.0,"areaDifference":0.0,)"
                  R"("centroid":[1.0,1.0,3.0],"centroidDistance":2.0},)"
                  R"("stated":{"volume":10.0,"difference":0.0}})"));
  EXPECT_THAT(lines[2], testing::HasSubstr(R"(,"stated":{"area":48.0,"areaDifference":-0.5}})"));
}

TEST(JsonReport, OfAMeshAloneIsOneLine) {
  EXPECT_EQ(jsonReport(test::factsOfFile(test::cubeAt(1, 2, 3, 2))),
            R"({"triangles":12,"closed":true,"openEdges":0,"degenerate":0,"pieces":1,)"
            R"("volume":8.0,"area":24.0,"bounds":[[1.0,2.0,3.0],[3.0,4.0,5.0]]})");
}

}  // namespace
}  // namespace plenvorith
