#include "targets/DwarfShapes.h"

#include <string>
#include <utility>

#include "targets/DwarfBitFields.h"
#include "targets/DwarfLocation.h"
#include "targets/DwarfText.h"
#include "targets/TypeNames.h"

namespace targets {
namespace {

using Kind = TypeShape::Kind;

/// No structure of a real program has this many members.
constexpr std::size_t kMostFields = 1U << 18U;

/// The elements of each dimension, the outermost first, as far as they are known.
std::vector<std::optional<std::uint64_t>> KnownCounts(const DwarfFile& file,
                                                      const Dwarf_Die& array) {
  std::vector<std::optional<std::uint64_t>> known;
  std::vector<std::uint64_t> counts = ArrayCounts(file, array);
  for (auto die = file.Child(array); die; die = file.Sibling(*die)) {
    if (file.Tag(*die) != DW_TAG_subrange_type) continue;
    const bool said = file.Attribute(*die, DW_AT_count) || file.Attribute(*die, DW_AT_upper_bound);
    if (known.size() < counts.size()) {
      known.push_back(said ? std::optional(counts[known.size()]) : std::nullopt);
    }
  }
  known.resize(counts.size());
  return known;
}

/// `int [2][3]` without its first `part` dimensions.
std::string RowText(std::string text, std::uint32_t part) {
  const std::size_t first = text.find('[');
  for (; part > 0 && first != text.npos; --part) {
    const std::size_t close = text.find(']', first);
    if (close == text.npos) break;
    text.erase(first, close + 1 - first);
  }
  return text;
}

}  // namespace

const TypeShape* DwarfShapes::Shape(TypeNumber number) {
  if (const auto known = shapes_.find(number); known != shapes_.end()) return &known->second;
  const std::optional<TypeNumbers::Key> key = types_.Numbers().KeyOf(number);
  if (!key) return nullptr;
  TypeShape shape = Read(*key);
  return &shapes_.emplace(number, std::move(shape)).first->second;
}

TypeShape DwarfShapes::Read(const TypeNumbers::Key& key) {
  if (key.die == nullptr) return ReadType(std::nullopt, 0);
  const Dwarf_Die die = file_.At(key.die);
  return key.part == TypeNumbers::kBitField ? ReadBitFieldMember(die) : ReadType(die, key.part);
}

TypeShape DwarfShapes::ReadType(std::optional<Dwarf_Die> written, std::uint32_t part) {
  TypeShape shape;
  shape.name = TypeText(file_, written);
  std::optional<Dwarf_Die> type = types_.Behind(written);
  // A range of another type, without a size of its own.
  for (int step = 0; step < 64 && type && file_.Tag(*type) == DW_TAG_subrange_type &&
                     !file_.Attribute(*type, DW_AT_byte_size);
       ++step) {
    type = types_.Behind(file_.TypeOf(*type));
  }
  if (!type) {
    shape.kind = Kind::kVoid;
    return shape;
  }
  const int tag = file_.Tag(*type);
  shape.size = file_.Unsigned(*type, DW_AT_byte_size).value_or(0);
  if (tag == DW_TAG_base_type) {
    ReadBase(*type, &shape);
  } else if (IsPointerTag(tag)) {
    shape.kind = Kind::kPointer;
    if (shape.size == 0 || shape.size > 8) shape.size = types_.Layout().pointerSize;
    shape.target = NumberOf(file_.TypeOf(*type));
  } else if (tag == DW_TAG_array_type) {
    ReadArray(*type, part, &shape);
  } else if (tag == DW_TAG_enumeration_type) {
    ReadEnumeration(*type, &shape);
  } else if (IsStructureTag(tag)) {
    ReadStructure(*type, &shape);
  } else if (tag == DW_TAG_subroutine_type || tag == DW_TAG_subprogram) {
    shape.kind = Kind::kFunction;
  } else if (shape.size == 0) {
    shape.size = types_.OfType(type).size;
  }
  if (tag == DW_TAG_subrange_type && shape.size <= 8) {
    shape.kind = Kind::kInteger;
    shape.isSigned = types_.OfType(type).record.IsSigned;
  }
  return shape;
}

void DwarfShapes::ReadBase(const Dwarf_Die& type, TypeShape* shape) const {
  const std::string_view name = file_.Name(type);
  switch (file_.Unsigned(type, DW_AT_encoding).value_or(0)) {
    case DW_ATE_boolean:
      shape->kind = Kind::kBoolean;
      break;
    case DW_ATE_signed:
      shape->isSigned = true;
      [[fallthrough]];
    case DW_ATE_unsigned:
    case DW_ATE_address:
      shape->kind = Kind::kInteger;
      break;
    case DW_ATE_signed_char:
      shape->isSigned = true;
      [[fallthrough]];
    case DW_ATE_unsigned_char:
      shape->kind = Kind::kCharacter;
      shape->isText = CanonicalBasicType(name) == "char";
      break;
    case DW_ATE_UTF:
    case DW_ATE_UCS:
    case DW_ATE_ASCII:
      shape->kind = Kind::kCharacter;
      shape->isText = true;
      break;
    case DW_ATE_float: {
      const bool namesItsSize = name.find("128") != name.npos;
      const bool x86 = machine_ == EM_386 || machine_ == EM_X86_64;
      const bool pair = machine_ == EM_PPC || machine_ == EM_PPC64;
      // Neither `bfloat` nor a pair of doubles is a format of IEEE 754.
      if (shape->size == 2 && name.find("bf") != name.npos) break;
      if (shape->size == 16 && pair && !namesItsSize) break;
      shape->kind = Kind::kFloating;
      shape->isExtended =
          shape->size == 10 || shape->size == 12 || (shape->size == 16 && x86 && !namesItsSize);
      break;
    }
    default:
      break;
  }
}

void DwarfShapes::ReadArray(const Dwarf_Die& type, std::uint32_t part, TypeShape* shape) {
  shape->kind = Kind::kArray;
  shape->name = RowText(shape->name, part);
  const auto counts = KnownCounts(file_, type);
  if (part >= counts.size()) return;
  shape->count = counts[part];
  const bool last = part + 1 == counts.size();
  shape->target = last ? NumberOf(file_.TypeOf(type)) : types_.Numbers().Of(type.addr, part + 1);
  std::uint64_t size = file_.Unsigned(type, DW_AT_byte_stride).value_or(0);
  if (size == 0) size = types_.OfType(file_.TypeOf(type)).size;
  for (std::size_t i = part; i < counts.size(); ++i) {
    if (__builtin_mul_overflow(size, counts[i].value_or(0), &size)) {
      file_.Broken(type, "an array larger than any memory");
    }
  }
  shape->size = size;
}

void DwarfShapes::ReadEnumeration(const Dwarf_Die& type, TypeShape* shape) {
  shape->kind = Kind::kEnumeration;
  shape->isIncomplete = file_.Flag(type, DW_AT_declaration);
  const TypeRecord& record = types_.OfType(type);
  if (shape->size == 0) shape->size = record.size;
  shape->isSigned = record.record.IsSigned;
  for (auto die = file_.Child(type); die; die = file_.Sibling(*die)) {
    if (file_.Tag(*die) != DW_TAG_enumerator) continue;
    const std::optional<Dwarf_Attribute> attribute = file_.Attribute(*die, DW_AT_const_value);
    const auto value = attribute ? ReadConstant(*attribute) : std::optional<DwarfConstant>{};
    if (!value) file_.Broken(*die, "an enumerator without a value");
    shape->enumerators.push_back({std::string(file_.Name(*die)), value->value});
  }
}

void DwarfShapes::ReadStructure(const Dwarf_Die& type, TypeShape* shape) {
  shape->kind = file_.Tag(type) == DW_TAG_union_type ? Kind::kUnion : Kind::kStructure;
  shape->isIncomplete = file_.Flag(type, DW_AT_declaration);
  for (auto die = file_.Child(type); die; die = file_.Sibling(*die)) {
    if (shape->fields.size() == kMostFields) {
      file_.Broken(*die, "more members than a structure can have");
    }
    if (auto field = ReadField(*die)) shape->fields.push_back(*std::move(field));
  }
}

std::optional<FieldShape> DwarfShapes::ReadField(const Dwarf_Die& die) {
  const int tag = file_.Tag(die);
  FieldShape field;
  field.isBase = tag == DW_TAG_inheritance;
  if (!field.isBase && tag != DW_TAG_member) return std::nullopt;
  field.type = NumberOf(file_.TypeOf(die));
  if (field.isBase) {
    // Where a virtual base lies is known at run time only.
    const std::optional<std::uint64_t> offset = MemberOffset(file_, die);
    if (!offset) return std::nullopt;
    field.offset = *offset;
    return field;
  }
  // Static members are declarations here, and variables elsewhere.
  if (file_.Flag(die, DW_AT_declaration) || file_.Flag(die, DW_AT_external)) return std::nullopt;
  field.name = std::string(file_.Name(die));
  const std::uint64_t typeSize =
      file_.Attribute(die, DW_AT_bit_size) ? types_.OfObject(die).size : 0;
  if (const auto place = ReadBitField(file_, types_.Layout().order, die, typeSize)) {
    field.offset = place->firstBit / 8;
    field.firstBit = static_cast<std::uint32_t>(place->firstBit % 8);
    field.bits = static_cast<std::uint32_t>(place->bits);
    // Bits without a name only keep others apart.
    if (field.name.empty()) return std::nullopt;
  } else {
    field.offset = FieldOffset(file_, die);
  }
  return field;
}

TypeShape DwarfShapes::ReadBitFieldMember(const Dwarf_Die& member) {
  TypeShape shape = ReadType(file_.TypeOf(member), 0);
  const auto place = ReadBitField(file_, types_.Layout().order, member, shape.size);
  if (place && place->firstBit >= place->unitOffset * 8) {
    shape.bits = static_cast<std::uint32_t>(place->bits);
    shape.firstBit = static_cast<std::uint32_t>(place->firstBit - place->unitOffset * 8);
  }
  return shape;
}

BasicShapes::BasicShapes(const TargetLayout& layout, TypeNumber first) : first_(first) {
  for (const char* const name : {"void", "_Bool", "char", "signed char", "unsigned char", "short",
                                 "unsigned short", "int", "unsigned int", "long", "unsigned long",
                                 "long long", "unsigned long long", "float", "double"}) {
    const std::optional<DataLableType> record = BasicTypeRecord(layout, name);
    TypeShape shape;
    shape.name = name;
    if (shape.name == "void") {
      shape.kind = Kind::kVoid;
    } else {
      shape.kind = record->IsFloat || record->IsDouble            ? Kind::kFloating
                   : shape.name == "_Bool"                        ? Kind::kBoolean
                   : shape.name.find("char") != std::string::npos ? Kind::kCharacter
                                                                  : Kind::kInteger;
      shape.size = record->Size;
      shape.isSigned = record->IsSigned;
      shape.isText = shape.name == "char";
    }
    shapes_.push_back(std::move(shape));
  }
}

TypeNumber BasicShapes::NumberOf(std::string_view canonicalName) const {
  for (std::size_t i = 0; i < shapes_.size(); ++i) {
    if (shapes_[i].name == canonicalName) return static_cast<TypeNumber>(first_ + i);
  }
  return 0;
}

const TypeShape* BasicShapes::Shape(TypeNumber number) const {
  const bool mine = number >= first_ && number - first_ < shapes_.size();
  return mine ? &shapes_[number - first_] : nullptr;
}

}  // namespace targets
