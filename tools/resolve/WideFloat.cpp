#include "tools/resolve/WideFloat.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "tools/resolve/BitFields.h"
#include "tools/resolve/Concatenated.h"

namespace tool {
namespace {

/// A number without a sign of any size, as far as digits are found with it.
class Natural {
 public:
  explicit Natural(WideUnsigned value) {
    for (; value != 0; value >>= 32U) words_.push_back(static_cast<std::uint32_t>(value));
  }

  void MultiplyBy(std::uint32_t factor) {
    std::uint64_t carry = 0;
    for (std::uint32_t& word : words_) {
      carry += std::uint64_t{word} * factor;
      word = static_cast<std::uint32_t>(carry);
      carry >>= 32U;
    }
    if (carry != 0) words_.push_back(static_cast<std::uint32_t>(carry));
  }

  void ShiftLeft(std::uint32_t bits) {
    MultiplyBy(std::uint32_t{1} << bits % 32);
    if (!words_.empty()) words_.insert(words_.begin(), bits / 32, 0);
  }

  void Add(const Natural& other) {
    words_.resize(std::max(words_.size(), other.words_.size()) + 1);
    std::uint64_t carry = 0;
    for (std::size_t i = 0; i < words_.size(); ++i) {
      carry += std::uint64_t{words_[i]} + other.Word(i);
      words_[i] = static_cast<std::uint32_t>(carry);
      carry >>= 32U;
    }
    Trim();
  }

  /// `other` must not be greater.
  void Subtract(const Natural& other) {
    std::uint64_t borrow = 0;
    for (std::size_t i = 0; i < words_.size(); ++i) {
      const std::uint64_t less = other.Word(i) + borrow;
      borrow = words_[i] < less ? 1 : 0;
      words_[i] = static_cast<std::uint32_t>(words_[i] - less);
    }
    Trim();
  }

  /// Below, equal to or above 0 as this number is below, equal to or above `other`.
  [[nodiscard]] int Compare(const Natural& other) const {
    if (words_.size() != other.words_.size()) return words_.size() < other.words_.size() ? -1 : 1;
    for (std::size_t i = words_.size(); i-- > 0;) {
      if (words_[i] != other.words_[i]) return words_[i] < other.words_[i] ? -1 : 1;
    }
    return 0;
  }

 private:
  [[nodiscard]] std::uint64_t Word(std::size_t i) const {
    return i < words_.size() ? words_[i] : 0;
  }
  void Trim() {
    while (!words_.empty() && words_.back() == 0) words_.pop_back();
  }

