#ifndef STRINGRESOLVER_TARGETS_DWARFSHAPES_H
#define STRINGRESOLVER_TARGETS_DWARFSHAPES_H

#include <optional>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "targets/DwarfTypes.h"
#include "targets/TypeShape.h"

namespace targets {

/// Reads what types are made of out of debug information. A shape is read when it is first asked
/// for, and kept.
class DwarfShapes {
 public:
  /// `types` is borrowed and must outlive this object. `machine` (`e_machine`) decides about the
  /// format of `long double`.
  DwarfShapes(DwarfTypes& types, unsigned machine)
      : types_(types), file_(types.File()), machine_(machine) {}

  /// Null for a number that is none of `types`. Throws `Error` (`kBrokenInfo`).
  const TypeShape* Shape(TypeNumber number);

  /// The number of a type, as it is written.
  TypeNumber NumberOf(const std::optional<Dwarf_Die>& type) {
    return types_.Numbers().Of(type ? type->addr : nullptr);
  }

 private:
  TypeShape Read(const TypeNumbers::Key& key);
  TypeShape ReadType(std::optional<Dwarf_Die> written, std::uint32_t part);
  TypeShape ReadBitFieldMember(const Dwarf_Die& member);
  void ReadBase(const Dwarf_Die& type, TypeShape* shape) const;
  void ReadArray(const Dwarf_Die& type, std::uint32_t part, TypeShape* shape);
  void ReadEnumeration(const Dwarf_Die& type, TypeShape* shape);
  void ReadStructure(const Dwarf_Die& type, TypeShape* shape);
  std::optional<FieldShape> ReadField(const Dwarf_Die& die);

  DwarfTypes& types_;
  const DwarfFile& file_;
  unsigned machine_;
  std::unordered_map<TypeNumber, TypeShape> shapes_;
};

/// The types that C has without any declaration, for programs whose debug information does not
/// mention them: numbers for the canonical names that `BasicTypeRecord` knows.
class BasicShapes {
 public:
  /// How many numbers are taken from `first` on.
  static constexpr TypeNumber kCount = 15;

  BasicShapes(const TargetLayout& layout, TypeNumber first);

  /// 0 for any other name.
  [[nodiscard]] TypeNumber NumberOf(std::string_view canonicalName) const;
  /// Null for any other number.
  [[nodiscard]] const TypeShape* Shape(TypeNumber number) const;

 private:
  TypeNumber first_;
  std::vector<TypeShape> shapes_;
};

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_DWARFSHAPES_H
