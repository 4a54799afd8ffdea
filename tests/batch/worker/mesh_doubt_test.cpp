#include "batch/worker/mesh_doubt.h"

#include <gtest/gtest.h>

namespace plenvorith {
namespace {

const std::string kAnalyzed = "Reading: a.stp\n[1] Analyzing file structure...\n";
const std::string kPairs = kAnalyzed + "[2] All tessellation duplicates BRep, will use BRep only\n";
const std::string kTwo = kAnalyzed +
                         "[2] Parsing unique tessellation...\n"
                         "  Parsed 2 triangles from unique tessellation\n";
const std::string kTwoOnly = kAnalyzed +
                             "[2] Parsing all tessellation (no BRep in file)...\n"
                             "  Parsed 2 triangles from tessellation\n";

TEST(MeshDoubt, IsNoneWhereTheConverterTookAllThatThereIs) {
  EXPECT_EQ(meshDoubt({.triangles = 2}, kTwoOnly), "");
  EXPECT_EQ(meshDoubt({.hasExact = true, .triangles = 2}, kTwo), "");
  EXPECT_EQ(meshDoubt({.hasExact = true}, kPairs), "");
  EXPECT_EQ(meshDoubt({.hasExact = true, .hasAnnotation = true}, kPairs), "");
  EXPECT_EQ(meshDoubt({.triangles = 2}, "Another program\n"), "");
}

TEST(MeshDoubt, NamesWhatTheConverterDoesNotTake) {
  EXPECT_EQ(meshDoubt({.triangles = 4,
                       .hasStrips = true,
                       .hasFans = true,
                       .isMapped = true,
                       .isScaled = true,
                       .isPlaced = true},
                      kTwoOnly),
            "preparing would change the mesh (strips, fans, index mappings, units, placements): "
            "try without --as-is");
  EXPECT_EQ(meshDoubt({.triangles = 2, .isScaled = true}, "Another program\n"),
            "preparing would change the mesh (units): try without --as-is");
}

TEST(MeshDoubt, NamesWhatHidesExactGeometry) {
  EXPECT_EQ(meshDoubt({.hasExact = true, .hasAnnotation = true}, kTwoOnly),
            "preparing would change the mesh (annotation): try without --as-is");
  EXPECT_EQ(meshDoubt({.hasExact = true}, kTwoOnly),
            "preparing would change the mesh (exact geometry): try without --as-is");
  EXPECT_EQ(meshDoubt({.hasExact = true, .triangles = 2, .hasOrphans = true}, kTwo),
            "preparing would change the mesh (exact geometry): try without --as-is");
}

TEST(MeshDoubt, NamesTessellationThatIsTakenOtherwise) {
  EXPECT_EQ(meshDoubt({.hasExact = true, .triangles = 2}, kPairs),
            "preparing would change the mesh (other tessellation): try without --as-is");
  EXPECT_EQ(meshDoubt({.hasExact = true, .hasAnnotation = true}, kTwo),
            "preparing would change the mesh (annotation): try without --as-is");
}

}  // namespace
}  // namespace plenvorith
