#include "targets/RecordShapes.h"

#include <array>
#include <limits>
#include <utility>

#include "targets/Error.h"

namespace targets {
namespace {

/// How many bytes the resolver reads or keeps at a record of `size` bytes.
std::uint64_t AccessBytes(std::uint64_t size) {
  return size % 8 == 0 ? 8 : size % 8;
}

/// How many bytes an address must keep.
std::uint64_t AddressBytes(const TargetLayout& layout) {
  // Programs of 64-bit machines live in the lower 48 bits, but for those of a kernel.
  if (layout.pointerSize == 8) return layout.highestAddress >> 48 == 0 ? 6 : 8;
  return layout.pointerSize;
}

DataLableType Fresh(const TargetLayout& layout, std::string name, std::uint32_t size) {
  DataLableType record;
  record.Name = std::move(name);
  record.Size = size;
  record.PointerSize = layout.pointerSize;
  return record;
}

}  // namespace

std::uint64_t ArrayRecordSize(const TargetLayout& layout, std::uint64_t size, bool isPointer) {
  const auto harmless = [&](std::uint64_t candidate) {
    // A record below 8 bytes that is marked as a pointer keeps 4 bytes, whatever its size.
    if (isPointer && candidate < 8 && layout.highestAddress >> 32 != 0) return false;
    return AccessBytes(candidate) >= AddressBytes(layout);
  };
  while (!harmless(size)) ++size;
  return size;
}

std::uint64_t PointeeRecordSize(const TargetLayout& layout, std::uint64_t size) {
  const auto harmless = [&](std::uint64_t candidate) {
    // The bytes after a pointer are harmless where they come out as the upper half of the number,
    // which is cut off later; big-endian, they would come out as the lower half.
    if (layout.order == ByteOrder::kBig) return AccessBytes(candidate) == layout.pointerSize;
    return AccessBytes(candidate) >= AddressBytes(layout);
  };
  while (!harmless(size)) ++size;
  return size;
}

std::uint32_t RecordSize(std::uint64_t size, const std::string& what) {
  // Rounding adds up to 8 bytes later.
  if (size > std::numeric_limits<std::uint32_t>::max() - 8) {
    throw Error(ErrorCode::kNotRepresented,
                what + " needs the number " + std::to_string(size) +
                    ", and records hold sizes and offsets below 4 GiB only");
  }
  return static_cast<std::uint32_t>(size);
}

DataLableType IntegerRecord(const TargetLayout& layout, std::string name, std::uint32_t size,
                            bool isSigned) {
  DataLableType record = Fresh(layout, std::move(name), size);
  record.IsSigned = isSigned;
  return record;
}

DataLableType FloatingRecord(const TargetLayout& layout, std::string name, std::uint32_t size) {
  DataLableType record = Fresh(layout, std::move(name), size);
  record.IsFloat = size == 4;
  record.IsDouble = size == 8;
  return record;
}

DataLableType UnitRecord(const TargetLayout& layout, std::string name) {
  return Fresh(layout, std::move(name), 1);
}

DataLableType NamedRecord(const TargetLayout& layout, std::string name, std::uint32_t size,
                          std::string recordName) {
  DataLableType record = Fresh(layout, std::move(name), size);
  record.NestedTypes.push_back(std::move(recordName));
  return record;
}

DataLableType PointerRecord(const TargetLayout& layout, std::uint32_t size, DataLableType pointee) {
  DataLableType record = Fresh(layout, {}, size);
  record.IsPointer = true;
  record.Members.push_back(std::move(pointee));
  return record;
}

std::optional<DataLableType> BasicTypeRecord(const TargetLayout& layout, std::string_view name) {
  struct Integer {
    std::string_view name;
    std::uint32_t size;
  };
  if (name == "void") return UnitRecord(layout, "void");
  if (name == "float") return FloatingRecord(layout, "float", 4);
  if (name == "double") return FloatingRecord(layout, "double", 8);
  if (name == "_Bool") return IntegerRecord(layout, "_Bool", 1, false);
  if (name == "char") return IntegerRecord(layout, "char", 1, layout.plainCharIsSigned);
  if (name == "signed char") return IntegerRecord(layout, "signed char", 1, true);
  const std::array<Integer, 5> integers{
      {{"char", 1}, {"short", 2}, {"int", 4}, {"long", layout.pointerSize}, {"long long", 8}}};
  constexpr std::string_view kUnsigned = "unsigned ";
  const bool isUnsigned = name.starts_with(kUnsigned);
  const std::string_view width = isUnsigned ? name.substr(kUnsigned.size()) : name;
  for (const Integer& integer : integers) {
    if (integer.name == width) {
      return IntegerRecord(layout, std::string(name), integer.size, !isUnsigned);
    }
  }
  return std::nullopt;
}

}  // namespace targets
