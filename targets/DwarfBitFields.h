#ifndef STRINGRESOLVER_TARGETS_DWARFBITFIELDS_H
#define STRINGRESOLVER_TARGETS_DWARFBITFIELDS_H

#include <cstdint>
#include <optional>

#include "targets/DwarfFile.h"
#include "targets/LabelSource.h"

namespace targets {

/// A bit-field's place in its structure.
struct BitFieldPlace {
  std::uint64_t bits = 0;
  /// Of the storage unit, from the start of the structure, in bytes.
  std::uint64_t unitOffset = 0;
  /// Of the first bit, from the start of the structure, in bits: counted from the least significant
  /// bit of each byte on a little-endian target, from the most significant one on a big-endian one.
  std::uint64_t firstBit = 0;
};

/// The place of the member `die`, whose type has `typeSize` bytes. Nothing when it is no bit-field.
/// Throws `Error` (`kBrokenInfo`).
std::optional<BitFieldPlace> ReadBitField(const DwarfFile& file, ByteOrder order,
                                          const Dwarf_Die& die, std::uint64_t typeSize);

/// The offset of a member in bytes. Throws `Error` (`kBrokenInfo`) when it is no number.
std::uint64_t FieldOffset(const DwarfFile& file, const Dwarf_Die& die);

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_DWARFBITFIELDS_H
