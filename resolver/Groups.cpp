// Groups: what stands in parentheses, and in brackets, is evaluated first, the last and innermost
// one before all others, and takes part in the rest as an encoded sub-result.

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "resolver/CharacterClass.h"
#include "resolver/GapText.h"
#include "resolver/Markers.h"
#include "resolver/Owed.h"
#include "resolver/StringParametersResolving.h"
#include "resolver/SubResult.h"
#include "resolver/ValueText.h"

namespace {

/// How deep in parentheses the end of a text is that loses characters from its end.
class Nesting {
 public:
  explicit Nesting(std::string_view text) {
    for (const char c : text) {
      depth_ += DepthOf(c);
      // What follows a stray closing one cannot be told by counting.
      regular_ = regular_ && depth_ >= 0;
    }
  }
  void Leave(std::string_view end) {
    for (const char c : end) depth_ -= DepthOf(c);
  }
  [[nodiscard]] bool Outermost() const { return regular_ && depth_ == 0; }

 private:
  static int DepthOf(char c) { return c == '(' ? 1 : c == ')' ? -1 : 0; }

  long depth_ = 0;
  bool regular_ = true;
};

/// Do these texts put what is between them in the first brackets of an operand? Not of one with
/// marks in it, which are read before brackets are joined, nor of one behind a parenthesis: an
/// empty group vanishes and joins what is around it.
bool IsFirstSubscript(std::string_view before, std::string_view behind, unsigned delimiters) {
  constexpr unsigned kUnfit =
      resolver::kBracket | resolver::kSubResultOrSpace | resolver::kParenthesis;
  if (!before.ends_with('[') || !behind.starts_with(']')) return false;
  const std::size_t bracket = before.size() - 1;
  std::size_t operand = bracket;
  while (operand > 0 && !resolver::IsOf(before[operand - 1], delimiters)) {
    --operand;
    if (resolver::IsOf(before[operand], kUnfit)) return false;
  }
  return operand < bracket;
}

/// Is the text nothing but operators that no part of a sub-result's encoding can be taken for?
bool IsPrefix(std::string_view text, unsigned delimiters) {
  for (const char c : text) {
    if (!resolver::IsOf(c, delimiters) || c == resolver::kSubResultFence[0]) return false;
  }
  return true;
}

/// Puts the number of a first subscript behind the gap, and takes the fences off the further
/// subscripts of numbers that follow it: "][" and a sub-result each. The lexer would join all of
/// them to the operand, at three times the cost.
void JoinSubscripts(std::uint64_t number, resolver::GapText* text) {
  std::string joined = resolver::WriteUnsigned(number);
  std::string_view rest = text->Behind();
  while (rest.starts_with("][")) {
    std::string_view behind = rest.substr(2);
    resolver::SubResult next;
    if (!behind.starts_with(resolver::kSubResultStart)) break;
    if (!resolver::TakeSubResult(&behind, &next) || !behind.starts_with(']')) break;
    joined.append("][").append(next.number);
    rest = behind;
  }
  text->DropBehind(text->Behind().size() - rest.size());
  text->PutBehind(joined);
}

/// Writes each bracket with a parenthesis inside it, so that every subscript is a group. Returns
/// whether brackets open and close in turn.
bool GroupSubscripts(std::string_view text, resolver::GapText* grouped) {
  bool inTurn = true;
  char expected = '[';
  std::size_t copied = 0;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const char c = text[at];
    if (c != '[' && c != ']') continue;
    grouped->PutBefore(text.substr(copied, at - copied));
    grouped->PutBefore(c == '[' ? "[(" : ")]");
    copied = at + 1;
    inTurn = inTurn && c == expected;
    expected = c == '[' ? ']' : '[';
  }
  grouped->PutBefore(text.substr(copied));
  return inTurn;
}

}  // namespace

/// Evaluates the innermost group, the last one, until no group is left, and then what is left.
/// `classes` are those of the text's characters.
bool TStringResolver::SolveGroups(std::string_view expression, unsigned classes) {
  resolver::GapText grouped;
  resolver::GapText* const text = &grouped;
  const bool hasBrackets = (classes & resolver::kBracket) != 0;
  bool nests = (classes & resolver::kParenthesis) != 0;
  if (hasBrackets) {
    nests = !GroupSubscripts(expression, text) || nests;
  } else {
    text->PutBefore(expression);
  }
  std::size_t open = 0;
  // Only what stands in brackets is treated differently inside of a group.
  nests = nests && hasBrackets;
  Nesting nesting(nests ? text->Before() : std::string_view());
  while ((open = text->Before().rfind('(')) != std::string_view::npos) {
    if (nests) nesting.Leave(text->Before().substr(open));
    text->MoveGap(open);
    const std::size_t close = text->Behind().find(')');
    if (close == std::string_view::npos) return Fail("Can`t find the end quote.");
    if (close == 1) {
      text->DropBehind(2);
      continue;
    }
    const std::string_view group = text->Behind().substr(1, close - 1);
    if (parentInterface->IsTypeName(std::string(group))) {
      std::string cast(group);
      resolver::MarkStars(&cast);
      if (RegisterType(&cast)) return false;
      text->DropBehind(close + 1);
      text->PutBehind(cast);
      continue;
    }
    if (!SolveElement(group)) return false;
    text->DropBehind(close + 1);
    AreaBlock& result = areaBlocks.front();
    resolver::WriteOwedPointer(&result);
    savedTypes.push_back(result.Type);
    const bool isPlain =
        result.Owed == OwedText::kInteger && result.ValueKind == 0 && result.MemorySpace == 0;
    if (isPlain && IsPrefix(text->Before(), delimiterClass_) && text->Behind().empty()) {
      return SolvePrefixed(text->Before());
    }
    // Not inside of a group, whose text the host gets to see.
    if (isPlain && hasBrackets && nesting.Outermost() &&
        IsFirstSubscript(text->Before(), text->Behind(), delimiterClass_)) {
      JoinSubscripts(result.OwedNumber, text);
    } else {
      PutSubResult(&result, text);
    }
  }
  const std::string_view element = text->Join();
  return !element.empty() && SolveElement(element);
}

/// Puts the encoded form of a sub-result behind the gap. Its type is the last that was saved.
void TStringResolver::PutSubResult(AreaBlock* result, resolver::GapText* text) {
  resolver::WriteOwedText(result);
  if (result->ValueKind != 0) CheckFloatingPointStr(&result->AreaText);
  std::array<char, 20> digits;
  text->PutBehind(resolver::kSubResultFence);
  text->PutBehind(result->AreaText);
  if (result->MemorySpace != 0) text->PutBehind({&resolver::kMemorySpaceMark, 1});
  text->PutBehind({&resolver::kSubResultClose, 1});
  text->PutBehind(resolver::WriteUnsigned(savedTypes.size() - 1, &digits));
  text->PutBehind(resolver::kSubResultStart);
}

/// Evaluates prefix operators in front of the sub-result that `areaBlocks` holds, which is all that
/// an element of its encoded form would do: `sizeof(s)` in 3 000 instructions instead of 3 600.
bool TStringResolver::SolvePrefixed(std::string_view operators) {
  AreaBlock& block = areaBlocks.front();
  resolver::WriteOwedText(&block);
  ResetBlock(&block);
  block.BeforeText = operators;
  block.AfterText.clear();
  // Its type is the one that was saved for it.
  block.HasCastType = true;
  return RunRows(&areaBlocks, 0);
}
