#ifndef STRINGRESOLVER_TESTS_CONTRACT_MEMORYCONTRACT_H
#define STRINGRESOLVER_TESTS_CONTRACT_MEMORYCONTRACT_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "targets/MemorySource.h"

namespace contract {

/// An address that cannot be read, and why.
struct KnownGap {
  std::uint64_t address = 0;
  targets::MemoryGap gap = targets::MemoryGap::kNotThere;
};

/// What is known about the memory behind a source that is to be checked.
struct KnownMemory {
  std::uint8_t space = 0;
  std::uint64_t address = 0;  ///< where `bytes` begin
  /// Its contents; none when only gaps are known.
  std::vector<std::byte> bytes;
  /// The byte right behind `bytes` cannot be read, for this reason; nothing when it can, or when
  /// that is not known.
  std::optional<targets::MemoryGap> end;
  std::vector<KnownGap> gaps;  ///< in the same space
};

/// Checks that `source` keeps the promises of `targets::MemorySource`: what is read and how much,
/// where and why it ends, that nothing wraps, and that bytes behind the end keep their contents.
/// Returns a sentence for each promise that is broken; none when all are kept. Needs no test
/// framework, so that any can be used. Memory that changes meanwhile breaks promises.
std::vector<std::string> CheckMemorySource(targets::MemorySource& source, const KnownMemory& known);

}  // namespace contract

#endif  // STRINGRESOLVER_TESTS_CONTRACT_MEMORYCONTRACT_H
