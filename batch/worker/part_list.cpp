#include "batch/worker/part_list.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <optional>
#include <system_error>
#include <utility>

#include <nlohmann/json.hpp>

#include "app/pipeline_steps.h"
#include "common/escaped_text.h"

namespace plenvorith {
namespace {

using Json = nlohmann::ordered_json;

/// The number of triangles in an STL file, from its size; nothing if there is none.
std::optional<std::uintmax_t> trianglesIn(const std::string& path) {
  constexpr std::uintmax_t kBeforeRecords = 84;
  constexpr std::uintmax_t kOneRecord = 50;
  std::error_code error;
  const std::uintmax_t size = std::filesystem::file_size(path, error);
  return error ? std::nullopt
               : std::optional((std::max(size, kBeforeRecords) - kBeforeRecords) / kOneRecord);
}

Json jsonOf(std::size_t number, const PartName& part, std::uintmax_t triangles) {
  Json path = Json::array();
  for (const std::string& product : part.path) {
    path.push_back(portable(product));
  }
  return {{"number", number},  {"path", std::move(path)}, {"name", portable(part.name)},
          {"kind", part.kind}, {"triangles", triangles},  {"placement", part.placement}};
}

/// All parts as an array.
std::string linesOf(const std::vector<Json>& list) {
  std::string lines;
  for (const Json& part : list) {
    lines += (lines.empty() ? "[\n" : ",\n") + part.dump();
  }
  return lines + "\n]\n";
}

/// A file without exact geometry is one mesh in split mode, too.
std::optional<std::uintmax_t> decodedTriangles(const std::string& output) {
  const std::optional<std::uintmax_t> split = trianglesIn(output + "_tess.stl");
  return split ? split : trianglesIn(output);
}

}  // namespace

bool writePartList(const std::string& output, const std::vector<PartName>& parts) {
  bool isAnyWritten = false;
  std::vector<Json> list;
  for (std::size_t i = 0; i < parts.size(); ++i) {
    const std::optional<std::uintmax_t> triangles = trianglesIn(shapePath(output, i, ".stl"));
    isAnyWritten = isAnyWritten || triangles;
    list.push_back(jsonOf(i + 1, parts[i], triangles.value_or(0)));
  }
  if (const std::optional<std::uintmax_t> triangles = decodedTriangles(output)) {
    isAnyWritten = true;
    list.push_back({{"number", nullptr},
                    {"path", Json::array()},
                    {"name", ""},
                    {"kind", "tessellation"},
                    {"triangles", *triangles}});
  }
  if (!isAnyWritten) {
    return true;
  }
  const std::string path = output + ".parts.json";
  std::ofstream file(path, std::ios::binary);
  file << linesOf(list);
  file.close();
  if (!file) {
    std::cerr << "Error: Cannot write the list of parts: " << path << std::endl;
  }
  return file.good();
}

}  // namespace plenvorith
