#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace plenvorith {

/// What plenvorith-check tells of a file.
struct MeshCheck {
  std::int64_t parts = 0;
  std::int64_t badParts = 0;    ///< parts that have a problem
  std::int64_t openSolids = 0;  ///< solids whose meshes are not closed
  std::int64_t facesWithoutMesh = 0;
  std::int64_t facesOver = 0;  ///< faces whose mesh misses the deflection
  double deviation = 0.0;      ///< how far a mesh is from its surface at most, millimetres
  double volume = 0.0;         ///< of all closed parts, cubic millimetres
  std::string names = {};      ///< of the parts with problems, one a line; of many the first

  bool operator==(const MeshCheck&) const = default;
};

/// What is known of an STL file beyond what the conversion tells.
struct Inspection {
  std::optional<MeshCheck> check;
  std::string picture;  ///< a PNG file; empty: there is none
};

/// What plenvorith-check prints about a file, among lines of others; nothing if that is not whole.
std::optional<MeshCheck> checkFrom(std::string_view printed);

/// The inspections made so far, kept in a database of their own beside the state.
struct InspectionsHandle;
struct CloseInspections {
  void operator()(InspectionsHandle* inspections) const;
};
using Inspections = std::unique_ptr<InspectionsHandle, CloseInspections>;

/// Opens the inspections at `path`, made if they are not there; `problem` says why not.
Inspections openInspections(const std::string& path, std::string& problem);

/// What is known of an output, whatever has become of the file since.
Inspection findInspection(InspectionsHandle& inspections, const std::string& path);

/// What of an output was not looked for yet.
struct Uninspected {
  bool check = true;
  bool picture = true;
};

/// Tells that, for a file of this size and time of change. What is known of another file that had
/// the same path is forgotten. Gives nothing if that fails.
std::optional<Uninspected> prepareInspection(InspectionsHandle& inspections,
                                             const std::string& path, std::int64_t size,
                                             std::int64_t mtime);

/// Keeps the result of a check, or of one that gave nothing, for an output that was prepared.
[[nodiscard]] bool keepCheck(InspectionsHandle& inspections, const std::string& path,
                             const std::optional<MeshCheck>& check);

/// Keeps the picture of an output that was prepared; an empty one if there is none.
[[nodiscard]] bool keepPicture(InspectionsHandle& inspections, const std::string& path,
                               const std::string& picture);

/// Begins to keep several results at once, or ends it: they come to the disk together.
[[nodiscard]] bool beginKeeping(InspectionsHandle& inspections);
[[nodiscard]] bool endKeeping(InspectionsHandle& inspections);

}  // namespace plenvorith
