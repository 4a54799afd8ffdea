#include "batch/worker/mesh_doubt.h"

#include <charconv>
#include <cstdint>
#include <string_view>

namespace plenvorith {
namespace {

bool says(std::string_view transcript, std::string_view words) {
  return transcript.find(words) != std::string_view::npos;
}

/// The number of triangles that the converter decoded; 0 if it had no tessellation to decode.
std::uint64_t decodedTriangles(std::string_view transcript) {
  constexpr std::string_view kLine = "\n  Parsed ";
  constexpr std::string_view kUnit = " triangles from ";
  std::uint64_t count = 0;
  const std::size_t unit = transcript.find(kUnit);
  const std::size_t line = transcript.rfind(kLine, unit);
  if (unit != std::string_view::npos && line != std::string_view::npos) {
    (void)std::from_chars(transcript.data() + line + kLine.size(), transcript.data() + unit, count);
  }
  return count;
}

}  // namespace

std::string meshDoubt(const Forecast& forecast, const std::string& transcript) {
  std::string changes;
  const auto name = [&changes](bool isChanged, const char* what) {
    changes += isChanged && !changes.empty() ? ", " : "";
    changes += isChanged ? what : "";
  };
  name(forecast.hasStrips, "strips");
  name(forecast.hasFans, "fans");
  name(forecast.isMapped, "index mappings");
  name(forecast.isScaled, "units");
  name(forecast.isPlaced, "placements");
  // Another program may say anything.
  const bool isTold = says(transcript, "[1] Analyzing file structure");
  const bool lacksExact = forecast.hasExact && says(transcript, "[2] Parsing all tessellation");
  // With strips or fans there is nothing to compare.
  const bool isOther =
      isTold && changes.empty() && forecast.triangles != decodedTriangles(transcript);
  name((lacksExact || isOther) && forecast.hasAnnotation, "annotation");
  name((lacksExact && !forecast.hasAnnotation) || forecast.hasOrphans, "exact geometry");
  name(isOther && changes.empty(), "other tessellation");
  return changes.empty() ? changes
                         : "preparing would change the mesh (" + changes + "): try without --as-is";
}

}  // namespace plenvorith
