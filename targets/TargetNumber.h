#ifndef STRINGRESOLVER_TARGETS_TARGETNUMBER_H
#define STRINGRESOLVER_TARGETS_TARGETNUMBER_H

#include <cstddef>
#include <cstdint>
#include <span>

#include "targets/LabelSource.h"

namespace targets {

/// The unsigned number that `bytes`, at most 8, hold on a target of byte order `order`.
inline std::uint64_t TargetNumber(std::span<const std::byte> bytes, ByteOrder order) {
  std::uint64_t value = 0;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const std::byte byte = bytes[order == ByteOrder::kBig ? i : bytes.size() - 1 - i];
    value = value << 8 | std::to_integer<std::uint64_t>(byte);
  }
  return value;
}

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_TARGETNUMBER_H
