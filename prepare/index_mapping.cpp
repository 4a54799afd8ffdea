#include "prepare/index_mapping.h"

#include <limits>

namespace plenvorith {

IndexMapping::IndexMapping(std::uint64_t pointCount, const MappingLimits& limits)
    : pointCount_(static_cast<Index>(pointCount)), limits_(limits) {}

bool IndexMapping::read(TokenReader& tokens) {
  chunks_.push_back(tokens.place());
  std::size_t leftOfChunk = limits_.chunk;
  return readIndices(tokens, [this, &tokens, &leftOfChunk](Index index) {
    ++size_;
    isIdentity_ = isIdentity_ && index == size_;
    if (isHeld_) {
      hold(entryOf(index));
    }
    if (--leftOfChunk == 0) {
      leftOfChunk = limits_.chunk;
      chunks_.push_back(tokens.place());
    }
  });
}

/// Holds the entry that is the last so far, or none of them any more.
void IndexMapping::hold(std::uint32_t entry) {
  if (size_ > static_cast<Index>(limits_.held)) {
    isHeld_ = false;
    held_.clear();
    return;
  }
  const auto place = static_cast<std::size_t>(size_ - 1);
  if (place % kBlock == 0) {
    held_.push_back(std::make_unique_for_overwrite<std::uint32_t[]>(kBlock));
  }
  held_.back()[place % kBlock] = entry;
}

/// The places of the indices that are not 0, those of one chunk together, and the chunks in order.
std::vector<std::uint32_t> IndexMapping::sortedByChunk(
    const std::vector<std::uint32_t>& indices) const {
  std::vector<std::size_t> ends(chunks_.size() + 1);
  for (const std::uint32_t index : indices) {
    if (index != 0) {
      ++ends[(index - 1) / limits_.chunk + 1];
    }
  }
  for (std::size_t chunk = 1; chunk < ends.size(); ++chunk) {
    ends[chunk] += ends[chunk - 1];
  }
  std::vector<std::uint32_t> sorted(ends.back());
  for (std::size_t i = 0; i < indices.size(); ++i) {
    if (indices[i] != 0) {
      // What was the end of the chunk before becomes the end of this one.
      sorted[ends[(indices[i] - 1) / limits_.chunk]++] = static_cast<std::uint32_t>(i);
    }
  }
  return sorted;
}

/// Reads the chunk before whose first entry the tokens stands.
void IndexMapping::readChunk(TokenReader& tokens, std::vector<std::uint32_t>& entries) const {
  entries.assign(limits_.chunk, 0);
  for (std::uint32_t& entry : entries) {
    Index index = 0;
    if (!(tokens.take(',') || tokens.take('(')) || !readIndex(tokens, index)) {
      return;  // of the last chunk this is the end
    }
    entry = entryOf(index);
  }
}

void IndexMapping::lookUp(TokenReader& tokens, std::vector<std::uint32_t>& indices) const {
  const BodyPlace before = tokens.place();
  std::vector<std::uint32_t> entries;
  std::size_t next = std::numeric_limits<std::size_t>::max();  // the chunk that the tokens is at
  for (const std::uint32_t place : sortedByChunk(indices)) {
    const std::size_t chunk = (indices[place] - 1) / limits_.chunk;
    if (chunk + 1 != next) {
      if (chunk != next) {
        tokens.goTo(chunks_[chunk]);
      }
      readChunk(tokens, entries);
      next = chunk + 1;
    }
    indices[place] = entries[(indices[place] - 1) % limits_.chunk];
  }
  tokens.goTo(before);
}

}  // namespace plenvorith
