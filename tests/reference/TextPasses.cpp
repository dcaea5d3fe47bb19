#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include "tests/reference/Resolver.h"

namespace reference {
namespace {

constexpr std::uint32_t kNone = 0xFFFFFFFF;

// The order decides ties.
const std::array<std::string, 8> kKeywords = {"double", "float", "long",     "int",
                                              "short",  "char",  "unsigned", "signed"};

std::uint32_t Find(const std::string& text, const std::string& pattern, std::uint32_t from) {
  return static_cast<std::uint32_t>(text.find(pattern, from));
}

bool IsDigit(char byte) {
  return byte >= '0' && byte <= '9';
}

}  // namespace

void Resolver::ProcessBasickTypes(std::string* text) {
  // A start is compared with the candidate's end, so the search begins behind the keyword that won
  // last and the blank before the text's first keyword is left alone.
  std::uint32_t candidate = kNone;
  for (const std::string& keyword : kKeywords) {
    const std::uint32_t start = Find(*text, keyword, 0);
    if (start < candidate) candidate = start + static_cast<std::uint32_t>(keyword.size());
  }

  std::uint32_t position = candidate;
  while (position != kNone) {
    std::uint32_t start = kNone;
    std::uint32_t end = kNone;
    for (const std::string& keyword : kKeywords) {
      const std::uint32_t found = Find(*text, keyword, position);
      if (found < start) {
        start = found;
        end = found + static_cast<std::uint32_t>(keyword.size());
      }
    }
    if (start != kNone && start > 0 && (*text)[start - 1] == ' ') {
      text->replace(start - 1, 1, ":@:");
    }
    position = end;
  }
}

bool Resolver::CheckFloatingPointStr(std::string* text) {
  for (std::size_t i = text->find('.'); i != std::string::npos; i = text->find('.', i + 1)) {
    if (i > 0 && i + 1 < text->size() && IsDigit((*text)[i + 1])) (*text)[i] = ',';
  }
  for (std::size_t i = text->find("e+"); i != std::string::npos; i = text->find("e+", i + 1)) {
    if (TokenStartsWithDigit(*text, i)) text->replace(i, 2, "e,");
  }
  for (std::size_t i = text->find("e-"); i != std::string::npos; i = text->find("e-", i + 1)) {
    if (TokenStartsWithDigit(*text, i)) text->replace(i, 2, "@,");
  }
  return false;
}

/// The token that ends before `end`: is there one, and is its first byte a digit?
bool Resolver::TokenStartsWithDigit(const std::string& text, std::size_t end) {
  const std::string prefix = text.substr(0, end);
  const std::size_t delimiter = prefix.find_last_of(delimitersWithParentheses);
  const std::size_t start = delimiter == std::string::npos ? 0 : delimiter + 1;
  return start < end && IsDigit(text[start]);
}

bool Resolver::RestoreFloatingPointStr(std::string* text) {
  while (text->find("e,") != std::string::npos) text->replace(text->find("e,"), 2, "e+");
  while (text->find("@,") != std::string::npos) text->replace(text->find("@,"), 2, "e-");
  while (text->find(',') != std::string::npos) text->replace(text->find(','), 1, ".");
  return false;
}

}  // namespace reference
