#ifndef STRINGRESOLVER_TARGETS_MEMORYREGIONS_H
#define STRINGRESOLVER_TARGETS_MEMORYREGIONS_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "targets/MemoryFile.h"
#include "targets/MemorySource.h"

namespace targets {

/// A stretch of target memory whose contents are known: part of a file, or bytes of its own.
struct MemoryRegion {
  std::uint8_t space = 0;     ///< 0 or 1
  std::uint64_t address = 0;  ///< of the first byte
  std::uint64_t size = 0;     ///< in bytes, at least 1
  std::string origin;         ///< how messages call where it comes from: `'rom.bin'`
  /// Where the bytes lie: in `file` from `fileOffset` on, or else in `bytes`, which are `size`
  /// many.
  std::shared_ptr<const MemoryFile> file;
  std::uint64_t fileOffset = 0;
  std::vector<std::byte> bytes;
};

/// Memory made of regions, with nothing between them, or with another source's memory.
class MemoryRegions final : public MemorySource {
 public:
  /// `pointerSize`, 1 to 8 bytes, says where the address space ends.
  explicit MemoryRegions(std::uint32_t pointerSize) : pointerSize_(pointerSize) {}

  /// Adds a region. Throws `Error` (`kFileUnusable`) when it goes past the end of the address
  /// space, or overlaps another one, which the sentence then names as well; nothing is added then.
  void Add(MemoryRegion region);

  /// What is read where there is no region; null for nothing. Borrowed.
  void SetBelow(MemorySource* below) { below_ = below; }

  [[nodiscard]] std::size_t Count() const { return regions_.size(); }
  /// The last address of any region in space 0; nothing when there is none.
  [[nodiscard]] std::optional<std::uint64_t> HighestAddress() const;

  MemoryRead Read(std::uint64_t address, std::uint8_t space, std::span<std::byte> bytes) override;
  void Refresh() override;

 private:
  using Key = std::pair<std::uint8_t, std::uint64_t>;  // space, first address

  [[nodiscard]] std::uint64_t LastAddress() const;
  void Check(const MemoryRegion& region) const;

  std::uint32_t pointerSize_;
  std::map<Key, MemoryRegion> regions_;
  MemorySource* below_ = nullptr;
};

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_MEMORYREGIONS_H
