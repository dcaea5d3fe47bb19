#ifndef STRINGRESOLVER_RESOLVER_SIZEMASK_H
#define STRINGRESOLVER_RESOLVER_SIZEMASK_H

#include <cstdint>

namespace resolver {

/// All ones over `size` bytes; over all 64 bits for a size of 0, and of 8 or more.
constexpr std::uint64_t SizeMask(std::uint64_t size) {
  return size == 0 || size >= 8 ? ~std::uint64_t{0} : (std::uint64_t{1} << (size * 8)) - 1;
}

/// What is left of `value` from the sign bit of a `size`-byte number upwards; not 0 when the number
/// is negative. The bit's position is taken modulo 64, so 8 bytes and 16 have the same one.
constexpr std::uint64_t FromSignBit(std::uint64_t value, std::uint64_t size) {
  return value >> ((size * 8 - 1) % 64);
}

/// Bytes of one access to an object of `size` bytes: 1 to 8.
constexpr std::uint32_t AccessSize(std::uint32_t size) {
  return size % 8 == 0 ? 8 : size % 8;
}

}  // namespace resolver

#endif  // STRINGRESOLVER_RESOLVER_SIZEMASK_H
