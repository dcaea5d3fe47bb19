#include <bit>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>
#include <string_view>

#include "resolver/BinaryRow.h"
#include "resolver/CharacterClass.h"
#include "resolver/Markers.h"
#include "resolver/Operators.h"
#include "resolver/Owed.h"
#include "resolver/SparePool.h"
#include "resolver/StringParametersResolving.h"

namespace {

constexpr int kMemberAccessRow = 1;
/// Among the bits of the rows that occur, which the binary rows have from bit 1 up.
constexpr std::uint32_t kMemberRowBit = 1;

/// Erases the first fence until none is left; what an erasure brings together may be one as well.
void EraseFences(std::string* text) {
  if (text->size() < resolver::kSubResultFence.size()) return;
  if (*text == resolver::kSubResultFence) return text->clear();
  if (text->find(resolver::kSubResultFence) == std::string::npos) return;
  std::string kept;
  for (const char c : *text) {
    kept += c;
    if (kept.ends_with(resolver::kSubResultFence)) {
      kept.resize(kept.size() - resolver::kSubResultFence.size());
    }
  }
  text->swap(kept);
}

/// An operand and the operators around it, as they stand in the element.
struct LexicalBlock {
  std::string_view before;
  std::string_view area;
  std::string_view after;
};

/// One step of the lexer, as `GetFirstLexicalBlockStartingFromPos`.
bool TakeLexicalBlock(std::string_view text, unsigned delimiters, unsigned long* pos,
                      LexicalBlock* block) {
  if (*pos == std::string::npos) return false;
  const std::size_t start = resolver::FindClass(text, *pos, delimiters, false);
  if (start == std::string::npos) return false;
  block->before = text.substr(*pos, start - *pos);
  const std::size_t end = resolver::FindClass(text, start + 1, delimiters, true);
  block->area = text.substr(start, end - start);
  block->after = {};
  *pos = std::string::npos;
  if (end == std::string::npos) return true;
  const std::size_t next = resolver::FindClass(text, end + 1, delimiters, false);
  block->after = text.substr(end, next - end);
  // The run stays ahead of the position: the next block gets it once more, as its `before`. The
  // binary operator is read from the one copy, the next operand's prefix operators from the other.
  if (next != std::string::npos) *pos = end;
  return true;
}

/// Reads that a binary row makes for a block before it looks at the operator.
bool OwesRead(const AreaBlock& block) {
  return resolver::IsAddress(block) || block.Type.IsArray;
}

}  // namespace

bool TStringResolver::GetFirstLexicalBlockStartingFromPos(std::string_view text, unsigned long* pos,
                                                          std::string* before, std::string* area,
                                                          std::string* after) {
  LexicalBlock block;
  if (!TakeLexicalBlock(text, delimiterClass_, pos, &block)) return false;
  before->append(block.before);
  area->append(block.area);
  after->append(block.after);
  return true;
}

/// As `SolveBasicElement`; the blocks that it leaves may owe texts and types.
bool TStringResolver::SolveElement(std::string_view element) {
  elementFlag = false;
  if (resolver::IsPlainOperand(element)) {
    AreaBlock& block = PutBlock(element);
    if (!LookUpLabel(&block)) return false;
    TypeOperand(&block);
    resolver::OweValue(&block);
    return true;
  }
  std::uint32_t rows = 0;
  if (CutPlainElement(element, &rows)) return RunRows(&areaBlocks, rows);
  SpareBlocks(areaBlocks.begin());
  return CutElement(element) && EvaluateBlocks(&areaBlocks);
}

/// Cuts any element into `areaBlocks`, or says what is wrong with it.
bool TStringResolver::CutElement(std::string_view element) {
  const bool mayHoldFences = element.find(resolver::kSubResultFence[0]) != std::string_view::npos;
  const bool mayHoldSubResults = element.find(resolver::kSubResultOpen) != std::string_view::npos;
  unsigned long position = 0;
  LexicalBlock lexical;
  while (TakeLexicalBlock(element, delimiterClass_, &position, &lexical)) {
    AreaBlock& block = PrepareSpareBlock();
    block.Type.Assign(defaultType);
    block.BeforeText = lexical.before;
    block.AreaText = lexical.area;
    block.AfterText = lexical.after;
    if (mayHoldFences) {
      EraseFences(&block.AfterText);
      EraseFences(&block.BeforeText);
    }
    if (mayHoldSubResults && !TakeSavedTypes(&block)) return false;
    if (!AddSpareBlock()) return false;
  }
  if (areaBlocks.empty()) return Fail("Missing an address in the string");
  return true;
}

/// Makes one block of `areaBlocks`, which has no operators.
AreaBlock& TStringResolver::PutBlock(std::string_view operand) {
  auto next = areaBlocks.begin();
  AreaBlock& block = PrepareBlock(&next);
  SpareBlocks(next);
  block.BeforeText.clear();
  block.AreaText = operand;
  block.AfterText.clear();
  return block;
}

