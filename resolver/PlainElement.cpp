// The short way from an element to its blocks, for what nearly every element is: operands with
// operators between them, where an operand is a name, a number, either with brackets behind it, or
// a sub-result. What the lexer and the relation pass do in several walks over texts of each block
// is done in one, and nothing is asked or said: any other element is left to them from its start.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "resolver/BinaryRow.h"
#include "resolver/CharacterClass.h"
#include "resolver/Markers.h"
#include "resolver/Operators.h"
#include "resolver/StringParametersResolving.h"
#include "resolver/SubResult.h"

namespace {

/// Takes the operators off the front of `*text`, up to an operand or the opening of a sub-result.
std::string_view TakeOperators(std::string_view* text, unsigned delimiters) {
  std::size_t count = 0;
  for (; count < text->size() && resolver::IsOf((*text)[count], delimiters); ++count) {
    if ((*text)[count] == resolver::kSubResultStart[0] &&
        text->substr(count).starts_with(resolver::kSubResultStart)) {
      break;
    }
  }
  const std::string_view operators = text->substr(0, count);
  text->remove_prefix(count);
  return operators;
}

/// Could a part of the operators be taken for a fence, together with what is around them?
bool MayHoldFence(std::string_view operators) {
  return operators.size() > 1 &&
         operators.find(resolver::kSubResultFence[0]) != std::string_view::npos;
}

/// An operand without the brackets behind it.
struct Operand {
  std::string_view name;
  std::string_view subscripts;
};

/// Takes an operand off the front of `*text`; one without a name is one that the lexer has more to
/// do for than to cut it out.
Operand TakeOperand(std::string_view* text, unsigned delimiters) {
  if (text->front() == '[' || text->front() == ']') return {};
  const unsigned special = delimiters | resolver::kSubResultOrSpace | resolver::kBracket;
  std::size_t length = 0;
  while (length < text->size() && !resolver::IsOf((*text)[length], special)) ++length;
  const std::string_view name = text->substr(0, length);
  // Groups in brackets, without brackets inside.
  char expected = '[';
  std::size_t end = length;
  for (; end < text->size() && !resolver::IsOf((*text)[end], delimiters); ++end) {
    const char c = (*text)[end];
    if (c == expected) {
      expected = c == '[' ? ']' : '[';
    } else if (expected == '[' || resolver::IsOf(c, special)) {
      return {};
    }
  }
  if (expected == ']') return {};
  const std::string_view subscripts = text->substr(length, end - length);
  text->remove_prefix(end);
  return {name, subscripts};
}

/// Sets a text that is most often empty.
void SetText(std::string_view from, std::string* to) {
  if (from.empty()) return to->clear();
  *to = from;
}

}  // namespace

/// Cuts an element into `areaBlocks`, linked, and sets the bits of the rows that have an operator
/// here, as `LinkBlocks` does. False for an element that takes the long way; what `areaBlocks` then
/// holds is of no use.
bool TStringResolver::CutPlainElement(std::string_view element, std::uint32_t* rows) {
  RelationCode relation = kFirstBlock;
  std::string_view operators = TakeOperators(&element, delimiterClass_);
  auto next = areaBlocks.begin();
  for (;;) {
    if (MayHoldFence(operators) || element.empty()) return false;
    AreaBlock& block = PrepareBlock(&next);
    if (resolver::IsOf(element.front(), delimiterClass_)) {
      resolver::SubResult subResult;
      if (!resolver::TakeSubResult(&element, &subResult)) return false;
      const DataLableType* const type = SavedType(subResult.position);
      if (type == nullptr) return false;
      block.AreaText = subResult.number;
      block.AfterText.clear();
      block.Type.Assign(*type);
      block.HasCastType = true;
    } else {
      const Operand operand = TakeOperand(&element, delimiterClass_);
      if (operand.name.empty()) return false;
      block.AreaText = operand.name;
      SetText(operand.subscripts, &block.AfterText);
    }
    SetText(operators, &block.BeforeText);
    block.Relation = relation;
    block.IsMemberName = relation == kMember || relation == kPointerMember;
    if (element.empty()) {
      SpareBlocks(next);
      return true;
    }

    operators = TakeOperators(&element, delimiterClass_);
    relation = resolver::OperatorOf(operators);
    if (relation == kNoOperator) return false;
    *rows |= 1U << resolver::RowOf(relation);
    // The rest are prefixes of the next operand.
    operators.remove_prefix(resolver::LengthOfOperator(static_cast<int>(relation)));
  }
}
