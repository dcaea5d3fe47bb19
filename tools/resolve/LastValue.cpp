#include "tools/resolve/LastValue.h"

#include <algorithm>

#include "targets/TypeNames.h"
#include "tools/resolve/CharacterConstant.h"
#include "tools/resolve/Denoted.h"
#include "tools/resolve/ExpressionText.h"

namespace tool {
namespace {

constexpr std::string_view kSign = "$";
// A value that is described by its expression grows with each use; one beyond this is forgotten.
constexpr std::size_t kLongestText = 4096;

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

/// The next word of `text` from `*at` on, which is moved behind it. Anything that is no name or
/// numeral is a word of one byte, a character constant is one word.
std::string_view NextWord(std::string_view text, std::size_t* at) {
  const std::size_t start = *at;
  std::size_t end = start + 1;
  if (text[start] == '\'') {
    if (const auto constant = ReadCharacterConstant(text.substr(start))) {
      end = start + constant->length;
    }
  } else if (IsNameCharacter(text[start])) {
    while (end < text.size() && IsNameCharacter(text[end])) ++end;
  }
  *at = end;
  return text.substr(start, end - start);
}

/// Is `text` a name, with members and subscripts behind it? Then an operator before or behind it
/// acts on all of it, and a subscript may follow, which cannot stand behind parentheses.
bool IsOneOperand(std::string_view text) {
  if (text.empty() || !IsNameCharacter(text.front()) || IsDigit(text.front())) return false;
  std::size_t depth = 0;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const char c = text[at];
    if (c == '[') ++depth;
    if (c == ']' && depth-- == 0) return false;
    if (depth > 0 || c == ']' || c == '.' || IsNameCharacter(c)) continue;
    const bool arrow = c == '-' && at + 1 < text.size() && text[at + 1] == '>';
    if (!arrow) return false;
    ++at;
  }
  return depth == 0;
}

std::string InParentheses(std::string_view text) {
  return std::string("(").append(text).append(")");
}

/// The type of an object as a cast to a pointer to it spells it; empty when no cast can.
std::string CastName(const Denoted& denoted, targets::LabelSource& labels) {
  using Kind = targets::TypeShape::Kind;
  const targets::TypeShape& shape = ShapeOf(denoted, labels);
  const bool object = shape.kind != Kind::kArray && shape.kind != Kind::kFunction &&
                      shape.kind != Kind::kVoid && shape.kind != Kind::kOther && shape.bits == 0;
  if (!object || shape.isIncomplete || denoted.space != 0) return "";
  const auto known = [&](std::string_view base) { return labels.HasType(base); };
  return targets::CanonicalTypeName(shape.name, known) ? shape.name : "";
}

std::string Described(std::string_view expression, const Answer& answer,
                      targets::LabelSource& labels) {
  if (answer.denoted && answer.denoted->address) {
    const std::string type = CastName(*answer.denoted, labels);
    if (!type.empty()) {
      return "(*" + InParentheses(type + "*") + FormatAddress(*answer.denoted->address) + ")";
    }
  }
  const bool computed = !answer.address && !(answer.denoted && answer.denoted->address);
  // What a numeral is by itself. A pointer is more than that.
  const bool number = answer.isNumber && !answer.floating && !answer.negative && answer.size == 8 &&
                      !answer.isSigned;
  const bool pointer = answer.denoted && ShapeOf(*answer.denoted, labels).target != 0;
  if (computed && number && !pointer) return FormatValue(answer);
  return IsOneOperand(expression) ? std::string(expression) : InParentheses(expression);
}

}  // namespace

void LastValue::Keep(std::string_view expression, const Answer& answer,
                     targets::LabelSource& labels) {
  text_ = Described(expression, answer, labels);
  if (text_.size() > kLongestText) text_.clear();
}

bool LastValue::IsUsedIn(std::string_view text) {
  for (std::size_t at = 0; at < text.size();) {
    if (NextWord(text, &at) == kSign) return true;
  }
  return false;
}

LastValue::Inserted LastValue::Insert(std::string_view text) const {
  Inserted inserted;
  for (std::size_t at = 0; at < text.size();) {
    const std::string_view word = NextWord(text, &at);
    if (word != kSign) {
      inserted.text += word;
      continue;
    }
    if (text_.empty()) return {.text = {}, .error = "there is no last value for `$` yet"};
    inserted.text += text_;
    if (inserted.text.size() > kLongestExpression) {
      return {.text = {}, .error = "the expression is too long with the last value for each `$`"};
    }
  }
  return inserted;
}

std::string LastValue::InsertForCompletion(std::string_view text) const {
  Inserted inserted = Insert(text);
  return inserted.error.empty() ? std::move(inserted.text) : std::string(text);
}

}  // namespace tool
