#include "targets/DwarfFields.h"

#include <deque>
#include <optional>
#include <string>
#include <utility>

#include "targets/DwarfBitFields.h"
#include "targets/DwarfLocation.h"
#include "targets/DwarfText.h"
#include "targets/Error.h"

namespace targets {
namespace {

/// No structure of a real program has this many members.
constexpr std::size_t kMostMembers = 1U << 18U;
constexpr std::size_t kDeepestFlattening = 64;

class FieldReader {
 public:
  FieldReader(DwarfTypes& types, const Dwarf_Die& structure)
      : types_(types), file_(types.File()), text_(types.StructureText(structure)) {
    bases_.push_back({structure, 0, 0});
  }

  StructureFields Read() {
    // Every class on the list adds its own bases to the end.
    while (!bases_.empty()) {
      const Base base = bases_.front();
      bases_.pop_front();
      ReadOne(base);
    }
    return std::move(result_);
  }

 private:
  struct Base {
    Dwarf_Die type{};
    std::uint64_t offset = 0;
    std::size_t depth = 0;
  };

  /// An anonymous member under way: where to go on, and the offset of what it lies in.
  struct Level {
    std::optional<Dwarf_Die> next;
    std::uint64_t offset = 0;
  };

  void ReadOne(const Base& base) {
    std::vector<Level> levels{{file_.Child(base.type), base.offset}};
    while (!levels.empty()) {
      Level& level = levels.back();
      if (!level.next) {
        levels.pop_back();
        continue;
      }
      const Dwarf_Die die = *level.next;
      // Members without fields count as well: flattening could double them with every level.
      if (++visited_ == kMostMembers) file_.Broken(die, "more members than a structure can have");
      const std::uint64_t offset = level.offset;
      level.next = file_.Sibling(die);
      const int tag = file_.Tag(die);
      if (tag == DW_TAG_inheritance) AddBase(die, offset, base.depth);
      // Static members are declarations here, and variables elsewhere.
      if (tag != DW_TAG_member || file_.Flag(die, DW_AT_declaration) ||
          file_.Flag(die, DW_AT_external)) {
        continue;
      }
      if (!file_.Name(die).empty()) {
        AddField(die, offset);
        continue;
      }
      const std::optional<Dwarf_Die> inner = types_.Behind(file_.TypeOf(die));
      if (!inner || !IsStructureTag(file_.Tag(*inner))) continue;
      if (levels.size() == kDeepestFlattening) {
        file_.Broken(die, "anonymous members are nested too deeply");
      }
      levels.push_back({file_.Child(*inner), offset + FieldOffset(file_, die)});
    }
  }

  void AddBase(const Dwarf_Die& die, std::uint64_t offset, std::size_t depth) {
    const std::optional<Dwarf_Die> type = types_.Behind(file_.TypeOf(die));
    if (!type) file_.Broken(die, "a base class without a type");
    if (depth == kDeepestFlattening) file_.Broken(die, "base classes are nested too deeply");
    // Where a virtual base lies is known at run time only: its fields cannot be had.
    const std::optional<std::uint64_t> inside = MemberOffset(file_, die);
    if (inside) bases_.push_back({*type, offset + *inside, depth + 1});
  }

  void AddField(const Dwarf_Die& die, std::uint64_t outer) {
    const TypeRecord& type = types_.OfObject(die);
    const std::string name(file_.Name(die));
    DataLableType field = FieldRecord(type);
    field.Name = name;
    std::uint64_t offset = outer;
    if (const auto bitField = ReadBitField(file_, types_.Layout().order, die, type.size)) {
      offset += bitField->unitOffset;
      field.ExtraFlag = true;
      field.TypeNumber = types_.Numbers().Of(die.addr, TypeNumbers::kBitField);
      Remark(die, MemberRemark::Kind::kBitField, " : " + std::to_string(bitField->bits));
    } else {
      offset += FieldOffset(file_, die);
    }
    if (type.kind == TypeRecord::Kind::kOpaque) Remark(die, MemberRemark::Kind::kTooLarge, "");
    field.Offset = RecordSize(offset, "the offset of member '" + name + "' of " + text_);
    result_.fields.push_back(std::move(field));
  }

  void Remark(const Dwarf_Die& die, MemberRemark::Kind kind, const std::string& suffix) {
    MemberRemark remark;
    remark.member = std::string(file_.Name(die));
    remark.record = text_;
    remark.kind = kind;
    remark.declaration = TypeText(file_, file_.TypeOf(die)) + suffix;
    result_.remarks.push_back(std::move(remark));
  }

  DwarfTypes& types_;
  const DwarfFile& file_;
  std::string text_;
  std::deque<Base> bases_;
  std::size_t visited_ = 0;
  StructureFields result_;
};

}  // namespace

StructureFields ReadFields(DwarfTypes& types, const Dwarf_Die& type) {
  return FieldReader(types, type).Read();
}

}  // namespace targets
