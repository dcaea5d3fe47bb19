#include "tools/resolve/MemberType.h"

#include <cstddef>
#include <optional>
#include <utility>

#include "targets/Error.h"
#include "targets/TypeNames.h"
#include "tools/resolve/ExpressionText.h"

namespace tool {
namespace {

constexpr std::size_t kNone = std::string_view::npos;
constexpr std::string_view kBlanks = " \t";
// A line that someone types is shorter. Finding the brackets costs time in the square of it.
constexpr std::size_t kLongestText = 4096;

std::string_view WithoutBlanks(std::string_view text) {
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == kNone) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

/// Position of the bracket that the one at the end of `text` closes.
std::size_t OpeningBracket(std::string_view text) {
  std::size_t depth = 0;
  for (std::size_t at = text.size(); at-- > 0;) {
    if (text[at] == ')' || text[at] == ']') ++depth;
    if ((text[at] == '(' || text[at] == '[') && --depth == 0) return at;
  }
  return kNone;
}

/// Position of the bracket that closes the one at the start of `text`.
std::size_t ClosingBracket(std::string_view text) {
  std::size_t depth = 0;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] == '(' || text[at] == '[') ++depth;
    if ((text[at] == ')' || text[at] == ']') && --depth == 0) return at;
  }
  return kNone;
}

/// `text`, which begins with an operand, up to the first operator between two operands. The sum of
/// a pointer and a number has the pointer's type, and the pointer stands on the left.
std::string_view LeftOperand(std::string_view text) {
  std::size_t depth = 0;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const char c = text[at];
    if (c == '(' || c == '[') {
      ++depth;
    } else if (c == ')' || c == ']') {
      --depth;
    } else if (depth == 0 && c == '-' && at + 1 < text.size() && text[at + 1] == '>') {
      ++at;
    } else if (depth == 0 && std::string_view("+-*/%&|^<>=!").find(c) != kNone) {
      return text.substr(0, at);
    }
  }
  return text;
}

/// A type: a record, and how many times its address was taken.
struct Typed {
  DataLableType record;
  std::size_t stars = 0;
};

class Walk {
 public:
  explicit Walk(targets::LabelSource& labels) : labels_(labels) {}

  std::optional<Typed> Run(std::string_view text) {
    std::optional<Typed> type = FindBase(text);
    while (type && !steps_.empty()) {
      type = Apply(steps_.back(), *std::move(type));
      steps_.pop_back();
    }
    return type;
  }

  std::vector<std::string> Members(DataLableType type) {
    std::vector<std::string> names;
    const std::optional<DataLableType> structure = Structure(std::move(type));
    if (!structure) return names;
    for (const DataLableType& member : structure->Members) {
      if (!member.Name.empty()) names.push_back(member.Name);
    }
    return names;
  }

 private:
  struct Step {
    enum class Kind { kDereference, kAddress, kMember };
    Kind kind;
    std::string member = {};
  };

  /// Goes from the end of `text` to the name or cast that its last operand is built on, and notes
  /// the steps that lead back, the last one first.
  std::optional<Typed> FindBase(std::string_view text) {
    while (true) {
      text = WithoutBlanks(text);
      if (text.empty()) return std::nullopt;
      const char last = text.back();
      if (last == ']' || last == ')') {
        const std::size_t open = OpeningBracket(text);
        if (open == kNone || (text[open] == '[') != (last == ']')) return std::nullopt;
        if (last == ']') {
          steps_.push_back({Step::Kind::kDereference});
          text = text.substr(0, open);
          continue;
        }
        // What stands between the parentheses is an expression of its own.
        text = text.substr(open + 1, text.size() - open - 2);
        if (std::optional<Typed> type = TakePrefixes(&text)) return type;
        text = LeftOperand(text);
        continue;
      }
      std::size_t start = text.size();
      while (start > 0 && IsNameCharacter(text[start - 1])) --start;
      const std::string_view name = text.substr(start);
      if (name.empty()) return std::nullopt;
      text = WithoutBlanks(text.substr(0, start));
      if (text.ends_with("->")) {
        // Applied in the other order: the arrow reads the pointer before the member is sought.
        steps_.push_back({Step::Kind::kMember, std::string(name)});
        steps_.push_back({Step::Kind::kDereference});
        text.remove_suffix(2);
      } else if (text.ends_with('.')) {
        steps_.push_back({Step::Kind::kMember, std::string(name)});
        text.remove_suffix(1);
      } else {
        const std::optional<targets::Label> label = labels_.FindLabel(name);
        if (!label || !label->typed) return std::nullopt;
        return Typed{label->type};
      }
    }
  }

