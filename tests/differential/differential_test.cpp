// Runs whole generated STEP files through everything that needs no kernel, and compares every
// result with the references: the table, the analysis, the decoded triangles, the bytes of the STL
// file and the clean copy.
//
// PLENVORITH_DIFFERENTIAL_FILES  how many files, 3000 where it is not set, 750 with sanitizers
// PLENVORITH_DIFFERENTIAL_SEED   the first seed, 1 where it is not set; file n has the seed after
//                                that by n, and a failure names its seed

#include <optional>
#include <random>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "output/stl_writer.h"
#include "steptext/tessellation_analysis.h"
#include "tessellation/face_decoder.h"
#include "tests/differential/step_file_generator.h"
#include "tests/reference/reference_analysis.h"
#include "tests/reference/reference_entity_table.h"
#include "tests/reference/reference_face_decoder.h"
#include "tests/reference/reference_stl_writer.h"
#include "tests/support/outcome.h"
#include "tests/support/rounds.h"
#include "tests/support/step_text.h"
#include "tests/support/strip_comparison.h"
#include "tests/support/temp_dir.h"

namespace plenvorith {
namespace {

using test::MemoryFile;
using test::Outcome;
using test::outcomeOf;
using test::readFile;

/// How often something was met, so that a generator that has become useless is noticed.
struct Tally {
  int triangles = 0;
  int errors = 0;
  int statuses[4] = {0, 0, 0, 0};
};

class Differential : public testing::Test {
 protected:
  /// Decodes with product and reference and compares triangles or errors, and the STL files.
  template <typename Decode, typename Reference>
  void compareDecoded(Decode decode, Reference reference) {
    std::optional<std::vector<Triangle>> triangles;
    const Outcome actual = outcomeOf([&] {
      triangles = decode();
      return *triangles;
    });
    ASSERT_EQ(actual, outcomeOf(reference));
    if (!triangles) {
      ++tally.errors;
      return;
    }
    tally.triangles += static_cast<int>(triangles->size());
    ASSERT_TRUE(writeBinaryStl(stl.path(), *triangles));
    ASSERT_EQ(readFile(stl.path()), test::referenceBinaryStl(reference()));
  }

  void compare(const std::string& content) {
    const EntityTable table = test::readTable(content);
    const test::EntityTexts expectedTable = test::referenceEntityTable(content);
    ASSERT_EQ(test::textsIn(table), expectedTable);
    const TessellationAnalysis analysis = analyzeTessellation(table);
    const TessellationAnalysis expected = test::referenceAnalysis(expectedTable);
    ++tally.statuses[static_cast<int>(analysis.status)];
    ASSERT_EQ(analysis.status, expected.status);
    ASSERT_EQ(analysis.pairedReps, expected.pairedReps);
    ASSERT_EQ(analysis.uniqueReps, expected.uniqueReps);
    ASSERT_EQ(analysis.uniqueFaces, expected.uniqueFaces);
    ASSERT_NO_FATAL_FAILURE(
        compareDecoded([&] { return decodeAllTriangulatedFaces(table); },
                       [&] { return test::referenceDecodeAll(expectedTable); }));
    ASSERT_NO_FATAL_FAILURE(
        compareDecoded([&] { return decodeTriangulatedFaces(table, analysis.uniqueFaces); },
                       [&] { return test::referenceDecode(expectedTable, expected.uniqueFaces); }));
    ASSERT_EQ(stripComparison.differenceFor(content), "");
  }

  test::StripComparison stripComparison;
  MemoryFile stl;
  Tally tally;
};

TEST_F(Differential, AgreesWithTheReferencesOnGeneratedFiles) {
  const unsigned long count =
      test::fromEnvironment("PLENVORITH_DIFFERENTIAL_FILES", test::kHasSanitizers ? 750 : 3000);
  const unsigned long seed = test::fromEnvironment("PLENVORITH_DIFFERENTIAL_SEED", 1);
  for (unsigned long i = 0; i < count; ++i) {
    std::mt19937 random(static_cast<std::mt19937::result_type>(seed + i));
    const std::string content = test::generateStepFile(random);
    ASSERT_NO_FATAL_FAILURE(compare(content)) << "seed " << seed + i << "\n" << content;
  }
  const auto share = static_cast<int>(count / 50);
  EXPECT_GE(tally.triangles, static_cast<int>(count));
  EXPECT_GE(tally.errors, share);
  for (const int status : tally.statuses) {
    EXPECT_GE(status, share);
  }
}

}  // namespace
}  // namespace plenvorith
