#include <array>
#include <cstddef>
#include <string>
#include <string_view>

#include "resolver/CharacterClass.h"
#include "resolver/Markers.h"
#include "resolver/StringParametersResolving.h"

namespace {

// The order decides which of two keywords wins that start at the same place.
constexpr std::array<std::string_view, 8> kBasicTypeKeywords = {
    "double", "float", "long", "int", "short", "char", "unsigned", "signed"};

/// Is there a blank before the first letter of a basic type keyword? Most blanks stand around
/// operators; looking for the keywords took a tenth of `(x+1)*(x-2)/3 + a[2]`.
bool MayHoldMarkedKeyword(std::string_view text) {
  constexpr std::string_view kFirstLetters = "dflisuc";
  for (std::size_t at = text.find(' '); at != std::string_view::npos; at = text.find(' ', at + 1)) {
    const std::size_t next = at + 1;
    if (next < text.size() && kFirstLetters.find(text[next]) != std::string_view::npos) return true;
  }
  return false;
}

/// Where the first keyword worth a look ends. Each keyword's start is held against the end of the
/// one chosen so far, so of "unsigned int" it is "unsigned" that is stepped over: a type's first
/// word needs no mark before it.
std::size_t EndOfLeadingKeyword(const std::string& text) {
  std::size_t end = std::string::npos;
  for (const std::string_view keyword : kBasicTypeKeywords) {
    const std::size_t start = text.find(keyword);
    if (start < end) end = start + keyword.size();
  }
  return end;
}

/// Replaces each `exponent` that belongs to a token beginning with a digit. Tokens end at
/// delimiters, to which the replaced sign no longer belongs.
void ProtectExponents(std::string* text, const char* delimiters, std::string_view exponent,
                      std::string_view replacement) {
  std::size_t token = 0;
  std::size_t scanned = 0;
  for (std::size_t at = text->find(exponent); at != std::string::npos;
       at = text->find(exponent, at + 1)) {
    const std::size_t delimiter =
        std::string_view(*text).substr(scanned, at - scanned).find_last_of(delimiters);
    if (delimiter != std::string_view::npos) token = scanned + delimiter + 1;
    scanned = at;
    if (token < at && resolver::IsDigit((*text)[token]))
      text->replace(at, exponent.size(), replacement);
  }
}

}  // namespace

void TStringResolver::ProcessBasickTypes(std::string* text) {
  if (!MayHoldMarkedKeyword(*text)) return;
  std::size_t position = EndOfLeadingKeyword(*text);
  if (position == std::string::npos) return;
  // Where each keyword comes next; looked for again only once the position has passed it.
  std::array<std::size_t, kBasicTypeKeywords.size()> next{};
  std::string marked;
  std::size_t copied = 0;
  for (;;) {
    std::size_t begin = std::string::npos;
    std::size_t end = std::string::npos;
    for (std::size_t i = 0; i < next.size(); ++i) {
      if (next[i] < position) {
        next[i] = text->find(kBasicTypeKeywords[i], position);
      }
      if (next[i] < begin) {
        begin = next[i];
        end = begin + kBasicTypeKeywords[i].size();
      }
    }
    if (begin == std::string::npos) break;
    position = end;
    if ((*text)[begin - 1] == ' ') {
      marked.append(*text, copied, begin - 1 - copied);
      marked += resolver::kKeywordBlank;
      copied = begin;
      // The mark is two bytes longer than the blank, and the search goes on where the keyword's end
      // was without it.
      position -= resolver::kKeywordBlank.size() - 1;
    }
  }
  if (copied == 0) return;
  marked.append(*text, copied);
  text->swap(marked);
}

bool TStringResolver::CheckFloatingPointStr(std::string* text) {
  ProtectPoints(text);
  ProtectSignedExponents(text);
  return false;
}

void TStringResolver::ProtectPoints(std::string* text) {
  for (std::size_t at = text->find('.', 1); at != std::string::npos; at = text->find('.', at + 1)) {
    if (at + 1 < text->size() && resolver::IsDigit((*text)[at + 1]))
      (*text)[at] = resolver::kProtectedPoint;
  }
}

void TStringResolver::ProtectSignedExponents(std::string* text) {
  ProtectExponents(text, delimitersWithParentheses, resolver::kExponentPlus,
                   resolver::kProtectedExponentPlus);
  ProtectExponents(text, delimitersWithParentheses, resolver::kExponentMinus,
                   resolver::kProtectedExponentMinus);
}

bool TStringResolver::RestoreFloatingPointStr(std::string* text) {
  // Every protected form ends with one.
  static_assert(resolver::kProtectedExponentPlus[1] == resolver::kProtectedPoint &&
                resolver::kProtectedExponentMinus[1] == resolver::kProtectedPoint);
  for (std::size_t at = text->find(resolver::kProtectedPoint); at != std::string::npos;
       at = text->find(resolver::kProtectedPoint, at + 1)) {
    char& c = (*text)[at];
    char* const before = at > 0 ? &(*text)[at - 1] : nullptr;
    if (before != nullptr && *before == resolver::kProtectedExponentPlus[0]) {
      c = resolver::kExponentPlus[1];
    } else if (before != nullptr && *before == resolver::kProtectedExponentMinus[0]) {
      *before = resolver::kExponentMinus[0];
      c = resolver::kExponentMinus[1];
    } else {
      c = '.';
    }
  }
  return false;
}
