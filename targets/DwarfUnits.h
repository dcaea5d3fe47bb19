#ifndef STRINGRESOLVER_TARGETS_DWARFUNITS_H
#define STRINGRESOLVER_TARGETS_DWARFUNITS_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "targets/DwarfFile.h"
#include "targets/Error.h"

namespace targets {

/// One unit of debug information: usually one compiled source file.
struct DwarfUnit {
  Dwarf_Die root{};
  /// Where its entries end, in mapped memory; null when that is not known.
  DieAddress end = nullptr;
  /// The source file as the compiler was given it; empty for units that are no source file.
  std::string_view name;
  /// The same, or the name of the first that imports the unit.
  std::string_view source;
  std::string_view directory;
  std::uint64_t language = 0;
  /// Tags are types in this source file, or in one that imports the unit.
  bool tagsAreTypes = false;
  /// The unit is of the current source file, or imported by one that is.
  bool current = false;
  /// Numbers of the units that hold what this one has in common with others.
  std::vector<std::uint32_t> imports;
};

/// What was met that could not be read. The first such error is kept, for the names that are then
/// not found.
using Damage = std::optional<Error>;

/// The units of a program and the choice of the current source file among them. What several units
/// have in common may lie in a unit of its own, also in another file: such a unit stands before the
/// first that imports it, as if it were written there.
class DwarfUnits {
 public:
  /// Reads the unit headers. A broken one ends the reading and is noted in `*damage`, as is debug
  /// information in a separate `.dwo` file that is not there.
  DwarfUnits(const DwarfFile& file, Damage* damage);

  [[nodiscard]] std::uint32_t Count() const { return static_cast<std::uint32_t>(units_.size()); }
  [[nodiscard]] const DwarfUnit& At(std::uint32_t number) const { return units_[number]; }
  /// The number of the unit that holds `die`, or `otherwise` when it is none of these.
  [[nodiscard]] std::uint32_t NumberOf(const Dwarf_Die& die, std::uint32_t otherwise) const;

  [[nodiscard]] bool IsAssembly(std::uint32_t number) const;
  /// In C, a tag names a type only behind its keyword; in C++ and most others it does by itself.
  [[nodiscard]] bool TagsAreTypes(std::uint32_t number) const {
    return units_[number].tagsAreTypes;
  }

  /// The first unit of the current source file; nothing when there is none.
  [[nodiscard]] std::optional<std::uint32_t> Current() const;
  void MakeCurrent(std::uint32_t number);
  /// The first unit that is a source file.
  [[nodiscard]] std::optional<std::uint32_t> FirstSource() const;
  /// As `ElfProgram::SetCurrentFile`.
  void MakeCurrent(const std::string& name);

  /// Names of the source files, sorted, each once.
  [[nodiscard]] std::vector<std::string> SourceFiles() const;

 private:
  void ReadUnits(Damage* damage);
  void AddSplit(const Dwarf_Die& skeleton);
  void Add(const Dwarf_Die& root, const Dwarf_Die& named);
  void FollowImports(Damage* damage);
  void ReadImports(std::uint32_t number);
  [[nodiscard]] std::vector<std::uint32_t> ImportedFirst() const;
  template <typename Value>
  void PassToImports(Value DwarfUnit::*member);
  [[nodiscard]] std::string FullPath(const DwarfUnit& unit) const;
  [[nodiscard]] std::string SimilarFiles(const std::string& name) const;

  const DwarfFile& file_;
  /// The bytes of the section that the last unit lies in.
  std::string_view section_;
  std::vector<DwarfUnit> units_;
  std::unordered_map<const Dwarf_CU*, std::uint32_t> numbers_;
};

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_DWARFUNITS_H
