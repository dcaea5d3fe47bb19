#ifndef STRINGRESOLVER_TOOLS_RESOLVE_SCALARTEXT_H
#define STRINGRESOLVER_TOOLS_RESOLVE_SCALARTEXT_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "targets/LabelSource.h"
#include "targets/TypeShape.h"
#include "tools/resolve/BitFields.h"
#include "tools/resolve/Format.h"

namespace tool {

/// A value that has no parts.
struct Scalar {
  const targets::TypeShape& shape;
  /// As it lies in memory; of a bit-field the bytes that hold it.
  std::span<const std::byte> bytes;
  WideUnsigned bits = 0;    ///< extended with zeros; only of values of up to 16 bytes
  std::uint32_t width = 0;  ///< of `bits`, 1 to 128; 0 when there are none
};

/// A whole object as a scalar: `bytes` are all of it.
Scalar ScalarOf(const targets::TypeShape& shape, std::span<const std::byte> bytes,
                targets::ByteOrder order);

/// The scalar as its type asks for, or in the given format. What a pointer to text points to is not
/// part of it.
std::string ScalarText(const Scalar& scalar, targets::LabelSource& labels, Format format);

/// A number of `width` bits.
std::string NumberText(WideUnsigned bits, std::uint32_t width, bool isSigned);

/// `GREEN (5)`, `RED|BLUE (5)`, `RED|0x8 (9)`, `7` when nothing is known by that number.
std::string EnumerationText(const targets::TypeShape& shape, WideUnsigned bits,
                            std::uint32_t width);

/// An address with the label that it lies in: `0x404028 <a+8>`.
std::string AddressText(std::uint64_t address, targets::LabelSource& labels);

/// Bytes as they lie in memory: `2a 00 ff`.
std::string RawText(std::span<const std::byte> bytes);

}  // namespace tool

#endif  // STRINGRESOLVER_TOOLS_RESOLVE_SCALARTEXT_H
