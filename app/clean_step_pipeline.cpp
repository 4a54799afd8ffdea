#include "app/clean_step_pipeline.h"

#include <cstddef>
#include <iostream>
#include <utility>
#include <vector>

#include <IFSelect_ReturnStatus.hxx>
#include <Message_ProgressRange.hxx>
#include <STEPControl_StepModelType.hxx>
#include <STEPControl_Writer.hxx>

#include "app/pipeline_steps.h"
#include "brep/brep_mesher.h"
#include "output/stl_writer.h"
#include "steptext/strip_tessellation.h"
#include "tessellation/face_decoder.h"

namespace plenvorith {
namespace {

/// Where the triangles go that cannot go to `outputPath`. A dot in a directory name counts as well:
/// the extension is whatever follows the last one.
std::string stlFallbackPath(const std::string& outputPath) {
  return outputPath.substr(0, outputPath.rfind('.')) + ".stl";
}

bool writeStepFile(const TopoDS_Shape& shape, const std::string& path) {
  STEPControl_Writer writer;
  constexpr bool kComputeGraph = true;
  // A shape that could not be transferred makes a file without it; writing decides.
  (void)writer.Transfer(shape, STEPControl_AsIs, kComputeGraph, Message_ProgressRange());
  return writer.Write(path.c_str()) == IFSelect_RetDone;
}

/// Writes all shapes to `outputPath` and reports it, `savedText` in front of the path.
bool writeCleanStep(const Shapes& shapes, const std::string& outputPath, const char* savedText) {
  if (!writeStepFile(makeCompound(shapes), outputPath)) {
    std::cerr << "Failed to write STEP" << std::endl;
    return false;
  }
  std::cout << savedText << outputPath << std::endl;
  return true;
}

/// Reads the shapes of a file whose tessellation is cut out first, in a copy that is gone again
/// when this returns.
bool readStripped(const std::string& inputPath, Shapes& shapes) {
  const std::string cleanPath = stripTessellation(inputPath);
  const bool read = readBrepShapes(cleanPath, shapes);
  removeCleanCopy(cleanPath, inputPath);
  return read;
}

bool convertExact(const std::string& inputPath, const std::string& outputPath) {
  std::cout << "[2] No tessellation, saving clean STEP..." << std::endl;
  Shapes shapes;
  if (!readBrepShapes(inputPath, shapes)) {
    std::cerr << "Failed to read STEP" << std::endl;
    return false;
  }
  return writeCleanStep(shapes, outputPath, "Saved: ");
}

bool convertPaired(const std::string& inputPath, const std::string& outputPath) {
  std::cout << "[2] All tessellation duplicates BRep, stripping..." << std::endl;
  Shapes shapes;
  if (!readStripped(inputPath, shapes)) {
    std::cerr << "Failed to read BRep" << std::endl;
    return false;
  }
  return writeCleanStep(shapes, outputPath, "Saved clean STEP (without tessellation): ");
}

/// Steps [2] and [3], as far as they need the text.
std::vector<Triangle> decodeForCleanStep(const AnalyzedFile& file) {
  std::vector<Triangle> triangles;
  if (file.analysis.status == TessellationStatus::TessellationOnly) {
    std::cout << "[2] No BRep geometry, only tessellation. Converting to STL..." << std::endl;
    triangles = decodeAllTriangulatedFaces(file.table);
    std::cout << "  Parsed " << triangles.size() << " triangles" << std::endl;
  } else if (file.analysis.status == TessellationStatus::PartiallyUnique) {
    std::cout << "[2] Mixed: BRep + unique tessellation. Converting all to STL..." << std::endl;
    std::cout << "[3] Parsing unique tessellation..." << std::endl;
    triangles = decodeTriangulatedFaces(file.table, file.analysis.uniqueFaces);
    std::cout << "  Parsed " << triangles.size() << " triangles from unique tessellation"
              << std::endl;
  }
  return triangles;
}

bool writeTessellation(const std::vector<Triangle>& triangles, const std::string& outputPath) {
  if (triangles.empty()) {
    std::cerr << "No triangles found in tessellation" << std::endl;
    return false;
  }
  const std::string stlPath = stlFallbackPath(outputPath);
  if (!writeBinaryStl(stlPath, triangles)) {
    return false;
  }
  std::cout << "Saved as STL (tessellation only): " << stlPath << std::endl;
  return true;
}

bool convertMixed(std::vector<Triangle> tessellation, const std::string& inputPath,
                  const std::string& outputPath, double deflection) {
  const std::size_t tessellationCount = tessellation.size();
  std::cout << "[4] Stripping tessellation and reading BRep..." << std::endl;
  const std::string cleanPath = stripTessellation(inputPath);
  Shapes shapes;
  std::vector<Triangle> brep;
  // Exact geometry that cannot be read is no error here: the tessellation is worth a file.
  if (readBrepShapes(cleanPath, shapes)) {
    std::cout << "  Read " << shapes.size() << " BRep shapes" << std::endl;
    brep = meshBrepShapes(shapes, deflection);
    std::cout << "  BRep: " << brep.size() << " triangles" << std::endl;
  }
  removeCleanCopy(cleanPath, inputPath);

  const std::size_t brepCount = brep.size();
  const std::vector<Triangle> merged = mergeTriangles(std::move(brep), std::move(tessellation));
  const std::string stlPath = stlFallbackPath(outputPath);
  if (merged.empty() || !writeBinaryStl(stlPath, merged)) {
    std::cerr << "Failed to write STL" << std::endl;
    return false;
  }
  std::cout << "Saved as STL: " << stlPath << " (BRep: " << brepCount
            << " + Tess: " << tessellationCount << ")" << std::endl;
  return true;
}

bool convertSplit(const std::string& inputPath, const std::string& outputPath) {
  Shapes shapes;
  if (!readStripped(inputPath, shapes)) {
    std::cerr << "Failed to read BRep from STEP" << std::endl;
    return false;
  }
  writeShapesAsStep(shapes, outputPath);
  return true;
}

}  // namespace

bool convertToCleanStep(const std::string& inputPath, const std::string& outputPath,
                        double deflection, bool splitShapes) {
  if (splitShapes) {
    return convertSplit(inputPath, outputPath);
  }
  DecodedFile file = readAndDecode(inputPath, decodeForCleanStep);
  switch (file.status) {
    case TessellationStatus::NoTessellation:
      return convertExact(inputPath, outputPath);
    case TessellationStatus::AllPaired:
      return convertPaired(inputPath, outputPath);
    case TessellationStatus::TessellationOnly:
      return writeTessellation(file.tessellation, outputPath);
    case TessellationStatus::PartiallyUnique:
      return convertMixed(std::move(file.tessellation), inputPath, outputPath, deflection);
  }
  return false;
}

void writeShapesAsStep(const Shapes& shapes, const std::string& outputPath) {
  for (std::size_t i = 0; i < shapes.size(); ++i) {
    if (shapes[i].IsNull()) {
      continue;
    }
    const std::string path = shapePath(outputPath, i, ".stp");
    if (writeStepFile(shapes[i], path)) {
      std::cout << "Saved: " << path << std::endl;
    }
  }
}

}  // namespace plenvorith
