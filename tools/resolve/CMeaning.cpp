#include "tools/resolve/CMeaning.h"

#include <bit>
#include <charconv>
#include <utility>

#include "targets/Error.h"
#include "targets/NumeralReader.h"
#include "targets/TypeNames.h"

namespace tool {
namespace {

using Kind = CNode::Kind;
using TypeKind = CType::Kind;
using targets::TypeShape;

// Anonymous structures and base classes nest no deeper in any program worth reading.
constexpr int kDeepestField = 16;

CType Integer(std::uint64_t size, bool isSigned, std::string name) {
  CType type;
  type.kind = TypeKind::kInteger;
  type.size = size;
  type.isSigned = isSigned;
  type.name = std::move(name);
  return type;
}

CMeaning ValueOf(CType type, std::optional<std::uint64_t> bits) {
  CMeaning meaning;
  meaning.type = std::move(type);
  if (bits) meaning.value = ConvertNumber(CNumber{false, 0.0, *bits}, meaning.type);
  return meaning;
}

}  // namespace

CNumber ConvertNumber(const CNumber& number, const CType& type) {
  CNumber result;
  if (type.kind == TypeKind::kFloating) {
    result.floating = true;
    result.number = number.floating ? number.number
                    : number.bits >> 63U != 0
                        ? static_cast<double>(static_cast<std::int64_t>(number.bits))
                        : static_cast<double>(number.bits);
    if (type.size == sizeof(float)) result.number = static_cast<float>(result.number);
    return result;
  }
  result.bits = number.bits;
  if (number.floating) {
    const bool fits = number.number > -9.2e18 && number.number < 9.2e18;
    result.bits = fits ? static_cast<std::uint64_t>(static_cast<std::int64_t>(number.number)) : 0;
  }
  if (type.size == 0 || type.size >= 8) return result;
  const unsigned spare = 64U - 8U * static_cast<unsigned>(type.size);
  result.bits <<= spare;
  result.bits = type.isSigned
                    ? static_cast<std::uint64_t>(static_cast<std::int64_t>(result.bits) >> spare)
                    : result.bits >> spare;
  return result;
}

CReading::CReading(targets::LabelSource& labels, Memory memory)
    : labels_(labels), memory_(std::move(memory)) {
  const std::uint32_t pointer = labels.PointerSize();
  basics_.integer = Integer(4, true, "int");
  basics_.unsignedInteger = Integer(4, false, "unsigned int");
  basics_.longer = Integer(pointer, true, "long");
  basics_.unsignedLonger = Integer(pointer, false, "unsigned long");
  basics_.longLong = Integer(8, true, "long long");
  basics_.unsignedLongLong = Integer(8, false, "unsigned long long");
  basics_.real.kind = TypeKind::kFloating;
  basics_.real.size = 8;
  basics_.real.name = "double";
}

const CMeaning& CReading::Of(const CNode& node) {
  const auto found = known_.find(&node);
  if (found != known_.end()) return found->second;
  CMeaning meaning;
  try {
    meaning = Work(node);
  } catch (const targets::Error&) {
    meaning = {};
  }
  return known_[&node] = std::move(meaning);
}

CType CReading::FromShape(targets::TypeNumber number) {
  CType type;
  const TypeShape* shape = labels_.Shape(number);
  if (shape == nullptr) return type;
  type.number = number;
  type.size = shape->size;
  type.name = shape->name;
  type.bits = shape->bits;
  switch (shape->kind) {
    case TypeShape::Kind::kInteger:
    case TypeShape::Kind::kBoolean:
    case TypeShape::Kind::kCharacter:
    case TypeShape::Kind::kEnumeration:
      type.kind = TypeKind::kInteger;
      type.isSigned = shape->isSigned;
      break;
    case TypeShape::Kind::kFloating:
      type.kind = TypeKind::kFloating;
      break;
    case TypeShape::Kind::kPointer:
      type.kind = TypeKind::kPointer;
      break;
    case TypeShape::Kind::kArray:
      type.kind = TypeKind::kArray;
      type.count = shape->count;
      break;
    case TypeShape::Kind::kStructure:
    case TypeShape::Kind::kUnion:
      type.kind = TypeKind::kRecord;
      break;
    case TypeShape::Kind::kVoid:
    case TypeShape::Kind::kFunction:
      type.kind = TypeKind::kOther;
      break;
    case TypeShape::Kind::kOther:
      break;
  }
  return type;
}

CType CReading::Target(const CType& type) {
  if (type.target) return *type.target;
  const TypeShape* shape = labels_.Shape(type.number);
  if (shape == nullptr) return {};
  if (shape->target == 0 && type.kind == TypeKind::kPointer) {
    CType nothing;
    nothing.kind = TypeKind::kOther;
    nothing.name = "void";
    return nothing;
  }
  return FromShape(shape->target);
}

CType CReading::Named(std::string_view name) {
  const auto canonical = targets::CanonicalTypeName(
      name, [this](std::string_view base) { return labels_.HasType(base); });
  if (!canonical) return {};
  CType type = FromShape(labels_.FindShape(canonical->base));
  if (canonical->stars > 64) return {};
  if (canonical->base == "void") type.kind = TypeKind::kOther;
  std::string spelled = canonical->base;
  for (std::size_t star = 0; star < canonical->stars; ++star) {
    CType pointer;
    pointer.kind = TypeKind::kPointer;
    pointer.size = labels_.PointerSize();
    pointer.name = spelled += '*';
    pointer.target = std::make_shared<const CType>(std::move(type));
    type = std::move(pointer);
  }
  if (canonical->stars == 0) type.name = std::move(spelled);
  return type;
}

std::optional<CNumber> CReading::Load(const CType& type, std::uint64_t address) const {
  if (!type.IsScalar() || type.size == 0 || type.size > 8) return std::nullopt;
  if (type.bits != 0) {
    const bool little = labels_.Order() == targets::ByteOrder::kLittle;
    const std::uint32_t bytes = (type.firstBit + type.bits + 7) / 8;
    if (!little || bytes > 8) return std::nullopt;
    const auto unit = memory_(address, bytes);
    if (!unit) return std::nullopt;
    std::uint64_t bits = *unit >> type.firstBit << (64 - type.bits);
    bits = type.isSigned
               ? static_cast<std::uint64_t>(static_cast<std::int64_t>(bits) >> (64 - type.bits))
               : bits >> (64 - type.bits);
    return CNumber{false, 0.0, bits};
  }
  const auto bits = memory_(address, static_cast<std::uint32_t>(type.size));
  if (!bits) return std::nullopt;
  if (type.kind != TypeKind::kFloating) return ConvertNumber(CNumber{false, 0.0, *bits}, type);
  if (type.size == 4) {
    return CNumber{true, std::bit_cast<float>(static_cast<std::uint32_t>(*bits)), 0};
  }
  return type.size == 8 ? std::optional(CNumber{true, std::bit_cast<double>(*bits), 0})
                        : std::nullopt;
}

CMeaning CReading::Operand(const CNode& node) {
  CMeaning meaning = Of(node);
  if (meaning.type.kind == TypeKind::kArray) {
    CType pointer;
    pointer.kind = TypeKind::kPointer;
    pointer.size = labels_.PointerSize();
    pointer.target = std::make_shared<const CType>(Target(meaning.type));
    return ValueOf(std::move(pointer), meaning.address);
  }
  meaning.isObject = false;
  if (meaning.type.kind == TypeKind::kInteger) meaning.type = Promoted(meaning.type);
  return meaning;
}

CType CReading::Promoted(const CType& type) const {
  if (type.kind != TypeKind::kInteger) return type;
  const bool narrow = type.size < 4 || (type.bits != 0 && type.bits < 32);
  if (narrow) return basics_.integer;
  CType promoted = type;
  promoted.bits = 0;
  return promoted;
}

CType CReading::Common(const CType& left, const CType& right) const {
  if (left.kind == TypeKind::kFloating || right.kind == TypeKind::kFloating) {
    if (left.kind != TypeKind::kFloating) return right;
    if (right.kind != TypeKind::kFloating) return left;
    return left.size >= right.size ? left : right;
  }
  const CType a = Promoted(left);
  const CType b = Promoted(right);
  if (a.size != b.size) return a.size > b.size ? a : b;
  return a.isSigned ? b : a;
}

bool CReading::FindField(const TypeShape& record, std::string_view name, std::uint64_t offset,
                         int depth, CMeaning* found) {
  if (depth > kDeepestField) return false;
  for (const targets::FieldShape& field : record.fields) {
    if (field.name == name) {
      found->type = FromShape(field.type);
      found->type.bits = field.bits;
      found->type.firstBit = field.firstBit;
      found->address = offset + field.offset;
      return true;
    }
    if (!field.name.empty() && !field.isBase) continue;
    const TypeShape* inner = labels_.Shape(field.type);
    if (inner != nullptr && FindField(*inner, name, offset + field.offset, depth + 1, found)) {
      return true;
    }
  }
  return false;
}

CMeaning CReading::WorkInteger(const CNode& node) const {
  const auto value = targets::ReadNumeral(node.op);
  if (!value) return {};
  if (node.op.front() == '\'') {
    return *value < 128 ? ValueOf(basics_.integer, value) : CMeaning();
  }
  const bool isUnsigned = node.op.find_first_of("uU") != std::string::npos;
  const bool isLong = node.op.find_first_of("lL") != std::string::npos;
  const bool decimal = node.op.front() != '0';
  for (const CType* type :
       {&basics_.integer, &basics_.unsignedInteger, &basics_.longer, &basics_.unsignedLonger,
        &basics_.longLong, &basics_.unsignedLongLong}) {
    if (isUnsigned && type->isSigned) continue;
    if (!isUnsigned && decimal && !type->isSigned) continue;
    if (isLong && type->size == 4 && type->name.find("long") == std::string::npos) continue;
    const std::uint64_t bits = type->size * 8 - (type->isSigned ? 1 : 0);
    if (bits == 64 || *value >> bits == 0) return ValueOf(*type, value);
  }
  return {};
}

CMeaning CReading::WorkFloating(const CNode& node) const {
  std::string_view text = node.op;
  CMeaning meaning;
  meaning.type = basics_.real;
  if (text.ends_with('f') || text.ends_with('F')) {
    meaning.type.size = 4;
    meaning.type.name = "float";
    text.remove_suffix(1);
  }
  double number = 0.0;
  const auto read = std::from_chars(text.data(), text.data() + text.size(), number);
  if (read.ec != std::errc() || read.ptr != text.data() + text.size()) return {};
  meaning.value = ConvertNumber(CNumber{true, number, 0}, meaning.type);
  return meaning;
}

CMeaning CReading::WorkName(const CNode& node) {
  const auto label = labels_.FindLabel(node.op);
  if (!label) return {};
  if (label->kind == targets::LabelKind::kEnumerator) {
    const bool fits =
        static_cast<std::int64_t>(label->value) == static_cast<std::int32_t>(label->value);
    return fits ? ValueOf(basics_.integer, label->value) : CMeaning();
  }
  if (!label->typed) return {};
  CMeaning meaning;
  meaning.type = FromShape(label->type.TypeNumber);
  meaning.isObject = true;
  meaning.address = label->value;
  meaning.value = Load(meaning.type, label->value);
  return meaning;
}

CMeaning CReading::WorkIndex(const CNode& node) {
  const CMeaning base = Operand(node.Part(0));
  const CMeaning at = Operand(node.Part(1));
  if (base.type.kind != TypeKind::kPointer || at.type.kind != TypeKind::kInteger) return {};
  CMeaning meaning;
  meaning.type = Target(base.type);
  meaning.isObject = true;
  if (!base.value || !at.value || meaning.type.size == 0) return meaning;
  meaning.address = base.value->bits + at.value->bits * meaning.type.size;
  meaning.value = Load(meaning.type, *meaning.address);
  return meaning;
}

CMeaning CReading::WorkMember(const CNode& node) {
  CMeaning base = Of(node.Part(0));
  if (node.kind == Kind::kArrow) {
    base = Operand(node.Part(0));
    if (base.type.kind != TypeKind::kPointer) return {};
    base.address.reset();
    if (base.value) base.address = base.value->bits;
    base.type = Target(base.type);
  }
  const TypeShape* record = labels_.Shape(base.type.number);
  if (base.type.kind != TypeKind::kRecord || record == nullptr) return {};
  CMeaning meaning;
  if (!FindField(*record, node.op, base.address.value_or(0), 0, &meaning)) return {};
  meaning.isObject = true;
  if (!base.address) {
    meaning.address.reset();
  } else {
    meaning.value = Load(meaning.type, *meaning.address);
  }
  return meaning;
}

}  // namespace tool
