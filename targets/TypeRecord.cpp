#include "targets/TypeRecord.h"

#include <string>
#include <utility>

namespace targets {

// Records are swapped into place here: assigning one would copy the whole chain below it.

void MakePointer(const TargetLayout& layout, std::uint64_t size, TypeRecord* type) {
  if (size == 0 || size > kWidestScalar) size = layout.pointerSize;
  if (type->kind == TypeRecord::Kind::kStructure) {
    type->record.Size = static_cast<std::uint32_t>(PointeeRecordSize(layout, type->size));
  }
  MakeObject(layout, type);
  DataLableType pointee;
  pointee.Swap(type->record);
  DataLableType pointer =
      PointerRecord(layout, static_cast<std::uint32_t>(size), std::move(pointee));
  type->record.Swap(pointer);
  type->kind = TypeRecord::Kind::kPointer;
  type->size = size;
}

void MakeArray(const TargetLayout& layout, std::uint64_t count, std::uint64_t stride,
               TypeRecord* type) {
  DataLableType array;
  array.IsArray = true;
  array.IsPointer = type->kind != TypeRecord::Kind::kPointer;
  array.Size = RecordSize(stride * count, "an array of " + std::to_string(count) + " elements");
  array.PointerSize = layout.pointerSize;
  // The element's size is what a subscript is multiplied by: exact, also for a row.
  type->record.Size = RecordSize(stride, "the element of an array");
  array.Members.push_back(std::move(type->record));
  type->record.Swap(array);
  type->kind = TypeRecord::Kind::kArray;
  type->size = stride * count;
}

void MakeObject(const TargetLayout& layout, TypeRecord* type) {
  if (type->kind != TypeRecord::Kind::kArray) return;
  type->record.Size =
      static_cast<std::uint32_t>(ArrayRecordSize(layout, type->size, type->record.IsPointer));
}

DataLableType FieldRecord(const TypeRecord& type) {
  if (type.kind != TypeRecord::Kind::kStructure) return type.record;
  DataLableType shell;
  shell.Size = type.record.Size;
  shell.PointerSize = type.record.PointerSize;
  shell.TypeNumber = type.record.TypeNumber;
  shell.Members.push_back(type.record);
  return shell;
}

std::uint64_t StorageUnitOffset(std::uint64_t firstBit, std::uint64_t bits,
                                std::uint64_t unitSize) {
  const std::uint64_t unitBits = unitSize * 8;
  // A packed bit-field may cross the border between two units: then one that starts at its byte.
  if (firstBit % unitBits + bits > unitBits) return firstBit / 8;
  return firstBit / unitBits * unitSize;
}

}  // namespace targets
