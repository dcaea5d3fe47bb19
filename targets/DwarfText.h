#ifndef STRINGRESOLVER_TARGETS_DWARFTEXT_H
#define STRINGRESOLVER_TARGETS_DWARFTEXT_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "targets/DwarfFile.h"

namespace targets {

/// A type as a person would write it: `struct node *`, `int [2][3]`, `node_t`. Long chains are cut
/// short with dots.
std::string TypeText(const DwarfFile& file, std::optional<Dwarf_Die> type);

/// A structure, union, class or enumeration with its keyword: `struct node`, `enum <anonymous>`.
std::string TagText(const DwarfFile& file, const Dwarf_Die& type);

/// The counts of an array's dimensions, outermost first. A count that is not known, or known at run
/// time only, is 0; an array whose dimensions are not described has one such.
std::vector<std::uint64_t> ArrayCounts(const DwarfFile& file, const Dwarf_Die& array);

/// Type entries that stand for the type behind them: `typedef`, `const` and the like.
bool IsTransparent(int tag);
bool IsPointerTag(int tag);
/// Structure, union or class.
bool IsStructureTag(int tag);

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_DWARFTEXT_H
