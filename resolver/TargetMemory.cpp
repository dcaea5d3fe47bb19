#include <cstdint>
#include <string>

#include "resolver/SizeMask.h"
#include "resolver/StringParametersResolving.h"
#include "resolver/ValueText.h"

bool TStringResolver::MoveFromPointerToObject(AreaBlock* block, bool* spaceFlag) {
  if (!ReadObject(block)) return false;
  *spaceFlag = false;
  resolver::WriteValue(block);
  if (block->ValueKind != 0) CheckFloatingPointStr(&block->AreaText);
  return true;
}

/// As `MoveFromPointerToObject`, but for the text of the value: `AreaText` is what the host wrote.
bool TStringResolver::ReadObject(AreaBlock* block) {
  DataLableType& type = block->Type;
  block->Value &= resolver::SizeMask(type.Size);
  if (type.IsArray || type.IsPointer) {
    ReplaceByFirstMember(&type);
  } else {
    type.Assign(defaultType);
  }

  const std::uint32_t objectSize = resolver::AccessSize(type.Size);
  std::uint32_t& accessSize = parentInterface->accessSize;
  // A short pointer is fetched with the four bytes of an address.
  accessSize = type.IsPointer && type.Size < 8 ? 4 : objectSize;
  if (block->MemorySpace != 0) accessSize = 8;

  if (type.IsArray) {
    block->Value &= resolver::SizeMask(accessSize);
  } else {
    block->AreaText.clear();
    if (!parentInterface->CheckAddress(block->Value, block->MemorySpace)) {
      return Fail("Invalid address");
    }
    parentInterface->ReadMemory(block->Value, block->Value, block->MemorySpace, 1, &block->AreaText,
                                1, type.IsFloat, type.IsDouble);
    if (type.IsDouble) {
      block->DoubleValue = resolver::ReadDouble(block->AreaText);
      block->FloatValue = static_cast<float>(block->DoubleValue);
      block->ValueKind = 2;
    } else if (type.IsFloat) {
      block->FloatValue = static_cast<float>(resolver::ReadDouble(block->AreaText));
      block->DoubleValue = static_cast<double>(block->FloatValue);
      block->ValueKind = 1;
    }
    std::erase(block->AreaText, '\t');
    block->Value = resolver::ReadUnsigned(block->AreaText);
  }

  accessSize = objectSize;
  block->Value &= resolver::SizeMask(accessSize);
  block->MemorySpace = 0;
  // The value is in its own representation now; a later read of the type as a bit pattern would
  // take it for one that still has to be converted.
  type.IsFloat = false;
  type.IsDouble = false;
  block->ReferenceLevel -= 1;
  return true;
}

/// Reads the object at the block's address; the space flag that comes back is the block's own.
bool TStringResolver::ReadThroughAddress(AreaBlock* block) {
  bool space = block->MemorySpace != 0;
  return MoveFromPointerToObject(block, &space);
}
