#ifndef STRINGRESOLVER_TARGETS_DWARFLOCATION_H
#define STRINGRESOLVER_TARGETS_DWARFLOCATION_H

#include <cstdint>
#include <optional>
#include <string>

#include "targets/DwarfFile.h"
#include "targets/ElfFile.h"

namespace targets {

/// Where something is, or what it is worth, or why neither can be said.
struct Place {
  enum class Kind {
    kAddress,  ///< `value` is its run-time address
    kValue,    ///< it has no address; `value` is its constant value
    kNowhere,  ///< `reason` completes a sentence that begins with its name
  };
  Kind kind = Kind::kNowhere;
  std::uint64_t value = 0;
  std::string reason;
};

/// The place of a variable with static storage.
Place PlaceOfVariable(const DwarfFile& file, const ElfFile& program, const Dwarf_Die& die);

/// The place of a function or of a label in assembly source.
Place PlaceOfCode(const DwarfFile& file, const Dwarf_Die& die);

/// The offset that DW_AT_data_member_location gives, in bytes: a constant, or an expression that
/// only adds one. Nothing when the offset is known at run time only. Absent counts as 0.
std::optional<std::uint64_t> MemberOffset(const DwarfFile& file, const Dwarf_Die& member);

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_DWARFLOCATION_H
