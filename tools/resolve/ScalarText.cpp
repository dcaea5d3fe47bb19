#include "tools/resolve/ScalarText.h"

#include <algorithm>
#include <bit>
#include <optional>
#include <string_view>

#include "tools/resolve/Answer.h"
#include "tools/resolve/Concatenated.h"
#include "tools/resolve/Printable.h"
#include "tools/resolve/QuotedText.h"
#include "tools/resolve/WideFloat.h"

namespace tool {
namespace {

using targets::EnumeratorShape;
using targets::TypeShape;
using Kind = TypeShape::Kind;

constexpr std::uint32_t kWidest = 128;

WideUnsigned MaskOf(std::uint32_t width) {
  return width >= kWidest ? ~WideUnsigned{0} : (WideUnsigned{1} << width) - 1;
}

std::string InBase(WideUnsigned value, unsigned bitsPerDigit, std::string_view prefix) {
  std::string digits;
  do {
    digits += "0123456789abcdef"[static_cast<unsigned>(value) & ((1U << bitsPerDigit) - 1)];
    value >>= bitsPerDigit;
  } while (value != 0);
  std::reverse(digits.begin(), digits.end());
  return std::string(prefix) + digits;
}

std::string CharacterText(const Scalar& scalar, bool always) {
  std::string text = NumberText(scalar.bits, scalar.width, scalar.shape.isSigned);
  if (scalar.shape.kind != Kind::kCharacter && scalar.bits > 0xFF) return text;
  const std::string quoted = QuotedCharacter(static_cast<std::uint32_t>(scalar.bits), scalar.width);
  const bool readable = quoted.find("\\x") == std::string::npos;
  return readable || always ? text + " " + quoted : text;
}

std::string FloatingText(const Scalar& scalar, targets::LabelSource& labels) {
  std::string text = FloatText(scalar.bytes, labels.Order(), scalar.shape.isExtended);
  return text.empty() ? Concatenated({"<", RawText(scalar.bytes), ">"}) : text;
}

std::string IntegerText(const Scalar& scalar) {
  std::string text = NumberText(scalar.bits, scalar.width, scalar.shape.isSigned);
  // Most of these are addresses, or negative numbers that lost their sign on the way.
  const bool high = scalar.width == 64 && !scalar.shape.isSigned && (scalar.bits >> 63U) != 0;
  return high ? text + " (" + InBase(scalar.bits, 4, "0x") + ")" : text;
}

std::string NaturalText(const Scalar& scalar, targets::LabelSource& labels) {
  switch (scalar.shape.kind) {
    case Kind::kInteger:
      return IntegerText(scalar);
    case Kind::kBoolean:
      if (scalar.bits > 1) {
        return Concatenated({"true (", NumberText(scalar.bits, scalar.width, false), ")"});
      }
      return scalar.bits == 0 ? "false" : "true";
    case Kind::kCharacter:
      return CharacterText(scalar, false);
    case Kind::kFloating:
      return FloatingText(scalar, labels);
    case Kind::kEnumeration:
      return EnumerationText(scalar.shape, scalar.bits, scalar.width);
    case Kind::kPointer:
      return AddressText(static_cast<std::uint64_t>(scalar.bits), labels);
    default:
      if (scalar.width != 0 && scalar.width <= 64) return InBase(scalar.bits, 4, "0x");
      return Concatenated({"<", RawText(scalar.bytes), ">"});
  }
}

bool IsFlag(const EnumeratorShape& enumerator, std::uint32_t width) {
  return std::has_single_bit(enumerator.value & static_cast<std::uint64_t>(MaskOf(width)));
}

/// Do the enumerators stand for bits that can be combined? Not when they count from 1 on.
bool AreFlags(const TypeShape& shape, std::uint32_t width) {
  std::uint64_t flags = 0;
  std::uint64_t all = 0;
  std::uint64_t greatest = 0;
  std::size_t values = 0;
  for (const EnumeratorShape& enumerator : shape.enumerators) {
    const std::uint64_t value = enumerator.value & static_cast<std::uint64_t>(MaskOf(width));
    if (IsFlag(enumerator, width)) flags |= value;
    if (value != 0) ++values;
    all |= value;
    greatest = std::max(greatest, value);
  }
  const bool counts = values > 2 && greatest == values;
  return flags == all && std::popcount(flags) > 1 && !counts;
}

}  // namespace

Scalar ScalarOf(const TypeShape& shape, std::span<const std::byte> bytes,
                targets::ByteOrder order) {
  Scalar scalar{shape, bytes};
  if (shape.bits != 0 && shape.bits <= kWidest) {
    scalar.bits = BitsIn(bytes, shape.firstBit, shape.bits, order);
    scalar.width = shape.bits;
  } else if (bytes.size() <= 16) {
    scalar.bits = IntegerIn(bytes, order);
    scalar.width = static_cast<std::uint32_t>(bytes.size() * 8);
  }
  return scalar;
}

std::string NumberText(WideUnsigned bits, std::uint32_t width, bool isSigned) {
  const bool negative = isSigned && width != 0 && (bits >> (width - 1) & 1U) != 0;
  if (negative) bits = (0 - bits) & MaskOf(width);
  std::string digits;
  do {
    digits += static_cast<char>('0' + static_cast<int>(bits % 10));
    bits /= 10;
  } while (bits != 0);
  if (negative) digits += '-';
  std::reverse(digits.begin(), digits.end());
  return digits;
}

std::string EnumerationText(const TypeShape& shape, WideUnsigned bits, std::uint32_t width) {
  std::string number = NumberText(bits, width, shape.isSigned);
  const auto mask = static_cast<std::uint64_t>(MaskOf(width));
  const auto value = static_cast<std::uint64_t>(bits);
  for (const EnumeratorShape& enumerator : shape.enumerators) {
    if ((enumerator.value & mask) == value) return Printable(enumerator.name) + " (" + number + ")";
  }
  if (!AreFlags(shape, width)) return number;
  std::string names;
  std::uint64_t rest = value;
  for (const EnumeratorShape& enumerator : shape.enumerators) {
    if (!IsFlag(enumerator, width) || (rest & enumerator.value & mask) == 0) continue;
    if (!names.empty()) names += '|';
    names += Printable(enumerator.name);
    rest &= ~enumerator.value;
  }
  if (names.empty()) return number;
  if (rest != 0) names.append("|").append(FormatAddress(rest));
  return names + " (" + number + ")";
}

std::string AddressText(std::uint64_t address, targets::LabelSource& labels) {
  std::string text = FormatAddress(address);
  if (address == 0) return text;
  const std::optional<targets::NearestLabel> label = labels.LabelAt(address);
  if (!label) return text;
  text.append(" <").append(Printable(label->name));
  if (label->offset != 0) text.append("+").append(std::to_string(label->offset));
  return text + ">";
}

std::string RawText(std::span<const std::byte> bytes) {
  std::string text;
  for (const std::byte byte : bytes) {
    if (!text.empty()) text += ' ';
    const auto value = std::to_integer<unsigned>(byte);
    text += "0123456789abcdef"[value >> 4U];
    text += "0123456789abcdef"[value & 15U];
  }
  return text;
}

std::string ScalarText(const Scalar& scalar, targets::LabelSource& labels, Format format) {
  if (scalar.width == 0) return NaturalText(scalar, labels);
  switch (format) {
    case Format::kHexadecimal:
      return InBase(scalar.bits, 4, "0x");
    case Format::kOctal:
      return scalar.bits == 0 ? "0" : InBase(scalar.bits, 3, "0");
    case Format::kBinary:
      return InBase(scalar.bits, 1, "0b");
    case Format::kDecimal:
      // One bit without a sign is no -1.
      return NumberText(scalar.bits, scalar.width, scalar.shape.bits == 0 || scalar.shape.isSigned);
    case Format::kUnsigned:
      return NumberText(scalar.bits, scalar.width, false);
    case Format::kCharacter:
      return CharacterText(scalar, true);
    case Format::kAddress:
      return AddressText(static_cast<std::uint64_t>(scalar.bits), labels);
    case Format::kRaw:
      return RawText(scalar.bytes);
    case Format::kFloating: {
      if (scalar.shape.kind == Kind::kFloating || scalar.shape.bits != 0) break;
      std::string text = FloatText(scalar.bytes, labels.Order(), false);
      if (!text.empty()) return text;
      break;
    }
    default:
      break;
  }
  return NaturalText(scalar, labels);
}

}  // namespace tool
