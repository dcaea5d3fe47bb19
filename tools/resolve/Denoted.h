#ifndef STRINGRESOLVER_TOOLS_RESOLVE_DENOTED_H
#define STRINGRESOLVER_TOOLS_RESOLVE_DENOTED_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "targets/LabelSource.h"
#include "targets/MemorySource.h"
#include "targets/TypeShape.h"
#include "tools/resolve/ResolverView.h"

namespace tool {

/// What an expression denotes: an object in memory, or a value that was computed, with its type.
struct Denoted {
  /// The type, by the number of the label source that the expression was resolved over; 0: `made`.
  targets::TypeNumber type = 0;
  /// The type where the program has none of its own: a number, a pointer to `made.target`, an
  /// array seen in a pointer.
  targets::TypeShape made;
  /// Run-time address of an object; nothing for a computed value.
  std::optional<std::uint64_t> address;
  std::uint8_t space = 0;
  /// The value's first bytes in the target's order, as far as they are known; what follows is read
  /// at `address`.
  std::vector<std::byte> bytes;
};

/// The type of what is denoted. Valid as long as both arguments are, and `denoted` is not changed.
const targets::TypeShape& ShapeOf(const Denoted& denoted, targets::LabelSource& labels);

/// An array, structure or union: no number can stand for it.
bool IsAggregate(const targets::TypeShape& shape);

/// What the result block of `resolver` denotes, without the bytes of its value. Only after a
/// resolution that came so far.
Denoted DenotedBy(const ResolverView& resolver, targets::LabelSource& labels);

/// What is denoted seen as `count` elements: those that a pointer points to, those of an array from
/// its first on, or else as many objects in a row. Throws `targets::Error` (`kNotRepresented`) when
/// it is none of these, or its elements have no size; what reading a pointer throws.
Denoted WithCount(const Denoted& denoted, std::uint64_t count, targets::LabelSource& labels,
                  targets::MemorySource& memory);

/// An integer of `size` bytes, 1 to 16, in the target's byte order. Above 8 bytes it is extended
/// with zeros.
std::vector<std::byte> BytesOf(std::uint64_t value, std::size_t size, targets::ByteOrder order);

}  // namespace tool

#endif  // STRINGRESOLVER_TOOLS_RESOLVE_DENOTED_H
