#ifndef STRINGRESOLVER_TARGETS_DWARFFILE_H
#define STRINGRESOLVER_TARGETS_DWARFFILE_H

#include <dwarf.h>
#include <elfutils/libdw.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "targets/ElfFile.h"

namespace targets {

/// The address of an entry's bytes in the mapped debug information: names the entry uniquely, also
/// across sections, in 8 bytes.
using DieAddress = const void*;

/// The debug information of one ELF file, read with every step checked: what libdw reports as an
/// error comes out as an `Error` (`kBrokenInfo`) that names the file and the offset.
class DwarfFile {
 public:
  /// `file` is borrowed and must outlive this object. What it shares with other files may lie in
  /// `debugFolder`. Throws `Error` when the file has debug information that cannot be opened
  /// (`kBrokenInfo`), or shares it with a file that cannot be used (`kFileUnusable`).
  DwarfFile(const ElfFile& file, const std::string& debugFolder);

  /// False when the file has no debug information at all.
  [[nodiscard]] bool Any() const { return dwarf_ != nullptr; }
  [[nodiscard]] Dwarf* Handle() const { return dwarf_.get(); }
  [[nodiscard]] const std::string& Path() const { return file_.Path(); }

  /// Does this file share parts of its debug information with others?
  [[nodiscard]] bool IsShared() const { return shared_ != nullptr; }

  /// The entry at `address`, in this file, in what it has split off, or in what it shares.
  [[nodiscard]] Dwarf_Die At(DieAddress address) const;

  /// The first child, or nothing.
  [[nodiscard]] std::optional<Dwarf_Die> Child(const Dwarf_Die& die) const;
  /// The next entry on the same level, or nothing. Always further on in the section, so that walks
  /// end whatever the file says.
  [[nodiscard]] std::optional<Dwarf_Die> Sibling(const Dwarf_Die& die) const;
  /// Throws `Error` (`kBrokenInfo`) when the entries of a unit, the last of whose top level is
  /// `last`, end before the unit does at `end`: then some of them were taken for something else.
  void CheckReachesEnd(const Dwarf_Die& last, DieAddress end) const;
  [[nodiscard]] int Tag(const Dwarf_Die& die) const;

  /// The entry's own attribute.
  [[nodiscard]] std::optional<Dwarf_Attribute> Attribute(const Dwarf_Die& die,
                                                         unsigned int name) const;
  /// The entry's own attribute, or that of the declaration it completes.
  [[nodiscard]] std::optional<Dwarf_Attribute> InheritedAttribute(const Dwarf_Die& die,
                                                                  unsigned int name) const;
  /// The inherited name; empty when there is none.
  [[nodiscard]] std::string_view Name(const Dwarf_Die& die) const;
  [[nodiscard]] bool Flag(const Dwarf_Die& die, unsigned int name) const;
  [[nodiscard]] std::optional<std::uint64_t> Unsigned(const Dwarf_Die& die,
                                                      unsigned int name) const;
  /// The entry that the attribute refers to.
  [[nodiscard]] Dwarf_Die Reference(const Dwarf_Die& die, Dwarf_Attribute attribute) const;
  /// The entry of the inherited DW_AT_type; nothing for `void`.
  [[nodiscard]] std::optional<Dwarf_Die> TypeOf(const Dwarf_Die& die) const;

  /// Throws `Error` (`kBrokenInfo`) about `die`, with `what` or else libdw's last error.
  [[noreturn]] void Broken(const Dwarf_Die& die, const std::string& what) const;
  /// The same about an offset in the file itself.
  [[noreturn]] void BrokenAt(std::uint64_t offset, const std::string& what) const;
  /// Throws like `Broken` if libdw has recorded an error since the last `ForgetErrors`.
  void Check(const Dwarf_Die& die) const;
  static void ForgetErrors() { dwarf_errno(); }

 private:
  struct EndDwarf {
    void operator()(Dwarf* dwarf) const { dwarf_end(dwarf); }
  };

  const ElfFile& file_;
  std::unique_ptr<ElfFile> sharedFile_;
  std::unique_ptr<Dwarf, EndDwarf> shared_;
  std::unique_ptr<Dwarf, EndDwarf> dwarf_;
};

/// Throws `Error` (`kBrokenInfo`) that names `path`, the section and the method when a section
/// without which nothing can be named is compressed in a way that libelf cannot undo.
void CheckCompression(Elf* elf, const std::string& path);

/// A constant attribute's value. Forms that do not tell the sign count as unsigned.
struct DwarfConstant {
  std::uint64_t value = 0;  ///< two's complement
  bool isSigned = false;
};

/// The attribute as a constant, or nothing when it has another form (a block, a location).
std::optional<DwarfConstant> ReadConstant(Dwarf_Attribute attribute);

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_DWARFFILE_H
