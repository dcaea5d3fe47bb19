#ifndef STRINGRESOLVER_TARGETS_LABELCHOICE_H
#define STRINGRESOLVER_TARGETS_LABELCHOICE_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "targets/DwarfIndex.h"
#include "targets/DwarfLocation.h"
#include "targets/DwarfTypes.h"
#include "targets/DwarfUnits.h"
#include "targets/ElfFile.h"
#include "targets/LabelSource.h"

namespace targets {

/// Decides which of several things of one name is meant, and makes it a label.
///
/// What the current source file defines wins, then what is external, then a lone static; within the
/// same rank, what lies in no namespace. All arguments are borrowed.
class LabelChoice {
 public:
  LabelChoice(const ElfFile& program, const DwarfUnits& units, DwarfTypes& types)
      : program_(program), units_(units), types_(types), file_(types.File()) {}

  /// The label called `name` that `table` defines. Throws `Error`: `kAmbiguous`, `kNotRepresented`,
  /// `kBrokenInfo`.
  std::optional<Label> Find(std::string_view name, IndexTable& table);

  /// The place of the variable called `name` that `table` defines, whatever its type. Errors as
  /// above.
  std::optional<NamedObject> FindObject(std::string_view name, IndexTable& table);

  /// Does `table` define such a label?
  static bool Defines(std::string_view name, IndexTable& table);

  /// A variable called `name` that `table` only declares.
  std::optional<IndexEntry> FindDeclaration(std::string_view name, IndexTable& table) const;

  /// A label at `address` of the type of the variable `entry`.
  Label Typed(std::string_view name, const IndexEntry& entry, std::uint64_t address);

  /// The label's type, value or place, and file, for people to read.
  std::string Describe(const IndexEntry& entry);

 private:
  struct Candidate {
    IndexEntry entry;
    Place place;
    int rank = 0;
  };

  [[nodiscard]] int Rank(const IndexEntry& entry) const;
  [[nodiscard]] Place PlaceOf(const IndexEntry& entry) const;
  [[nodiscard]] Place PlaceOfEnumerator(const Dwarf_Die& die) const;
  std::vector<Candidate> Candidates(std::string_view name, IndexTable& table) const;
  std::optional<Candidate> Choose(std::string_view name, IndexTable& table) const;
  Label Make(std::string_view name, const Candidate& candidate);
  [[nodiscard]] std::uint64_t ConstantValue(std::string_view name, const IndexEntry& entry,
                                            std::uint64_t raw);
  /// Where an entry stands, for messages; the first `folder` bytes of its file's path are left out.
  [[nodiscard]] std::string Whereabouts(const IndexEntry& entry, std::size_t folder) const;

  const ElfFile& program_;
  const DwarfUnits& units_;
  DwarfTypes& types_;
  const DwarfFile& file_;
};

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_LABELCHOICE_H
