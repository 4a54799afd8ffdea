#include "prepare/face_triangles.h"

#include <string>

#include <gmock/gmock.h>

#include "tests/support/instances.h"
#include "tests/support/temp_dir.h"

namespace plenvorith {
namespace {

using testing::ElementsAre;

struct Result {
  std::string text;
  ExpandedFace face;
};

/// What becomes of triangles of a face with this index mapping and nine points.
template <typename Add>
Result triangles(const std::string& mapping, const FaceTarget& target, Add add,
                 bool mayHaveNormals = false) {
  const test::TempDir directory;
  test::Instances in("#1=A(" + mapping + ",((1,2,3),(3,2,1),(4,4,5)));\n");
  in.reader.seekBody(in.table.offset(0));
  TokenReader tokens(in.reader);
  (void)tokens.takeKeyword();
  (void)tokens.take('(');
  OutputFile output(directory / "out");
  FaceTriangles face(tokens, 9, target, &output);
  face.result.mayHaveNormals = mayHaveNormals;
  EXPECT_TRUE(face.readMapping());
  EXPECT_TRUE(tokens.take(','));
  EXPECT_TRUE(tokens.take('('));
  add(face);
  face.flush();
  EXPECT_TRUE(output.close());
  return {test::readFile(directory / "out"), face.result};
}

/// Of a mapping of more entries, none is held.
FaceTarget target(std::size_t held, std::size_t waiting = 2) {
  FaceTarget result;
  result.mappingLimits = {.held = held, .chunk = 2};
  result.triangleLimit = waiting;
  return result;
}

TEST(FaceTriangles, AreWrittenWithTheirPoints) {
  const auto add = [](FaceTriangles& face) {
    face.add(1, 2, 3);
    face.add(4, 3, 2);
    face.add(1, 3, 4);
  };
  EXPECT_EQ(triangles("()", {}, add).text, "(1,2,3),(4,3,2),(1,3,4)");
  for (const std::size_t held : {2U, 4U}) {
    const Result result = triangles("(9,8,7,6)", target(held), add);
    EXPECT_EQ(result.text, "(9,8,7),(6,7,8),(9,7,6)") << held;
    EXPECT_EQ(result.face.triangles, 3U) << held;
  }
}

TEST(FaceTriangles, WithIndicesOutsideAreSkipped) {
  const auto add = [](FaceTriangles& face) {
    face.add(0, 2, 3);
    face.add(-1, 2, 3);
    face.add(1, 5, 3);
    face.add(1, 2, 10);
    face.add(1, 2, 4);  // of the mapping, the entry is no point
    face.add(1, 2, 0x1'0000'0001);
    face.skip();
    face.add(1, 2, 3);
  };
  for (const std::size_t held : {2U, 4U}) {
    const Result result = triangles("(9,8,7,10)", target(held), add);
    EXPECT_EQ(result.text, "(9,8,7)") << held;
    EXPECT_EQ(result.face.triangles, 1U) << held;
    EXPECT_EQ(result.face.skipped, 7U) << held;
  }
}

TEST(FaceTriangles, WithTwoEqualPointsAreLeftOut) {
  const auto add = [](FaceTriangles& face) {
    face.add(1, 2, 4);
    face.addJoined(1, 1, 2);
    face.addJoined(1, 2, 3);
  };
  for (const std::size_t held : {2U, 4U}) {
    const Result result = triangles("(9,8,7,9)", target(held), add);
    EXPECT_EQ(result.text, "(9,8,7)") << held;
    EXPECT_EQ(result.face.skipped, 0U) << held;
  }
}

TEST(FaceTriangles, AreTurnedWhereAPlacementMirrors) {
  for (const std::size_t held : {2U, 4U}) {
    FaceTarget mirrored = target(held);
    mirrored.isMirrored = true;
    EXPECT_EQ(triangles("(9,8,7)", mirrored, [](FaceTriangles& face) { face.add(1, 2, 3); }).text,
              "(9,7,8)");
  }
}

TEST(FaceTriangles, AreSampledWithTheirIndicesAndPoints) {
  for (const std::size_t held : {2U, 4U}) {
    FaceTarget sampled = target(held, 9);
    sampled.maxSamples = 2;
    const auto add = [](FaceTriangles& face) {
      face.add(1, 2, 9);
      face.add(1, 2, 3);
      face.add(3, 2, 1);
      face.add(3, 1, 2);
    };
    EXPECT_TRUE(triangles("(9,8,7)", sampled, add).face.samples.empty());
    const Result result = triangles("(9,8,7)", sampled, add, true);
    ASSERT_EQ(result.face.samples.size(), 2U) << held;
    EXPECT_THAT(result.face.samples[0].normals, ElementsAre(1, 2, 3)) << held;
    EXPECT_THAT(result.face.samples[0].points, ElementsAre(9, 8, 7)) << held;
    EXPECT_THAT(result.face.samples[1].normals, ElementsAre(3, 2, 1)) << held;
    EXPECT_THAT(result.face.samples[1].points, ElementsAre(7, 8, 9)) << held;
  }
}

TEST(FaceTriangles, AreCopiedWhereNothingChanges) {
  const auto copy = [](FaceTriangles& face) { (void)face.copyTriples(); };
  // So near the end of the body it is left to the careful way.
  EXPECT_EQ(triangles("()", {}, copy).text, "");
  std::string list;
  for (int i = 0; i < 20; ++i) {
    list += "(1,2,3),(3,2,1),";
  }
  const auto copied = [&](const std::string& mapping, const FaceTarget& wanted) {
    return triangles(mapping + ",(" + list + "(4,4,5))", wanted, copy);
  };
  const Result result = copied("()", {});
  EXPECT_THAT(result.text, testing::StartsWith("(1,2,3),(3,2,1),(1,2,3)"));
  EXPECT_GT(result.face.triangles, 30U);
  FaceTarget mirrored;
  mirrored.isMirrored = true;
  EXPECT_EQ(copied("()", mirrored).text, "");
  EXPECT_EQ(copied("(1,2,3)", {}).text, "");
}

}  // namespace
}  // namespace plenvorith
