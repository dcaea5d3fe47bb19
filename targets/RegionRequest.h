#ifndef STRINGRESOLVER_TARGETS_REGIONREQUEST_H
#define STRINGRESOLVER_TARGETS_REGIONREQUEST_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "targets/MemoryRegions.h"

namespace targets {

/// Files of records are read as a whole, so they may have this many bytes at most.
constexpr std::uint64_t kLargestRecordFile = std::uint64_t{64} << 20U;

/// A file that holds target memory, and where that memory lies.
struct RegionRequest {
  std::uint8_t space = 0;  ///< 0 or 1
  /// Of the first byte of a raw file; added to the addresses of a file of records.
  std::uint64_t address = 0;
  std::string path;
  /// The part of the file that counts, in bytes. A file of which a part counts is raw, unless its
  /// name ends as that of a file of records does, which is an error.
  std::optional<std::uint64_t> offset;
  std::optional<std::uint64_t> length;  ///< up to the end of the file unless given
};

/// Reads `[SPACE:]ADDRESS=FILE[@OFFSET[:LENGTH]]`, with numbers in decimal or, behind `0x`, in
/// hexadecimal. An `@` that no numbers follow belongs to the file's name. Throws `Error`
/// (`kFileUnusable`).
RegionRequest ReadRegionRequest(std::string_view text);

/// A number in decimal or, behind `0x`, in hexadecimal; nothing when `text` is none below 2^64.
std::optional<std::uint64_t> ReadPlainNumber(std::string_view text);

/// Adds what the file holds to `regions`. Throws `Error` (`kFileUnusable`): what `MemoryFile`,
/// `ReadImage` and `MemoryRegions::Add` throw, and an offset or length that the file does not have.
/// Some blocks of the file may have been added then.
void AddRegions(const RegionRequest& request, MemoryRegions* regions);

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_REGIONREQUEST_H
