#pragma once

#include <string>
#include <vector>

#include "tests/support/stl_file.h"
#include "tests/support/temp_dir.h"

namespace plenvorith::test {

/// What the converter makes of a file.
struct Conversion {
  int signal = 0;           ///< that ended it, 0 if it ended by itself
  bool isReadBrep = false;  ///< whether it was converted, with a look for exact geometry
  std::vector<StlRecord> exact;
  std::vector<StlRecord> decoded;
};

/// What is said of a file, alone and prepared.
struct LawCase {
  Conversion alone;
  Conversion prepared;
  int prepareStatus = -1;  ///< exit status of preparing, -1 if it crashed
  bool leavesOut =
      false;           ///< malformed instances were left out, with a warning, or all of the file
  std::string broken;  ///< which part of the law does not hold; empty if all of it does
};

/// The law of preparing: a prepared file gives all exact triangles that the file gives alone, and
/// the converter does not crash on it where it converts the file alone with a look for exact geometry.
/// (Malformed geometry crashes the kernel; a file that it does not look into, or that it cannot read
/// for what stands elsewhere, keeps that to itself.)
///
/// Runs both programs on a file with this content in `directory`, and leaves nothing there. Meshes may
/// be off by `deflection`, in millimetres.
LawCase tryLaw(const TempDir& directory, const std::string& content,
               const std::string& deflection = "1");

}  // namespace plenvorith::test
