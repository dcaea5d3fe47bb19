#include "targets/TypeDeclaration.h"

#include <algorithm>
#include <array>
#include <stdexcept>

#include "targets/RegionRequest.h"

namespace targets {
namespace {

constexpr std::array<std::string_view, 4> kQualifiers{"const", "volatile", "restrict", "_Atomic"};

bool IsWordByte(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
         c == '$' || static_cast<unsigned char>(c) >= 0x80;
}

bool IsBlank(char c) {
  return c == ' ' || c == '\t';
}

[[noreturn]] void Wrong(const std::string& sentence) {
  throw std::invalid_argument(sentence);
}

class DeclarationReader {
 public:
  explicit DeclarationReader(std::string_view text) : text_(text) {}

  TypeDeclaration Read() {
    TypeDeclaration declaration;
    while (!text_.empty() && (IsWordByte(text_[0]) || IsBlank(text_[0]))) {
      declaration.base += text_[0];
      text_.remove_prefix(1);
    }
    while (!declaration.base.empty() && IsBlank(declaration.base.back()))
      declaration.base.pop_back();
    if (declaration.base.find_first_not_of(" \t") == std::string::npos) {
      Wrong("a type begins with its name");
    }
    declaration.steps = Declarator(0);
    if (Take(':')) declaration.bits = Number("the width of a bit-field");
    SkipBlanks();
    if (!text_.empty()) Wrong("`" + std::string(text_) + "` does not belong to a type");
    CheckSteps(declaration);
    return declaration;
  }

 private:
  /// Stars bind weaker than what stands behind the parentheses, which binds weaker than what stands
  /// between them.
  std::vector<TypeStep> Declarator(std::size_t depth) {
    if (depth == kMostSteps) TooDeep();
    std::size_t stars = 0;
    while (Take('*')) {
      if (++stars > kMostSteps) TooDeep();
      while (TakeQualifier()) {
      }
    }
    std::vector<TypeStep> steps;
    if (BeginsGroup()) {
      Take('(');
      steps = Declarator(depth + 1);
      if (!Take(')')) Wrong("a parenthesis is not closed");
    }
    while (true) {
      if (Take('[')) {
        TypeStep step{TypeStep::Kind::kArray, {}};
        if (!Take(']')) {
          step.count = Number("the number of elements");
          if (!Take(']')) Wrong("a bracket is not closed");
        }
        steps.push_back(step);
      } else if (Take('(')) {
        SkipParameters();
        steps.push_back({TypeStep::Kind::kFunction, {}});
      } else {
        break;
      }
      if (steps.size() > kMostSteps) TooDeep();
    }
    steps.insert(steps.end(), stars, TypeStep{TypeStep::Kind::kPointer, {}});
    if (steps.size() > kMostSteps) TooDeep();
    return steps;
  }

  /// Does a parenthesis follow that groups, and does not hold parameters?
  bool BeginsGroup() {
    SkipBlanks();
    if (!text_.starts_with('(')) return false;
    const std::size_t next = text_.find_first_not_of(" \t", 1);
    return next != text_.npos && (text_[next] == '*' || text_[next] == '(' || text_[next] == '[');
  }

  void SkipParameters() {
    std::size_t open = 1;
    while (open > 0) {
      const std::size_t at = text_.find_first_of("()");
      if (at == text_.npos) Wrong("a parenthesis is not closed");
      open = text_[at] == '(' ? open + 1 : open - 1;
      text_.remove_prefix(at + 1);
    }
  }

  std::uint64_t Number(const std::string& what) {
    SkipBlanks();
    const auto end = std::find_if_not(text_.begin(), text_.end(), IsWordByte);
    const auto size = static_cast<std::size_t>(end - text_.begin());
    const auto number = ReadPlainNumber(text_.substr(0, size));
    if (!number) Wrong(what + " must be a decimal number, or a hexadecimal one behind 0x");
    text_.remove_prefix(size);
    return *number;
  }

  bool TakeQualifier() {
    SkipBlanks();
    for (const std::string_view word : kQualifiers) {
      if (!text_.starts_with(word)) continue;
      if (text_.size() > word.size() && IsWordByte(text_[word.size()])) continue;
      text_.remove_prefix(word.size());
      return true;
    }
    return false;
  }

  bool Take(char c) {
    SkipBlanks();
    if (!text_.starts_with(c)) return false;
    text_.remove_prefix(1);
    return true;
  }

  void SkipBlanks() {
    while (!text_.empty() && IsBlank(text_[0])) text_.remove_prefix(1);
  }

  [[noreturn]] static void TooDeep() {
    Wrong("a type has " + std::to_string(kMostSteps) + " pointers and dimensions at most");
  }

  static void CheckSteps(const TypeDeclaration& declaration) {
    using Kind = TypeStep::Kind;
    for (std::size_t i = 0; i + 1 < declaration.steps.size(); ++i) {
      const Kind outer = declaration.steps[i].kind;
      const Kind inner = declaration.steps[i + 1].kind;
      if (outer == Kind::kArray && inner == Kind::kFunction)
        Wrong("an array cannot hold functions");
      if (outer == Kind::kFunction && inner != Kind::kPointer) {
        Wrong("a function cannot return an array or a function");
      }
    }
    if (declaration.bits && !declaration.steps.empty()) {
      Wrong("only integers and enumerations can be bit-fields");
    }
  }

  std::string_view text_;
};

}  // namespace

TypeDeclaration ReadTypeDeclaration(std::string_view text) {
  return DeclarationReader(text).Read();
}

}  // namespace targets