/// The block of `areaBlocks` at `*next`, which moves on, reset but for its texts and type; at their
/// end, one more. Blocks are kept for the elements to come, so a resolution allocates no more of
/// them than its longest element has.
AreaBlock& TStringResolver::PrepareBlock(std::list<AreaBlock>::iterator* next) {
  if (*next == areaBlocks.end()) {
    if (!spareBlocks_.empty()) {
      areaBlocks.splice(areaBlocks.end(), spareBlocks_, spareBlocks_.begin());
    } else if (!resolver::TakeSpareBlock(&areaBlocks)) {
      areaBlocks.emplace_back();
    }
    *next = std::prev(areaBlocks.end());
  }
  AreaBlock& block = **next;
  ++*next;
  ResetBlock(&block);
  return block;
}

/// The first spare block, reset but for its texts and type; one is made when there is none.
AreaBlock& TStringResolver::PrepareSpareBlock() {
  if (spareBlocks_.empty() && !resolver::TakeSpareBlock(&spareBlocks_)) spareBlocks_.emplace_back();
  AreaBlock& block = spareBlocks_.front();
  ResetBlock(&block);
  return block;
}

/// Takes the blocks from `first` on out of use; they stay for elements to come.
void TStringResolver::SpareBlocks(std::list<AreaBlock>::iterator first) {
  if (first == areaBlocks.end()) return;
  spareBlocks_.splice(spareBlocks_.end(), areaBlocks, first, areaBlocks.end());
}

/// Makes the block one that no row has seen, but for its texts and type.
void TStringResolver::ResetBlock(AreaBlock* block) {
  block->ReferenceLevel = -1;
  block->MemorySpace = 0;
  block->IsMemberName = false;
  block->Value = 0;
  block->Relation = kFirstBlock;
  block->MemberBlock = nullptr;
  block->IsConsumed = false;
  block->CastType.Assign(defaultType);
  block->HasCastType = false;
  block->ValueKind = 0;
  block->FloatValue = 0.0F;
  block->DoubleValue = 0.0;
  block->Owed = OwedText::kNone;
  block->OwesPointer = false;
}

/// Removes the references of sub-results from the block's text and gives it their type. A
/// sub-result right after "[" is a subscript: it is worth its value only.
bool TStringResolver::TakeSavedTypes(AreaBlock* block) {
  std::string& area = block->AreaText;
  std::size_t open = 0;
  while ((open = area.find(resolver::kSubResultOpen)) != std::string::npos) {
    const std::size_t close = area.find(resolver::kSubResultClose, open);
    if (close == std::string::npos) return Fail("Can`t find the ending curly bracket");
    const bool isSubscript = open > 0 && area[open - 1] == '[';
    const std::string_view reference = std::string_view(area).substr(open + 1, close - open - 1);
    if (!isSubscript && !ProcessAreaAsType(block, reference)) return Fail("Unknown type");
    area.erase(open, close + 1 - open);
  }
  return true;
}

/// Appends the first spare block to `areaBlocks`, or joins its text to the block that it is a
/// subscript's part of.
bool TStringResolver::AddSpareBlock() {
  AreaBlock& block = spareBlocks_.front();
  if (block.AreaText.starts_with(']')) {
    if (areaBlocks.size() < 2) return Fail("Address before square brackets isn`t defined");
    AreaBlock& subscript = areaBlocks.back();
    AreaBlock& indexed = *std::prev(areaBlocks.end(), 2);
    subscript.AreaText += block.AreaText;
    subscript.AfterText = block.AfterText;
    if (indexed.AreaText.ends_with('[')) {
      indexed.AreaText += subscript.AreaText;
      indexed.AfterText += subscript.AfterText;
      SpareBlock(&areaBlocks, std::prev(areaBlocks.end()));
      return true;
    }
    // No bracket is open: the text counts as the end of the last block and as a block of its own.
  }
  if (block.AreaText.starts_with('[')) {
    if (areaBlocks.empty()) return Fail("Address before square brackets isn`t defined");
    areaBlocks.back().AfterText += block.AreaText + block.AfterText;
    return true;
  }
  areaBlocks.splice(areaBlocks.end(), spareBlocks_, spareBlocks_.begin());
  return true;
}

/// Takes a block out of use; it stays for elements to come.
void TStringResolver::SpareBlock(std::list<AreaBlock>* blocks, std::list<AreaBlock>::iterator it) {
  spareBlocks_.splice(spareBlocks_.begin(), *blocks, it);
}

/// Links the blocks and runs the rows over them.
bool TStringResolver::EvaluateBlocks(std::list<AreaBlock>* blocks) {
  blocks->front().Relation = kFirstBlock;
  std::uint32_t rows = 0;
  if (blocks->size() > 1 && !LinkBlocks(blocks, &rows)) return false;
  return RunRows(blocks, rows);
}

