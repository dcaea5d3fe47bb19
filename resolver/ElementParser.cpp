#include <cstddef>
#include <iterator>
#include <string>
#include <string_view>

#include "resolver/Markers.h"
#include "resolver/StringParametersResolving.h"

namespace {

constexpr int kMemberRows = 3;
constexpr int kBinaryRows = 11;

/// Erases the first fence until none is left; what an erasure brings together may be one as well.
void EraseFences(std::string* text) {
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

/// One step of the lexer, as `GetFirstLexicalBlockStartingFromPos`.
bool TakeLexicalBlock(std::string_view text, const char* delimiters, unsigned long* pos,
                      std::string* before, std::string* area, std::string* after) {
  if (*pos == std::string::npos) return false;
  const std::size_t start = text.find_first_not_of(delimiters, *pos);
  if (start == std::string::npos) return false;
  before->append(text.substr(*pos, start - *pos));
  const std::size_t end = text.find_first_of(delimiters, start + 1);
  area->append(text.substr(start, end - start));
  *pos = std::string::npos;
  if (end == std::string::npos) return true;
  const std::size_t next = text.find_first_not_of(delimiters, end + 1);
  after->append(text.substr(end, next - end));
  // The run stays ahead of the position: the next block gets it once more, as its `before`. The
  // binary operator is read from the one copy, the next operand's prefix operators from the other.
  if (next != std::string::npos) *pos = end;
  return true;
}

struct Operator {
  std::string_view text;
  RelationCode code;
};

// Looked up in this order: the two-character operators win over their first characters.
constexpr Operator kOperators[] = {
    {"->", kPointerMember}, {">>", kShiftRight}, {"<<", kShiftLeft}, {">=", kGreaterOrEqual},
    {"<=", kLessOrEqual},   {"==", kEqual},      {"!=", kNotEqual},  {"&&", kLogicalAnd},
    {"||", kLogicalOr},     {".", kMember},      {"+", kAdd},        {"-", kSubtract},
    {"*", kMultiply},       {"/", kDivide},      {"%", kRemainder},  {">", kGreater},
    {"<", kLess},           {"&", kBitAnd},      {"|", kBitOr},      {"^", kBitXor},
};

}  // namespace

bool TStringResolver::GetFirstLexicalBlockStartingFromPos(std::string text, unsigned long* pos,
                                                          std::string* before, std::string* area,
                                                          std::string* after) {
  return TakeLexicalBlock(text, delimiters, pos, before, area, after);
}

bool TStringResolver::SolveBasicElement(std::string element) {
  elementFlag = false;
  areaBlocks.clear();
  unsigned long position = 0;
  AreaBlock block;
  while (TakeLexicalBlock(element, delimiters, &position, &block.BeforeText, &block.AreaText,
                          &block.AfterText)) {
    DataLableType castType = defaultType;
    block.CastType.Swap(castType);
    block.IsConsumed = false;
    block.ValueKind = 0;
    block.MemberBlock = nullptr;
    block.IsMemberName = false;
    block.HasCastType = false;
    EraseFences(&block.AreaText);
    EraseFences(&block.AfterText);
    EraseFences(&block.BeforeText);
    if (!TakeSavedTypes(&block)) return false;
    if (!AddBlock(block)) return false;
    block.BeforeText.clear();
    block.AreaText.clear();
    block.AfterText.clear();
  }
  if (areaBlocks.empty()) return Fail("Missing an address in the string");
  return ProcessBasicBlocksRelations(&areaBlocks);
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
    if (!isSubscript && !ProcessAreaAsType(block, area.substr(open + 1, close - open - 1))) {
      return Fail("Unknown type");
    }
    area.erase(open, close + 1 - open);
  }
  return true;
}

/// Appends a block to `areaBlocks`, or joins it to the block that it is a subscript's part of.
bool TStringResolver::AddBlock(const AreaBlock& block) {
  if (block.AreaText.starts_with(']')) {
    if (areaBlocks.size() < 2) return Fail("Address before square brackets isn`t defined");
    AreaBlock& subscript = areaBlocks.back();
    AreaBlock& indexed = *std::prev(areaBlocks.end(), 2);
    subscript.AreaText += block.AreaText;
    subscript.AfterText = block.AfterText;
    if (indexed.AreaText.ends_with('[')) {
      indexed.AreaText += subscript.AreaText;
      indexed.AfterText += subscript.AfterText;
      areaBlocks.pop_back();
      return true;
    }
    // No bracket is open: the text counts as the end of the last block and as a block of its own.
  }
  if (block.AreaText.starts_with('[')) {
    if (areaBlocks.empty()) return Fail("Address before square brackets isn`t defined");
    areaBlocks.back().AfterText += block.AreaText + block.AfterText;
    return true;
  }
  areaBlocks.push_back(block);
  return true;
}

