#ifndef STRINGRESOLVER_TARGETS_DWARFTYPES_H
#define STRINGRESOLVER_TARGETS_DWARFTYPES_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "host/DataLableType.h"
#include "targets/DwarfFile.h"
#include "targets/DwarfIndex.h"
#include "targets/Error.h"
#include "targets/LabelSource.h"
#include "targets/RecordShapes.h"
#include "targets/TypeNumbers.h"
#include "targets/TypeRecord.h"

namespace targets {

/// Builds type records out of debug information. A record is built when it is first needed, and
/// kept.
class DwarfTypes {
 public:
  /// `file` and `index` are borrowed and must outlive this object.
  DwarfTypes(const DwarfFile& file, DwarfIndex& index, const TargetLayout& layout,
             TypeNumber firstNumber)
      : file_(file), index_(index), layout_(layout), numbers_(firstNumber) {}

  /// The record of an object whose entry is `die`, by its DW_AT_type. `void` without one. Throws
  /// `Error` (`kBrokenInfo`, `kNotRepresented`).
  const TypeRecord& OfObject(const Dwarf_Die& die);

  /// The record of the type `type` itself. Errors as above.
  const TypeRecord& OfType(std::optional<Dwarf_Die> type);

  /// The full record of a type: a structure with its fields; any other like `OfType`.
  const DataLableType& Full(std::optional<Dwarf_Die> type);

  /// The entry behind the name of a record from some `NestedTypes`, if it is one of these.
  [[nodiscard]] std::optional<Dwarf_Die> NamedRecordType(std::string_view recordName) const;

  [[nodiscard]] const std::vector<MemberRemark>& Remarks() const { return remarks_; }
  [[nodiscard]] const TargetLayout& Layout() const { return layout_; }
  [[nodiscard]] const DwarfFile& File() const { return file_; }
  [[nodiscard]] TypeNumbers& Numbers() { return numbers_; }

  /// The type behind `typedef`, `const` and the like; a structure that is only declared becomes its
  /// definition, in whichever unit. Nothing for `void`.
  std::optional<Dwarf_Die> Behind(std::optional<Dwarf_Die> type);

  /// A structure as a person would call it: an anonymous one by its `typedef`, if it has one.
  std::string StructureText(const Dwarf_Die& type);

 private:
  struct Level;

  TypeRecord Build(std::optional<Dwarf_Die> type);
  std::optional<Dwarf_Die> Unwrap(std::optional<Dwarf_Die> type, std::vector<Level>* levels,
                                  TypeNumber* innermost);
  TypeRecord Innermost(const std::optional<Dwarf_Die>& type);
  TypeRecord BaseType(const Dwarf_Die& type);
  TypeRecord Enumeration(const Dwarf_Die& type);
  TypeRecord Structure(const Dwarf_Die& type);
  TypeRecord Other(const Dwarf_Die& type, int tag);
  TypeRecord Opaque(const Dwarf_Die& type, const std::string& name, std::uint64_t size);
  void AddArray(const Level& level, TypeRecord* type) const;
  bool IsSignedEnumeration(const Dwarf_Die& type);
  std::string RecordName(const Dwarf_Die& type, const std::string& text);
  Dwarf_Die Definition(const Dwarf_Die& type, int tag);

  const DwarfFile& file_;
  DwarfIndex& index_;
  TargetLayout layout_;
  TypeNumbers numbers_;
  std::unordered_map<DieAddress, TypeRecord> records_;
  std::unordered_map<DieAddress, DataLableType> full_;
  /// What could not be built, so that it is not tried again at every use.
  std::unordered_map<DieAddress, Error> failedRecords_;
  std::unordered_map<DieAddress, Error> failedFull_;
  std::unordered_map<std::string, Dwarf_Die> named_;
  std::vector<MemberRemark> remarks_;
};

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_DWARFTYPES_H
