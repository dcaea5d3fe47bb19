#include "tools/resolve/Format.h"

#include <array>
#include <charconv>

namespace tool {
namespace {

struct Name {
  std::string_view letter;
  std::string_view word;
  Format format;
};

constexpr std::array<Name, 11> kNames = {{{"x", "hexadecimal", Format::kHexadecimal},
                                          {"d", "decimal", Format::kDecimal},
                                          {"u", "unsigned", Format::kUnsigned},
                                          {"o", "octal", Format::kOctal},
                                          {"t", "binary", Format::kBinary},
                                          {"c", "character", Format::kCharacter},
                                          {"s", "string", Format::kString},
                                          {"a", "address", Format::kAddress},
                                          {"f", "float", Format::kFloating},
                                          {"r", "raw", Format::kRaw},
                                          {"n", "natural", Format::kNatural}}};

}  // namespace

std::optional<Format> FormatNamed(std::string_view name) {
  for (const Name& known : kNames) {
    if (name == known.letter || name == known.word) return known.format;
  }
  return std::nullopt;
}

std::string FormatNames() {
  std::string names;
  for (const Name& known : kNames) {
    if (!names.empty()) names += ", ";
    names.append(known.letter).append(" ").append(known.word);
  }
  return names;
}

std::optional<FormatSuffix> ParseFormatSuffix(std::string_view text) {
  if (text.size() < 2 || text.front() != '/') return std::nullopt;
  text.remove_prefix(1);
  FormatSuffix suffix;
  std::uint64_t count = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), count);
  if (end != text.data()) {
    if (error != std::errc() || count == 0) return std::nullopt;
    suffix.count = count;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  }
  if (text.empty()) return suffix;
  const std::optional<Format> format = FormatNamed(text);
  if (!format) return std::nullopt;
  suffix.format = *format;
  return suffix;
}

}  // namespace tool
