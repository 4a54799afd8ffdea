#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "exchange/token_reader.h"
#include "prepare/index_list.h"

namespace plenvorith {

/// How much of an index mapping is in memory at once.
struct MappingLimits {
  std::size_t held = std::size_t{1} << 22U;   ///< entries; of a longer mapping none stays
  std::size_t chunk = std::size_t{1} << 16U;  ///< entries that are read to look up one or more
};

/// The index mapping (pnindex) of a face of ISO 10303-42: its entries, counted from 1, are the indices
/// of points in the coordinates list of the face. An entry that is outside that list is 0.
///
/// A mapping of up to `MappingLimits::held` entries is held, four bytes each. Of a longer one only
/// the place of every chunk is, and its entries are read again when they are looked up.
class IndexMapping {
 public:
  /// Entries and points that cannot be told by 32 bits are outside.
  static constexpr Index kLargest = 0xFFFFFFFF;

  IndexMapping(std::uint64_t pointCount, const MappingLimits& limits);

  /// Reads the list that is next, whose place is kept for looking up. False if something other than
  /// numbers stands in it.
  [[nodiscard]] bool read(TokenReader& tokens);

  [[nodiscard]] bool isEmpty() const {
    return size_ == 0;
  }

  /// Whether each entry is its own index.
  [[nodiscard]] bool isIdentity() const {
    return isIdentity_;
  }

  /// Whether there is an entry of this index.
  [[nodiscard]] bool has(Index index) const {
    return index >= 1 && index <= size_;
  }

  [[nodiscard]] bool isHeld() const {
    return isHeld_;
  }

  /// An entry of a mapping that is held.
  [[nodiscard]] std::uint32_t held(Index index) const {
    const auto place = static_cast<std::size_t>(index - 1);
    return held_[place / kBlock][place % kBlock];
  }

  /// Replaces indices by their entries, read from the file; 0 stays 0.
  ///
  /// Takes   a reader on the body of the face, which is moved about in it and comes back.
  /// Memory  four bytes for each index, and one chunk.
  /// Cost    each chunk that an index falls into is read once, so one call never takes longer than
  ///         one scan of the list, whatever the order of the indices.
  void lookUp(TokenReader& tokens, std::vector<std::uint32_t>& indices) const;

 private:
  [[nodiscard]] std::uint32_t entryOf(Index index) const {
    const bool isPoint = index >= 1 && index <= pointCount_ && index <= kLargest;
    return isPoint ? static_cast<std::uint32_t>(index) : 0;
  }
  void hold(std::uint32_t entry);
  [[nodiscard]] std::vector<std::uint32_t> sortedByChunk(
      const std::vector<std::uint32_t>& indices) const;
  void readChunk(TokenReader& tokens, std::vector<std::uint32_t>& entries) const;

  static constexpr std::size_t kBlock = 4096;

  Index pointCount_;
  MappingLimits limits_;
  Index size_ = 0;
  bool isHeld_ = true;
  bool isIdentity_ = true;
  // In blocks: as they become more, no entry is copied, which would take two to three times the
  // memory.
  std::vector<std::unique_ptr<std::uint32_t[]>> held_;
  std::vector<BodyPlace> chunks_;  // the byte before the first entry of each
};

}  // namespace plenvorith
