#ifndef STRINGRESOLVER_TOOLS_RESOLVE_OBJECTREADER_H
#define STRINGRESOLVER_TOOLS_RESOLVE_OBJECTREADER_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "targets/MemorySource.h"
#include "tools/resolve/Denoted.h"

namespace tool {

/// Where memory ended, and why.
struct Unreadable {
  std::uint64_t address = 0;
  std::uint8_t space = 0;
  targets::MemoryGap gap = targets::MemoryGap::kNotThere;
};

/// `cannot read memory at 0x10`, with the reason where there is one.
std::string SentenceOf(const Unreadable& unreadable);

/// Hands out the bytes of one object piece by piece. Memory is read in larger pieces, but never
/// outside the object and, as long as the pieces ascend, never twice.
class ObjectReader {
 public:
  /// `size`: bytes of the object. Borrows `memory`.
  ObjectReader(const Denoted& denoted, std::uint64_t size, targets::MemorySource& memory);

  /// Of the object: its address, or 0 for a value that has none.
  [[nodiscard]] std::uint64_t Start() const { return start_; }

  /// Copies what lies at `address`. Otherwise says where memory ends, and `bytes` are undefined.
  std::optional<Unreadable> Read(std::uint64_t address, std::span<std::byte> bytes);

  /// Has anything been read?
  [[nodiscard]] bool ReadAny() const { return readAny_; }

 private:
  void Fetch(std::uint64_t address, std::size_t size);

  targets::MemorySource& memory_;
  std::uint64_t start_;
  std::uint64_t size_;
  std::uint8_t space_;
  bool hasAddress_;
  bool readAny_ = false;
  /// What was read last, from `piece_` on, and why it ended if it is shorter than what was wanted.
  std::vector<std::byte> held_;
  std::uint64_t piece_;
  std::optional<targets::MemoryGap> gap_;
};

}  // namespace tool

#endif  // STRINGRESOLVER_TOOLS_RESOLVE_OBJECTREADER_H
