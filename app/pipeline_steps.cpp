#include "app/pipeline_steps.h"

#include <array>
#include <cstddef>
#include <cstdio>
#include <iostream>
#include <utility>

namespace plenvorith {
namespace {

const char* statusName(TessellationStatus status) {
  static constexpr std::array<const char*, 4> kNames = {
      "no tessellation",
      "all tessellation paired with BRep",
      "partially unique tessellation",
      "tessellation only (no BRep)",
  };
  return kNames.at(static_cast<std::size_t>(status));
}

}  // namespace

AnalyzedFile readAndAnalyze(const std::string& inputPath) {
  AnalyzedFile file;
  std::cout << "Reading: " << inputPath << std::endl;
  std::cout << "[1] Analyzing file structure..." << std::endl;
  readEntityTable(file.table, inputPath);
  std::cout << "  Parsed " << file.table.size() << " entities" << std::endl;
  file.analysis = analyzeTessellation(file.table);
  std::cout << "  Status: " << statusName(file.analysis.status) << std::endl;
  return file;
}

DecodedFile readAndDecode(const std::string& inputPath,
                          std::vector<Triangle> (*decode)(const AnalyzedFile& file)) {
  const AnalyzedFile file = readAndAnalyze(inputPath);
  return {file.analysis.status, decode(file)};
}

void removeCleanCopy(const std::string& cleanPath, const std::string& inputPath) {
  if (cleanPath != inputPath) {
    // A copy that is not there or cannot be deleted changes nothing for the conversion.
    (void)std::remove(cleanPath.c_str());
  }
}

std::vector<Triangle> mergeTriangles(std::vector<Triangle> brep,
                                     std::vector<Triangle> tessellation) {
  if (brep.empty()) {
    return tessellation;
  }
  brep.insert(brep.end(), tessellation.begin(), tessellation.end());
  return brep;
}

std::string shapePath(const std::string& outputPath, std::size_t position, const char* extension) {
  return outputPath + "_" + std::to_string(position + 1) + extension;
}

}  // namespace plenvorith