  std::vector<std::uint32_t> words_;
};

/// A finite number above 0: `mantissa` times 2 to the power of `exponent`.
struct Binary {
  WideUnsigned mantissa = 0;
  int exponent = 0;
  /// The number below lies half as far away as the one above: where the exponent changes.
  bool nearerBelow = false;
};

/// 0.`digits` times 10 to the power of `exponent`.
struct Decimal {
  std::string digits;
  int exponent = 0;
};

/// The shortest digits that no other number of the format is nearer to, after Steele and White.
Decimal ShortestDigits(const Binary& number) {
  const auto shift = [](int bits) { return static_cast<std::uint32_t>(std::max(bits, 0)); };
  const std::uint32_t extra = number.nearerBelow ? 2 : 1;
  // The number is `rest` / `unit`; half the distances to its neighbours, `above` and `below`.
  Natural rest(number.mantissa);
  Natural unit(1);
  Natural above(1);
  Natural below(1);
  rest.ShiftLeft(shift(number.exponent) + extra);
  unit.ShiftLeft(shift(-number.exponent) + extra);
  above.ShiftLeft(shift(number.exponent) + extra - 1);
  below.ShiftLeft(shift(number.exponent));
  const bool even = number.mantissa % 2 == 0;
  Decimal result;
  const auto reaches = [&](const Natural& part) {
    Natural sum = part;
    sum.Add(above);
    const int order = sum.Compare(unit);
    return even ? order >= 0 : order > 0;
  };
  const auto grow = [&] {
    for (Natural* value : {&rest, &above, &below}) value->MultiplyBy(10);
  };
  while (reaches(rest)) {
    unit.MultiplyBy(10);
    ++result.exponent;
  }
  while (true) {
    Natural tenfold = rest;
    tenfold.Add(above);
    tenfold.MultiplyBy(10);
    const int order = tenfold.Compare(unit);
    if (even ? order >= 0 : order > 0) break;
    grow();
    --result.exponent;
  }
  while (true) {
    grow();
    char digit = '0';
    for (; rest.Compare(unit) >= 0; ++digit) rest.Subtract(unit);
    const int order = rest.Compare(below);
    const bool low = even ? order <= 0 : order < 0;
    const bool high = reaches(rest);
    if (low || high) {
      Natural doubled = rest;
      doubled.MultiplyBy(2);
      if (high && (!low || doubled.Compare(unit) >= 0)) ++digit;
      result.digits += digit;
      return result;
    }
    result.digits += digit;
  }
}

std::string Fixed(const Decimal& number) {
  const int count = static_cast<int>(number.digits.size());
  if (number.exponent <= 0) {
    return Concatenated(
        {"0.", std::string(static_cast<std::size_t>(-number.exponent), '0'), number.digits});
  }
  if (number.exponent >= count) {
    return number.digits + std::string(static_cast<std::size_t>(number.exponent - count), '0');
  }
  std::string text = number.digits;
  return text.insert(static_cast<std::size_t>(number.exponent), 1, '.');
}

std::string Scientific(const Decimal& number) {
  std::string text = number.digits;
  if (text.size() > 1) text.insert(1, 1, '.');
  const int exponent = number.exponent - 1;
  const std::string digits = std::to_string(exponent < 0 ? -exponent : exponent);
  return text + (exponent < 0 ? "e-" : "e+") + (digits.size() < 2 ? "0" : "") + digits;
}

std::string Text(const Binary& number) {
  const Decimal decimal = ShortestDigits(number);
  // As the standard library does for its own types: the shorter of both forms.
  std::string fixed = Fixed(decimal);
  std::string scientific = Scientific(decimal);
  return scientific.size() < fixed.size() ? scientific : fixed;
}

/// Bits of the exponent and of the mantissa's fraction.
struct Layout {
  std::size_t bytes;
  std::uint32_t exponentBits;
  std::uint32_t fractionBits;
};
constexpr std::array<Layout, 4> kLayouts = {{{2, 5, 10}, {4, 8, 23}, {8, 11, 52}, {16, 15, 112}}};

std::string InterchangeText(WideUnsigned bits, const Layout& layout) {
  const auto greatest = (std::uint32_t{1} << layout.exponentBits) - 1;
  const auto exponent = static_cast<std::uint32_t>(bits >> layout.fractionBits) & greatest;
  const WideUnsigned one = WideUnsigned{1} << layout.fractionBits;
  const WideUnsigned fraction = bits & (one - 1);
  const bool negative = (bits >> (layout.fractionBits + layout.exponentBits) & 1U) != 0;
  std::string text;
  if (exponent == greatest) {
    text = fraction == 0 ? "inf" : "nan";
  } else if (exponent == 0 && fraction == 0) {
    text = "0";
  } else {
    const int bias = static_cast<int>(greatest / 2 + layout.fractionBits);
    Binary number;
    number.mantissa = exponent == 0 ? fraction : fraction | one;
    number.exponent = static_cast<int>(std::max(exponent, 1U)) - bias;
    number.nearerBelow = fraction == 0 && exponent > 1;
    text = Text(number);
  }
  return negative ? Concatenated({"-", text}) : text;
}

std::string ExtendedText(std::span<const std::byte> bytes, targets::ByteOrder order) {
  const auto mantissa = static_cast<std::uint64_t>(IntegerIn(bytes.first(8), order));
  const auto top = static_cast<std::uint32_t>(IntegerIn(bytes.subspan(8, 2), order));
  const std::uint32_t exponent = top & 0x7FFFU;
  constexpr std::uint64_t kOne = std::uint64_t{1} << 63U;
  std::string text;
  if (exponent == 0x7FFF) {
    text = mantissa == kOne ? "inf" : "nan";
  } else if (mantissa == 0 && exponent == 0) {
    text = "0";
  } else if (exponent != 0 && (mantissa & kOne) == 0) {
    // Forms that no processor makes any more, and all refuse.
    text = "nan";
  } else {
    constexpr int kBias = 16383 + 63;
    text = Text({mantissa, static_cast<int>(std::max(exponent, 1U)) - kBias,
                 mantissa == kOne && exponent > 1});
  }
  return (top & 0x8000U) != 0 ? Concatenated({"-", text}) : text;
}

}  // namespace

std::string FloatText(std::span<const std::byte> bytes, targets::ByteOrder order, bool isExtended) {
  if (isExtended) return bytes.size() < 10 ? "" : ExtendedText(bytes, order);
  for (const Layout& layout : kLayouts) {
    if (bytes.size() == layout.bytes) return InterchangeText(IntegerIn(bytes, order), layout);
  }
  return "";
}

}  // namespace tool
