#include "tests/corpus/expected_transcript.h"

#include <algorithm>

namespace plenvorith::test {
namespace {

std::string firstLines(const Row& row, const std::string& input) {
  return "Reading: " + input + "\n[1] Analyzing file structure...\n  Parsed " + row.at("entities") +
         " entities\n  Status: " + row.at("status") + "\n";
}

std::string kernelCounts(const Row& row) {
  std::string lines = "  BRep: roots=" + row.at("roots") + ", shapes=" + row.at("shapes") + "\n";
  if (row.at("solids") != "-") {
    lines += "  Solids: " + row.at("solids") + ", free shells: " + row.at("free_shells") +
             ", free faces: " + row.at("free_faces") + "\n";
  }
  return lines;
}

/// A model of curves alone is one shape.
std::string shapeCount(const Row& row) {
  const int pieces = std::stoi(row.at("solids")) + std::stoi(row.at("free_shells")) +
                     std::stoi(row.at("free_faces"));
  return std::to_string(std::max(1, pieces));
}

Expected failed(const std::string& out, const std::string& err) {
  return {1, out + "Failed\n", err + "\n"};
}

}  // namespace

std::size_t numberOrZero(const std::string& field) {
  return field == "-" ? 0 : std::stoul(field);
}

bool hasExactShapes(const Row& row) {
  return row.at("solids") != "-";
}

Expected expectedForStl(const Row& row, const std::string& input, std::size_t brepTriangles) {
  const std::string& status = row.at("status");
  Expected expected;
  std::string& out = expected.out;
  out = firstLines(row, input);
  if (status != "no tessellation") {
    out += "  Paired tess representations: " + row.at("paired") + "\n";
    out += "  Unique tess representations: " + row.at("unique") + "\n";
    out += "  Unique tess faces to parse: " + row.at("unique_faces") + "\n";
  }
  if (status == "all tessellation paired with BRep") {
    out += "[2] All tessellation duplicates BRep, will use BRep only\n";
  } else if (status == "partially unique tessellation") {
    out += "[2] Parsing unique tessellation...\n  Parsed " + row.at("tess_triangles") +
           " triangles from unique tessellation\n";
  } else if (status == "tessellation only (no BRep)") {
    out += "[2] Parsing all tessellation (no BRep in file)...\n  Parsed " +
           row.at("tess_triangles") + " triangles from tessellation\n";
  }
  if (status != "tessellation only (no BRep)") {
    out += "[3] Stripping tessellation and reading BRep...\n" + kernelCounts(row);
    if (hasExactShapes(row)) {
      out += "  Read " + shapeCount(row) + " BRep shapes\n[4] Meshing BRep (deflection=0.1)...\n";
      out += "  BRep: " + std::to_string(brepTriangles) + " triangles\n";
    } else {
      out += "  No BRep geometry found\n";
    }
  }
  const std::size_t tessellation = numberOrZero(row.at("tess_triangles"));
  if (brepTriangles + tessellation == 0) {
    expected.err = "Error: No geometry found in file\n";
    out += "Failed\n";
    expected.exitStatus = 1;
  } else {
    out += "[5] Writing STL: " + std::to_string(brepTriangles + tessellation) +
           " triangles (BRep: " + std::to_string(brepTriangles) +
           " + Tess: " + std::to_string(tessellation) + ")\nSaved: out.stl\nDone\n";
  }
  return expected;
}

Expected expectedForStep(const Row& row, const std::string& input, std::size_t brepTriangles) {
  const std::string& status = row.at("status");
  const std::string& tessellation = row.at("tess_triangles");
  std::string out = firstLines(row, input);
  if (status == "no tessellation") {
    out += "[2] No tessellation, saving clean STEP...\n" + kernelCounts(row);
    return hasExactShapes(row) ? Expected{0, out + "Saved: out.step\nDone\n", ""}
                               : failed(out, "Failed to read STEP");
  }
  if (status == "all tessellation paired with BRep") {
    out += "[2] All tessellation duplicates BRep, stripping...\n" + kernelCounts(row);
    return hasExactShapes(row)
               ? Expected{0, out + "Saved clean STEP (without tessellation): out.step\nDone\n", ""}
               : failed(out, "Failed to read BRep");
  }
  if (status == "tessellation only (no BRep)") {
    out += "[2] No BRep geometry, only tessellation. Converting to STL...\n  Parsed " +
           tessellation + " triangles\n";
    return tessellation != "0"
               ? Expected{0, out + "Saved as STL (tessellation only): out.stl\nDone\n", ""}
               : failed(out, "No triangles found in tessellation");
  }
  out +=
      "[2] Mixed: BRep + unique tessellation. Converting all to STL...\n"
      "[3] Parsing unique tessellation...\n  Parsed " +
      tessellation +
      " triangles from unique tessellation\n"
      "[4] Stripping tessellation and reading BRep...\n" +
      kernelCounts(row);
  if (hasExactShapes(row)) {
    out += "  Read " + shapeCount(row) + " BRep shapes\n  BRep: " + std::to_string(brepTriangles) +
           " triangles\n";
  }
  if (brepTriangles + numberOrZero(tessellation) == 0) {
    return failed(out, "Failed to write STL");
  }
  return {0,
          out + "Saved as STL: out.stl (BRep: " + std::to_string(brepTriangles) +
              " + Tess: " + tessellation + ")\nDone\n",
          ""};
}

}  // namespace plenvorith::test
