#ifndef STRINGRESOLVER_TOOLS_RESOLVE_BITFIELDS_H
#define STRINGRESOLVER_TOOLS_RESOLVE_BITFIELDS_H

#include <cstddef>
#include <cstdint>
#include <span>

#include "targets/LabelSource.h"

namespace tool {

/// Integers of up to 16 bytes.
__extension__ using WideUnsigned = unsigned __int128;
__extension__ using WideSigned = __int128;

/// The integer in `bytes`, at most 16, extended with zeros.
WideUnsigned IntegerIn(std::span<const std::byte> bytes, targets::ByteOrder order);

/// The integer of `bits` bits, at most 128, that begins `firstBit` bits into `bytes`: counted from
/// the least significant bit of the first byte on a little-endian target, from the most significant
/// one on a big-endian target. `bytes` hold all of it. Extended with zeros.
WideUnsigned BitsIn(std::span<const std::byte> bytes, std::uint32_t firstBit, std::uint32_t bits,
                    targets::ByteOrder order);

/// The same number of `bits` bits, 1 to 128, with its sign extended.
WideSigned SignExtended(WideUnsigned value, std::uint32_t bits);

/// Bytes from the first one with a bit of such a bit-field to the last.
constexpr std::size_t BytesOfBits(std::uint32_t firstBit, std::uint32_t bits) {
  return (std::size_t{firstBit} + bits + 7) / 8;
}

}  // namespace tool

#endif  // STRINGRESOLVER_TOOLS_RESOLVE_BITFIELDS_H
