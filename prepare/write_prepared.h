#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "prepare/drop.h"
#include "prepare/orphans.h"
#include "prepare/output_file.h"
#include "prepare/tessellation_plan.h"

namespace plenvorith {

/// By list of the plan the points that overflow, from 0.
using HugePoints = std::map<std::size_t, std::vector<bool>>;

/// All that is decided about a file.
struct Decisions {
  std::vector<Fate> fates;
  TessellationPlan plan;
  Orphans orphans;
  bool mayHaveExact = false;
  HugePoints huge;  ///< as found by writing the file once
};

/// What was found while writing.
struct Written {
  std::uint64_t triangles = 0;
  std::uint64_t copiedTriangles = 0;  ///< of bodies that exact geometry duplicates
  std::uint64_t skippedTriangles = 0;
  std::uint64_t emptiedStrings = 0;
  HugePoints huge;                  ///< whose triangles are written unless they were known before
  bool hasNormalsAgainst = false;   ///< a body's stored normals are all against its triangles
  bool hasMalformedHeader = false;  ///< some of it is left out
  std::string error;                ///< empty if nothing is wrong with the file
};

/// Writes the file anew, in the order of the file: one instance a line without blanks, what is
/// dropped left out, faces and coordinates of part tessellation expanded and placed. At the end of
/// the data come what holds them together, what ties orphans to a product and, if there is exact
/// geometry too, the mark by which the converter knows that.
///
/// Takes   two readers of the file, one at its start, the other to move about in it.
[[nodiscard]] Written writePrepared(StatementReader& reader, StatementReader& again,
                                    const InstanceTable& table, const Decisions& decisions,
                                    OutputFile& output);

}  // namespace plenvorith
