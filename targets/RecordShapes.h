#ifndef STRINGRESOLVER_TARGETS_RECORDSHAPES_H
#define STRINGRESOLVER_TARGETS_RECORDSHAPES_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "host/DataLableType.h"
#include "targets/LabelSource.h"

namespace targets {

/// What the shape of a record depends on besides the type.
struct TargetLayout {
  std::uint32_t pointerSize = 8;
  ByteOrder order = ByteOrder::kLittle;
  /// No object lies above this address.
  std::uint64_t highestAddress = 0;
  bool plainCharIsSigned = true;
  /// Run-time address minus file address.
  std::uint64_t loadBias = 0;
  /// Added to the names of records.
  std::string recordMark = {};

  /// The run-time address of what the file has at `address`.
  [[nodiscard]] std::uint64_t Loaded(std::uint64_t address) const {
    const std::uint64_t sum = address + loadBias;
    return pointerSize < 8 ? sum & ((std::uint64_t{1} << pointerSize * 8) - 1) : sum;
  }
};

/// The `Size` of an array's record, for an array of `size` bytes. The resolver cuts the address of
/// an array to as many bytes as this number leaves when divided by 8, so it is rounded up to the
/// next one that leaves enough. `isPointer` is the record's own flag.
std::uint64_t ArrayRecordSize(const TargetLayout& layout, std::uint64_t size, bool isPointer);

/// The `Size` of a structure's record where it is pointed at. "->" reads the pointer with as many
/// bytes as this number leaves when divided by 8, so it is rounded up to the next one that reads
/// the pointer right.
std::uint64_t PointeeRecordSize(const TargetLayout& layout, std::uint64_t size);

/// `size` as a record holds it. Throws `Error` (`kNotRepresented`) naming `what` if it is too
/// large.
std::uint32_t RecordSize(std::uint64_t size, const std::string& what);

DataLableType IntegerRecord(const TargetLayout& layout, std::string name, std::uint32_t size,
                            bool isSigned);
/// `size` is 4 or 8.
DataLableType FloatingRecord(const TargetLayout& layout, std::string name, std::uint32_t size);
/// What stands behind a pointer to `void` or to a function.
DataLableType UnitRecord(const TargetLayout& layout, std::string name);
/// A stub or an opaque record: its contents are asked for by `recordName`.
DataLableType NamedRecord(const TargetLayout& layout, std::string name, std::uint32_t size,
                          std::string recordName);
DataLableType PointerRecord(const TargetLayout& layout, std::uint32_t size, DataLableType pointee);

/// The record of a basic type as C compilers lay it out on such a target, for programs whose debug
/// information does not mention it. `name` is canonical. Nothing for types above 8 bytes.
std::optional<DataLableType> BasicTypeRecord(const TargetLayout& layout, std::string_view name);

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_RECORDSHAPES_H
