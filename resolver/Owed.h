#ifndef STRINGRESOLVER_RESOLVER_OWED_H
#define STRINGRESOLVER_RESOLVER_OWED_H

#include <cstdint>

#include "model/AreaBlock.h"

namespace resolver {

// What blocks owe between the steps of a resolution: texts and types that are made only where
// somebody looks at them.

/// The block's value is an address whose contents are still to be read.
inline bool IsAddress(const AreaBlock& block) {
  return block.OwesPointer || block.Type.IsAddress;
}

/// The block's type becomes a pointer to what its type is now, marked as an address; the pointer's
/// own number is `typeNumber`.
inline void OwePointer(AreaBlock* block, std::uint32_t typeNumber = 0) {
  block->OwesPointer = true;
  block->OwedTypeNumber = typeNumber;
}

/// The block's text becomes the number.
inline void OweNumber(std::uint64_t number, AreaBlock* block) {
  block->Owed = OwedText::kInteger;
  block->OwedNumber = number;
}

/// The block's text becomes its live value.
inline void OweValue(AreaBlock* block, OwedText floating = OwedText::kFloating) {
  if (block->ValueKind == 0) return OweNumber(block->Value, block);
  block->Owed = floating;
  block->OwedFloating =
      block->ValueKind == 1 ? static_cast<double>(block->FloatValue) : block->DoubleValue;
}

/// Makes the pointer type that the block owes.
inline void WriteOwedPointer(AreaBlock* block) {
  if (!block->OwesPointer) return;
  block->Type.BecomePointer();
  block->Type.IsAddress = true;
  block->Type.TypeNumber = block->OwedTypeNumber;
  block->OwesPointer = false;
}

/// Writes the text that the block owes.
void WriteOwedText(AreaBlock* block);

/// Writes all that the block owes.
void WriteOwed(AreaBlock* block);

/// The number that the block's text begins with, written or not.
std::uint64_t IntegerOf(const AreaBlock& block);

}  // namespace resolver

#endif  // STRINGRESOLVER_RESOLVER_OWED_H
