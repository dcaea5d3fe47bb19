#include "targets/DwarfBitFields.h"

#include "targets/DwarfLocation.h"
#include "targets/TypeRecord.h"

namespace targets {

std::uint64_t FieldOffset(const DwarfFile& file, const Dwarf_Die& die) {
  if (const auto bits = file.Unsigned(die, DW_AT_data_bit_offset)) return *bits / 8;
  const std::optional<std::uint64_t> offset = MemberOffset(file, die);
  if (!offset) file.Broken(die, "a member whose offset is no number");
  return *offset;
}

std::optional<BitFieldPlace> ReadBitField(const DwarfFile& file, ByteOrder order,
                                          const Dwarf_Die& die, std::uint64_t typeSize) {
  const auto bits = file.Unsigned(die, DW_AT_bit_size);
  if (!bits) return std::nullopt;
  BitFieldPlace place;
  place.bits = *bits;
  if (const auto first = file.Unsigned(die, DW_AT_data_bit_offset)) {
    place.firstBit = *first;
    place.unitOffset = typeSize == 0 ? *first / 8 : StorageUnitOffset(*first, *bits, typeSize);
    return place;
  }
  // Before DWARF 4 a bit-field's location is that of its storage unit, and its place is counted
  // from the unit's highest bit.
  place.unitOffset = FieldOffset(file, die);
  place.firstBit = place.unitOffset * 8;
  const auto fromTop = file.Unsigned(die, DW_AT_bit_offset);
  if (!fromTop) return place;
  const std::uint64_t unitBits = 8 * file.Unsigned(die, DW_AT_byte_size).value_or(typeSize);
  const std::uint64_t start = order == ByteOrder::kBig ? *fromTop : unitBits - *fromTop - *bits;
  place.firstBit += start;
  const bool before = static_cast<std::int64_t>(start) < 0;
  const bool inside = !before && start <= unitBits && start + *bits <= unitBits;
  // A packed bit-field may leave its unit as well.
  if (!inside && !before) place.unitOffset += start / 8;
  return place;
}

}  // namespace targets
