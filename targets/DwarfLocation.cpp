#include "targets/DwarfLocation.h"

#include <algorithm>
#include <span>

namespace targets {
namespace {

Place Nowhere(const char* reason) {
  return {Place::Kind::kNowhere, 0, reason};
}

bool IsThreadLocal(std::span<const Dwarf_Op> operations) {
  return std::any_of(operations.begin(), operations.end(), [](const Dwarf_Op& operation) {
    return operation.atom == DW_OP_form_tls_address || operation.atom == DW_OP_GNU_push_tls_address;
  });
}

/// The number that an operation pushes, if it is a constant.
std::optional<std::uint64_t> PushedConstant(const Dwarf_Op& operation) {
  if (operation.atom >= DW_OP_lit0 && operation.atom <= DW_OP_lit31) {
    return operation.atom - DW_OP_lit0;
  }
  switch (operation.atom) {
    case DW_OP_const1u:
    case DW_OP_const1s:
    case DW_OP_const2u:
    case DW_OP_const2s:
    case DW_OP_const4u:
    case DW_OP_const4s:
    case DW_OP_const8u:
    case DW_OP_const8s:
    case DW_OP_constu:
    case DW_OP_consts:
      return operation.number;
    default:
      return std::nullopt;
  }
}

/// The address that an operation pushes, if it is one.
std::optional<std::uint64_t> PushedAddress(const DwarfFile& file, const Dwarf_Die& die,
                                           Dwarf_Attribute attribute, const Dwarf_Op& operation) {
  if (operation.atom == DW_OP_addr) return operation.number;
  if (operation.atom != DW_OP_addrx && operation.atom != DW_OP_GNU_addr_index) return std::nullopt;
  DwarfFile::ForgetErrors();
  Dwarf_Attribute indexed{};
  Dwarf_Addr address = 0;
  if (dwarf_getlocation_attr(&attribute, &operation, &indexed) != 0 ||
      dwarf_formaddr(&indexed, &address) != 0) {
    file.Broken(die, dwarf_errmsg(-1));
  }
  return address;
}

/// The sum of `start` and the constants that the rest of an expression adds, if that is all it
/// does.
std::optional<std::uint64_t> AddConstants(std::uint64_t start, std::span<const Dwarf_Op> rest) {
  while (!rest.empty()) {
    if (rest[0].atom == DW_OP_plus_uconst) {
      start += rest[0].number;
      rest = rest.subspan(1);
      continue;
    }
    const std::optional<std::uint64_t> constant = PushedConstant(rest[0]);
    if (!constant || rest.size() < 2) return std::nullopt;
    if (rest[1].atom == DW_OP_plus) {
      start += *constant;
    } else if (rest[1].atom == DW_OP_minus) {
      start -= *constant;
    } else {
      return std::nullopt;
    }
    rest = rest.subspan(2);
  }
  return start;
}

/// The linker puts one of these in the place of an address whose contents it has dropped.
bool IsDroppedAddress(const ElfFile& program, std::uint64_t address) {
  const std::uint64_t ones = program.PointerSize() == 4 ? 0xFFFFFFFF : ~std::uint64_t{0};
  return (address == 0 || address >= ones - 1) && !program.Occupies(address);
}

std::optional<Place> ConstantOf(const DwarfFile& file, const Dwarf_Die& die) {
  const std::optional<Dwarf_Attribute> attribute = file.InheritedAttribute(die, DW_AT_const_value);
  if (!attribute) return std::nullopt;
  if (const std::optional<DwarfConstant> constant = ReadConstant(*attribute)) {
    return Place{Place::Kind::kValue, constant->value, {}};
  }
  return Nowhere("is a constant without an address");
}

}  // namespace

Place PlaceOfVariable(const DwarfFile& file, const ElfFile& program, const Dwarf_Die& die) {
  std::optional<Dwarf_Attribute> attribute = file.InheritedAttribute(die, DW_AT_location);
  if (!attribute) {
    if (auto constant = ConstantOf(file, die)) return *constant;
    return Nowhere("has no address: it was optimized away");
  }
  Dwarf_Block block{};
  if (dwarf_formblock(&*attribute, &block) != 0) {
    return Nowhere("has no fixed address: it moves while the program runs");
  }
  DwarfFile::ForgetErrors();
  Dwarf_Op* first = nullptr;
  std::size_t count = 0;
  if (dwarf_getlocation(&*attribute, &first, &count) != 0) file.Broken(die, dwarf_errmsg(-1));
  const std::span<const Dwarf_Op> operations(first, count);
  if (operations.empty()) return Nowhere("has no address: it was optimized away");
  if (IsThreadLocal(operations)) {
    return Nowhere("is thread-local: every thread has its own, at an address of its own");
  }
  if (const auto address = PushedAddress(file, die, *attribute, operations[0])) {
    const auto sum = AddConstants(*address, operations.subspan(1));
    if (!sum) return Nowhere("has no single address in memory");
    if (IsDroppedAddress(program, *sum)) return Nowhere("has no address: the linker removed it");
    return {Place::Kind::kAddress, *sum, {}};
  }
  const auto constant = PushedConstant(operations[0]);
  if (constant && operations.size() == 2 && operations[1].atom == DW_OP_stack_value) {
    return {Place::Kind::kValue, *constant, {}};
  }
  return Nowhere("has no fixed address in memory");
}

Place PlaceOfCode(const DwarfFile& file, const Dwarf_Die& die) {
  DwarfFile::ForgetErrors();
  Dwarf_Die copy = die;
  Dwarf_Addr address = 0;
  if (dwarf_entrypc(&copy, &address) == 0) return {Place::Kind::kAddress, address, {}};
  Dwarf_Addr base = 0;
  Dwarf_Addr end = 0;
  // Code in several pieces: the entry is in the first.
  if (file.Attribute(die, DW_AT_ranges) && dwarf_ranges(&copy, 0, &base, &address, &end) > 0) {
    return {Place::Kind::kAddress, address, {}};
  }
  if (file.Attribute(die, DW_AT_low_pc) || file.Attribute(die, DW_AT_ranges)) {
    file.Broken(die, "the address of the code cannot be read");
  }
  return Nowhere("has no address: its code exists only where it was inlined, if at all");
}

std::optional<std::uint64_t> MemberOffset(const DwarfFile& file, const Dwarf_Die& member) {
  std::optional<Dwarf_Attribute> attribute = file.Attribute(member, DW_AT_data_member_location);
  if (!attribute) return 0;
  if (const auto constant = ReadConstant(*attribute)) return constant->value;
  DwarfFile::ForgetErrors();
  Dwarf_Op* first = nullptr;
  std::size_t count = 0;
  if (dwarf_getlocation(&*attribute, &first, &count) != 0) file.Broken(member, dwarf_errmsg(-1));
  // The expression starts with the structure's address pushed.
  return AddConstants(0, std::span<const Dwarf_Op>(first, count));
}

}  // namespace targets
