#include "tools/resolve/ExpressionText.h"

#include <algorithm>
#include <array>

#include "tools/resolve/CharacterConstant.h"

namespace tool {
namespace {

constexpr std::string_view kSizeof = "sizeof";
constexpr unsigned kLastCommonCode = 127;

// Words that join their neighbours to one type name.
constexpr std::array<std::string_view, 19> kTypeWords = {
    "struct", "union", "enum",  "class",   "const",   "volatile", "unsigned",
    "signed", "long",  "short", "int",     "char",    "float",    "double",
    "void",   "bool",  "_Bool", "_Atomic", "restrict"};

bool IsBlank(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

bool IsSign(char c) {
  return c == '+' || c == '-';
}

bool IsTypeWord(std::string_view word) {
  return std::find(kTypeWords.begin(), kTypeWords.end(), word) != kTypeWords.end();
}

std::size_t SkipBlanks(std::string_view text, std::size_t at) {
  while (at < text.size() && IsBlank(text[at])) ++at;
  return at;
}

std::size_t EndOfWord(std::string_view text, std::size_t at) {
  while (at < text.size() && IsNameCharacter(text[at])) ++at;
  return at;
}

/// Rewrites everything but subscripts, from left to right.
class Rewriter {
 public:
  explicit Rewriter(std::string_view text) : text_(text) { out_.reserve(text.size()); }

  std::string Run() {
    while (at_ < text_.size()) {
      const char c = text_[at_];
      if (IsBlank(c)) {
        at_ = SkipBlanks(text_, at_);
        if (at_ < text_.size() && IsNameCharacter(text_[at_])) Separate();
      } else if (c == '\'') {
        CopyCharacterConstant();
      } else if (IsNameCharacter(c)) {
        CopyWord();
      } else {
        out_ += c;
        ++at_;
      }
    }
    return std::move(out_);
  }

 private:
  /// Keeps a word that follows from growing together with the one before it.
  void Separate() {
    if (!out_.empty() && IsNameCharacter(out_.back())) out_ += ' ';
  }

  void CopyCharacterConstant() {
    const std::optional<CharacterConstant> constant = ReadCharacterConstant(text_.substr(at_));
    const std::size_t length = constant ? constant->length : 1;
    if (constant && constant->code <= kLastCommonCode) {
      Separate();
      out_ += std::to_string(constant->code);
      at_ += length;
      if (at_ < text_.size() && IsNameCharacter(text_[at_])) Separate();
      return;
    }
    out_ += text_.substr(at_, length);
    at_ += length;
  }

  void CopyWord() {
    if (IsDigit(text_[at_])) return CopyNumeral();
    const std::size_t end = EndOfWord(text_, at_);
    const std::string_view word = text_.substr(at_, end - at_);
    out_ += word;
    at_ = end;
    if (word != kSizeof) return;
    // Glued to an operand that is no group, the keyword would be read as part of a name.
    at_ = SkipBlanks(text_, at_);
    if (at_ < text_.size() && text_[at_] != '(') out_ += ' ';
  }

  void CopyNumeral() {
    std::size_t end = at_;
    while (end < text_.size() && (IsNameCharacter(text_[end]) || text_[end] == '.')) ++end;
    const std::string_view numeral = text_.substr(at_, end - at_);
    const bool hexadecimal = numeral.size() > 1 && (numeral[1] == 'x' || numeral[1] == 'X');
    out_ += numeral;
    if (hexadecimal && numeral.back() == 'e') {
      const std::size_t next = SkipBlanks(text_, end);
      if (next < text_.size() && IsSign(text_[next])) out_.back() = 'E';
    } else if (!hexadecimal && numeral.back() == 'E' && end < text_.size() && IsSign(text_[end])) {
      out_.back() = 'e';
    }
    at_ = end;
  }

  std::string_view text_;
  std::size_t at_ = 0;
  std::string out_;
};

/// Makes every subscript count by its value.
std::string WrapSubscripts(const std::string& text) {
  // For each bracket of a pair with something between, the position of its partner; else 0, which
  // no pair's closing bracket can have, nor an opening one's partner.
  std::vector<std::size_t> partner(text.size(), 0);
  std::vector<std::size_t> open;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] == '[') open.push_back(at);
    if (text[at] != ']' || open.empty()) continue;
    if (at > open.back() + 1) {
      partner[open.back()] = at;
      partner[at] = at;
    }
    open.pop_back();
  }
  std::string wrapped;
  wrapped.reserve(text.size());
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (partner[at] != 0 && text[at] == ']') wrapped += ")+0";
    wrapped += text[at];
    if (partner[at] != 0 && text[at] == '[') wrapped += '(';
  }
  return wrapped;
}

std::string BetweenSentence(std::string_view left, std::string_view right) {
  std::string sentence = "no operator stands between `";
  return sentence.append(left).append("` and `").append(right).append("`");
}

}  // namespace

bool IsNameCharacter(char c) {
  return IsDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c == '$' ||
         static_cast<unsigned char>(c) > kLastCommonCode;
}

std::string PrepareExpression(std::string_view text) {
  return WrapSubscripts(Rewriter(text).Run());
}

std::optional<std::string> FindMissingOperator(std::string_view prepared) {
  std::string_view left;
  std::size_t at = 0;
  while (at < prepared.size()) {
    if (!IsNameCharacter(prepared[at])) {
      ++at;
      continue;
    }
    const std::size_t end = EndOfWord(prepared, at);
    const std::string_view word = prepared.substr(at, end - at);
    const bool joins = IsTypeWord(word) || word == kSizeof;
    const char before = at > 0 ? prepared[at - 1] : '\0';
    if (before == ' ' && !IsTypeWord(word) && !IsTypeWord(left) && left != kSizeof) {
      return BetweenSentence(left, word);
    }
    if (before == ']') return BetweenSentence("]", word);
    if (end < prepared.size() && prepared[end] == '(' && !joins) {
      const bool call = !IsDigit(word.front());
      return BetweenSentence(word, "(") + (call ? "; functions cannot be called" : "");
    }
    left = word;
    at = end;
  }
  return std::nullopt;
}

std::vector<std::string> MemberNames(std::string_view prepared) {
  std::vector<std::string> names;
  for (std::size_t at = 0; at + 1 < prepared.size(); ++at) {
    const bool arrow = prepared[at] == '>' && at > 0 && prepared[at - 1] == '-';
    const char first = prepared[at + 1];
    if ((prepared[at] != '.' && !arrow) || !IsNameCharacter(first) || IsDigit(first)) continue;
    names.emplace_back(prepared.substr(at + 1, EndOfWord(prepared, at + 1) - at - 1));
  }
  return names;
}

std::string DottedName(std::string_view prepared, std::string_view first) {
  const std::string start = std::string(first) + '.';
  for (std::size_t at = prepared.find(start); at != std::string_view::npos;
       at = prepared.find(start, at + 1)) {
    if (at > 0 && (IsNameCharacter(prepared[at - 1]) || prepared[at - 1] == '.')) continue;
    std::size_t end = at;
    while (end < prepared.size() && (IsNameCharacter(prepared[end]) || prepared[end] == '.')) ++end;
    return std::string(prepared.substr(at, end - at));
  }
  return "";
}

bool IsBlankText(std::string_view text) {
  return std::all_of(text.begin(), text.end(), IsBlank);
}

std::optional<char> FindControlCharacter(std::string_view text) {
  for (const char c : text) {
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) return c;
  }
  return std::nullopt;
}

}  // namespace tool
