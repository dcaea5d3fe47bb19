#ifndef STRINGRESOLVER_TARGETS_TYPELOOKUP_H
#define STRINGRESOLVER_TARGETS_TYPELOOKUP_H

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "targets/DwarfIndex.h"
#include "targets/DwarfUnits.h"

namespace targets {

/// A type name with its entry.
struct FoundType {
  Dwarf_Die die{};
  /// Defined in the current source file.
  bool isCurrent = false;
};

/// Finds the entries of types by name: those of the current source file first, then any;
/// definitions before declarations. All arguments are borrowed.
class TypeLookup {
 public:
  TypeLookup(const DwarfFile& file, const DwarfUnits& units) : file_(file), units_(units) {}

  /// A basic type by its canonical name, a tag with its keyword, or a name that stands alone.
  std::optional<FoundType> Find(std::string_view name, IndexTable& table);

  /// How a program writes the type of this entry: with its keyword, if it needs one.
  static std::string SpelledName(EntryKind kind, std::string_view name);

 private:
  template <typename Accepts>
  std::optional<FoundType> FindEntry(std::string_view name, IndexTable& table, Accepts accepts);
  std::optional<FoundType> FindBasic(const std::string& canonical, IndexTable& table);

  const DwarfFile& file_;
  const DwarfUnits& units_;
  /// Entries of basic types by canonical name, of the global table; filled when first needed.
  std::unordered_map<std::string, DieAddress> basic_;
  bool basicRead_ = false;
};

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_TYPELOOKUP_H
