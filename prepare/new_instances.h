#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "exchange/instance_table.h"
#include "prepare/drop.h"
#include "prepare/orphans.h"
#include "prepare/output_file.h"
#include "prepare/tessellation_plan.h"

namespace plenvorith {

/// The numbers of the instances that a prepared file has and its input has not: from the smallest
/// power of ten above all that stay, and all of the same length, so that the order of their texts, by which the converter decodes
/// faces, is that of the numbers.
class NewNames {
 public:
  /// None is among the numbers that instances which stay have, or name, up to `largestOld`, or that
  /// strings name.
  NewNames(std::uint64_t largestOld, const NamedNumbers& inStrings, const TessellationPlan& plan,
           const Orphans& orphans);

  /// Of a coordinates list, a face or a solid of the plan.
  [[nodiscard]] std::uint64_t list(std::size_t i) const {
    return lists_ + i;
  }
  [[nodiscard]] std::uint64_t face(std::size_t i) const {
    return faces_ + i;
  }
  [[nodiscard]] std::uint64_t solid(std::size_t i) const {
    return solids_ + i;
  }

  /// Of anything else.
  [[nodiscard]] std::uint64_t next() {
    return next_++;
  }

 private:
  std::uint64_t lists_, faces_, solids_, next_;
};

/// The largest number that an instance which stays has or names.
[[nodiscard]] std::uint64_t largestNumberOf(const InstanceTable& table,
                                            const std::vector<Fate>& fates);

/// Writes "#12=".
void startInstance(std::uint64_t name, OutputFile& output);

/// Writes a TESSELLATED_SOLID for each body in each placement, of faces that are written, and the one
/// TESSELLATED_SHAPE_REPRESENTATION of all of them, in millimetres (ISO 10303-42 and -43).
void writeSolids(const TessellationPlan& plan, NewNames& names, OutputFile& output);

/// Writes a tessellated representation with its exact twin: the converter reads lines and takes the
/// file for one with both kinds of geometry, the kernel sees a comment.
void writeMark(NewNames& names, OutputFile& output);

/// Ties orphans to the only product shape of the file, or to one of a new product.
void writeOrphans(const Orphans& orphans, const InstanceTable& table, NewNames& names,
                  OutputFile& output);

}  // namespace plenvorith
