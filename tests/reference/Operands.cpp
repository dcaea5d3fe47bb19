#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "tests/reference/Resolver.h"
#include "tests/reference/Values.h"

namespace reference {
namespace {

enum class Match { kFound, kNoClose, kWrongOrder };

/// The first group that `open` starts and its matching `close` ends. The first close is sought from
/// position 1, not from behind the open.
Match MatchGroup(const std::string& text, const char* open, const char* close, std::size_t* first,
                 std::size_t* last) {
  std::size_t i = text.find_first_of(open);
  std::size_t j = 0;
  do {
    if (text.find_first_of(close, j + 1) == std::string::npos) return Match::kNoClose;
    j = text.find_first_of(close, j + 1);
    if (text.find_first_of(open, i + 1) == std::string::npos) break;
    i = text.find_first_of(open, i + 1);
  } while (i <= j);
  i = text.find_first_of(open);
  if (i > j) return Match::kWrongOrder;
  *first = i;
  *last = j;
  return Match::kFound;
}

}  // namespace

bool Resolver::ZeroRaw(AreaBlock* block) {
  block->MemberBlock = nullptr;
  block->ReferenceLevel = -1;
  block->MemorySpace = 0;
  if (!FindStringParameter(&block->AreaText, &block->AfterText, "[", "]")) return false;

  if (block->IsMemberName) {
    if (block->BeforeText.empty()) return true;
    return Fail("Internal error. Unknown command " + block->BeforeText);
  }

  while (block->AreaText.find('#') != std::string::npos) {
    block->AreaText[block->AreaText.find('#')] = '*';
    block->MemorySpace = 1;
    block->BeforeText = "*" + block->BeforeText;
  }

  parentInterface->LabelTyped = false;
  parentInterface->LabelType = defaultType;
  parentInterface->LabelType.Size = 8;

  const char first = block->AreaText.empty() ? '\0' : block->AreaText[0];
  const bool literal =
      first > '.' && first <= ':' && block->AreaText.find_first_of(",.") != std::string::npos;
  if (literal ? !ReadLiteral(block) : !ReadLabel(block)) return false;

  if (parentInterface->LabelTyped && block->HasCastType) {
    block->Type.IsAddress = true;
  } else if (parentInterface->LabelTyped && !block->HasCastType) {
    block->HasCastType = true;
    block->Type = parentInterface->LabelType;
    block->Type = block->Type.FormPointer();
    block->Type.IsAddress = true;
  } else if (!block->HasCastType) {
    block->HasCastType = true;
    block->Type = defaultType;
  }

  if (block->MemorySpace != 0) {
    std::string word = "ZV_Lorn\x0f";
    RegisterType(&word);  // a host without such a word still hands over a type
    block->Type = savedTypes.back();
    block->HasCastType = true;
  }
  return SolveSquareBracets(block);
}

bool Resolver::ReadLabel(AreaBlock* block) {
  for (char& byte : block->AreaText) {
    if (byte == ',') byte = '.';
  }
  bool undefined = false;
  bool confirmed = false;
  block->Value = parentInterface->FindLabel(block->AreaText.c_str(), &undefined, &confirmed);
  allLabelsConfirmed = allLabelsConfirmed && confirmed;
  if (undefined) return Fail("Undefined label " + block->AreaText);
  return true;
}

bool Resolver::ReadLiteral(AreaBlock* block) {
  RestoreFloatingPointStr(&block->AreaText);
  std::stringstream stream;
  stream.imbue(std::locale::classic());
  stream << block->AreaText;
  block->DoubleValue = 0;
  stream >> block->DoubleValue;
  block->FloatValue = static_cast<float>(block->DoubleValue);
  block->Value = Truncate(block->FloatValue);
  block->ValueKind = 1;
  if (stream.bad()) return Fail("Wrong floating point number");
  return true;
}

bool Resolver::FindStringParameter(std::string* source, std::string* collected, const char* open,
                                   const char* close) {
  std::string groups;
  while (source->find_first_of(open) != std::string::npos) {
    std::size_t first = 0;
    std::size_t last = 0;
    const Match match = MatchGroup(*source, open, close, &first, &last);
    if (match == Match::kNoClose) return Fail("Can`t find ']' symbol");
    if (match == Match::kWrongOrder) return Fail("Symbols '[' and ']' are placed in wrong order");
    groups += source->substr(first, last - first + 1);
    source->erase(first, last - first + 1);
  }
  collected->insert(0, groups);
  return true;
}

bool Resolver::SolveSquareBracets(AreaBlock* block) {
  bool space = block->MemorySpace != 0;
  std::vector<std::uint64_t> subscripts;
  if (!CollectSubscripts(block, &subscripts)) return false;

  if (!subscripts.empty()) {
    if (block->Type.IsAddress) MoveFromPointerToObject(block, &space);
    for (std::size_t i = 0; i < subscripts.size(); ++i) {
      const std::uint64_t step =
          block->Type.IsArray ? FirstMember(block->Type).Size : block->Type.Size;
      block->Value += subscripts[i] * step;
      block->AreaText = WriteNumber(block->Value);
      if (i + 1 < subscripts.size()) MoveFromPointerToObject(block, &space);
    }
    block->Type = block->Type.FormPointer();
    block->Type.IsAddress = true;
    block->ReferenceLevel = -1;
  }

  block->AreaText = ValueAsText(*block);
  return true;
}

bool Resolver::CollectSubscripts(AreaBlock* block, std::vector<std::uint64_t>* subscripts) {
  std::string& after = block->AfterText;
  while (after.find('[') != std::string::npos) {
    std::size_t first = 0;
    std::size_t last = 0;
    const Match match = MatchGroup(after, "[", "]", &first, &last);
    if (match == Match::kNoClose) return Fail("Can`t find ending quote ']'");
    if (match == Match::kWrongOrder) return Fail("Quotes are placed in wrong order");
    const std::string subscript = after.substr(first + 1, last - first - 1);
    after.erase(first, last - first + 1);
    if (subscript.empty()) return Fail("Quotes are empty");
    Resolver nested(parentInterface);
    if (!nested.SolveStringOfElements(subscript)) return false;  // its message stays inside
    subscripts->push_back(nested.resultValue);
  }
  return true;
}

}  // namespace reference
