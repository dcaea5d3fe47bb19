#include "tools/resolve/CTree.h"

#include <array>
#include <optional>
#include <utility>

#include "tools/resolve/CharacterConstant.h"

namespace tool {
namespace {

using Kind = CNode::Kind;
using Tree = std::unique_ptr<CNode>;

constexpr int kDeepest = 200;
constexpr int kAssignmentLevel = 2;
constexpr int kConditionalLevel = 3;
constexpr int kUnaryLevel = 20;

struct Operator {
  std::string_view text;
  int level;  ///< higher binds more tightly
};

// Longer ones first.
constexpr std::array<Operator, 30> kOperators = {
    {{"<<=", 2}, {">>=", 2}, {"==", 9}, {"!=", 9}, {"<=", 10}, {">=", 10}, {"<<", 11}, {">>", 11},
     {"&&", 5},  {"||", 4},  {"+=", 2}, {"-=", 2}, {"*=", 2},  {"/=", 2},  {"%=", 2},  {"&=", 2},
     {"^=", 2},  {"|=", 2},  {"=", 2},  {"<", 10}, {">", 10},  {"+", 12},  {"-", 12},  {"*", 13},
     {"/", 13},  {"%", 13},  {"&", 8},  {"^", 7},  {"|", 6},   {",", 1}}};

bool IsBlank(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

bool IsNameCharacter(char c) {
  return IsDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c == '$' ||
         static_cast<unsigned char>(c) > 127;
}

class Reader {
 public:
  Reader(std::string_view text, const std::function<bool(std::string_view)>& isType)
      : text_(text), isType_(isType) {}

  Tree Run() {
    Tree tree = ReadLevel(1);
    SkipBlanks();
    return at_ == text_.size() ? std::move(tree) : nullptr;
  }

 private:
  void SkipBlanks() {
    while (at_ < text_.size() && IsBlank(text_[at_])) ++at_;
  }

  bool Starts(std::string_view what) {
    SkipBlanks();
    return text_.substr(at_).starts_with(what);
  }

  bool Take(std::string_view what) {
    if (!Starts(what)) return false;
    at_ += what.size();
    return true;
  }

  std::string_view TakeWord() {
    SkipBlanks();
    const std::size_t begin = at_;
    while (at_ < text_.size() && IsNameCharacter(text_[at_])) ++at_;
    return text_.substr(begin, at_ - begin);
  }

  Tree Make(Kind kind, std::string_view op, std::size_t begin, Tree first = nullptr,
            Tree second = nullptr) const {
    auto node = std::make_unique<CNode>();
    node->kind = kind;
    node->op = op;
    node->begin = begin;
    node->end = at_;
    // Looking for what comes next has passed over blanks.
    while (node->end > begin && IsBlank(text_[node->end - 1])) --node->end;
    if (first) node->parts.push_back(std::move(first));
    if (second) node->parts.push_back(std::move(second));
    return node;
  }

  const Operator* NextOperator() {
    SkipBlanks();
    for (const Operator& candidate : kOperators) {
      if (text_.substr(at_).starts_with(candidate.text)) return &candidate;
    }
    return nullptr;
  }

  /// Everything that binds at least as tightly as `level`.
  Tree ReadLevel(int level) {
    if (++depth_ > kDeepest) return nullptr;
    Tree left = ReadUnary();
    while (left) {
      if (level <= kConditionalLevel && Take("?")) {
        left = ReadConditional(std::move(left));
        continue;
      }
      const Operator* next = NextOperator();
      if (next == nullptr || next->level < level) break;
      at_ += next->text.size();
      const bool assigns = next->level == kAssignmentLevel;
      Tree right = ReadLevel(assigns ? next->level : next->level + 1);
      if (!right) return nullptr;
      const Kind kind = assigns             ? Kind::kAssignment
                        : next->text == "," ? Kind::kComma
                                            : Kind::kBinary;
      const std::size_t begin = left->begin;
      left = Make(kind, next->text, begin, std::move(left), std::move(right));
    }
    --depth_;
    return left;
  }

  Tree ReadConditional(Tree condition) {
    Tree first = ReadLevel(1);
    if (!first || !Take(":")) return nullptr;
    Tree second = ReadLevel(kConditionalLevel);
    if (!second) return nullptr;
    const std::size_t begin = condition->begin;
    Tree node = Make(Kind::kConditional, "?:", begin, std::move(condition), std::move(first));
    node->parts.push_back(std::move(second));
    return node;
  }

  /// The type's name when a type in parentheses comes next, which is then behind.
  std::optional<std::string_view> TakeType() {
    SkipBlanks();
    if (!Starts("(")) return std::nullopt;
    const std::size_t end = text_.find(')', at_);
    if (end == text_.npos) return std::nullopt;
    const std::string_view name = text_.substr(at_ + 1, end - at_ - 1);
    for (const char c : name) {
      if (!IsNameCharacter(c) && !IsBlank(c) && c != '*') return std::nullopt;
    }
    if (!isType_(name)) return std::nullopt;
    at_ = end + 1;
    return name;
  }

  Tree ReadUnary() {
    if (++depth_ > kDeepest) return nullptr;
    Tree tree = ReadPrefixed();
    --depth_;
    return tree;
  }

  Tree ReadPrefixed() {
    SkipBlanks();
    const std::size_t begin = at_;
    for (const std::string_view op : {"++", "--", "+", "-", "~", "!", "&", "*"}) {
      if (!Take(op)) continue;
      Tree operand = ReadUnary();
      return operand ? Make(Kind::kUnary, op, begin, std::move(operand)) : nullptr;
    }
    if (const auto type = TakeType()) {
      Tree operand = ReadUnary();
      return operand ? Make(Kind::kCast, *type, begin, std::move(operand)) : nullptr;
    }
    const std::size_t before = at_;
    if (TakeWord() == "sizeof") {
      if (const auto type = TakeType()) return Make(Kind::kSizeofType, *type, begin);
      Tree operand = ReadUnary();
      return operand ? Make(Kind::kSizeof, "sizeof", begin, std::move(operand)) : nullptr;
    }
    at_ = before;
    return ReadPostfix();
  }

  Tree ReadPostfix() {
    Tree tree = ReadPrimary();
    while (tree) {
      const std::size_t begin = tree->begin;
      if (Take("[")) {
        Tree subscript = ReadLevel(1);
        if (!subscript || !Take("]")) return nullptr;
        tree = Make(Kind::kIndex, "[]", begin, std::move(tree), std::move(subscript));
      } else if (Starts("->") || Starts(".")) {
        const bool arrow = Take("->");
        if (!arrow) Take(".");
        const std::string_view name = TakeWord();
        if (name.empty() || IsDigit(name.front())) return nullptr;
        tree = Make(arrow ? Kind::kArrow : Kind::kMember, name, begin, std::move(tree));
      } else if (Starts("++") || Starts("--")) {
        const std::string_view op = text_.substr(at_, 2);
        at_ += 2;
        tree = Make(Kind::kPostfix, op, begin, std::move(tree));
      } else if (Starts("(")) {
        return nullptr;
      } else {
        break;
      }
    }
    return tree;
  }

  Tree ReadPrimary() {
    SkipBlanks();
    const std::size_t begin = at_;
    if (Take("(")) {
      Tree inner = ReadLevel(1);
      return inner && Take(")") ? Make(Kind::kGroup, "()", begin, std::move(inner)) : nullptr;
    }
    if (at_ == text_.size()) return nullptr;
    if (text_[at_] == '\'') {
      const auto constant = ReadCharacterConstant(text_.substr(at_));
      if (!constant) return nullptr;
      at_ += constant->length;
      return Make(Kind::kInteger, text_.substr(begin, at_ - begin), begin);
    }
    if (text_[at_] == '"') return ReadString();
    const bool point = text_[at_] == '.' && at_ + 1 < text_.size() && IsDigit(text_[at_ + 1]);
    if (IsDigit(text_[at_]) || point) return ReadNumber();
    const std::string_view name = TakeWord();
    return name.empty() ? nullptr : Make(Kind::kName, name, begin);
  }

  Tree ReadString() {
    const std::size_t begin = at_++;
    while (at_ < text_.size() && text_[at_] != '"') at_ += text_[at_] == '\\' ? 2 : 1;
    if (at_ >= text_.size()) return nullptr;
    ++at_;
    return Make(Kind::kString, text_.substr(begin, at_ - begin), begin);
  }

  Tree ReadNumber() {
    const std::size_t begin = at_;
    const bool hexadecimal = text_[at_] == '0' && at_ + 1 < text_.size() &&
                             (text_[at_ + 1] == 'x' || text_[at_ + 1] == 'X');
    bool floating = false;
    while (at_ < text_.size()) {
      const char c = text_[at_];
      const char last = at_ > begin ? text_[at_ - 1] : '\0';
      const bool exponent = !hexadecimal && (c == 'e' || c == 'E');
      const bool sign = !hexadecimal && (c == '+' || c == '-') && (last == 'e' || last == 'E');
      if (!IsNameCharacter(c) && c != '.' && !sign) break;
      floating = floating || c == '.' || exponent;
      ++at_;
    }
    const std::string_view number = text_.substr(begin, at_ - begin);
    return Make(floating ? Kind::kFloating : Kind::kInteger, number, begin);
  }

  std::string_view text_;
  const std::function<bool(std::string_view)>& isType_;
  std::size_t at_ = 0;
  int depth_ = 0;
};

}  // namespace

std::unique_ptr<CNode> ReadCExpression(std::string_view text,
                                       const std::function<bool(std::string_view)>& isType) {
  if (text.size() > kLongestTreeText) return nullptr;
  return Reader(text, isType).Run();
}

}  // namespace tool
