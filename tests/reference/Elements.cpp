#include <cstddef>
#include <iterator>
#include <string>

#include "tests/reference/Resolver.h"

namespace reference {
namespace {

void DeleteFences(std::string* text) {
  const std::string fence = "^*^*^^";
  while (text->find(fence) != std::string::npos) text->erase(text->find(fence), fence.size());
}

}  // namespace

bool Resolver::GetFirstLexicalBlockStartingFromPos(std::string text, std::size_t* pos,
                                                   std::string* before, std::string* area,
                                                   std::string* after) {
  const std::size_t none = std::string::npos;
  if (*pos == none) return false;
  const std::size_t start = text.find_first_not_of(delimiters, *pos);
  if (start == none) return false;
  *before += text.substr(*pos, start - *pos);
  *pos = start;

  const std::size_t end = text.find_first_of(delimiters, start + 1);
  if (end == none) {
    *area += text.substr(start);
    *pos = none;
    return true;
  }
  *area += text.substr(start, end - start);
  *pos = end;

  // The run of operators is handed out again as the next block's `before`.
  const std::size_t next = text.find_first_not_of(delimiters, end + 1);
  if (next == none) {
    *after += text.substr(end);
    *pos = none;
    return true;
  }
  *after += text.substr(end, next - end);
  return true;
}

bool Resolver::SolveBasicElement(std::string element) {
  elementFlag = false;
  std::size_t position = 0;
  areaBlocks.clear();
  AreaBlock block;
  while (GetFirstLexicalBlockStartingFromPos(element, &position, &block.BeforeText, &block.AreaText,
                                             &block.AfterText)) {
    block.CastType = defaultType;
    block.IsConsumed = false;
    block.ValueKind = 0;
    block.MemberBlock = nullptr;
    block.IsMemberName = false;
    block.HasCastType = false;
    DeleteFences(&block.AreaText);
    DeleteFences(&block.AfterText);
    DeleteFences(&block.BeforeText);
    if (!AttachSubResultTypes(&block)) return false;
    if (!AddBlock(block)) return false;
    block.BeforeText.clear();
    block.AreaText.clear();
    block.AfterText.clear();
  }
  if (areaBlocks.empty()) return Fail("Missing an address in the string");
  return ProcessBasicBlocksRelations(&areaBlocks);
}

bool Resolver::AttachSubResultTypes(AreaBlock* block) {
  std::string& area = block->AreaText;
  while (area.find('\r') != std::string::npos) {
    const std::size_t open = area.find('\r');
    const std::size_t close = area.find('\x0e', open);
    if (close == std::string::npos) return Fail("Can`t find the ending curly bracket");
    const bool behindBracket = open > 0 && area[open - 1] == '[';
    if (!behindBracket) {
      const std::string reference = area.substr(open + 1, close - open - 1);
      if (!ProcessAreaAsType(block, reference)) return Fail("Unknown type");
    }
    area.erase(open, close - open + 1);
  }
  return true;
}

bool Resolver::AddBlock(const AreaBlock& block) {
  const char* noAddress = "Address before square brackets isn`t defined";
  if (block.AreaText.starts_with("]")) {
    if (areaBlocks.size() < 2) return Fail(noAddress);
    AreaBlock& last = areaBlocks.back();
    AreaBlock& beforeLast = *std::prev(areaBlocks.end(), 2);
    last.AreaText += block.AreaText;
    last.AfterText = block.AfterText;
    if (beforeLast.AreaText.ends_with("[")) {
      beforeLast.AreaText += last.AreaText;
      beforeLast.AfterText += last.AfterText;
      areaBlocks.pop_back();
      return true;
    }
  }
  if (!block.AreaText.starts_with("[")) {
    areaBlocks.push_back(block);
    return true;
  }
  if (areaBlocks.empty()) return Fail(noAddress);
  areaBlocks.back().AfterText += block.AreaText;
  areaBlocks.back().AfterText += block.AfterText;
  return true;
}

}  // namespace reference
