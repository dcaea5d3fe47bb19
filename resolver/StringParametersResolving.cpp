#include "resolver/StringParametersResolving.h"

#include <bit>
#include <cstddef>
#include <memory>
#include <string_view>
#include <utility>

#include "resolver/Markers.h"
#include "resolver/SizeMask.h"
#include "resolver/ValueText.h"

namespace {

// The minus sign stands twice in each set; debugging aids show the sets as they are.
constexpr std::string_view kAssemblyDelimiters = "()%!~&*-><=^|+-/\x08\x18\x19";
constexpr std::string_view kCDelimiters = "()%!~&*.-><=^|+-/\x08\x18\x19";
constexpr std::size_t kParentheses = 2;  // at the start of each set
constexpr std::size_t kDelimitersWithParenthesesSize = 21;
constexpr std::size_t kDelimitersSize = 19;

bool NamesAssembly(const std::string& fileName) {
  return fileName.find(".asm") != std::string::npos || fileName.find(".s") != std::string::npos;
}

void MarkStars(std::string* typeText) {
  for (char& c : *typeText) {
    if (c == '*') c = resolver::kTypeStarMark;
  }
}

/// Writes each bracket with a parenthesis inside it, so that every subscript is a group.
std::string GroupSubscripts(const std::string& text) {
  std::string grouped;
  grouped.reserve(text.size());
  for (const char c : text) {
    if (c == ']') grouped += ')';
    grouped += c;
    if (c == '[') grouped += '(';
  }
  return grouped;
}

}  // namespace

TStringResolver::TStringResolver(TParrentInterface* parent) : parentInterface(parent) {
  auto withParentheses = std::make_unique<char[]>(kDelimitersWithParenthesesSize);
  auto without = std::make_unique<char[]>(kDelimitersSize);
  const std::string_view set =
      NamesAssembly(parent->GetFileName()) ? kAssemblyDelimiters : kCDelimiters;
  set.copy(withParentheses.get(), set.size());
  set.copy(without.get(), set.size(), kParentheses);
  delimitersWithParentheses = withParentheses.release();
  delimiters = without.release();
}

TStringResolver::~TStringResolver() {
  delete[] delimitersWithParentheses;
  delete[] delimiters;
}

bool TStringResolver::SolveStringOfElements(std::string expression) {
  // Positions are looked up near each other while a text is reduced; between two resolutions a
  // derived class may change the list.
  SavedTypeFinger finger;
  const std::unique_ptr<SavedTypeFinger*, void (*)(SavedTypeFinger**)> scope(
      &finger_, [](SavedTypeFinger** held) { *held = nullptr; });
  finger_ = &finger;
  ProcessBasickTypes(&expression);
  if (!RewriteSizeofs(&expression)) return false;
  std::erase(expression, ' ');
  CheckFloatingPointStr(&expression);
  expression = GroupSubscripts(expression);
  if (!SolveGroups(&expression)) return false;
  if (expression.empty()) return false;
  if (!SolveBasicElement(expression)) return false;
  AreaBlock result = areaBlocks.front();
  return StoreResult(&result);
}

/// Replaces `sizeof` of a type by its size, and any other by the unary mark. False, without a
/// message, when the host does not know a type that it had accepted.
bool TStringResolver::RewriteSizeofs(std::string* text) {
  constexpr std::string_view kKeyword = "sizeof";
  std::string rewritten;
  std::size_t copied = 0;
  std::size_t close = 0;
  std::size_t at = 0;
  while ((at = text->find(kKeyword, at)) != std::string::npos) {
    const std::size_t behind = at + kKeyword.size();
    if (behind == text->size() || ((*text)[behind] != ' ' && (*text)[behind] != '(')) {
      ++at;
      continue;
    }
    rewritten.append(*text, copied, at - copied);
    copied = at = behind;
    if (close < at) close = text->find(')', at);
    if ((*text)[at] == '(' && close != std::string::npos) {
      std::string operand = text->substr(at + 1, close - at - 1);
      std::erase(operand, ' ');
      if (parentInterface->IsTypeName(operand)) {
        MarkStars(&operand);
        bool unknown = false;
        const DataLableType type = DescribeType(&operand, &unknown);
        if (unknown) return false;
        rewritten += resolver::WriteUnsigned(type.Size);
        copied = at = close + 1;
        continue;
      }
    }
    rewritten += resolver::kSizeofMark;
  }
  if (copied == 0) return true;
  rewritten.append(*text, copied);
  text->swap(rewritten);
  return true;
}

