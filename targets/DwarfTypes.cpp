#include "targets/DwarfTypes.h"

#include <algorithm>
#include <limits>
#include <unordered_set>
#include <utility>

#include "targets/DwarfFields.h"
#include "targets/DwarfText.h"
#include "targets/Error.h"
#include "targets/Texts.h"
#include "targets/TypeNames.h"

namespace targets {
namespace {

/// Finds out when a walk from type to type comes back to where it was. Most walks are a few steps
/// long, so only long ones are written down.
class CycleGuard {
 public:
  explicit CycleGuard(const DwarfFile& file) : file_(file) {}

  void Visit(const Dwarf_Die& die) {
    constexpr std::size_t kShort = 64;
    if (++steps_ > kShort && !seen_.insert(die.addr).second) {
      file_.Broken(die, "the type is defined in terms of itself");
    }
  }

 private:
  const DwarfFile& file_;
  std::size_t steps_ = 0;
  std::unordered_set<DieAddress> seen_;
};

enum class Encoding { kUnsigned, kSigned, kFloating, kOther };

Encoding EncodingOf(std::uint64_t attribute) {
  switch (attribute) {
    case DW_ATE_signed:
    case DW_ATE_signed_char:
      return Encoding::kSigned;
    case DW_ATE_unsigned:
    case DW_ATE_unsigned_char:
    case DW_ATE_boolean:
    case DW_ATE_address:
    case DW_ATE_UTF:
    case DW_ATE_UCS:
    case DW_ATE_ASCII:
      return Encoding::kUnsigned;
    case DW_ATE_float:
      return Encoding::kFloating;
    default:
      return Encoding::kOther;
  }
}

/// A record's name must be nothing that can be typed as the name of a field, or a search for that
/// field would find the record: keywords are safe, and so is any text with a blank.
std::string SafeName(std::string_view name) {
  const bool safe = name.find(' ') != name.npos || !CanonicalBasicType(name).empty();
  return safe ? std::string(name) : "type " + std::string(name);
}

EntryKind EntryKindOf(int tag) {
  switch (tag) {
    case DW_TAG_union_type:
      return EntryKind::kUnion;
    case DW_TAG_class_type:
      return EntryKind::kClass;
    case DW_TAG_enumeration_type:
      return EntryKind::kEnum;
    default:
      return EntryKind::kStruct;
  }
}

/// C++ lets a declaration say `class` where the definition says `struct`.
bool SameKind(EntryKind a, EntryKind b) {
  const auto isRecord = [](EntryKind kind) {
    return kind == EntryKind::kStruct || kind == EntryKind::kClass;
  };
  return a == b || (isRecord(a) && isRecord(b));
}

/// Adds what `build` returns to `records`, or what it throws to `failed`.
template <typename Record, typename Build>
const Record& BuildOnce(DieAddress key, std::unordered_map<DieAddress, Record>* records,
                        std::unordered_map<DieAddress, Error>* failed, Build build) {
  if (const auto known = failed->find(key); known != failed->end()) throw Error(known->second);
  try {
    Record built = build();
    return records->emplace(key, std::move(built)).first->second;
  } catch (const Error& error) {
    failed->emplace(key, error);
    throw;
  }
}

}  // namespace

/// One step from a type to the one it is made of.
struct DwarfTypes::Level {
  Dwarf_Die die{};
  TypeNumber number = 0;
  bool isPointer = false;
  std::uint64_t pointerSize = 0;
  std::uint64_t count = 0;
  /// Distance between elements where the debug information gives one; 0: the element's size.
  std::uint64_t stride = 0;
};

const TypeRecord& DwarfTypes::OfObject(const Dwarf_Die& die) {
  return OfType(file_.TypeOf(die));
}

const TypeRecord& DwarfTypes::OfType(std::optional<Dwarf_Die> type) {
  const DieAddress key = type ? type->addr : nullptr;
  if (const auto known = records_.find(key); known != records_.end()) return known->second;
  return BuildOnce(key, &records_, &failedRecords_, [&] { return Build(type); });
}

const DataLableType& DwarfTypes::Full(std::optional<Dwarf_Die> type) {
  const std::optional<Dwarf_Die> behind = Behind(type);
  if (!behind || !IsStructureTag(file_.Tag(*behind))) return OfType(type).record;
  if (const auto known = full_.find(behind->addr); known != full_.end()) return known->second;
  return BuildOnce(behind->addr, &full_, &failedFull_, [&] {
    StructureFields fields = ReadFields(*this, *behind);
    DataLableType record = Structure(*behind).record;
    record.TypeNumber = numbers_.Of(behind->addr);
    record.NestedTypes.clear();
    record.Members = std::move(fields.fields);
    remarks_.insert(remarks_.end(), fields.remarks.begin(), fields.remarks.end());
    return record;
  });
}

std::optional<Dwarf_Die> DwarfTypes::NamedRecordType(std::string_view recordName) const {
  const auto found = named_.find(std::string(recordName));
  if (found == named_.end()) return std::nullopt;
  return found->second;
}

std::optional<Dwarf_Die> DwarfTypes::Behind(std::optional<Dwarf_Die> type) {
  CycleGuard guard(file_);
  while (type) {
    guard.Visit(*type);
    const int tag = file_.Tag(*type);
    if (!IsTransparent(tag)) return Definition(*type, tag);
    type = file_.TypeOf(*type);
  }
  return type;
}

TypeRecord DwarfTypes::Build(std::optional<Dwarf_Die> type) {
  std::vector<Level> levels;
  TypeNumber innermost = 0;
  type = Unwrap(type, &levels, &innermost);
  TypeRecord built = Innermost(type);
  built.record.TypeNumber = innermost;
  for (auto level = levels.rbegin(); level != levels.rend(); ++level) {
    if (level->isPointer) {
      MakePointer(layout_, level->pointerSize, &built);
    } else {
      AddArray(*level, &built);
    }
    built.record.TypeNumber = level->number;
  }
  MakeObject(layout_, &built);
  return built;
}

/// Takes pointers, arrays and names off a type, down to the one that is made of no other. Numbers
/// go to the types as they are written, names and all.
std::optional<Dwarf_Die> DwarfTypes::Unwrap(std::optional<Dwarf_Die> type,
                                            std::vector<Level>* levels, TypeNumber* innermost) {
  CycleGuard guard(file_);
  DieAddress written = type ? type->addr : nullptr;
  while (type) {
    guard.Visit(*type);
    const int tag = file_.Tag(*type);
    Level level;
    level.die = *type;
    if (IsPointerTag(tag)) {
      level.isPointer = true;
      level.pointerSize = file_.Unsigned(*type, DW_AT_byte_size).value_or(layout_.pointerSize);
      level.number = numbers_.Of(written);
      levels->push_back(level);
    } else if (tag == DW_TAG_array_type) {
      const std::vector<std::uint64_t> counts = ArrayCounts(file_, *type);
      for (std::size_t i = 0; i < counts.size(); ++i) {
        level.count = counts[i];
        level.number =
            i == 0 ? numbers_.Of(written) : numbers_.Of(type->addr, static_cast<std::uint32_t>(i));
        const bool last = i + 1 == counts.size();
        level.stride = last ? file_.Unsigned(*type, DW_AT_byte_stride).value_or(0) : 0;
        levels->push_back(level);
      }
    } else if (!IsTransparent(tag) &&
               (tag != DW_TAG_subrange_type || file_.Attribute(*type, DW_AT_byte_size))) {
      *innermost = numbers_.Of(written);
      return Definition(*type, tag);
    }
    const bool stepped = IsPointerTag(tag) || tag == DW_TAG_array_type;
    type = file_.TypeOf(*type);
    if (stepped) written = type ? type->addr : nullptr;
  }
  *innermost = numbers_.Of(written);
  return type;
}

TypeRecord DwarfTypes::Innermost(const std::optional<Dwarf_Die>& type) {
  if (!type) return {TypeRecord::Kind::kScalar, UnitRecord(layout_, "void"), 1};
  const int tag = file_.Tag(*type);
  if (tag == DW_TAG_base_type) return BaseType(*type);
  if (tag == DW_TAG_enumeration_type) return Enumeration(*type);
  if (IsStructureTag(tag)) return Structure(*type);
  return Other(*type, tag);
}

TypeRecord DwarfTypes::BaseType(const Dwarf_Die& type) {
  const std::string name(file_.Name(type));
  const std::uint64_t size = file_.Unsigned(type, DW_AT_byte_size).value_or(0);
  if (size == 0) return {TypeRecord::Kind::kScalar, UnitRecord(layout_, SafeName(name)), 1};
  const Encoding encoding = EncodingOf(file_.Unsigned(type, DW_AT_encoding).value_or(0));
  const bool floating = encoding == Encoding::kFloating;
  if (size > kWidestScalar || encoding == Encoding::kOther ||
      (floating && size != 4 && size != 8)) {
    return Opaque(type, SafeName(name), size);
  }
  const auto bytes = static_cast<std::uint32_t>(size);
  return {TypeRecord::Kind::kScalar,
          floating ? FloatingRecord(layout_, SafeName(name), bytes)
                   : IntegerRecord(layout_, SafeName(name), bytes, encoding == Encoding::kSigned),
          size};
}

TypeRecord DwarfTypes::Enumeration(const Dwarf_Die& type) {
  std::string name = TagText(file_, type);
  // One that is only declared has no size of its own: compilers then take an int.
  const std::uint64_t size = file_.Unsigned(type, DW_AT_byte_size).value_or(4);
  if (size == 0 || size > kWidestScalar) return Opaque(type, name, size);
  return {TypeRecord::Kind::kScalar,
          IntegerRecord(layout_, std::move(name), static_cast<std::uint32_t>(size),
                        IsSignedEnumeration(type)),
          size};
}

bool DwarfTypes::IsSignedEnumeration(const Dwarf_Die& type) {
  std::optional<std::uint64_t> encoding = file_.Unsigned(type, DW_AT_encoding);
  if (const std::optional<Dwarf_Die> underlying = file_.TypeOf(type); underlying && !encoding) {
    if (const auto base = Behind(underlying)) encoding = file_.Unsigned(*base, DW_AT_encoding);
  }
  if (encoding) return EncodingOf(*encoding) == Encoding::kSigned;
  for (auto die = file_.Child(type); die; die = file_.Sibling(*die)) {
    const std::optional<Dwarf_Attribute> attribute = file_.Attribute(*die, DW_AT_const_value);
    if (!attribute) continue;
    const std::optional<DwarfConstant> value = ReadConstant(*attribute);
    if (value && value->isSigned && static_cast<std::int64_t>(value->value) < 0) return true;
  }
  return false;
}

TypeRecord DwarfTypes::Structure(const Dwarf_Die& type) {
  const std::string text = TagText(file_, type);
  const std::uint64_t size = file_.Unsigned(type, DW_AT_byte_size).value_or(0);
  return {TypeRecord::Kind::kStructure,
          NamedRecord(layout_, text, RecordSize(size, text), RecordName(type, text)), size};
}

TypeRecord DwarfTypes::Other(const Dwarf_Die& type, int tag) {
  if (tag == DW_TAG_subroutine_type || tag == DW_TAG_subprogram) {
    return {TypeRecord::Kind::kScalar, UnitRecord(layout_, "function ()"), 1};
  }
  std::string name = SafeName(file_.Name(type));
  std::uint64_t size = layout_.pointerSize;
  if (tag == DW_TAG_ptr_to_member_type) {
    name = "pointer to member";
    const std::optional<Dwarf_Die> member = Behind(file_.TypeOf(type));
    // That of a function also says how to adjust the object's address.
    if (member && file_.Tag(*member) == DW_TAG_subroutine_type) size *= 2;
  }
  size = file_.Unsigned(type, DW_AT_byte_size).value_or(size);
  const bool number = tag == DW_TAG_ptr_to_member_type || tag == DW_TAG_unspecified_type ||
                      tag == DW_TAG_subrange_type;
  if (!number || size == 0 || size > kWidestScalar) return Opaque(type, name, size);
  bool isSigned = false;
  if (tag == DW_TAG_subrange_type) {
    const std::optional<Dwarf_Die> base = Behind(file_.TypeOf(type));
    isSigned =
        base && EncodingOf(file_.Unsigned(*base, DW_AT_encoding).value_or(0)) == Encoding::kSigned;
  }
  return {TypeRecord::Kind::kScalar,
          IntegerRecord(layout_, name, static_cast<std::uint32_t>(size), isSigned), size};
}

TypeRecord DwarfTypes::Opaque(const Dwarf_Die& type, const std::string& name, std::uint64_t size) {
  TypeRecord built{TypeRecord::Kind::kOpaque,
                   NamedRecord(layout_, name, RecordSize(size, name), RecordName(type, name)),
                   size};
  built.record.ExtraFlag = true;
  return built;
}

/// Replaces a type by an array of it.
void DwarfTypes::AddArray(const Level& level, TypeRecord* type) const {
  const std::uint64_t stride = level.stride == 0 ? type->size : level.stride;
  if (stride != 0 && level.count > std::numeric_limits<std::uint64_t>::max() / stride) {
    file_.Broken(level.die, "an array larger than any memory");
  }
  MakeArray(layout_, level.count, stride, type);
}

std::string DwarfTypes::RecordName(const Dwarf_Die& type, const std::string& text) {
  // The offset tells types of one name apart; the number after it, entries of equal offset in
  // different sections.
  Dwarf_Die copy = type;
  const std::string stem =
      text + "#" + Hexadecimal(dwarf_dieoffset(&copy)).substr(2) + layout_.recordMark;
  std::string name = stem;
  for (int n = 2;; ++n) {
    const auto [entry, added] = named_.emplace(name, type);
    if (added || entry->second.addr == type.addr) return name;
    name = stem + "." + std::to_string(n);
  }
}

Dwarf_Die DwarfTypes::Definition(const Dwarf_Die& type, int tag) {
  if (!IsStructureTag(tag) && tag != DW_TAG_enumeration_type) return type;
  if (const auto signature = file_.Attribute(type, DW_AT_signature)) {
    return file_.Reference(type, *signature);
  }
  if (!file_.Attribute(type, DW_AT_declaration)) return type;
  const std::string_view name = file_.Name(type);
  if (name.empty()) return type;
  // A declaration outside functions is never completed inside one.
  IndexTable& table = index_.Global();
  for (std::uint32_t n = table.names.First(name); n != NameTable::kNone; n = table.names.Next(n)) {
    const IndexEntry& entry = table.entries[n];
    if (!entry.isDeclaration && SameKind(entry.kind, EntryKindOf(tag))) return file_.At(entry.die);
  }
  return type;
}

std::string DwarfTypes::StructureText(const Dwarf_Die& type) {
  if (!file_.Name(type).empty()) return TagText(file_, type);
  IndexTable& table = index_.Global();
  for (std::uint32_t n = 0; n < table.names.Size(); ++n) {
    if (table.entries[n].kind != EntryKind::kTypedef) continue;
    const Dwarf_Die definition = file_.At(table.entries[n].die);
    const std::optional<Dwarf_Die> target = file_.TypeOf(definition);
    if (target && target->addr == type.addr) return std::string(table.names.NameOf(n));
  }
  return TagText(file_, type);
}

}  // namespace targets
