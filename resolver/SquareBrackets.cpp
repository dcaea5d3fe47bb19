#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "resolver/CharacterClass.h"
#include "resolver/Owed.h"
#include "resolver/StringParametersResolving.h"

namespace {

/// Subscripts are reduced before they get here, so a nested resolver meets a plain value. Only a
/// text with ")" right behind "[" nests resolvers; this many take some 250 kB of the machine's
/// stack. One more fails like any subscript that cannot be resolved.
constexpr int kDeepestNesting = 100;

enum class BracketMatch { kFound, kNoClose, kWrongOrder, kRefused };

/// Takes every top-level group out of `*text`, from an `open` to the `close` that matches it, which
/// list characters. `take` gets each with its brackets, in order, and ends the walk by returning
/// false; then, or when brackets do not match, the groups so far are gone from `*text`.
///
/// A close before the first open bracket, but for one at position 0, is in the wrong order: that is
/// what tells misplaced brackets from missing ones.
template <typename Take>
BracketMatch TakeGroups(std::string* text, const char* open, const char* close, Take take) {
  std::string kept;
  std::size_t copied = 0;
  std::size_t checked = 1;
  auto match = BracketMatch::kFound;
  std::size_t first = 0;
  while ((first = text->find_first_of(open, copied)) != std::string::npos) {
    kept.append(*text, copied, first - copied);
    copied = first;
    if (kept.find_first_of(close, std::exchange(checked, std::max(checked, kept.size()))) !=
        std::string::npos) {
      match = BracketMatch::kWrongOrder;
      break;
    }
    std::size_t last = first;
    std::size_t nested = first;
    do {
      last = text->find_first_of(close, last + 1);
      nested = text->find_first_of(open, nested + 1);
    } while (last != std::string::npos && nested != std::string::npos && nested <= last);
    if (last == std::string::npos) {
      match = BracketMatch::kNoClose;
      break;
    }
    copied = last + 1;
    if (!take(std::string_view(*text).substr(first, copied - first))) {
      match = BracketMatch::kRefused;
      break;
    }
  }
  kept.append(*text, copied);
  text->swap(kept);
  return match;
}

/// Is the text nothing but groups in brackets, without brackets inside? Most subscripts are.
bool IsRowOfGroups(std::string_view text) {
  bool inside = false;
  for (const char c : text) {
    if (c == (inside ? ']' : '[')) {
      inside = !inside;
    } else if (!inside || c == '[') {
      return false;
    }
  }
  return !inside;
}

}  // namespace

/// The values of a block's subscripts; more than a few are rare enough for the heap.
class TStringResolver::Subscripts {
 public:
  void Add(std::uint64_t value) {
    if (count_ < few_.size()) {
      few_[count_] = value;
    } else {
      more_.push_back(value);
    }
    ++count_;
  }
  [[nodiscard]] std::size_t Count() const { return count_; }
  std::uint64_t operator[](std::size_t i) const {
    return i < few_.size() ? few_[i] : more_[i - few_.size()];
  }

 private:
  std::size_t count_ = 0;
  std::array<std::uint64_t, 4> few_{};
  std::vector<std::uint64_t> more_;
};

bool TStringResolver::FindStringParameter(std::string* source, std::string* collected,
                                          const char* open, const char* close) {
  std::string groups;
  const auto keep = [&groups](std::string_view group) {
    groups += group;
    return true;
  };
  switch (TakeGroups(source, open, close, keep)) {
    case BracketMatch::kNoClose:
      return Fail("Can`t find ']' symbol");
    case BracketMatch::kWrongOrder:
      return Fail("Symbols '[' and ']' are placed in wrong order");
    default:
      collected->insert(0, groups);
      return true;
  }
}

/// Moves the subscripts of an operand from its text to the front of `AfterText`.
bool TStringResolver::SplitSubscripts(AreaBlock* block) {
  std::string& area = block->AreaText;
  const std::size_t first = std::min(resolver::FindClass(area, 0, resolver::kBracket), area.size());
  const std::string_view groups = std::string_view(area).substr(first);
  if (!IsRowOfGroups(groups)) return FindStringParameter(&area, &block->AfterText, "[", "]");
  block->AfterText.insert(0, groups);
  area.resize(first);
  return true;
}

/// Applies the subscripts in the block's `AfterText`.
bool TStringResolver::IndexBlock(AreaBlock* block) {
  if (!block->AfterText.empty() && !ApplySubscripts(block)) return false;
  resolver::OweValue(block);
  return true;
}

