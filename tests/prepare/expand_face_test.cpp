#include "prepare/expand_face.h"

#include <string>
#include <string_view>

#include <gmock/gmock.h>

#include "tests/prepare/step_file.h"
#include "tests/support/temp_dir.h"

namespace plenvorith {
namespace {

struct Expansion {
  std::string triples;
  ExpandedFace face;
};

/// Expands a face whose coordinates list has this many points.
Expansion expand(std::string_view body, std::uint64_t points = 100, bool isMirrored = false) {
  const test::TempDir directory;
  StatementReader reader(
      test::writeFile(directory / "in.stp", test::stepFile("#1=" + std::string(body) + ";\n")));
  Statement statement = reader.next();
  while (statement == Statement::HeaderEntity) {
    statement = reader.next();
  }
  EntityTypes types;
  const EntityType& type = types[types.idOf("A", body.starts_with('('))];
  Expansion result;
  OutputFile output(directory / "out.stp");
  result.face = expandFace(reader, type, points, {7, 8, isMirrored}, &output);
  EXPECT_TRUE(output.close());
  const std::string written = test::readFile(directory / "out.stp");
  const std::string before =
      "#7=COMPLEX_TRIANGULATED_FACE('',#8," + std::to_string(points) + ",(),$,(),(";
  const std::string after = "),());\n";
  EXPECT_THAT(written, testing::StartsWith(before));
  EXPECT_THAT(written, testing::EndsWith(after));
  result.triples = written.substr(before.size(), written.size() - before.size() - after.size());
  return result;
}

TEST(ExpandFace, KeepsTriples) {
  const Expansion result =
      expand("TRIANGULATED_FACE('a',#2,4,((0.,0.,1.)),#9,(),((1,2,3),(4,3,1)))");
  EXPECT_EQ(result.triples, "(1,2,3),(4,3,1)");
  EXPECT_EQ(result.face.triangles, 2U);
  EXPECT_EQ(result.face.skipped, 0U);
  EXPECT_FALSE(result.face.hasFailed);
}

TEST(ExpandFace, DropsWhatIsAJointOnceItIsWritten) {
  const Expansion result =
      expand("TRIANGULATED_FACE('a',#2,4,(),#9,(5,6,5,7),((1,2,2),(1,2,3),(1,2,4)))");
  EXPECT_EQ(result.triples, "(5,6,7)");
  EXPECT_EQ(result.face.triangles, 1U);
  EXPECT_EQ(result.face.skipped, 0U);
}

TEST(ExpandFace, CutsStripsIntoTrianglesOfOneSense) {
  EXPECT_EQ(expand("COMPLEX_TRIANGULATED_FACE('',#2,9,(),$,(),((1,2,3,4,5),(6,7,8)),())").triples,
            "(1,2,3),(2,4,3),(3,4,5),(6,7,8)");
}

TEST(ExpandFace, CutsFansIntoTriangles) {
  EXPECT_EQ(expand("COMPLEX_TRIANGULATED_SURFACE_SET('',#2,9,(),(),(),((1,2,3,4,5)))").triples,
            "(1,2,3),(1,3,4),(1,4,5)");
}

TEST(ExpandFace, PutsFansBehindStrips) {
  EXPECT_EQ(expand("COMPLEX_TRIANGULATED_FACE('',#2,9,(),$,$,((1,2,3)),((4,5,6)))").triples,
            "(1,2,3),(4,5,6)");
}

TEST(ExpandFace, DropsJointsOfStripsAndFans) {
  const Expansion result =
      expand("COMPLEX_TRIANGULATED_FACE('',#2,9,(),$,(),((1,2,3,3,4,4,5,6)),((1,2,2,3)))");
  // Of the strip, (1,2,3) and then, with an odd place in the strip, (4,6,5).
  EXPECT_EQ(result.triples, "(1,2,3),(4,6,5),(1,2,3)");
  EXPECT_EQ(result.face.skipped, 0U);
}

TEST(ExpandFace, MapsIndices) {
  const Expansion result =
      expand("TRIANGULATED_SURFACE_SET('',#2,3,(),(30,20,10),((1,2,3),(3,2,1)))");
  EXPECT_EQ(result.triples, "(30,20,10),(10,20,30)");
}

TEST(ExpandFace, SkipsIndicesOutsideTheMappingOrTheList) {
  const Expansion list =
      expand("TRIANGULATED_FACE('',#2,3,(),$,(),((0,1,2),(1,2,4),(1,2,3),(-1,1,2)))", 3);
  EXPECT_EQ(list.triples, "(1,2,3)");
  EXPECT_EQ(list.face.skipped, 3U);
  const Expansion mapped =
      expand("TRIANGULATED_FACE('',#2,3,(),$,(3,2,9,1),((1,2,4),(1,2,3),(1,2,5)))", 3);
  EXPECT_EQ(mapped.triples, "(3,2,1)");
  EXPECT_EQ(mapped.face.skipped, 2U);
}

TEST(ExpandFace, SwapsTwoCornersWhereAPlacementMirrors) {
  EXPECT_EQ(expand("COMPLEX_TRIANGULATED_FACE('',#2,9,(),$,(),((1,2,3,4)),())", 9, true).triples,
            "(1,3,2),(2,3,4)");
}

TEST(ExpandFace, ReadsFacesOfSeveralRecords) {
  EXPECT_EQ(expand("(COMPLEX_TRIANGULATED_FACE((9,8,7,6),((1,2,3)),((4,3,2)))FACE()"
                   "REPRESENTATION_ITEM('(')TESSELLATED_FACE(#2,4,(),$)TESSELLATED_ITEM())")
                .triples,
            "(9,8,7),(6,7,8)");
  EXPECT_EQ(expand("(REPRESENTATION_ITEM(')')TESSELLATED_FACE(#2,4,(),$)TRIANGULATED_FACE((),"
                   "((1,2,3))))")
                .triples,
            "(1,2,3)");
}

TEST(ExpandFace, RejectsWhatIsNoNumber) {
  EXPECT_TRUE(expand("TRIANGULATED_FACE('',#2,3,(),$,(),((1,2,x)))").face.hasFailed);
  EXPECT_TRUE(expand("TRIANGULATED_FACE('',#2,3,(),$,(),((1,2,3)").face.hasFailed);
  EXPECT_TRUE(expand("TRIANGULATED_FACE('',#2,3)").face.hasFailed);
}

TEST(ExpandFace, AStripGivesTwoTrianglesLessThanItsIndices) {
  for (int size = 3; size < 2000; size += 97) {
    std::string strip;
    for (int i = 1; i <= size; ++i) {
      strip += (i == 1 ? "" : ",") + std::to_string(i);
    }
    const Expansion result =
        expand("COMPLEX_TRIANGULATED_FACE('',#2,9,(),$,(),((" + strip + ")),())", 2000);
    EXPECT_EQ(result.face.triangles, static_cast<std::uint64_t>(size - 2));
  }
}

}  // namespace
}  // namespace plenvorith
