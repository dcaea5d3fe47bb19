#include "tests/support/Numeral.h"

#include <charconv>

namespace testsupport {
namespace {

std::optional<std::uint64_t> ReadDigits(std::string_view digits, int base) {
  std::uint64_t value = 0;
  const char* end = digits.data() + digits.size();
  const auto [stop, error] = std::from_chars(digits.data(), end, value, base);
  if (digits.empty() || error != std::errc() || stop != end) return std::nullopt;
  return value;
}

std::optional<std::uint64_t> ReadCharacter(std::string_view inside) {
  if (inside.size() == 1 && inside != "\\") return static_cast<unsigned char>(inside[0]);
  if (inside.size() < 2 || inside[0] != '\\') return std::nullopt;
  if (inside[1] == 'x') return ReadDigits(inside.substr(2), 16);
  if (inside == "\\n") return '\n';
  if (inside == "\\t") return '\t';
  if (inside == "\\0") return 0;
  if (inside == "\\'" || inside == "\\\\") return static_cast<unsigned char>(inside[1]);
  return std::nullopt;
}

}  // namespace

std::optional<std::uint64_t> ReadNumeral(std::string_view text) {
  if (text.size() > 2 && text.front() == '\'' && text.back() == '\'') {
    return ReadCharacter(text.substr(1, text.size() - 2));
  }
  if (text.empty() || text.front() < '0' || text.front() > '9') return std::nullopt;
  while (!text.empty() && std::string_view("uUlL").find(text.back()) != std::string_view::npos) {
    text.remove_suffix(1);
  }
  if (text.starts_with("0x") || text.starts_with("0X")) return ReadDigits(text.substr(2), 16);
  if (text.starts_with("0b") || text.starts_with("0B")) return ReadDigits(text.substr(2), 2);
  if (text.size() > 1 && text.front() == '0') return ReadDigits(text.substr(1), 8);
  return ReadDigits(text, 10);
}

}  // namespace testsupport
