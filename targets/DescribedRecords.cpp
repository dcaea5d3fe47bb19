// The records of described types.

#include <utility>

#include "targets/DescribedTypes.h"

namespace targets {
namespace {

using Kind = TypeShape::Kind;

}  // namespace

const TypeRecord& DescribedTypes::Record(TypeNumber type) {
  const auto known = records_.find(type);
  if (known != records_.end()) return known->second;
  TypeRecord built = Build(type);
  return records_.emplace(type, std::move(built)).first->second;
}

TypeRecord DescribedTypes::Build(TypeNumber type) {
  std::vector<TypeNumber> levels;
  while (true) {
    const TypeShape& shape = At(Behind(type)).shape;
    if (shape.kind != Kind::kPointer && shape.kind != Kind::kArray) break;
    levels.push_back(type);
    type = shape.target;
  }
  TypeRecord built = Innermost(type);
  built.record.TypeNumber = type;
  for (auto level = levels.rbegin(); level != levels.rend(); ++level) {
    const TypeShape& shape = At(Behind(*level)).shape;
    if (shape.kind == Kind::kPointer) {
      MakePointer(layout_, shape.size, &built);
    } else {
      MakeArray(layout_, shape.count.value_or(0), built.size, &built);
    }
    built.record.TypeNumber = *level;
  }
  MakeObject(layout_, &built);
  return built;
}

TypeRecord DescribedTypes::Innermost(TypeNumber type) {
  const TypeNumber number = Behind(type);
  const TypeShape& shape = At(number).shape;
  const auto size = static_cast<std::uint32_t>(shape.size);
  switch (shape.kind) {
    case Kind::kVoid:
      return {TypeRecord::Kind::kScalar, UnitRecord(layout_, "void"), 1};
    case Kind::kFunction:
      return {TypeRecord::Kind::kScalar, UnitRecord(layout_, "function ()"), 1};
    case Kind::kFloating:
      return {TypeRecord::Kind::kScalar, FloatingRecord(layout_, shape.name, size), size};
    case Kind::kStructure:
    case Kind::kUnion: {
      std::string name = shape.name + "#" + std::to_string(number);
      recordNames_.emplace(name, number);
      return {TypeRecord::Kind::kStructure, NamedRecord(layout_, shape.name, size, std::move(name)),
              size};
    }
    default:
      return {TypeRecord::Kind::kScalar, IntegerRecord(layout_, shape.name, size, shape.isSigned),
              size};
  }
}

const DataLableType& DescribedTypes::Full(TypeNumber type) {
  const TypeNumber number = Behind(type);
  if (At(number).structure == nullptr) return Record(type).record;
  const auto known = full_.find(number);
  if (known != full_.end()) return known->second;
  DataLableType record = Record(number).record;
  record.NestedTypes.clear();
  AddFields(number, 0, At(number).shape.name, &record);
  return full_.emplace(number, std::move(record)).first->second;
}

/// The fields of an anonymous member take their place among the others.
void DescribedTypes::AddFields(TypeNumber structure, std::uint64_t outer, const std::string& text,
                               DataLableType* record) {
  for (const FieldShape& field : At(structure).shape.fields) {
    if (field.name.empty()) {
      AddFields(Behind(field.type), outer + field.offset, text, record);
      continue;
    }
    const TypeRecord& type = Record(field.type);
    DataLableType member = FieldRecord(type);
    member.Name = field.name;
    std::uint64_t offset = field.offset;
    if (field.bits != 0) {
      offset = StorageUnitOffset(field.offset * 8 + field.firstBit, field.bits, type.size);
      member.ExtraFlag = true;
      TypeShape bits = At(Behind(field.type)).shape;
      bits.name = At(field.type).shape.name;
      bits.bits = field.bits;
      bits.firstBit = static_cast<std::uint32_t>((field.offset - offset) * 8 + field.firstBit);
      member.TypeNumber = Add(std::move(bits), {});
      remarks_.push_back({field.name, text, MemberRemark::Kind::kBitField,
                          At(field.type).shape.name + " : " + std::to_string(field.bits)});
    }
    member.Offset = static_cast<std::uint32_t>(outer + offset);
    record->Members.push_back(std::move(member));
  }
}

}  // namespace targets
