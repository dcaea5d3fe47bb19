#include "resolver/ValueText.h"

#include <array>
#include <cfloat>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>
#include <system_error>

#include "resolver/CharacterClass.h"

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

constexpr std::array<double, 11> kPowersOfTen = {1e0, 1e1, 1e2, 1e3, 1e4, 1e5,
                                                 1e6, 1e7, 1e8, 1e9, 1e10};

/// Reads a text that is nothing but digits with at most one point, and whose digits and power of
/// ten are exact as `Number`: their quotient is then the nearest number. Most texts are such, and
/// this takes a fifth of the instructions of `std::from_chars`. False for any other text.
template <typename Number>
bool ReadShortDecimal(std::string_view text, Number* value) {
  // Wider intermediate results would be rounded twice.
  if (FLT_EVAL_METHOD != 0 || text.size() > 16) return false;
  std::uint64_t digits = 0;
  std::size_t point = text.size();
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (IsDigit(text[i])) {
      digits = digits * 10 + static_cast<std::uint64_t>(text[i] - '0');
    } else if (text[i] == '.' && point == text.size()) {
      point = i;
    } else {
      return false;
    }
  }
  const bool hasPoint = point < text.size();
  const std::size_t decimals = hasPoint ? text.size() - point - 1 : 0;
  if (text.size() == (hasPoint ? 1U : 0U) || decimals >= kPowersOfTen.size()) return false;
  if (digits >> std::numeric_limits<Number>::digits != 0) return false;
  *value = static_cast<Number>(digits) / static_cast<Number>(kPowersOfTen[decimals]);
  return true;
}

template <typename Number>
Number ReadFloatingNumber(std::string_view text) {
  if (Number plain = 0; ReadShortDecimal(text, &plain)) return plain;
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

constexpr int kSignificantDigits = 6;

/// `scaled` rounded to an integer as the exact product that it was rounded from is: ties to even.
/// A scaled value below a half comes from a product below it, so only on a half itself can the two
/// differ.
std::uint32_t RoundProduct(double scaled, double value, double power) {
  auto rounded = static_cast<std::uint32_t>(scaled);
  const double rest = scaled - rounded;
  if (rest > 0.5) return rounded + 1;
  if (rest < 0.5) return rounded;
  const double lost = std::fma(value, power, -scaled);
  if (lost > 0 || (lost == 0 && rounded % 2 != 0)) ++rounded;
  return rounded;
}

/// A value that six significant digits show without an exponent, written into `buffer`; empty for
/// any other. Takes a tenth of the instructions of `std::to_chars`, which counts because every
/// floating result passes through its text.
std::string_view WriteFixedPoint(double value, std::array<char, 32>* buffer) {
  constexpr double kSixDigits = 1e5;
  const double magnitude = std::fabs(value);
  // Also false for what is not a number.
  if (FLT_EVAL_METHOD != 0 || !(magnitude >= 1e-4 && magnitude < 1e6)) return {};
  std::size_t decimals = kSignificantDigits - 1;
  while (decimals < 9 && magnitude * kPowersOfTen[decimals] < kSixDigits) ++decimals;
  while (magnitude * kPowersOfTen[decimals] >= 10 * kSixDigits) --decimals;
  const double power = kPowersOfTen[decimals];
  std::uint32_t digits = RoundProduct(magnitude * power, magnitude, power);
  // Rounded up to a million, which takes an exponent.
  if (decimals == 0 && digits == 1'000'000) return {};
  while (decimals > 0 && digits % 10 == 0) {
    digits /= 10;
    --decimals;
  }
  char* const end = buffer->data() + buffer->size();
  char* text = end;
  for (std::size_t i = 0; i < decimals; ++i, digits /= 10)
    *--text = static_cast<char>('0' + digits % 10);
  if (decimals > 0) *--text = '.';
  do {
    *--text = static_cast<char>('0' + digits % 10);
    digits /= 10;
  } while (digits != 0);
  if (value < 0) *--text = '-';
  return {text, end};
}

}  // namespace

bool ReadDigits(std::string_view text, std::uint64_t* value) {
  // As many cannot overflow.
  constexpr std::size_t kSafeDigits = 19;
  if (text.empty() || text.size() > kSafeDigits) return false;
  std::uint64_t read = 0;
  for (const char c : text) {
    if (!IsDigit(c)) return false;
    read = read * 10 + static_cast<std::uint64_t>(c - '0');
  }
  *value = read;
  return true;
}

std::uint64_t ReadUnsigned(std::string_view text) {
  if (std::uint64_t plain = 0; ReadDigits(text, &plain)) return plain;
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

std::string_view WriteUnsigned(std::uint64_t value, Digits* digits) {
  const std::size_t end = digits->size() - 1;
  (*digits)[end] = '\0';
  std::size_t first = end;
  while (value >= 100) {
    first -= 2;
    std::memcpy(&(*digits)[first], &kPairsOfDigits[value % 100 * 2], 2);
    value /= 100;
  }
  if (value >= 10) {
    first -= 2;
    std::memcpy(&(*digits)[first], &kPairsOfDigits[value * 2], 2);
  } else {
    (*digits)[--first] = static_cast<char>('0' + value);
  }
  return {digits->data() + first, end - first};
}

void WriteUnsigned(std::uint64_t value, std::string* text) {
  Digits digits;
  *text = WriteUnsigned(value, &digits);
}

void WriteFloating(double value, std::string* text) {
  std::array<char, 32> buffer;
  if (const std::string_view plain = WriteFixedPoint(value, &buffer); !plain.empty()) {
    *text = plain;
    return;
  }
  const auto [end, error] = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value,
                                          std::chars_format::general, kSignificantDigits);
  text->assign(buffer.data(), end);
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
