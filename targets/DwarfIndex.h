#ifndef STRINGRESOLVER_TARGETS_DWARFINDEX_H
#define STRINGRESOLVER_TARGETS_DWARFINDEX_H

#include <cstdint>
#include <deque>
#include <string_view>
#include <unordered_set>

#include "targets/DwarfFile.h"
#include "targets/DwarfUnits.h"
#include "targets/NameTable.h"

namespace targets {

enum class EntryKind : std::uint8_t {
  kVariable,
  kFunction,
  kEnumerator,
  kAssemblyLabel,
  kBaseType,
  kTypedef,
  kStruct,
  kUnion,
  kClass,
  kEnum,
};

/// One named thing of the debug information.
struct IndexEntry {
  DieAddress die = nullptr;
  /// The function, class or named namespace around it; null at the top level.
  DieAddress owner = nullptr;
  std::uint32_t unit = 0;
  EntryKind kind = EntryKind::kVariable;
  bool isExternal = false;
  bool isDeclaration = false;
  /// Lies in a namespace, and is found by its plain name nevertheless.
  bool isScoped = false;
};

/// Entries by name, in the order of the debug information.
struct IndexTable {
  NameTable names;
  std::deque<IndexEntry> entries;
  /// Entries that another one completes: the same thing, with less known about it.
  std::unordered_set<DieAddress> completed;

  void Add(std::string_view name, const IndexEntry& entry) {
    names.Add(name);
    entries.push_back(entry);
  }
};

/// The names of the debug information. Units that are broken are left out from the first broken
/// entry on, and noted.
class DwarfIndex {
 public:
  /// Walks over the top level of every unit, and into namespaces. All arguments are borrowed.
  DwarfIndex(const DwarfFile& file, const DwarfUnits& units, Damage* damage);

  /// Variables with static storage, functions, enumerators, labels and types outside functions and
  /// classes.
  [[nodiscard]] IndexTable& Global() { return global_; }
  /// Those inside. Walks over every entry of the program when first asked for.
  [[nodiscard]] IndexTable& Local();

 private:
  const DwarfFile& file_;
  const DwarfUnits& units_;
  Damage* damage_;
  IndexTable global_;
  IndexTable local_;
  bool localRead_ = false;
};

[[nodiscard]] constexpr bool IsLabelKind(EntryKind kind) {
  return kind < EntryKind::kBaseType;
}

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_DWARFINDEX_H
