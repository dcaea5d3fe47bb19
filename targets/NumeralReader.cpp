#include "targets/NumeralReader.h"

#include <limits>

namespace targets {
namespace {

constexpr std::uint64_t kLargest = std::numeric_limits<std::uint64_t>::max();
/// Any number of this many decimal digits fits 64 bits.
constexpr std::size_t kSafeDecimalDigits = 19;
constexpr unsigned kNoDigit = 99;

unsigned DigitValue(char c) {
  if (c >= '0' && c <= '9') return static_cast<unsigned>(c - '0');
  if (c >= 'a' && c <= 'f') return static_cast<unsigned>(c - 'a') + 10;
  if (c >= 'A' && c <= 'F') return static_cast<unsigned>(c - 'A') + 10;
  return kNoDigit;
}

/// `l`, `ll`, `LL` or nothing at the start of `text`: its length. `lL` is no suffix in C.
std::size_t LongSuffixLength(std::string_view text) {
  if (text.empty() || (text[0] != 'l' && text[0] != 'L')) return 0;
  return text.size() > 1 && text[1] == text[0] ? 2 : 1;
}

bool IsUnsignedSuffix(std::string_view text) {
  return !text.empty() && (text[0] == 'u' || text[0] == 'U');
}

bool IsSuffix(std::string_view text) {
  if (IsUnsignedSuffix(text)) {
    text.remove_prefix(1);
    text.remove_prefix(LongSuffixLength(text));
    return text.empty();
  }
  text.remove_prefix(LongSuffixLength(text));
  if (IsUnsignedSuffix(text)) text.remove_prefix(1);
  return text.empty();
}

std::optional<std::uint64_t> ReadDecimal(std::string_view text) {
  std::uint64_t value = 0;
  std::size_t at = 0;
  const std::size_t safe = text.size() < kSafeDecimalDigits ? text.size() : kSafeDecimalDigits;
  for (; at < safe; ++at) {
    const unsigned digit = static_cast<unsigned>(text[at]) - '0';
    if (digit > 9) break;
    value = value * 10 + digit;
  }
  for (; at < text.size(); ++at) {
    const unsigned digit = static_cast<unsigned>(text[at]) - '0';
    if (digit > 9) break;
    if (value > (kLargest - digit) / 10) return std::nullopt;
    value = value * 10 + digit;
  }
  if (at != text.size() && !IsSuffix(text.substr(at))) return std::nullopt;
  return value;
}

/// Digits of a base that is a power of two: `bits` per digit, at least one of them.
std::optional<std::uint64_t> ReadBinaryBase(std::string_view text, unsigned bits) {
  std::uint64_t value = 0;
  std::size_t at = 0;
  for (; at < text.size(); ++at) {
    const unsigned digit = DigitValue(text[at]);
    if (digit >> bits != 0) break;
    if (value >> (64 - bits) != 0) return std::nullopt;
    value = value << bits | digit;
  }
  if (at == 0 || !IsSuffix(text.substr(at))) return std::nullopt;
  return value;
}

std::optional<std::uint64_t> SimpleEscape(char c) {
  switch (c) {
    case 'n':
      return 10;
    case 't':
      return 9;
    case 'r':
      return 13;
    case 'a':
      return 7;
    case 'b':
      return 8;
    case 'f':
      return 12;
    case 'v':
      return 11;
    case 'e':
      return 27;
    case '\\':
    case '\'':
    case '"':
    case '?':
      return static_cast<unsigned char>(c);
    default:
      return std::nullopt;
  }
}

/// The part of an escape after its backslash.
std::optional<std::uint64_t> ReadEscape(std::string_view text) {
  if (text.empty()) return std::nullopt;
  const bool hexadecimal = text[0] == 'x';
  if (!hexadecimal && DigitValue(text[0]) > 7) {
    return text.size() == 1 ? SimpleEscape(text[0]) : std::nullopt;
  }
  if (hexadecimal) text.remove_prefix(1);
  if (text.empty() || (!hexadecimal && text.size() > 3)) return std::nullopt;
  std::uint64_t value = 0;
  for (const char c : text) {
    const unsigned digit = DigitValue(c);
    if (digit >= (hexadecimal ? 16U : 8U)) return std::nullopt;
    value = value * (hexadecimal ? 16 : 8) + digit;
    if (value > 0xFF) return std::nullopt;
  }
  return value;
}

std::optional<std::uint64_t> ReadCharacter(std::string_view text) {
  if (text.size() < 3 || text.back() != '\'') return std::nullopt;
  text = text.substr(1, text.size() - 2);
  if (text[0] == '\\') return ReadEscape(text.substr(1));
  if (text.size() != 1 || text[0] == '\'' || text[0] == '\n') return std::nullopt;
  return static_cast<unsigned char>(text[0]);
}

}  // namespace

std::optional<std::uint64_t> ReadNumeral(std::string_view text) {
  if (text.empty()) return std::nullopt;
  if (text[0] == '\'') return ReadCharacter(text);
  if (text[0] < '0' || text[0] > '9') return std::nullopt;
  if (text[0] != '0') return ReadDecimal(text);
  const char kind = text.size() > 1 ? text[1] : '\0';
  if (kind == 'x' || kind == 'X') return ReadBinaryBase(text.substr(2), 4);
  if (kind == 'b' || kind == 'B') return ReadBinaryBase(text.substr(2), 1);
  return ReadBinaryBase(text, 3);
}

}  // namespace targets