/// Runs the rows over linked blocks. `rows` has the bits of those that have an operator here.
bool TStringResolver::RunRows(std::list<AreaBlock>* blocks, std::uint32_t rows) {
  for (AreaBlock& block : *blocks) {
    if (!EvaluateOperand(&block)) return false;
  }
  if ((rows & kMemberRowBit) != 0 && !FoldMembers(blocks)) return false;
  for (AreaBlock& block : *blocks) {
    // Without operators the row would only write an operand's value once more.
    const bool plain = block.BeforeText.empty() && block.AfterText.empty() &&
                       block.ValueKind == 0 && !block.IsMemberName;
    if (!plain && !ApplyPrefixes(&block)) return false;
  }
  return FoldOperators(blocks, rows);
}

/// Gives each block but the first the code of the operator to its left. Sets the bit of each binary
/// row that has an operator here, and bit 0 when there is a member access.
bool TStringResolver::LinkBlocks(std::list<AreaBlock>* blocks, std::uint32_t* rows) {
  auto current = blocks->begin();
  for (;;) {
    const int relation = GetAfterRelations(&current);
    auto left = current++;
    if (current == blocks->end()) return true;
    if (!CheckBeforeRelations(&current, relation, left->AfterText)) return false;
    *rows |= 1U << resolver::RowOf(current->Relation);
    if (!ProcessTypeRelations(&left, &current, relation)) return false;
  }
}

/// Runs the member row over the neighbours, from left to right.
bool TStringResolver::FoldMembers(std::list<AreaBlock>* blocks) {
  auto left = blocks->begin();
  auto right = std::next(left);
  while (right != blocks->end()) {
    const int relation = static_cast<int>(right->Relation);
    const int result = FoldMember(&*left, &*right, relation, kMemberAccessRow);
    if (result == kPairFailed) return false;
    if (result == kPairFolded) {
      SpareBlock(blocks, right);
    } else {
      ++left;
    }
    right = std::next(left);
  }
  return true;
}

/// Runs the binary rows over the neighbours. A row meets every pair, and before it looks at the
/// operator it makes the reads that the pair owes; a fold starts its scan again at the first pair,
/// which is what makes the operators of a row associate to the left. Neither is done where it would
/// change nothing: a row without operators is skipped when no block owes a read, and a scan goes on
/// with the folded block when none that it has passed does. So the work is one walk for each row
/// that occurs: 100 000 terms of a sum take 10 times what 10 000 take, not 100 times.
bool TStringResolver::FoldOperators(std::list<AreaBlock>* blocks, std::uint32_t rows) {
  if (blocks->size() == 1) return true;
  bool anyOwesRead = true;
  for (int row = 1; row <= resolver::kBinaryRows; ++row) {
    if (!anyOwesRead) {
      const std::uint32_t further = rows >> row;
      if (further == 0) break;
      row += std::countr_zero(further);
    }
    bool passedOwesRead = false;
    auto left = blocks->begin();
    auto right = std::next(left);
    while (right != blocks->end()) {
      const int relation = static_cast<int>(right->Relation);
      const int ownRow = resolver::RowOf(right->Relation);
      int result = kPairNotMine;
      if (ownRow == row || ownRow == 0) {
        result = FoldBinary(&*left, &*right, relation, row);
      } else if (OwesRead(*left) || OwesRead(*right)) {
        FetchOperands(&*left, &*right);
      }
      if (result == kPairFailed) return false;
      if (result == kPairFolded) {
        SpareBlock(blocks, right);
        if (passedOwesRead || OwesRead(*left)) {
          left = blocks->begin();
          passedOwesRead = false;
        }
      } else {
        passedOwesRead = passedOwesRead || OwesRead(*left);
        ++left;
      }
      right = std::next(left);
    }
    anyOwesRead = passedOwesRead || OwesRead(*left);
  }
  return true;
}

int TStringResolver::GetAfterRelations(std::list<AreaBlock>::iterator* it) {
  std::string& after = (*it)->AfterText;
  const RelationCode relation = resolver::OperatorOf(after);
  if (relation != kNoOperator) after.clear();
  return static_cast<int>(relation);
}

bool TStringResolver::CheckBeforeRelations(std::list<AreaBlock>::iterator* it, int relation,
                                           const std::string& /*afterText*/) {
  AreaBlock& block = **it;
  block.Relation = static_cast<std::uint32_t>(relation);
  if (relation == kNoRelation || relation == kFirstBlock || relation == kNoOperator) {
    return Fail("Internal error. Wrong relations between arguments");
  }
  block.IsMemberName = relation == kMember || relation == kPointerMember;
  block.BeforeText.erase(0, resolver::LengthOfOperator(relation));
  return true;
}

bool TStringResolver::ProcessTypeRelations(std::list<AreaBlock>::iterator* left,
                                           std::list<AreaBlock>::iterator* right,
                                           int /*relation*/) {
  AreaBlock& typed = **left;
  if (!typed.AreaText.empty()) return true;
  AreaBlock& operand = **right;
  operand.Type.Swap(typed.Type);
  operand.HasCastType = typed.HasCastType;
  operand.BeforeText.insert(0, typed.BeforeText);
  areaBlocks.erase(*left);
  return true;
}
