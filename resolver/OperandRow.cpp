#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "resolver/CharacterClass.h"
#include "resolver/Markers.h"
#include "resolver/Owed.h"
#include "resolver/StringParametersResolving.h"
#include "resolver/ValueText.h"

namespace {

/// The type of the second memory space's words, which the host describes.
constexpr const char* kSecondSpaceType = "ZV_Lorn";

/// For a text that is not empty. "/" and ":" stand on either side of the digits and count as well.
/// The comparison is signed, so bytes above 0x7f never begin a literal.
bool IsFloatingLiteral(const std::string& text) {
  const auto first = static_cast<signed char>(text.front());
  return first > '.' && first <= ':' &&
         resolver::FindClass(text, 0, resolver::kPoint) != std::string::npos;
}

}  // namespace

bool TStringResolver::EvaluateOperand(AreaBlock* block) {
  block->MemberBlock = nullptr;
  block->ReferenceLevel = -1;
  block->MemorySpace = 0;
  const unsigned classes = resolver::ClassesOf(block->AreaText);
  if ((classes & resolver::kBracket) != 0 && !SplitSubscripts(block)) return false;
  if (block->IsMemberName) {
    if (block->BeforeText.empty()) return true;
    return Fail("Internal error. Unknown command ", block->BeforeText);
  }
  if ((classes & resolver::kSubResultOrSpace) != 0) MoveToSecondSpace(block);

  if ((classes & resolver::kPoint) != 0 && IsFloatingLiteral(block->AreaText)) {
    ForgetLabelType();
    ReadFloatingLiteral(block);
  } else {
    if ((classes & resolver::kPoint) != 0) {
      std::replace(block->AreaText.begin(), block->AreaText.end(), resolver::kProtectedPoint, '.');
    }
    if (!LookUpLabel(block)) return false;
  }
  TypeOperand(block);

  if (block->MemorySpace != 0) {
    std::string typeText = kSecondSpaceType;
    typeText += resolver::kTypeStarMark;
    RegisterType(&typeText);
    block->Type.Assign(savedTypes.back());
    block->HasCastType = true;
    block->OwesPointer = false;
  }
  return IndexBlock(block);
}

/// Makes a dereference of every mark of the second memory space.
void TStringResolver::MoveToSecondSpace(AreaBlock* block) {
  const auto marks = static_cast<std::size_t>(
      std::count(block->AreaText.begin(), block->AreaText.end(), resolver::kMemorySpaceMark));
  if (marks == 0) return;
  std::replace(block->AreaText.begin(), block->AreaText.end(), resolver::kMemorySpaceMark, '*');
  block->MemorySpace = 1;
  block->BeforeText.insert(0, marks, '*');
}

void TStringResolver::ForgetLabelType() {
  parentInterface->LabelTyped = false;
  parentInterface->LabelType.Assign(defaultType);
  parentInterface->LabelType.Size = 8;
}

/// Asks the host for the value, and the type, of a name or a number.
std::uint64_t TStringResolver::AskForLabel(const char* text, bool* undefined) {
  ForgetLabelType();
  bool confirmed = false;
  const std::uint64_t value = parentInterface->FindLabel(text, undefined, &confirmed);
  allLabelsConfirmed = allLabelsConfirmed && confirmed;
  return value;
}

bool TStringResolver::LookUpLabel(AreaBlock* block) {
  bool undefined = false;
  block->Value = AskForLabel(block->AreaText.c_str(), &undefined);
  if (undefined) return Fail("Undefined label ", block->AreaText);
  return true;
}

/// What `SolveElement` does for an element that is one plain operand. A number is left at `*number`
/// without a block, until somebody may look at it: most are subscripts, worth their value only.
/// `m[2][3]` takes 5 870 instructions instead of 6 440.
bool TStringResolver::SolvePlainOperand(const std::string& operand,
                                        std::optional<std::uint64_t>* number) {
  elementFlag = false;
  bool undefined = false;
  const std::uint64_t value = AskForLabel(operand.c_str(), &undefined);
  if (!undefined && !parentInterface->LabelTyped) {
    *number = value;
    return true;
  }
  // The text of one that was found is its value.
  AreaBlock& block = PutBlock(undefined ? std::string_view(operand) : std::string_view());
  block.Value = value;
  if (undefined) return Fail("Undefined label ", operand);
  TypeOperand(&block);
  resolver::OweValue(&block);
  return true;
}

/// Makes the block that `SolvePlainOperand` did without.
AreaBlock& TStringResolver::PutNumber(std::uint64_t number) {
  AreaBlock& block = PutBlock({});
  block.Value = number;
  block.Type.Assign(defaultType);
  block.HasCastType = true;
  resolver::OweNumber(number, &block);
  return block;
}

/// Literals are single precision, however many digits they have.
void TStringResolver::ReadFloatingLiteral(AreaBlock* block) {
  RestoreFloatingPointStr(&block->AreaText);
  block->DoubleValue = resolver::ReadDouble(block->AreaText);
  block->FloatValue = static_cast<float>(block->DoubleValue);
  block->Value = resolver::TruncateToUnsigned(static_cast<double>(block->FloatValue));
  block->ValueKind = 1;
}

/// Settles the operand's type: a sub-result's own before the label's, the default for neither.
void TStringResolver::TypeOperand(AreaBlock* block) {
  const bool labelTyped = parentInterface->LabelTyped;
  if (!block->HasCastType) {
    if (labelTyped) {
      block->Type.Assign(parentInterface->LabelType);
      resolver::OwePointer(block);
    } else {
      block->Type.Assign(defaultType);
    }
    block->HasCastType = true;
  } else if (labelTyped) {
    block->Type.IsAddress = true;
  }
}
