#ifndef STRINGRESOLVER_TARGETS_MEMORYSOURCE_H
#define STRINGRESOLVER_TARGETS_MEMORYSOURCE_H

#include <cstddef>
#include <cstdint>
#include <span>

namespace targets {

/// Where a target's memory comes from: a file's segments, a core dump, a process, a stub.
class MemorySource {
 public:
  MemorySource() = default;
  MemorySource(const MemorySource&) = delete;
  MemorySource& operator=(const MemorySource&) = delete;
  virtual ~MemorySource() = default;

  /// Copies target memory from `address` (in target bytes) of `space` (0 or 1) into `bytes`, and
  /// returns how many bytes, counted from `address`, could be read. Fewer than asked: the byte at
  /// `address` plus the result is the first that is not there. 0: nothing at `address`. Never wraps
  /// past the end of the address space. Throws `Error` only when the source itself has failed.
  virtual std::size_t Read(std::uint64_t address, std::uint8_t space,
                           std::span<std::byte> bytes) = 0;
};

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_MEMORYSOURCE_H
