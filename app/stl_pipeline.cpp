#include "app/stl_pipeline.h"

#include <cstddef>
#include <iostream>
#include <utility>
#include <vector>

#include <Message_ProgressRange.hxx>
#include <StlAPI_Writer.hxx>

#include "app/pipeline_steps.h"
#include "brep/brep_mesher.h"
#include "brep/part_names.h"
#include "output/stl_writer.h"
#include "steptext/strip_tessellation.h"
#include "tessellation/face_decoder.h"

namespace plenvorith {
namespace {

void printCounts(const TessellationAnalysis& analysis) {
  if (analysis.status == TessellationStatus::NoTessellation) {
    return;
  }
  std::cout << "  Paired tess representations: " << analysis.pairedReps.size() << std::endl;
  std::cout << "  Unique tess representations: " << analysis.uniqueReps.size() << std::endl;
  std::cout << "  Unique tess faces to parse: " << analysis.uniqueFaces.size() << std::endl;
}

/// The counts of step [1], and step [2].
std::vector<Triangle> decodeForStl(const AnalyzedFile& file) {
  printCounts(file.analysis);
  std::vector<Triangle> triangles;
  switch (file.analysis.status) {
    case TessellationStatus::NoTessellation:
      break;
    case TessellationStatus::AllPaired:
      std::cout << "[2] All tessellation duplicates BRep, will use BRep only" << std::endl;
      break;
    case TessellationStatus::PartiallyUnique:
      std::cout << "[2] Parsing unique tessellation..." << std::endl;
      triangles = decodeTriangulatedFaces(file.table, file.analysis.uniqueFaces);
      std::cout << "  Parsed " << triangles.size() << " triangles from unique tessellation"
                << std::endl;
      break;
    case TessellationStatus::TessellationOnly:
      std::cout << "[2] Parsing all tessellation (no BRep in file)..." << std::endl;
      triangles = decodeAllTriangulatedFaces(file.table);
      std::cout << "  Parsed " << triangles.size() << " triangles from tessellation" << std::endl;
      break;
  }
  return triangles;
}

/// Split mode, once the shapes are read: one file for each of them, one for the tessellation.
void writeSplit(const Shapes& shapes, const std::vector<Triangle>& tessellation,
                const std::string& outputPath, double deflection) {
  writeShapesAsStl(shapes, outputPath, deflection);
  if (!tessellation.empty()) {
    const std::string path = outputPath + "_tess.stl";
    // Like the files of the shapes, this one is reported whether or not it could be written.
    (void)writeBinaryStl(path, tessellation);
    std::cout << "  Saved tessellation: " << path << std::endl;
  }
}

/// Step [4].
std::vector<Triangle> mesh(const Shapes& shapes, double deflection) {
  std::cout << "[4] Meshing BRep (deflection=" << deflection << ")..." << std::endl;
  std::vector<Triangle> triangles = meshBrepShapes(shapes, deflection);
  std::cout << "  BRep: " << triangles.size() << " triangles" << std::endl;
  return triangles;
}

/// Step [5].
bool writeMerged(std::vector<Triangle> brep, std::vector<Triangle> tessellation,
                 const std::string& outputPath) {
  const std::size_t brepCount = brep.size();
  const std::size_t tessellationCount = tessellation.size();
  const std::vector<Triangle> merged = mergeTriangles(std::move(brep), std::move(tessellation));
  if (merged.empty()) {
    std::cerr << "Error: No geometry found in file" << std::endl;
    return false;
  }
  std::cout << "[5] Writing STL: " << merged.size() << " triangles (BRep: " << brepCount
            << " + Tess: " << tessellationCount << ")" << std::endl;
  if (!writeBinaryStl(outputPath, merged)) {
    return false;
  }
  std::cout << "Saved: " << outputPath << std::endl;
  return true;
}

}  // namespace

bool convertToStl(const std::string& inputPath, const std::string& outputPath, double deflection,
                  bool splitShapes, std::vector<PartName>* names) {
  DecodedFile file = readAndDecode(inputPath, decodeForStl);
  if (file.status == TessellationStatus::TessellationOnly) {
    return writeMerged({}, std::move(file.tessellation), outputPath);
  }

  std::cout << "[3] Stripping tessellation and reading BRep..." << std::endl;
  const std::string cleanPath = stripTessellation(inputPath);
  Shapes shapes;
  std::vector<Triangle> brep;
  if (!(names == nullptr ? readBrepShapes(cleanPath, shapes)
                         : readNamedShapes(cleanPath, shapes, *names))) {
    std::cout << "  No BRep geometry found" << std::endl;
  } else {
    std::cout << "  Read " << shapes.size() << " BRep shapes" << std::endl;
    if (splitShapes) {
      writeSplit(shapes, file.tessellation, outputPath, deflection);
      removeCleanCopy(cleanPath, inputPath);
      return true;
    }
    brep = mesh(shapes, deflection);
  }
  removeCleanCopy(cleanPath, inputPath);
  return writeMerged(std::move(brep), std::move(file.tessellation), outputPath);
}

void writeShapesAsStl(const Shapes& shapes, const std::string& outputPath, double deflection) {
  StlAPI_Writer writer;
  writer.ASCIIMode() = false;
  for (std::size_t i = 0; i < shapes.size(); ++i) {
    if (shapes[i].IsNull() || !meshShape(shapes[i], deflection)) {
      continue;
    }
    const std::string path = shapePath(outputPath, i, ".stl");
    // The line reports that the shape was exported; the kernel's result is not looked at.
    (void)writer.Write(shapes[i], path.c_str(), Message_ProgressRange());
    std::cout << "  Saved: " << path << std::endl;
  }
}

}  // namespace plenvorith
