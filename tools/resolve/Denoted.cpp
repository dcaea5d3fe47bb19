#include "tools/resolve/Denoted.h"

#include <array>
#include <limits>
#include <span>
#include <string>

#include "targets/Error.h"
#include "tools/resolve/BitFields.h"
#include "tools/resolve/ObjectReader.h"

namespace tool {
namespace {

using targets::TypeNumber;
using targets::TypeShape;
using Kind = TypeShape::Kind;

[[noreturn]] void CannotCount(const std::string& predicate) {
  throw targets::Error(targets::ErrorCode::kNotRepresented, predicate);
}

/// The type of a record that has no number, as far as the record tells.
TypeShape MadeOf(const DataLableType& record) {
  TypeShape shape;
  shape.size = record.Size;
  shape.isSigned = record.IsSigned;
  if (record.IsPointer && !record.IsArray) {
    shape.kind = Kind::kPointer;
    if (!record.Members.empty()) shape.target = record.Members.begin()->TypeNumber;
  } else if (record.IsFloat || record.IsDouble) {
    shape.kind = Kind::kFloating;
    shape.size = record.IsFloat ? 4 : 8;
  } else if (record.Members.empty() && record.NestedTypes.empty() && !record.IsArray) {
    shape.kind = Kind::kInteger;
  }
  return shape;
}

void TakeType(const DataLableType& record, targets::LabelSource& labels, Denoted* denoted) {
  if (labels.Shape(record.TypeNumber) != nullptr) {
    denoted->type = record.TypeNumber;
  } else {
    denoted->made = MadeOf(record);
  }
}

std::uint64_t CutToPointer(std::uint64_t address, std::uint32_t pointerSize) {
  return pointerSize < 8 ? address & ((std::uint64_t{1} << pointerSize * 8) - 1) : address;
}

}  // namespace

const TypeShape& ShapeOf(const Denoted& denoted, targets::LabelSource& labels) {
  const TypeShape* const shape = labels.Shape(denoted.type);
  return shape != nullptr ? *shape : denoted.made;
}

bool IsAggregate(const TypeShape& shape) {
  return shape.kind == Kind::kArray || shape.kind == Kind::kStructure || shape.kind == Kind::kUnion;
}

Denoted DenotedBy(const ResolverView& resolver, targets::LabelSource& labels) {
  const AreaBlock& block = resolver.Result();
  const DataLableType& type = block.Type;
  Denoted denoted;
  denoted.space = block.MemorySpace != 0 ? 1 : 0;
  // A subscript leaves the array's type behind the address, and the element's number on it.
  const bool subscripted = resolver.IsSubscripted(labels);
  if (type.IsAddress || type.IsArray) {
    denoted.address = CutToPointer(block.Value, labels.PointerSize());
    if (subscripted) {
      denoted.type = type.TypeNumber;
    } else {
      TakeType(type.IsAddress ? resolver.Pointee() : type, labels, &denoted);
    }
    return denoted;
  }
  if (subscripted) {
    denoted.made = MadeOf(type);
    denoted.made.target = type.TypeNumber;
  } else {
    TakeType(type, labels, &denoted);
  }
  return denoted;
}

Denoted WithCount(const Denoted& denoted, std::uint64_t count, targets::LabelSource& labels,
                  targets::MemorySource& memory) {
  const TypeShape& shape = ShapeOf(denoted, labels);
  Denoted array;
  array.made.kind = Kind::kArray;
  array.made.count = count;
  array.made.target = denoted.type;
  array.address = denoted.address;
  array.space = denoted.space;
  if (shape.kind == Kind::kPointer) {
    std::array<std::byte, 8> bytes{};
    const std::span<std::byte> pointer(bytes.data(), std::min<std::uint64_t>(shape.size, 8));
    ObjectReader reader(denoted, shape.size, memory);
    if (const auto gap = reader.Read(reader.Start(), pointer)) {
      throw targets::Error(targets::ErrorCode::kUnreadable, SentenceOf(*gap));
    }
    array.address = static_cast<std::uint64_t>(IntegerIn(pointer, labels.Order()));
    array.space = 0;
    array.made.target = shape.target;
  } else if (shape.kind == Kind::kArray) {
    array.made.target = shape.target;
  } else if (shape.bits != 0) {
    CannotCount("is a bit-field, which has no elements");
  }
  if (!array.address) CannotCount("is no pointer, and lies nowhere in memory: it has no elements");
  const TypeShape* const element = labels.Shape(array.made.target);
  if (element == nullptr || element->size == 0) {
    CannotCount("has elements of unknown size" +
                (element == nullptr ? "" : " (" + element->name + ")"));
  }
  if (count > std::numeric_limits<std::uint64_t>::max() / element->size) {
    CannotCount("has no room for so many elements");
  }
  array.made.size = element->size * count;
  array.made.name = element->name + " [" + std::to_string(count) + "]";
  return array;
}

std::vector<std::byte> BytesOf(std::uint64_t value, std::size_t size, targets::ByteOrder order) {
  std::vector<std::byte> bytes(size);
  for (std::size_t i = 0; i < size; ++i, value >>= 8U) {
    bytes[order == targets::ByteOrder::kBig ? size - 1 - i : i] =
        static_cast<std::byte>(value & 0xFFU);
  }
  return bytes;
}

}  // namespace tool
