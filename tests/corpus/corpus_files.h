#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/corpus/expected_transcript.h"

namespace plenvorith::test {

/// The rows of a table whose columns are separated by tabs, under a line of their names. A table
/// that is missing or empty fails the test.
std::vector<Row> readTable(const std::string& path);

struct Outcome {
  int exitStatus = -1;
  std::string out;  ///< Without the lines of the kernel and that of the temporary copy.
  std::string err;
  bool stripped = false;  ///< Whether a temporary copy was made.
};

/// Runs the program in `directory`, which is its directory for temporary files as well.
Outcome runProgram(const std::string& directory, const std::string& input,
                   const std::string& output);

/// Prepares a file without a word, and gives the exit status.
int prepareQuietly(const std::string& input, const std::string& output);

/// How many triangles a run reports for the exact geometry, compared with those of the row.
std::size_t checkedBrepTriangles(const Outcome& run, const Row& row);

/// A folder of STEP files, named by PLENVORITH_CORPUS. Without one its tests are skipped.
class Corpus : public testing::Test {
 protected:
  void SetUp() override;

  std::string folder;
  std::vector<Row> rows;  ///< of its INDEX.tsv
};

}  // namespace plenvorith::test
