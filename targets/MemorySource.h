#ifndef STRINGRESOLVER_TARGETS_MEMORYSOURCE_H
#define STRINGRESOLVER_TARGETS_MEMORYSOURCE_H

#include <cstddef>
#include <cstdint>
#include <span>

namespace targets {

/// Why memory cannot be read from some address on.
enum class MemoryGap {
  kNotThere,    ///< the target has no memory at that address
  kNotSaved,    ///< it had, but what was kept of the target does not hold it
  kNotAllowed,  ///< it has, but reading it is refused
};

/// What a read brought.
struct MemoryRead {
  /// Bytes read, counted from the address asked for: 0 to the number asked for.
  std::size_t size = 0;
  /// Why the byte after these could not be read. Without meaning when all were.
  MemoryGap gap = MemoryGap::kNotThere;
};

/// Where a target's memory comes from: a file's segments, a core dump, a process, a stub.
///
/// tests/contract holds the tests that every memory source must pass.
class MemorySource {
 public:
  MemorySource() = default;
  MemorySource(const MemorySource&) = delete;
  MemorySource& operator=(const MemorySource&) = delete;
  virtual ~MemorySource() = default;

  /// Copies target memory from `address` (in target bytes) of `space` (0 or 1) into `bytes`, as far
  /// as it can be read: fewer bytes than asked mean that the one at `address` plus the result's
  /// `size` is the first that cannot, for the reason in `gap`. `bytes` behind them keep their
  /// contents. No bytes asked for: none read. Never wraps past the end of the address space. Asks
  /// the target for exactly these bytes: reading a peripheral's register may change it.
  ///
  /// Throws `Error` only when the source itself has failed (`kTargetLost`, `kFileUnusable`).
  virtual MemoryRead Read(std::uint64_t address, std::uint8_t space,
                          std::span<std::byte> bytes) = 0;

  /// Forgets what is kept of a target that may have changed. Called before each evaluation: within
  /// one, a source may hand out twice what it has read once. Throws as `Read`.
  virtual void Refresh() {}
};

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_MEMORYSOURCE_H
