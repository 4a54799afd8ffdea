#include "prepare/expand_face.h"

#include <random>
#include <string>
#include <string_view>

#include <gmock/gmock.h>

#include "exchange/instance_table.h"
#include "tests/support/prepared_file.h"
#include "tests/support/rounds.h"
#include "tests/support/step_text.h"
#include "tests/support/temp_dir.h"

namespace plenvorith {
namespace {

struct Expansion {
  std::string triples;
  ExpandedFace face;
};

/// Expands a face whose coordinates list has this many points.
Expansion expand(std::string_view body, std::uint64_t points, const FaceTarget& wanted) {
  const test::TempDir directory;
  const std::string path =
      test::writeFile(directory / "in.stp", test::stepFile("#1=" + std::string(body) + ";\n"));
  InstanceTable table;
  {
    StatementReader first(path);
    (void)table.read(first);  // a string that a damaged face is left with may never end
  }
  StatementReader reader(path);
  Statement statement = reader.next();
  while (statement == Statement::HeaderEntity) {
    statement = reader.next();
  }
  Expansion result;
  OutputFile output(directory / "out.stp");
  FaceTarget target = wanted;
  target.name = 7;
  target.coordinates = 8;
  result.face = expandFace(reader, table.type(0), points, target, &output);
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

Expansion expand(std::string_view body, std::uint64_t points = 100, bool isMirrored = false) {
  FaceTarget target;
  target.isMirrored = isMirrored;
  return expand(body, points, target);
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

/// A list of `size` indices from 0 to `limit`.
std::string randomList(std::mt19937& random, std::size_t size, std::size_t limit) {
  std::string list;
  for (std::size_t i = 0; i < size; ++i) {
    list += (i == 0 ? "" : ",") + std::to_string(test::pick(random, limit + 1));
  }
  return '(' + list + ')';
}

/// Fewer than `count` lists of indices, or of three each.
std::string randomLists(std::mt19937& random, std::size_t count, std::size_t limit,
                        bool isTriples) {
  std::string lists;
  for (std::size_t i = test::pick(random, count); i > 0; --i) {
    const std::size_t size = isTriples ? 3 : test::pick(random, 12);
    lists += (lists.empty() ? "" : ",") + randomList(random, size, limit);
  }
  return '(' + lists + ')';
}

/// A face of any kind with a mapping of `size` entries.
std::string randomFace(std::mt19937& random, std::size_t size) {
  const bool isComplex = test::pick(random, 2) == 0;
  const bool isFace = test::pick(random, 2) == 0;
  const std::string keyword = std::string(isComplex ? "COMPLEX_" : "") + "TRIANGULATED_" +
                              (isFace ? "FACE" : "SURFACE_SET");
  std::string lists = randomList(random, size, 12) + ',';
  if (isComplex) {
    lists +=
        randomLists(random, 6, size + 1, false) + ',' + randomLists(random, 6, size + 1, false);
  } else {
    lists += randomLists(random, 30, size + 1, true);
  }
  if (test::pick(random, 3) == 0) {
    return "(REPRESENTATION_ITEM('')TESSELLATED_" + std::string(isFace ? "FACE" : "SURFACE_SET") +
           "(#2,4,()" + (isFace ? ",$" : "") + ")" + keyword + '(' + lists + "))";
  }
  return keyword + "('',#2,4,((0.,0.,1.))," + (isFace ? "$," : "") + lists + ')';
}

TEST(ExpandFace, GivesTheSameWithAMappingThatIsNotHeld) {
  std::mt19937 random(1);
  std::uint64_t triangles = 0;
  std::uint64_t skipped = 0;
  const int count = test::rounds(2000);
  for (int i = 0; i < count; ++i) {
    // Most are longer than four entries.
    std::string face = randomFace(random, 1 + test::pick(random, 30));
    const bool isDamaged = i % 2 == 1;
    if (isDamaged) {
      face.erase(test::pick(random, face.size()), 1);
    }
    FaceTarget held;
    held.isMirrored = test::pick(random, 2) == 0;
    held.maxSamples = test::pick(random, 2) * 5;
    FaceTarget lookedUp = held;
    lookedUp.mappingLimits = {.held = 4, .chunk = 1 + test::pick(random, 5)};
    lookedUp.triangleLimit = 1 + test::pick(random, 9);
    const Expansion expected = expand(face, 10, held);
    const Expansion result = expand(face, 10, lookedUp);
    ASSERT_TRUE(!expected.face.hasFailed || isDamaged) << face;
    ASSERT_EQ(result.face.hasFailed, expected.face.hasFailed) << face;
    ASSERT_EQ(result.triples, expected.triples) << face;
    ASSERT_EQ(result.face.triangles, expected.face.triangles) << face;
    ASSERT_EQ(result.face.skipped, expected.face.skipped) << face;
    ASSERT_EQ(result.face.samples.size(), expected.face.samples.size()) << face;
    for (std::size_t k = 0; k < expected.face.samples.size(); ++k) {
      ASSERT_EQ(result.face.samples[k].normals, expected.face.samples[k].normals) << face;
      ASSERT_EQ(result.face.samples[k].points, expected.face.samples[k].points) << face;
    }
    triangles += expected.face.triangles;
    skipped += expected.face.skipped;
  }
  EXPECT_GT(triangles, static_cast<unsigned>(count));
  EXPECT_GT(skipped, static_cast<unsigned>(count) / 2);
}

}  // namespace
}  // namespace plenvorith
