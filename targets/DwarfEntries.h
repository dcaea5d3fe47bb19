#ifndef STRINGRESOLVER_TARGETS_DWARFENTRIES_H
#define STRINGRESOLVER_TARGETS_DWARFENTRIES_H

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "targets/DwarfFile.h"

namespace targets {

/// Walks from entry to entry of one unit. Entries of one abbreviation have the same attributes in
/// the same forms, so where each lies is worked out once for all; libdw goes through them anew at
/// every question, which was four fifths of opening a large program.
///
/// What is unusual or broken is left to libdw, which says what is wrong with it.
class DwarfEntries {
 public:
  /// Is an attribute of this name to be visited?
  using Wanted = bool (*)(unsigned int name);

  /// `end` is where the entries of the unit end in mapped memory; null when that is not known, and
  /// then everything is left to libdw. `file` is borrowed.
  DwarfEntries(const DwarfFile& file, const Dwarf_Die& unit, DieAddress end, Wanted wanted);

  // As those of `DwarfFile`, for entries of this unit.

  [[nodiscard]] std::optional<Dwarf_Die> Child(const Dwarf_Die& die);
  [[nodiscard]] std::optional<Dwarf_Die> Sibling(const Dwarf_Die& die);
  [[nodiscard]] int Tag(const Dwarf_Die& die);
  [[nodiscard]] bool HasChildren(const Dwarf_Die& die);

  /// Calls `visit` with each of the entry's own wanted attributes, in order. Throws `Error`
  /// (`kBrokenInfo`).
  template <typename Visit>
  void VisitAttributes(const Dwarf_Die& die, Visit visit) {
    const Place& place = Find(die);
    if (place.end == nullptr) {
      for (Dwarf_Attribute& attribute : CollectAttributes(die)) visit(attribute);
      return;
    }
    Bytes at = place.attributes;
    for (const Step& step : place.shape->steps) {
      at += step.before;
      if (step.isWanted) {
        // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast): libdw's type; it only reads.
        Dwarf_Attribute attribute{step.name, step.form, const_cast<unsigned char*>(at), die.cu};
        visit(attribute);
      }
      at = step.varies ? Skip(at, step.form) : at + step.size;
    }
  }

 private:
  using Bytes = const unsigned char*;

  /// An attribute that is wanted, or whose bytes have to be looked at to step over it.
  struct Step {
    unsigned int name = 0;
    unsigned int form = 0;
    /// Bytes of the attributes between the step before and this one.
    std::uint32_t before = 0;
    /// Bytes of this one, if they do not vary.
    std::uint32_t size = 0;
    bool varies = false;
    bool isWanted = false;
  };

  /// What entries of one abbreviation have in common.
  struct Shape {
    Dwarf_Abbrev* abbreviation = nullptr;
    int tag = 0;
    bool hasChildren = false;
    /// It says where the next entry is, or its children have to be walked over.
    bool namesSibling = false;
    /// All its forms can be stepped over here.
    bool isPlain = false;
    std::vector<Step> steps;
    /// Bytes behind the last step.
    std::uint32_t rest = 0;
  };

  /// An entry, its shape, and where its attributes begin and end; null what is left to libdw.
  struct Place {
    DieAddress die = nullptr;
    const Shape* shape = nullptr;
    Bytes attributes = nullptr;
    Bytes end = nullptr;
  };

  const Place& Find(const Dwarf_Die& die);
  [[nodiscard]] Shape Describe(Dwarf_Die die) const;
  [[nodiscard]] std::optional<std::uint32_t> SizeOf(unsigned int form) const;
  /// Behind a value of a form whose size varies; null when the form is not known, or when that is
  /// behind the unit's end.
  [[nodiscard]] Bytes Skip(Bytes at, unsigned int form) const;
  [[nodiscard]] Bytes EndOf(const Shape& shape, Bytes at) const;
  [[nodiscard]] std::optional<Dwarf_Die> EntryAt(Bytes at, const Dwarf_Die& sibling);
  [[nodiscard]] std::vector<Dwarf_Attribute> CollectAttributes(const Dwarf_Die& die) const;

  const DwarfFile& file_;
  Wanted wanted_;
  Bytes end_;
  std::uint8_t addressSize_ = 0;
  std::uint8_t offsetSize_ = 0;
  Dwarf_Half version_ = 0;
  /// By abbreviation code. Places point into them.
  std::vector<std::unique_ptr<Shape>> shapes_;
  /// The entry that was asked about last.
  Place last_;
};

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_DWARFENTRIES_H