bool TStringResolver::ProcessBasicBlocksRelations(std::list<AreaBlock>* blocks) {
  blocks->front().Relation = kFirstBlock;
  if (blocks->size() > 1 && !LinkBlocks(blocks)) return false;
  for (AreaBlock& block : *blocks) {
    if (!ZeroRaw(&block)) return false;
  }
  for (int row = 1; row <= kMemberRows; ++row) {
    if (!FoldPairs(blocks, &TStringResolver::FirstRaw, row, false)) return false;
  }
  for (AreaBlock& block : *blocks) {
    if (!SecondRaw(&block)) return false;
  }
  for (int row = 1; row <= kBinaryRows; ++row) {
    if (!FoldPairs(blocks, &TStringResolver::ThirdRawRaw, row, true)) return false;
  }
  return true;
}

/// Gives each block but the first the code of the operator to its left.
bool TStringResolver::LinkBlocks(std::list<AreaBlock>* blocks) {
  auto current = blocks->begin();
  for (;;) {
    const int relation = GetAfterRelations(&current);
    auto left = current++;
    if (current == blocks->end()) return true;
    if (!CheckBeforeRelations(&current, relation, left->AfterText)) return false;
    if (!ProcessTypeRelations(&left, &current, relation)) return false;
  }
}

/// Runs one pair row over the neighbours. Every fold starts the scan again at the first block,
/// which is what makes the operators of a row associate to the left. The start is skipped when it
/// would only show the row pairs that it has let pass already, to no effect: the scan then goes on
/// with the folded block and its new neighbour. `fetches` says that the row reads what the blocks
/// of a pair owe even when it lets the pair pass.
bool TStringResolver::FoldPairs(std::list<AreaBlock>* blocks, PairRow rowFunction, int row,
                                bool fetches) {
  const auto owesRead = [](const AreaBlock& block) {
    return block.Type.IsAddress || block.Type.IsArray;
  };
  bool passedOwesRead = false;
  auto left = blocks->begin();
  auto right = std::next(left);
  while (right != blocks->end()) {
    const int result =
        (this->*rowFunction)(&*left, &*right, static_cast<int>(right->Relation), row);
    if (result == kPairFailed) return false;
    if (result == kPairFolded) {
      blocks->erase(right);
      if (fetches && (passedOwesRead || owesRead(*left))) {
        left = blocks->begin();
        passedOwesRead = false;
      } else if (fetches && left != blocks->begin()) {
        // What the skipped start would still have done.
        RestoreFloatingPointStr(&left->AreaText);
      }
    } else {
      passedOwesRead = passedOwesRead || owesRead(*left);
      ++left;
    }
    right = std::next(left);
  }
  return true;
}

int TStringResolver::GetAfterRelations(std::list<AreaBlock>::iterator* it) {
  std::string& after = (*it)->AfterText;
  for (const Operator& candidate : kOperators) {
    if (after.starts_with(candidate.text)) {
      after.clear();
      return static_cast<int>(candidate.code);
    }
  }
  return static_cast<int>(kNoOperator);
}

bool TStringResolver::CheckBeforeRelations(std::list<AreaBlock>::iterator* it, int relation,
                                           std::string /*afterText*/) {
  AreaBlock& block = **it;
  block.Relation = static_cast<std::uint32_t>(relation);
  switch (relation) {
    case kNoRelation:
    case kFirstBlock:
    case kNoOperator:
      return Fail("Internal error. Wrong relations between arguments");
    case kMember:
      block.IsMemberName = true;
      block.BeforeText.erase(0, 1);
      return true;
    case kPointerMember:
      block.IsMemberName = true;
      block.BeforeText.erase(0, 2);
      return true;
    case kShiftLeft:
    case kShiftRight:
    case kLessOrEqual:
    case kGreaterOrEqual:
    case kEqual:
    case kNotEqual:
    case kLogicalAnd:
    case kLogicalOr:
      block.IsMemberName = false;
      block.BeforeText.erase(0, 2);
      return true;
    default:
      block.IsMemberName = false;
      block.BeforeText.erase(0, 1);
      return true;
  }
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