/// Evaluates the innermost group of `*text`, the last one, until no group is left.
bool TStringResolver::SolveGroups(std::string* text) {
  // The text behind the last parenthesis, back to front, so that a group is taken from its end. It
  // holds no opening parenthesis.
  std::string behind;
  std::size_t open = 0;
  while ((open = text->rfind('(')) != std::string::npos) {
    behind.append(text->rbegin(), text->rend() - static_cast<std::ptrdiff_t>(open) - 1);
    text->resize(open);
    const std::size_t close = behind.rfind(')');
    if (close == std::string::npos) return Fail("Can`t find the end quote.");
    const std::string group(behind.rbegin(),
                            behind.rend() - static_cast<std::ptrdiff_t>(close) - 1);
    behind.resize(close);
    if (group.empty()) continue;
    std::string replacement;
    if (!SolveGroup(group, &replacement)) return false;
    behind.append(replacement.rbegin(), replacement.rend());
  }
  text->append(behind.rbegin(), behind.rend());
  return true;
}

/// Turns a group into an encoded cast or an encoded sub-result.
bool TStringResolver::SolveGroup(const std::string& group, std::string* replacement) {
  if (parentInterface->IsTypeName(group)) {
    *replacement = group;
    MarkStars(replacement);
    return !RegisterType(replacement);
  }
  if (!SolveBasicElement(group)) return false;
  AreaBlock result = areaBlocks.front();
  CheckFloatingPointStr(&result.AreaText);
  savedTypes.push_back(std::move(result.Type));
  *replacement = resolver::kSubResultFence;
  *replacement += resolver::kSubResultOpen;
  *replacement += resolver::kSavedTypeIndexMark;
  *replacement += resolver::WriteUnsigned(savedTypes.size() - 1);
  *replacement += resolver::kSubResultClose;
  if (result.MemorySpace != 0) *replacement += resolver::kMemorySpaceMark;
  *replacement += result.AreaText;
  *replacement += resolver::kSubResultFence;
  return true;
}

/// Reads what the last element's block still owes and fills the result fields from it.
bool TStringResolver::StoreResult(AreaBlock* result) {
  RestoreFloatingPointStr(&result->AreaText);
  // Hosts treat this field as a 32-bit address.
  resultAddress = static_cast<std::uint32_t>(resolver::ReadUnsigned(result->AreaText));
  resultMemorySpace = result->MemorySpace != 0;
  if (result->Type.IsAddress && !ReadThroughAddress(result)) return Fail("Error occurred");
  while (result->Type.IsArray) {
    if (!ReadThroughAddress(result)) return Fail("Error occurred");
  }
  const DataLableType& type = result->Type;
  if (result->HasCastType && type.Size == 0) return Fail("Error occurred");
  resultSize = result->HasCastType ? type.Size : 8;
  RestoreFloatingPointStr(&result->AreaText);
  if (result->ValueKind == 0) {
    const std::uint64_t mask = resolver::SizeMask(resultSize);
    resultValue = resolver::ReadUnsigned(result->AreaText) & mask;
    resultNegative = type.IsSigned && (resolver::FromSignBit(resultValue, resultSize) & 1) != 0;
    if (resultNegative) resultValue = (0 - resultValue) & mask;
    resultFloating = false;
    return true;
  }
  if (type.IsDouble) {
    const auto bits = resolver::ReadUnsigned(result->AreaText);
    resultFloat = static_cast<float>(std::bit_cast<double>(bits));
  } else if (type.IsFloat) {
    const auto bits = static_cast<std::uint32_t>(resolver::ReadUnsigned(result->AreaText));
    resultFloat = std::bit_cast<float>(bits);
  } else {
    resultFloat = resolver::ReadFloat(result->AreaText);
  }
  resultValue = resolver::TruncateToUnsigned(static_cast<double>(resultFloat));
  resultNegative = false;
  resultFloating = true;
  return true;
}

bool TStringResolver::Fail(const char* message) {
  errorMessage = message;
  return false;
}

bool TStringResolver::Fail(const char* message, const std::string& detail) {
  errorMessage = message + detail;
  return false;
}

/// The pointee of a pointer, the element of an array; the default type where the host names none.
const DataLableType& TStringResolver::FirstMember(const DataLableType& type) const {
  return type.Members.empty() ? defaultType : type.Members.front();
}

void TStringResolver::ReplaceByFirstMember(DataLableType* type) {
  DataLableType first =
      type->Members.empty() ? DataLableType(defaultType) : std::move(type->Members.front());
  type->Swap(first);
}
