#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace plenvorith {

/// What tells whether a file has changed.
struct InputIdentity {
  std::int64_t size = 0;
  std::int64_t mtime = 0;    ///< nanoseconds since 1970; of no meaning but that it differs
  std::int64_t changed = 0;  ///< that of the status, which cannot be set at will
  std::int64_t inode = 0;
  bool isRegular = false;
};

/// Looks at a file, through links. Gives nothing, and sets `error` to the system's number, for one
/// that is not there or is out of reach.
std::optional<InputIdentity> identityOf(const std::string& path, int& error);

/// Whether nothing tells that a file has changed between two looks.
bool isSame(const InputIdentity& a, const InputIdentity& b);

/// What the clock says, in nanoseconds since 1970.
std::int64_t nanosecondsNow();

/// 16 bytes that tell the content of a regular file from any other that comes by chance; they are
/// no protection against an attacker. Empty if the file cannot be read.
std::string contentHash(const std::string& path);

}  // namespace plenvorith
