#ifndef STRINGRESOLVER_TARGETS_TYPERECORD_H
#define STRINGRESOLVER_TARGETS_TYPERECORD_H

#include <cstdint>

#include "host/DataLableType.h"
#include "targets/RecordShapes.h"

namespace targets {

/// Values of more bytes than this cannot be had.
constexpr std::uint64_t kWidestScalar = 8;

/// A type's record as an object of that type has it: a stub for structures.
struct TypeRecord {
  enum class Kind {
    kScalar,
    kPointer,
    kArray,
    kStructure,
    kOpaque,  ///< a scalar whose value the resolver cannot hold
  };
  Kind kind = Kind::kScalar;
  DataLableType record;
  /// In bytes, as the language counts it, where the record's `Size` may be rounded.
  std::uint64_t size = 0;
};

/// Replaces a type by a pointer to it, of `size` bytes; of the target's pointer size where `size`
/// is none that a pointer can have.
void MakePointer(const TargetLayout& layout, std::uint64_t size, TypeRecord* type);

/// Replaces a type by an array of `count` of it, `stride` bytes from one to the next; their product
/// fits into 64 bits. Throws `Error` (`kNotRepresented`).
void MakeArray(const TargetLayout& layout, std::uint64_t count, std::uint64_t stride,
               TypeRecord* type);

/// Makes a type that pointers and arrays were put around the type of an object.
void MakeObject(const TargetLayout& layout, TypeRecord* type);

/// The record of a field of that type, with no name or offset yet. A field of structure type holds
/// its structure as its only member: with the inner fields directly in the field, a search for an
/// outer name would find them.
DataLableType FieldRecord(const TypeRecord& type);

/// Where the unit of `unitSize` bytes (above 0) starts that a bit-field is read with: bytes from
/// the start of its structure, of which it takes `bits` bits from bit `firstBit` on.
std::uint64_t StorageUnitOffset(std::uint64_t firstBit, std::uint64_t bits, std::uint64_t unitSize);

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_TYPERECORD_H
