#include "resolver/ValueText.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>
#include <system_error>

namespace resolver {
namespace {

// Narrowing to single precision and dividing by zero rely on infinities.
static_assert(std::numeric_limits<float>::is_iec559 && std::numeric_limits<double>::is_iec559);

/// "00" to "99". Two digits at a time take half the instructions of `std::to_chars` here, and
/// addresses are written at every operand.
constexpr std::array<char, 200> kPairsOfDigits = [] {
  std::array<char, 200> pairs{};
  for (std::size_t i = 0; i < pairs.size(); ++i) {
    const std::size_t digit = i % 2 == 0 ? i / 20 : i / 2 % 10;
    pairs[i] = static_cast<char>('0' + digit);
  }
  return pairs;
}();

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

std::string_view SkipWhiteSpace(std::string_view text) {
  const std::size_t start = text.find_first_not_of(" \t\n\v\f\r");
  return start == std::string_view::npos ? std::string_view() : text.substr(start);
}

bool TakeSign(std::string_view* text) {
  if (text->empty() || (text->front() != '-' && text->front() != '+')) return false;
  const bool negative = text->front() == '-';
  text->remove_prefix(1);
  return negative;
}

/// Length of the start of `text` that a stream would collect for a floating number: it keeps an
/// exponent's mark and sign even when no digit follows, and then rejects the whole.
std::size_t FloatingLength(std::string_view text) {
  bool digits = false;
  bool point = false;
  bool exponent = false;
  std::size_t i = 0;
  for (; i < text.size(); ++i) {
    const char c = text[i];
    if (IsDigit(c)) {
      digits = true;
    } else if (c == '.' && !point && !exponent) {
      point = true;
    } else if ((c == 'e' || c == 'E') && digits && !exponent) {
      exponent = true;
      if (i + 1 < text.size() && (text[i + 1] == '+' || text[i + 1] == '-')) ++i;
    } else {
      break;
    }
  }
  return i;
}

/// Whether a number that is out of range is too large rather than too small. `number` is a well
/// formed one that is not zero.
bool IsHuge(std::string_view number) {
  constexpr long long kFar = 1'000'000'000;
  const std::size_t mark = number.find_first_of("eE");
  long long exponent = 0;
  if (mark != std::string_view::npos) {
    std::string_view digits = number.substr(mark + 1);
    const bool negative = TakeSign(&digits);
    for (const char c : digits) {
      if (exponent < kFar) exponent = exponent * 10 + (c - '0');
    }
    if (negative) exponent = -exponent;
  }
  const std::string_view mantissa = number.substr(0, mark);
  const std::size_t first = mantissa.find_first_not_of("0.");
  std::size_t point = mantissa.find('.');
  if (point == std::string_view::npos) point = mantissa.size();
  return exponent + static_cast<long long>(point) - static_cast<long long>(first) > 0;
}

template <typename Number>
Number ReadFloatingNumber(std::string_view text) {
  text = SkipWhiteSpace(text);
  const bool negative = TakeSign(&text);
  const std::string_view number = text.substr(0, FloatingLength(text));
  Number value = 0;
  const char* const end = number.data() + number.size();
  const auto [stop, error] = std::from_chars(number.data(), end, value);
  if (stop != end || error == std::errc::invalid_argument) return 0;
  if (error == std::errc::result_out_of_range) {
    value = IsHuge(number) ? std::numeric_limits<Number>::max() : Number{0};
  }
  return negative ? -value : value;
}

}  // namespace

std::uint64_t ReadUnsigned(std::string_view text) {
  // Nearly every text is a number that was written here, and short enough not to overflow.
  constexpr std::size_t kSafeDigits = 19;
  std::uint64_t plain = 0;
  std::size_t digits = 0;
  for (; digits < text.size() && IsDigit(text[digits]); ++digits) {
    plain = plain * 10 + static_cast<std::uint64_t>(text[digits] - '0');
  }
  if (digits > 0 && digits <= kSafeDigits) return plain;

  text = SkipWhiteSpace(text);
  const bool negative = TakeSign(&text);
  std::uint64_t value = 0;
  const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error == std::errc::result_out_of_range) return std::numeric_limits<std::uint64_t>::max();
  return negative ? 0 - value : value;
}

double ReadDouble(std::string_view text) {
  return ReadFloatingNumber<double>(text);
}

float ReadFloat(std::string_view text) {
  return ReadFloatingNumber<float>(text);
}

std::string WriteUnsigned(std::uint64_t value) {
  std::string text;
  WriteUnsigned(value, &text);
  return text;
}

void WriteUnsigned(std::uint64_t value, std::string* text) {
  std::array<char, 20> digits;
  std::size_t first = digits.size();
  while (value >= 100) {
    first -= 2;
    std::memcpy(&digits[first], &kPairsOfDigits[value % 100 * 2], 2);
    value /= 100;
  }
  if (value >= 10) {
    first -= 2;
    std::memcpy(&digits[first], &kPairsOfDigits[value * 2], 2);
  } else {
    digits[--first] = static_cast<char>('0' + value);
  }
  text->assign(digits.data() + first, digits.size() - first);
}

std::string WriteFloating(double value) {
  constexpr int kSignificantDigits = 6;
  std::array<char, 32> digits;
  const auto [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(), value,
                                          std::chars_format::general, kSignificantDigits);
  return {digits.data(), end};
}

void WriteValue(AreaBlock* block) {
  if (block->ValueKind == 0) {
    WriteUnsigned(block->Value, &block->AreaText);
  } else {
    block->AreaText = WriteFloating(block->ValueKind == 1 ? static_cast<double>(block->FloatValue)
                                                          : block->DoubleValue);
  }
}

std::uint64_t TruncateToUnsigned(double value) {
  constexpr double kTwoTo63 = 9223372036854775808.0;
  if (std::isnan(value)) return 0;
  if (value <= -kTwoTo63) return std::uint64_t{1} << 63;
  if (value < 0) return static_cast<std::uint64_t>(static_cast<std::int64_t>(value));
  if (value >= 2 * kTwoTo63) return std::numeric_limits<std::uint64_t>::max();
  return static_cast<std::uint64_t>(value);
}

}  // namespace resolver
