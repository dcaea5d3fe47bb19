#include "tools/resolve/BitFields.h"

namespace tool {

WideUnsigned IntegerIn(std::span<const std::byte> bytes, targets::ByteOrder order) {
  WideUnsigned value = 0;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const bool big = order == targets::ByteOrder::kBig;
    const std::byte byte = bytes[big ? i : bytes.size() - 1 - i];
    value = value << 8U | std::to_integer<std::uint8_t>(byte);
  }
  return value;
}

WideUnsigned BitsIn(std::span<const std::byte> bytes, std::uint32_t firstBit, std::uint32_t bits,
                    targets::ByteOrder order) {
  WideUnsigned value = 0;
  for (std::uint32_t i = 0; i < bits; ++i) {
    const std::uint32_t at = firstBit + i;
    const auto byte = std::to_integer<std::uint32_t>(bytes[at / 8]);
    if (order == targets::ByteOrder::kBig) {
      value = value << 1U | (byte >> (7 - at % 8) & 1U);
    } else {
      value |= WideUnsigned{byte >> at % 8 & 1U} << i;
    }
  }
  return value;
}

WideSigned SignExtended(WideUnsigned value, std::uint32_t bits) {
  const std::uint32_t unused = 128 - bits;
  return static_cast<WideSigned>(value << unused) >> unused;
}

}  // namespace tool
