#pragma once

#include <string>
#include <vector>

#include "brep/brep_reader.h"
#include "common/triangle.h"
#include "steptext/entity_table.h"
#include "steptext/tessellation_analysis.h"

namespace plenvorith {

/// What both pipelines know of a file once they have read it as text.
struct AnalyzedFile {
  EntityTable table;
  TessellationAnalysis analysis;
};

/// Reads and analyses the STEP file at `inputPath`: step [1] of both pipelines.
///
/// Prints  what is read, the step's header, the number of entities and the name of the status.
AnalyzedFile readAndAnalyze(const std::string& inputPath);

/// What the steps that follow need of the file's text.
struct DecodedFile {
  TessellationStatus status = TessellationStatus::NoTessellation;
  std::vector<Triangle> tessellation;  ///< that no exact geometry duplicates
};

/// Reads and analyses the STEP file at `inputPath` and decodes it with `decode`, which prints what
/// its pipeline prints of that. The table, larger than the file, is gone afterwards, before the
/// kernel needs memory.
DecodedFile readAndDecode(const std::string& inputPath,
                          std::vector<Triangle> (*decode)(const AnalyzedFile& file));

/// Deletes the copy that `stripTessellation` made of the file at `inputPath`, unless it made none
/// and `cleanPath` is the input itself.
void removeCleanCopy(const std::string& cleanPath, const std::string& inputPath);

/// Puts the triangles of the exact geometry first and those of the tessellation behind them.
std::vector<Triangle> mergeTriangles(std::vector<Triangle> brep,
                                     std::vector<Triangle> tessellation);

/// The path of one shape's file in split mode: the whole output path, extension included, "_", the
/// position in the shapes sequence (counted from 0 here and from 1 in the path) and `extension`.
std::string shapePath(const std::string& outputPath, std::size_t position, const char* extension);

}  // namespace plenvorith