  /// Takes the operators before the operand off `text`. The answer is the type of a cast: what
  /// stands behind it does not matter any more.
  std::optional<Typed> TakePrefixes(std::string_view* text) {
    while (true) {
      *text = WithoutBlanks(*text);
      if (text->starts_with('*')) {
        steps_.push_back({Step::Kind::kDereference});
      } else if (text->starts_with('&')) {
        steps_.push_back({Step::Kind::kAddress});
      } else {
        return text->starts_with('(') ? CastType(*text) : std::nullopt;
      }
      text->remove_prefix(1);
    }
  }

  std::optional<Typed> CastType(std::string_view text) {
    const std::size_t close = ClosingBracket(text);
    if (close == kNone || close + 1 == text.size()) return std::nullopt;
    const auto known = [this](std::string_view base) { return labels_.HasType(base); };
    const auto name = targets::CanonicalTypeName(text.substr(1, close - 1), known);
    if (!name) return std::nullopt;
    std::optional<DataLableType> record = labels_.FindType(name->base);
    if (!record) return std::nullopt;
    return Typed{*std::move(record), name->stars};
  }

  std::optional<Typed> Apply(const Step& step, Typed type) {
    switch (step.kind) {
      case Step::Kind::kAddress:
        ++type.stars;
        return type;
      case Step::Kind::kDereference:
        if (type.stars > 0) {
          --type.stars;
          return type;
        }
        if (!type.record.IsPointer && !type.record.IsArray) return std::nullopt;
        if (type.record.Members.empty()) return std::nullopt;
        return Typed{DataLableType(std::as_const(type.record).Members.front())};
      case Step::Kind::kMember:
        break;
    }
    if (type.stars > 0) return std::nullopt;
    const std::optional<DataLableType> structure = Structure(std::move(type.record));
    if (!structure) return std::nullopt;
    for (const DataLableType& member : structure->Members) {
      if (member.Name == step.member) return Typed{member};
    }
    return std::nullopt;
  }

  /// The full record of the structure that `type` stands for: a field of structure type holds what
  /// stands for its structure as its only member, and that is a name.
  std::optional<DataLableType> Structure(DataLableType type) {
    if (type.IsPointer || type.IsArray) return std::nullopt;
    if (type.NestedTypes.empty() && type.Members.size() == 1 &&
        !std::as_const(type).Members.front().NestedTypes.empty() &&
        std::as_const(type).Members.front().Members.empty()) {
      type = DataLableType(std::as_const(type).Members.front());
    }
    if (!type.Members.empty()) return type;
    if (type.NestedTypes.empty()) return std::nullopt;
    return labels_.FindType(std::as_const(type).NestedTypes.front());
  }

  targets::LabelSource& labels_;
  std::vector<Step> steps_;
};

}  // namespace

std::vector<std::string> MembersBehind(targets::LabelSource& labels, std::string_view text,
                                       MemberAccess access) {
  if (text.size() > kLongestText) return {};
  try {
    Walk walk(labels);
    std::optional<Typed> type = walk.Run(text);
    if (!type) return {};
    if (access == MemberAccess::kPoint) {
      return type->stars == 0 ? walk.Members(std::move(type->record)) : std::vector<std::string>{};
    }
    if (type->stars > 0) {
      return type->stars == 1 ? walk.Members(std::move(type->record)) : std::vector<std::string>{};
    }
    const DataLableType& record = type->record;
    if (!(record.IsPointer || record.IsArray) || record.Members.empty()) return {};
    return walk.Members(DataLableType(record.Members.front()));
  } catch (const targets::Error&) {
    // Whoever evaluates the line will be told.
    return {};
  }
}

}  // namespace tool
