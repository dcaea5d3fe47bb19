// Where the fields of a described structure lie, by the rules that C compilers for most targets
// share.

#include <algorithm>
#include <bit>
#include <limits>
#include <set>
#include <string_view>

#include "targets/DescribedTypes.h"

namespace targets {
namespace {

using Kind = TypeShape::Kind;

constexpr std::uint64_t kLargestType = std::numeric_limits<std::uint32_t>::max() - 8;
constexpr std::size_t kMostMembers = 1U << 16U;

std::uint64_t RoundUp(std::uint64_t value, std::uint64_t step) {
  return (value + step - 1) / step * step;
}

bool CanBeBitField(Kind kind) {
  return kind == Kind::kInteger || kind == Kind::kCharacter || kind == Kind::kBoolean ||
         kind == Kind::kEnumeration;
}

/// Goes through the fields of one structure; all counts are in bits.
struct Cursor {
  bool isUnion = false;
  bool isPacked = false;
  std::uint64_t next = 0;  ///< behind the field before
  std::uint64_t end = 0;   ///< behind the last bit of any

  /// Places `bits` bits at `start`.
  void Take(std::uint64_t start, std::uint64_t bits) {
    next = isUnion ? 0 : start + bits;
    end = std::max(end, start + bits);
  }
  /// Where a field that is aligned to `alignment` starts.
  [[nodiscard]] std::uint64_t Aligned(std::uint64_t alignment) const {
    return RoundUp(next, isPacked ? 8 : alignment);
  }
  /// Where a bit-field starts: it does not cross the borders between units of its type.
  [[nodiscard]] std::uint64_t ForBits(std::uint64_t bits, std::uint64_t unit,
                                      std::uint64_t alignment) const {
    if (bits == 0) return RoundUp(next, alignment);
    const bool crosses = (next % alignment + bits + alignment - 1) / alignment > unit / alignment;
    return !isPacked && crosses ? RoundUp(next, alignment) : next;
  }
};

}  // namespace

void DescribedTypes::LayOut(TypeNumber type, std::size_t depth) {
  Entry& entry = At(type);
  const DescribedStructure& structure = *entry.structure;
  Cursor cursor;
  cursor.isUnion = structure.isUnion;
  cursor.isPacked = structure.isPacked;
  std::set<std::string_view> names;
  for (std::size_t i = 0; i < structure.fields->size(); ++i) {
    const DescribedField& field = (*structure.fields)[i];
    const TypeNumber fieldType = entry.fieldTypes[i];
    Complete(fieldType, depth + 1);
    CheckObject(fieldType, field.type.spot);
    const Entry& inner = At(Behind(fieldType));
    const std::uint64_t size = inner.shape.size;
    const std::uint64_t alignment = std::has_single_bit(inner.alignment)
                                        ? std::min(inner.alignment, description_.largestAlignment)
                                        : 1;
    const std::optional<std::uint64_t> bits = entry.bits[i];
    if (!field.name.empty() && !names.insert(field.name).second) {
      description_.Fail(field.spot, "there are two fields `" + field.name + "`");
    }
    FieldShape shape;
    shape.name = field.name;
    shape.type = fieldType;
    // So far behind the start no size can make it too large to count in bits.
    if (field.offset && *field.offset > kLargestType) {
      description_.Fail(field.spot, "the offset is larger than 4 GiB");
    }
    std::uint64_t start = field.offset ? *field.offset * 8 + field.bit : 0;
    if (bits) {
      if (!CanBeBitField(inner.shape.kind)) {
        description_.Fail(field.type.spot, "only integers and enumerations can be bit-fields");
      }
      if (*bits > size * 8 || (*bits == 0 && !field.name.empty())) {
        description_.Fail(field.type.spot, "a bit-field of `" + At(fieldType).shape.name +
                                               "` has 1 to " + std::to_string(size * 8) + " bits");
      }
      if (!field.offset) start = cursor.ForBits(*bits, size * 8, alignment * 8);
      cursor.Take(start, *bits);
      shape.bits = static_cast<std::uint32_t>(*bits);
      shape.firstBit = start % 8;
    } else {
      if (field.bit != 0) description_.Fail(field.spot, "only a bit-field starts inside a byte");
      if (field.name.empty() && inner.structure == nullptr) {
        description_.Fail(field.spot,
                          "a field without a name must be a structure, a union or a bit-field");
      }
      if (!field.offset) start = cursor.Aligned(alignment * 8);
      cursor.Take(start, size * 8);
    }
    // Bits that nobody can name are no reason to align the whole.
    if (!structure.isPacked && (!bits || !field.name.empty())) {
      entry.alignment = std::max(entry.alignment, alignment);
    }
    shape.offset = start / 8;
    if (!bits || !field.name.empty()) entry.shape.fields.push_back(shape);
    entry.members += field.name.empty() ? inner.members : 1;
    if (entry.members > kMostMembers) {
      description_.Fail(field.spot, "more members than a structure can have");
    }
    if (cursor.end / 8 > kLargestType) {
      description_.Fail(field.spot, "the structure is larger than 4 GiB");
    }
  }
  const std::uint64_t least = (cursor.end + 7) / 8;
  entry.shape.size = structure.size.value_or(RoundUp(least, entry.alignment));
  if (entry.shape.size < least) {
    description_.Fail(structure.spot, "the fields take " + std::to_string(least) +
                                          " bytes, which is more than the size that is given");
  }
  if (entry.shape.size > kLargestType) {
    description_.Fail(structure.spot, "the structure is larger than 4 GiB");
  }
}

}  // namespace targets
