#include "tools/resolve/CharacterConstant.h"

namespace tool {
namespace {

constexpr char kQuote = '\'';
constexpr std::size_t kMostOctalDigits = 3;
constexpr unsigned kLargestCode = 255;

constexpr std::string_view kEscapeLetters = "abfnrtve\\'\"?";
constexpr std::string_view kEscapedBytes = "\a\b\f\n\r\t\v\x1b\\'\"?";

/// The value of a digit of any base up to 16; 16 when it is none.
unsigned DigitValue(char c) {
  if (c >= '0' && c <= '9') return static_cast<unsigned>(c - '0');
  if (c >= 'a' && c <= 'f') return static_cast<unsigned>(c - 'a') + 10;
  if (c >= 'A' && c <= 'F') return static_cast<unsigned>(c - 'A') + 10;
  return 16;
}

/// Reads the digits at the start of `text`; `length` of the result counts them. The code stays
/// small enough not to wrap, however many there are.
CharacterConstant ReadDigits(std::string_view text, unsigned base) {
  CharacterConstant read;
  while (read.length < text.size() && DigitValue(text[read.length]) < base) {
    if (base == 8 && read.length == kMostOctalDigits) break;
    if (read.code <= kLargestCode) read.code = read.code * base + DigitValue(text[read.length]);
    ++read.length;
  }
  return read;
}

/// Reads what stands behind the backslash at the start of `text`; `length` counts the backslash.
std::optional<CharacterConstant> ReadEscape(std::string_view text) {
  if (text.size() < 2) return std::nullopt;
  if (const std::size_t letter = kEscapeLetters.find(text[1]); letter != std::string_view::npos) {
    return CharacterConstant{static_cast<unsigned char>(kEscapedBytes[letter]), 2};
  }
  const bool hexadecimal = text[1] == 'x';
  const std::size_t prefix = hexadecimal ? 2 : 1;
  CharacterConstant read = ReadDigits(text.substr(prefix), hexadecimal ? 16 : 8);
  if (read.length == 0 || read.code > kLargestCode) return std::nullopt;
  read.length += prefix;
  return read;
}

std::optional<CharacterConstant> ReadContents(std::string_view text) {
  if (text.empty() || text[0] == kQuote || text[0] == '\n') return std::nullopt;
  if (text[0] == '\\') return ReadEscape(text);
  return CharacterConstant{static_cast<unsigned char>(text[0]), 1};
}

}  // namespace

std::optional<CharacterConstant> ReadCharacterConstant(std::string_view text) {
  if (text.empty() || text[0] != kQuote) return std::nullopt;
  std::optional<CharacterConstant> read = ReadContents(text.substr(1));
  if (!read || read->length + 1 >= text.size() || text[read->length + 1] != kQuote) {
    return std::nullopt;
  }
  read->length += 2;
  return read;
}

}  // namespace tool
