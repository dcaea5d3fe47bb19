#include "resolver/Owed.h"

#include <string>

#include "resolver/Markers.h"
#include "resolver/ValueText.h"

namespace resolver {
namespace {

/// As `CheckFloatingPointStr`, for a text that is one number.
void ProtectNumber(std::string* text) {
  for (std::size_t i = 0; i + 1 < text->size(); ++i) {
    char& c = (*text)[i];
    char& next = (*text)[i + 1];
    if (c == '.') {
      c = kProtectedPoint;
    } else if (c == kExponentPlus[0] && (next == '+' || next == '-')) {
      c = next == '+' ? kProtectedExponentPlus[0] : kProtectedExponentMinus[0];
      next = kProtectedExponentPlus[1];
    }
  }
}

}  // namespace

void WriteOwedText(AreaBlock* block) {
  switch (block->Owed) {
    case OwedText::kNone:
      return;
    case OwedText::kInteger:
      WriteUnsigned(block->OwedNumber, &block->AreaText);
      break;
    case OwedText::kFloating:
      WriteFloating(block->OwedFloating, &block->AreaText);
      break;
    case OwedText::kProtectedFloating:
      WriteFloating(block->OwedFloating, &block->AreaText);
      ProtectNumber(&block->AreaText);
      break;
  }
  block->Owed = OwedText::kNone;
}

void WriteOwed(AreaBlock* block) {
  WriteOwedPointer(block);
  WriteOwedText(block);
}

std::uint64_t IntegerOf(const AreaBlock& block) {
  if (block.Owed == OwedText::kInteger) return block.OwedNumber;
  if (block.Owed == OwedText::kNone) return ReadUnsigned(block.AreaText);
  std::string text;
  WriteFloating(block.OwedFloating, &text);
  return ReadUnsigned(text);
}

}  // namespace resolver