/// Evaluates the subscripts and moves the block to the element that they select. All are evaluated
/// before the first is applied, so a failing one leaves the block's value as it was.
bool TStringResolver::ApplySubscripts(AreaBlock* block) {
  Subscripts subscripts;
  if (!SolveSubscripts(&block->AfterText, &subscripts)) return false;
  if (subscripts.Count() == 0) return true;
  // A read that is refused leaves the block's own address, and the subscripts are applied to that.
  if (resolver::IsAddress(*block)) ReadThroughAddress(block);
  for (std::size_t i = 0; i < subscripts.Count(); ++i) {
    if (i > 0) ReadThroughAddress(block);
    const DataLableType& type = block->Type;
    const std::uint32_t elementSize = type.IsArray ? FirstMember(type).Size : type.Size;
    block->Value += subscripts[i] * elementSize;
  }
  // The type stays the array's until the element is read; the number tells which of both it is.
  const DataLableType& array = block->Type;
  resolver::OwePointer(block, array.IsArray ? FirstMember(array).TypeNumber : 0);
  block->ReferenceLevel = -1;
  return true;
}

/// Takes every bracket group out of `*text` and evaluates it.
bool TStringResolver::SolveSubscripts(std::string* text, Subscripts* subscripts) {
  // Groups at the text's start without brackets inside, which nearly all are, match as they stand.
  std::size_t taken = 0;
  bool solved = true;
  while (solved && taken < text->size() && (*text)[taken] == '[') {
    const std::size_t last = resolver::FindClass(*text, taken + 1, resolver::kBracket);
    if (last == std::string::npos || (*text)[last] == '[') break;
    const std::string_view subscript = std::string_view(*text).substr(taken + 1, last - taken - 1);
    if (resolver::IsPlainOperand(subscript) && nesting_ < kDeepestNesting) {
      // The host takes texts that end with a NUL.
      (*text)[last] = '\0';
      solved = SolvePlainSubscript(subscript.data(), subscripts);
      (*text)[last] = ']';
    } else {
      solved = SolveSubscript(subscript, subscripts);
    }
    taken = last + 1;
  }
  const bool isDone = taken == text->size();
  text->erase(0, taken);
  if (!solved || isDone) return solved;
  const auto solve = [&](std::string_view group) {
    return SolveSubscript(group.substr(1, group.size() - 2), subscripts);
  };
  switch (TakeGroups(text, "[", "]", solve)) {
    case BracketMatch::kNoClose:
      return Fail("Can`t find ending quote ']'");
    case BracketMatch::kWrongOrder:
      return Fail("Quotes are placed in wrong order");
    case BracketMatch::kRefused:
      return false;
    case BracketMatch::kFound:
      break;
  }
  return true;
}

/// What a nested resolver does with a text that is one operand without operators, as nearly every
/// subscript is by now: a third of the instructions that building and running one takes.
bool TStringResolver::SolvePlainSubscript(const char* subscript, Subscripts* subscripts) {
  const std::string file = parentInterface->GetFileName();
  bool undefined = false;
  bool confirmed = false;
  parentInterface->LabelTyped = false;
  static const DataLableType kDefault;
  parentInterface->LabelType.Assign(kDefault);
  const std::uint64_t value = parentInterface->FindLabel(subscript, &undefined, &confirmed);
  if (undefined) return false;
  if (!parentInterface->LabelTyped) {
    subscripts->Add(value);
    return true;
  }
  // A host that types its numerals.
  TStringResolver nested(parentInterface, file);
  AreaBlock operand;
  operand.Value = value;
  operand.Type.Assign(parentInterface->LabelType);
  operand.HasCastType = true;
  resolver::OweValue(&operand);
  resolver::OwePointer(&operand);
  if (!nested.StoreResult(&operand)) return false;
  subscripts->Add(nested.resultValue);
  return true;
}

/// Evaluates the text of one subscript with a resolver of its own.
bool TStringResolver::SolveSubscript(std::string_view subscript, Subscripts* subscripts) {
  if (subscript.empty()) return Fail("Quotes are empty");
  if (nesting_ == kDeepestNesting) return false;
  if (resolver::IsPlainOperand(subscript)) {
    return SolvePlainSubscript(std::string(subscript).c_str(), subscripts);
  }
  TStringResolver nested(parentInterface);
  nested.nesting_ = nesting_ + 1;
  nested.spareBlocks_.swap(spareBlocks_);
  const bool solved = nested.SolveStringOfElements(subscript);
  spareBlocks_.swap(nested.spareBlocks_);
  spareBlocks_.splice(spareBlocks_.end(), nested.areaBlocks);
  if (solved) subscripts->Add(nested.resultValue);
  return solved;
}
