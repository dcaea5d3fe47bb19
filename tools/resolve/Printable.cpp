#include "tools/resolve/Printable.h"

#include <array>

namespace tool {
namespace {

constexpr std::size_t kEchoedEnds = kLongestEcho / 2;

/// What the first byte of a UTF-8 sequence says about it.
struct SequenceKind {
  unsigned char mask;
  unsigned char lead;
  std::size_t length;
  char32_t least;  ///< smaller codes have a shorter form
};

constexpr std::array<SequenceKind, 4> kSequenceKinds = {
    {{0x80, 0x00, 1, 0}, {0xE0, 0xC0, 2, 0x80}, {0xF0, 0xE0, 3, 0x800}, {0xF8, 0xF0, 4, 0x10000}}};

bool IsShown(char32_t code) {
  const bool control = code < 0x20 || (code >= 0x7F && code < 0xA0);
  const bool lineEnd = code == 0x2028 || code == 0x2029;
  const bool direction = (code >= 0x202A && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069);
  const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
  return !control && !lineEnd && !direction && !surrogate && code <= 0x10FFFF;
}

}  // namespace

std::size_t ShownCharacter(std::string_view text) {
  const auto first = static_cast<unsigned char>(text.front());
  for (const SequenceKind& kind : kSequenceKinds) {
    if ((first & kind.mask) != kind.lead) continue;
    if (text.size() < kind.length) return 0;
    char32_t code = first & static_cast<unsigned char>(~kind.mask);
    for (std::size_t i = 1; i < kind.length; ++i) {
      const auto byte = static_cast<unsigned char>(text[i]);
      if ((byte & 0xC0) != 0x80) return 0;
      code = (code << 6) | (byte & 0x3F);
    }
    return code >= kind.least && IsShown(code) ? kind.length : 0;
  }
  return 0;
}

namespace {

std::string Escaped(char c) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  switch (c) {
    case '\n':
      return "\\n";
    case '\r':
      return "\\r";
    case '\t':
      return "\\t";
    default:
      const auto byte = static_cast<unsigned char>(c);
      return {'\\', 'x', kDigits[byte >> 4], kDigits[byte & 0xF]};
  }
}

void AppendPrintable(std::string_view text, std::string* shown) {
  while (!text.empty()) {
    const std::size_t length = ShownCharacter(text);
    if (length == 0) {
      *shown += Escaped(text.front());
    } else {
      *shown += text.substr(0, length);
    }
    text.remove_prefix(length == 0 ? 1 : length);
  }
}

bool ContinuesSequence(char c) {
  return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

}  // namespace

std::string Printable(std::string_view text) {
  std::string shown;
  if (text.size() <= kLongestEcho) {
    AppendPrintable(text, &shown);
    return shown;
  }
  // Both cuts stay clear of the middle of a character.
  std::size_t head = kEchoedEnds;
  while (head > kEchoedEnds - 3 && ContinuesSequence(text[head])) --head;
  std::size_t tail = text.size() - kEchoedEnds;
  while (tail < text.size() - kEchoedEnds + 3 && ContinuesSequence(text[tail])) ++tail;
  AppendPrintable(text.substr(0, head), &shown);
  shown += " ...(" + std::to_string(tail - head) + " bytes)... ";
  AppendPrintable(text.substr(tail), &shown);
  return shown;
}

}  // namespace tool
