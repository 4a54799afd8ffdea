#include "check/text_report.h"

#include <gmock/gmock.h>

#include "tests/check/meshes.h"
#include "tests/check/models.h"

namespace plenvorith {
namespace {

using test::modelOf;
using test::openShell;
using test::soundPart;
using testing::ElementsAre;

TEST(TextReport, OfAModelWithoutProblemsIsALine) {
  CheckedModel model = modelOf({soundPart(), openShell()});
  EXPECT_THAT(textReport(model, Reported::Problems),
              ElementsAre("No problem in 2 parts, 24 triangles, deflection 0.1"));
  model.hasMesh = true;
  EXPECT_THAT(textReport(model, Reported::Problems),
              ElementsAre("No problem in 2 parts, 24 triangles, deflection 0.1",
                          "The mesh is that of the file."));
}

TEST(TextReport, BeginsWithTheWorst) {
  CheckedPart open = soundPart();
  open.number = 12;
  open.mesh.openEdges = 3;
  CheckedPart far = soundPart();
  far.number = 3;
  far.part.faces.overDeflection = 1;
  far.part.faces.deviation = 12.3456789;
  CheckedPart hole = openShell();
  hole.part.faces.withoutMesh = 2;
  EXPECT_THAT(textReport(modelOf({soundPart(), far, open, hole}), Reported::Problems),
              ElementsAre("part   kind  open  no mesh  over  deviation  volume  name",
                          "   8  shell     4        2     0     0.0625       8  lamp / foot",
                          "  12  solid     3        0     0     0.0625       8  lamp / foot / Body",
                          "   3  solid     0        0     1    12.3457       8  lamp / foot / Body",
                          "3 parts with problems in 4 parts, 48 triangles, deflection 0.1"));
}

TEST(TextReport, OfAllPartsHasThoseWithoutProblemsLast) {
  CheckedPart open = soundPart();
  open.mesh.openEdges = 3;
  CheckedPart tessellation = openShell();
  tessellation.number.reset();
  tessellation.part = {};
  tessellation.part.kind = "tessellation";
  EXPECT_THAT(textReport(modelOf({tessellation, open}), Reported::All),
              ElementsAre("part          kind  open  no mesh  over  deviation  volume  name",
                          "   7         solid     3        0     0     0.0625       8  "
                          "lamp / foot / Body",
                          "   -  tessellation     4        0     0          0       8  ",
                          "1 part with problems in 2 parts, 24 triangles, deflection 0.1"));
}

TEST(TextReport, EscapesWhatATerminalWouldObey) {
  CheckedPart part = soundPart();
  part.part.name = "\x1b[31m";
  EXPECT_THAT(textReport(modelOf({part}), Reported::All)[1], testing::EndsWith("foot / \\x1b[31m"));
}

TEST(TextReport, TellsOfStatedMeasuresOfTheWhole) {
  CheckedModel model = modelOf({soundPart()});
  model.parts[0].part.exact = {8.0, 24.0, {}};
  model.withExact = true;
  model.stated.volume = 9;
  EXPECT_THAT(textReport(model, Reported::Problems),
              ElementsAre("No problem in 1 part, 12 triangles, deflection 0.1",
                          "The file states other measures of the whole than it has."));
}

TEST(TextReport, OfAMeshAlone) {
  EXPECT_THAT(textReport(test::factsOfFile(test::cubeAt(1, 2, 3, 2))),
              ElementsAre("closed", "12 triangles, 0 of them without area, in 1 piece",
                          "volume 8, area 24", "from (1, 2, 3) to (3, 4, 5)"));
  EXPECT_THAT(textReport(test::factsOfFile({test::facet({0, 0, 0}, {1, 0, 0}, {0, 1, 0})})),
              ElementsAre("open: 3 edges", "1 triangle, 0 of them without area, in 1 piece",
                          "volume 0, area 0.5", "from (0, 0, 0) to (1, 1, 0)"));
}

}  // namespace
}  // namespace plenvorith
