#include "tools/resolve/QuotedText.h"

#include <algorithm>
#include <string_view>

#include "tools/resolve/BitFields.h"
#include "tools/resolve/Concatenated.h"
#include "tools/resolve/Printable.h"

namespace tool {
namespace {

constexpr std::string_view kPlain = "\a\b\t\n\v\f\r";
constexpr std::string_view kLetters = "abtnvfr";

/// As UTF-8. What is no character of Unicode gives bytes that are none of UTF-8.
void AppendCode(std::uint32_t code, std::string* text) {
  const auto add = [&](std::uint32_t byte) { *text += static_cast<char>(byte); };
  if (code < 0x80) {
    add(code);
  } else if (code < 0x800) {
    add(0xC0 | code >> 6U);
    add(0x80 | (code & 0x3F));
  } else if (code < 0x10000) {
    add(0xE0 | code >> 12U);
    add(0x80 | (code >> 6U & 0x3F));
    add(0x80 | (code & 0x3F));
  } else {
    add(0xF0 | (code >> 18U & 0x0F));
    add(0x80 | (code >> 12U & 0x3F));
    add(0x80 | (code >> 6U & 0x3F));
    add(0x80 | (code & 0x3F));
  }
}

/// Wide characters as UTF-8; bytes stay what they are.
std::string Narrow(std::span<const std::byte> bytes, std::size_t size, targets::ByteOrder order) {
  std::string text;
  for (; bytes.size() >= size; bytes = bytes.subspan(size)) {
    auto code = static_cast<std::uint32_t>(IntegerIn(bytes.first(size), order));
    if (size == 1) {
      text += static_cast<char>(code);
      continue;
    }
    if (size == 2 && code >= 0xD800 && code < 0xDC00 && bytes.size() >= 4) {
      const auto low = static_cast<std::uint32_t>(IntegerIn(bytes.subspan(2, 2), order));
      if (low >= 0xDC00 && low < 0xE000) {
        code = 0x10000 + ((code - 0xD800) << 10U) + (low - 0xDC00);
        bytes = bytes.subspan(2);
      }
    }
    AppendCode(code, &text);
  }
  return text;
}

std::string Quoted(std::string_view text, char quote) {
  std::string quoted(1, quote);
  while (!text.empty()) {
    const char c = text.front();
    const std::size_t length = ShownCharacter(text);
    const std::size_t escape = kPlain.find(c);
    if (c == quote || c == '\\') {
      quoted += '\\';
      quoted += c;
    } else if (length > 0) {
      quoted += text.substr(0, length);
    } else if (escape != kPlain.npos) {
      quoted += '\\';
      quoted += kLetters[escape];
    } else {
      // Three digits of an octal escape end it, whatever follows.
      const auto byte = static_cast<unsigned char>(c);
      for (const unsigned shift : {9U, 6U, 3U, 0U}) {
        quoted += shift == 9 ? '\\' : static_cast<char>('0' + (byte >> shift & 7U));
      }
    }
    text.remove_prefix(std::max<std::size_t>(length, 1));
  }
  return quoted + quote;
}

std::string Prefixed(std::size_t size, const std::string& quoted) {
  return Concatenated({size == 2 ? "u" : size == 4 ? "U" : "", quoted});
}

bool IsZero(std::span<const std::byte> character) {
  return std::all_of(character.begin(), character.end(),
                     [](std::byte byte) { return byte == std::byte{0}; });
}

}  // namespace

std::string QuotedCharacter(std::uint32_t code, std::uint32_t width) {
  if (code == 0) return "'\\0'";
  std::string text;
  if (width > 8) {
    AppendCode(code, &text);
  } else {
    text += static_cast<char>(code);
  }
  if (ShownCharacter(text) == text.size() || kPlain.find(text) != kPlain.npos) {
    return Quoted(text, '\'');
  }
  std::string digits;
  for (; code != 0; code >>= 4U) digits.insert(digits.begin(), "0123456789abcdef"[code & 15U]);
  return "'\\x" + digits + "'";
}

std::size_t TextBytes(std::span<const std::byte> bytes, std::size_t size) {
  std::size_t at = 0;
  while (at + size <= bytes.size() && !IsZero(bytes.subspan(at, size))) at += size;
  return at + size <= bytes.size() ? at : bytes.size();
}

std::string QuotedArray(std::span<const std::byte> bytes, std::size_t size,
                        targets::ByteOrder order, std::size_t most) {
  std::size_t end = bytes.size() / size * size;
  const bool terminated = TextBytes(bytes.first(end), size) < end;
  while (end >= size && IsZero(bytes.subspan(end - size, size))) end -= size;
  const std::size_t shown = std::min(end, most / size * size);
  std::string text = Prefixed(size, Quoted(Narrow(bytes.first(shown), size, order), '"'));
  if (shown < end) text += Concatenated({"... (", std::to_string((end - shown) / size), " more)"});
  return terminated ? text : text + " (no zero at its end)";
}

std::string QuotedString(std::span<const std::byte> bytes, std::size_t size,
                         targets::ByteOrder order) {
  const std::size_t end = TextBytes(bytes, size);
  std::string text = Prefixed(size, Quoted(Narrow(bytes.first(end), size, order), '"'));
  return end == bytes.size() ? text + "..." : text;
}

}  // namespace tool
