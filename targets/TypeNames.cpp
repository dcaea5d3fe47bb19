#include "targets/TypeNames.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

namespace targets {
namespace {

/// Qualifiers that one name may carry on either side: more than anybody writes, and few enough that
/// trying every pair of cuts costs nothing.
constexpr std::size_t kMaxQualifiers = 4;
/// `const volatile unsigned long long int` is six words; repetitions beyond this are no type.
constexpr std::size_t kMaxBasicWords = 12;

constexpr std::string_view kKeywordBlank = ":@:";
constexpr std::array<std::string_view, 4> kQualifiers{"const", "volatile", "restrict", "_Atomic"};
constexpr std::array<std::string_view, 4> kTags{"struct", "union", "enum", "class"};

enum Word {
  kVoid,
  kBool,
  kChar,
  kShort,
  kInt,
  kLong,
  kInt128,
  kFloat,
  kDouble,
  kComplex,
  kSigned,
  kUnsigned,
  kWordCount
};

struct Keyword {
  std::string_view text;
  Word word;
};

// No keyword is the beginning of another, so a run of them without blanks has one reading.
constexpr std::array<Keyword, 14> kKeywords{{{"void", kVoid},
                                             {"_Bool", kBool},
                                             {"bool", kBool},
                                             {"char", kChar},
                                             {"short", kShort},
                                             {"int", kInt},
                                             {"long", kLong},
                                             {"__int128", kInt128},
                                             {"float", kFloat},
                                             {"double", kDouble},
                                             {"_Complex", kComplex},
                                             {"complex", kComplex},
                                             {"signed", kSigned},
                                             {"unsigned", kUnsigned}}};

bool IsBlank(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

bool IsNameByte(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || IsDigit(c) || c == '_' || c == '$' ||
         static_cast<unsigned char>(c) >= 0x80;
}

/// The qualifier that `text` begins with, or an empty text.
std::string_view LeadingQualifier(std::string_view text) {
  for (const std::string_view word : kQualifiers) {
    if (text.starts_with(word)) return word;
  }
  return {};
}

std::string_view TrailingQualifier(std::string_view text) {
  for (const std::string_view word : kQualifiers) {
    if (text.ends_with(word)) return word;
  }
  return {};
}

using WordCounts = std::array<unsigned, kWordCount>;

std::optional<WordCounts> CountWords(std::string_view text) {
  WordCounts counts{};
  std::size_t words = 0;
  while (!text.empty()) {
    if (IsBlank(text[0])) {
      text.remove_prefix(1);
      continue;
    }
    if (words++ == kMaxBasicWords) return std::nullopt;
    if (const std::string_view qualifier = LeadingQualifier(text); !qualifier.empty()) {
      text.remove_prefix(qualifier.size());
      continue;
    }
    const auto* const keyword =
        std::find_if(kKeywords.begin(), kKeywords.end(),
                     [&](const Keyword& candidate) { return text.starts_with(candidate.text); });
    if (keyword == kKeywords.end()) return std::nullopt;
    ++counts[keyword->word];
    text.remove_prefix(keyword->text.size());
  }
  return counts;
}

std::string IntegerName(const WordCounts& n) {
  const char* name = "int";
  if (n[kChar] != 0) name = "char";
  if (n[kShort] != 0) name = "short";
  if (n[kLong] == 1) name = "long";
  if (n[kLong] == 2) name = "long long";
  if (n[kInt128] != 0) name = "__int128";
  if (n[kUnsigned] != 0) return std::string("unsigned ") + name;
  // A plain char is a type of its own, with the sign that the target gives it.
  return n[kChar] != 0 && n[kSigned] != 0 ? "signed char" : name;
}

std::string FloatingName(const WordCounts& n) {
  std::string name = n[kFloat] != 0 ? "float" : n[kLong] != 0 ? "long double" : "double";
  if (n[kComplex] != 0) name += " _Complex";
  return name;
}

/// The parts of a type text: the name bytes before the first star, and the stars.
struct Parts {
  std::string base;
  /// Places in `base` where a blank stood, ascending.
  std::vector<std::size_t> gaps;
  std::size_t stars = 0;
};

std::optional<Parts> TakeApart(std::string_view text) {
  Parts parts;
  std::size_t at = 0;
  while (at < text.size() && text[at] != '*') {
    std::size_t end = at;
    while (end < text.size() && IsNameByte(text[end])) ++end;
    parts.base += text.substr(at, end - at);
    at = end;
    if (at == text.size() || text[at] == '*') break;
    const bool keywordBlank = text.substr(at).starts_with(kKeywordBlank);
    if (!keywordBlank && !IsBlank(text[at])) return std::nullopt;
    if (!parts.base.empty()) parts.gaps.push_back(parts.base.size());
    at += keywordBlank ? kKeywordBlank.size() : 1;
  }
  if (parts.base.empty()) return std::nullopt;
  while (at < text.size()) {
    const std::string_view rest = text.substr(at);
    if (rest[0] == '*') {
      ++parts.stars;
      ++at;
    } else if (IsBlank(rest[0])) {
      ++at;
    } else if (rest.starts_with(kKeywordBlank)) {
      at += kKeywordBlank.size();
    } else if (const std::string_view word = LeadingQualifier(rest); !word.empty()) {
      at += word.size();
    } else {
      return std::nullopt;
    }
  }
  return parts;
}

/// The readings of one type text.
class Readings {
 public:
  Readings(const Parts& parts, const std::function<bool(std::string_view)>& isKnown)
      : parts_(parts), isKnown_(isKnown) {}

  std::optional<std::string> First() const {
    const std::string_view base = parts_.base;
    std::size_t front = 0;
    for (std::size_t i = 0; i <= kMaxQualifiers && front < base.size(); ++i) {
      std::size_t back = base.size();
      for (std::size_t j = 0; j <= kMaxQualifiers && front < back; ++j) {
        if (auto name = FirstWithin(front, back)) return name;
        const std::size_t cut = TrailingQualifier(base.substr(front, back - front)).size();
        if (cut == 0) break;
        back -= cut;
      }
      const std::size_t cut = LeadingQualifier(base.substr(front)).size();
      if (cut == 0) break;
      front += cut;
    }
    return std::nullopt;
  }

 private:
  /// Readings of the bytes from `front` to `back` of the base.
  std::optional<std::string> FirstWithin(std::size_t front, std::size_t back) const {
    const std::string_view text = std::string_view(parts_.base).substr(front, back - front);
    if (IsName(front, back) && isKnown_(text)) return std::string(text);
    if (std::string basic = CanonicalBasicType(text); !basic.empty() && isKnown_(basic)) {
      return basic;
    }
    for (const std::string_view tag : kTags) {
      if (!text.starts_with(tag) || text.size() == tag.size()) continue;
      if (!IsName(front + tag.size(), back)) continue;
      std::string name(tag);
      name += ' ';
      name += text.substr(tag.size());
      if (isKnown_(name)) return name;
    }
    return std::nullopt;
  }

  /// One word, and no number: `restrict0X` is one name, not a qualifier before another.
  bool IsName(std::size_t front, std::size_t back) const {
    if (IsDigit(parts_.base[front])) return false;
    const auto gap = std::upper_bound(parts_.gaps.begin(), parts_.gaps.end(), front);
    return gap == parts_.gaps.end() || *gap >= back;
  }

  const Parts& parts_;
  const std::function<bool(std::string_view)>& isKnown_;
};

}  // namespace

std::string CanonicalBasicType(std::string_view text) {
  const std::optional<WordCounts> counted = CountWords(text);
  if (!counted) return {};
  const WordCounts& n = *counted;
  unsigned words = 0;
  for (const unsigned count : n) words += count;
  if (words == 0 || n[kLong] > 2) return {};
  for (std::size_t word = 0; word < kWordCount; ++word) {
    if (word != kLong && n[word] > 1) return {};
  }
  if (n[kVoid] != 0) return words == 1 ? "void" : "";
  if (n[kBool] != 0) return words == 1 ? "_Bool" : "";
  const unsigned signs = n[kSigned] + n[kUnsigned];
  if (n[kFloat] + n[kDouble] + n[kComplex] != 0) {
    const bool sensible = n[kFloat] + n[kDouble] == 1 && (n[kFloat] == 0 || n[kLong] == 0) &&
                          n[kLong] <= 1 && signs == 0 &&
                          words == n[kFloat] + n[kDouble] + n[kComplex] + n[kLong];
    return sensible ? FloatingName(n) : "";
  }
  const unsigned widths = n[kChar] + n[kShort] + (n[kLong] != 0 ? 1U : 0U) + n[kInt128];
  const bool sensible = signs <= 1 && widths <= 1 && (n[kInt] == 0 || n[kChar] + n[kInt128] == 0);
  return sensible ? IntegerName(n) : "";
}

std::optional<TypeName> CanonicalTypeName(
    std::string_view text, const std::function<bool(std::string_view base)>& isKnown) {
  const std::optional<Parts> parts = TakeApart(text);
  if (!parts) return std::nullopt;
  std::optional<std::string> base = Readings(*parts, isKnown).First();
  if (!base) return std::nullopt;
  return TypeName{std::move(*base), parts->stars};
}

}  // namespace targets
