#ifndef STRINGRESOLVER_HOST_DATALABLETYPE_H
#define STRINGRESOLVER_HOST_DATALABLETYPE_H

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "host/SharedList.h"

/// The host's description of a type or of a label.
///
/// A record is a tree of values, as deep as a type has stars: comparing and destroying walk it with
/// a worklist and never recurse on the machine's stack. Copies share their lists until one of them
/// is changed, so a copy costs the same whatever the record holds.
///
/// docs/EMBEDDING.md says which shapes of record make ordinary C expressions come out right.
class DataLableType {
 public:
  /// Name of the type or label; in a `Members` list, the member's name.
  std::string Name;
  /// Array type: the first entry of `Members` is the element type. Reading an array yields its
  /// address, never memory contents.
  bool IsArray = false;
  /// Pointer type: the first entry of `Members` is the pointee type.
  bool IsPointer = false;
  /// The value at hand is the address of the object, whose contents are still to be read.
  bool IsAddress = false;
  /// Size of one object of the type, in bytes.
  std::uint32_t Size = 8;
  /// In a `Members` list: the member's offset in bytes from the start of its structure.
  std::uint32_t Offset = 0;
  /// Members of a structure; for a pointer or an array its first entry is the pointee or element.
  SharedList<DataLableType> Members;
  /// Names of further types, asked of the host, that are searched for a member after `Members`.
  SharedList<std::string> NestedTypes;
  /// Signed integer type: the sign is bit `Size` * 8 - 1.
  bool IsSigned = false;
  /// Single-precision floating type.
  bool IsFloat = false;
  /// Double-precision floating type.
  bool IsDouble = false;
  /// Free for the host: carried and copied with the record, compared, never acted on.
  bool ExtraFlag = false;
  /// The target's pointer size in bytes: what `FormPointer` writes into its result's `Size`.
  /// Travels with the record, so programs of different pointer sizes live in one process. It is a
  /// property of the target, not of the type, and does not take part in comparisons.
  std::uint32_t PointerSize = 8;
  /// The host's own number for the type; 0: none. Travels with the record, is never acted on, and
  /// does not take part in comparisons: two numbers may stand for one type. A record that the
  /// resolver makes itself (a pointer, a number) has none, but for the address that a subscript of
  /// an array gives: it points to the array's record, and carries the element's number.
  std::uint32_t TypeNumber = 0;

  DataLableType() = default;

  DataLableType(const DataLableType& other) = default;
  /// Leaves `other` valid, with empty name and lists.
  DataLableType(DataLableType&& other) noexcept = default;

  ~DataLableType() {
    if (!Members.empty()) {
      Members.ClearNested(
          [](DataLableType& member) -> SharedList<DataLableType>& { return member.Members; });
    }
  }

  /// Assigns, and returns a copy of the assigned record by value: that is the shape hosts compile
  /// against. `Assign` does without the copies.
  // NOLINTNEXTLINE(misc-unconventional-assign-operator,
  // cppcoreguidelines-c-copy-assignment-signature)
  DataLableType operator=(DataLableType other) {
    Swap(other);
    return *this;
  }

  /// Assigns. `other` may be part of this record's own tree.
  void Assign(const DataLableType& other) {
    // Most records have no name of their own.
    if (!Name.empty() || !other.Name.empty()) Name = other.Name;
    IsArray = other.IsArray;
    IsPointer = other.IsPointer;
    IsAddress = other.IsAddress;
    Size = other.Size;
    Offset = other.Offset;
    if (!NestedTypes.SharesWith(other.NestedTypes)) NestedTypes = other.NestedTypes;
    IsSigned = other.IsSigned;
    IsFloat = other.IsFloat;
    IsDouble = other.IsDouble;
    ExtraFlag = other.ExtraFlag;
    PointerSize = other.PointerSize;
    TypeNumber = other.TypeNumber;
    // Last: the old members may hold `other`.
    if (!Members.SharesWith(other.Members)) Members = other.Members;
  }

  /// Exchanges two records without copying either. `other` must not be part of this record's own
  /// tree.
  void Swap(DataLableType& other) noexcept {
    if (!Name.empty() || !other.Name.empty()) Name.swap(other.Name);
    std::swap(IsArray, other.IsArray);
    std::swap(IsPointer, other.IsPointer);
    std::swap(IsAddress, other.IsAddress);
    std::swap(Size, other.Size);
    std::swap(Offset, other.Offset);
    Members.swap(other.Members);
    NestedTypes.swap(other.NestedTypes);
    std::swap(IsSigned, other.IsSigned);
    std::swap(IsFloat, other.IsFloat);
    std::swap(IsDouble, other.IsDouble);
    std::swap(ExtraFlag, other.ExtraFlag);
    std::swap(PointerSize, other.PointerSize);
    std::swap(TypeNumber, other.TypeNumber);
  }

  /// True when any field but `PointerSize` and `TypeNumber` differs, lists included, at any depth.
  // NOLINTNEXTLINE(performance-unnecessary-value-param): the shape hosts compile against.
  bool operator!=(DataLableType other) const { return !SameTree(*this, other); }

  bool operator==(const DataLableType& other) const { return SameTree(*this, other); }

  /// A pointer to this type: `IsPointer` set, `Size` the target's pointer size, this type as the
  /// only entry of `Members`, all else default.
  DataLableType FormPointer() const& { return DataLableType(*this).FormPointer(); }

  /// The same, with this record moved into the result instead of copied.
  DataLableType FormPointer() && {
    BecomePointer();
    return std::move(*this);
  }

  /// Makes this record what `FormPointer` of it gives.
  void BecomePointer() {
    SharedList<DataLableType> pointee(std::move(*this));
    IsArray = IsAddress = IsSigned = IsFloat = IsDouble = ExtraFlag = false;
    IsPointer = true;
    Size = PointerSize;
    Offset = 0;
    TypeNumber = 0;
    Members.swap(pointee);
  }

 private:
  static bool SameOwnFields(const DataLableType& a, const DataLableType& b) {
    return a.Name == b.Name && a.IsArray == b.IsArray && a.IsPointer == b.IsPointer &&
           a.IsAddress == b.IsAddress && a.Size == b.Size && a.Offset == b.Offset &&
           a.IsSigned == b.IsSigned && a.IsFloat == b.IsFloat && a.IsDouble == b.IsDouble &&
           a.ExtraFlag == b.ExtraFlag && a.NestedTypes == b.NestedTypes &&
           a.Members.size() == b.Members.size();
  }

  static bool SameTree(const DataLableType& first, const DataLableType& second) {
    if (!SameOwnFields(first, second)) return false;
    if (first.Members.SharesWith(second.Members)) return true;
    using Pair = std::pair<const DataLableType*, const DataLableType*>;
    std::vector<Pair> pending{{&first, &second}};
    while (!pending.empty()) {
      const auto [a, b] = pending.back();
      pending.pop_back();
      const DataLableType* other = b->Members.begin();
      for (const DataLableType& member : a->Members) {
        if (!SameOwnFields(member, *other)) return false;
        if (!member.Members.SharesWith(other->Members)) pending.emplace_back(&member, other);
        ++other;
      }
    }
    return true;
  }
};

#endif  // STRINGRESOLVER_HOST_DATALABLETYPE_H
