#ifndef STRINGRESOLVER_TARGETS_FETCHEDBYTES_H
#define STRINGRESOLVER_TARGETS_FETCHEDBYTES_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <vector>

#include "targets/MemorySource.h"

namespace targets {

/// What is known of a target's memory: the bytes that were read, and the addresses that could not
/// be. Addresses are in target bytes; ranges do not wrap. The last byte of a 64-bit address space
/// cannot be kept.
class FetchedBytes {
 public:
  void Clear();

  /// Keeps `bytes` as what stands from `address` on. None of them may be known already.
  void Keep(std::uint64_t address, std::span<const std::byte> bytes);
  /// Keeps that the byte at `address` cannot be read.
  void KeepGap(std::uint64_t address, MemoryGap gap) { gaps_[address] = gap; }

  /// Copies the known bytes from `address` on, up to the first that is not known. Their number.
  std::size_t Copy(std::uint64_t address, std::span<std::byte> bytes) const;
  /// How many of the `size` bytes from `address` on are followed by one of which something is
  /// known, or `size`. 0 when something is known of the first.
  [[nodiscard]] std::size_t Unknown(std::uint64_t address, std::size_t size) const;
  [[nodiscard]] std::optional<MemoryGap> GapAt(std::uint64_t address) const;

 private:
  using Runs = std::map<std::uint64_t, std::vector<std::byte>>;

  /// The run that holds `address`, or the end of them.
  [[nodiscard]] Runs::const_iterator Holding(std::uint64_t address) const;

  Runs runs_;
  std::map<std::uint64_t, MemoryGap> gaps_;
};

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_FETCHEDBYTES_H
