#include <cstdint>
#include <string>

#include "tests/reference/Resolver.h"
#include "tests/reference/Values.h"

namespace reference {
namespace {

std::uint32_t AccessOf(std::uint32_t size) {
  return size % 8 == 0 ? 8 : size % 8;
}

}  // namespace

bool Resolver::MoveFromPointerToObject(AreaBlock* block, bool* spaceFlag) {
  block->Value &= MaskOfSize(block->Type.Size);

  if (block->Type.IsArray || block->Type.IsPointer) {
    block->Type = FirstMember(block->Type);
  } else {
    block->Type = defaultType;
  }
  DataLableType& type = block->Type;

  parentInterface->accessSize = type.IsPointer && type.Size < 8 ? 4 : AccessOf(type.Size);
  if (block->MemorySpace != 0) parentInterface->accessSize = 8;

  if (!type.IsArray) {
    block->AreaText.clear();
    const bool isFloat = type.IsFloat;
    const bool isDouble = type.IsDouble;
    if (!parentInterface->CheckAddress(block->Value, block->MemorySpace)) {
      return Fail("Invalid address");
    }
    parentInterface->ReadMemory(block->Value, block->Value, block->MemorySpace, 1, &block->AreaText,
                                1, isFloat, isDouble);
    if (isDouble) {
      block->DoubleValue = ReadNumber<double>(block->AreaText);
      block->FloatValue = static_cast<float>(block->DoubleValue);
      block->Value = Truncate(block->DoubleValue);
      block->ValueKind = 2;
    } else if (isFloat) {
      block->FloatValue = static_cast<float>(ReadNumber<double>(block->AreaText));
      block->DoubleValue = static_cast<double>(block->FloatValue);
      block->Value = Truncate(block->FloatValue);
      block->ValueKind = 1;
    } else {
      block->Value = ReadNumber<std::uint64_t>(block->AreaText);
    }
  } else {
    block->AreaText.clear();
    block->Value &= MaskOfSize(parentInterface->accessSize);
    block->AreaText = WriteNumber(block->Value);
  }

  parentInterface->accessSize = AccessOf(type.Size);
  *spaceFlag = false;
  block->MemorySpace = 0;
  while (block->AreaText.find('\t') != std::string::npos) {
    block->AreaText.erase(block->AreaText.find('\t'), 1);
  }
  block->Value =
      ReadNumber<std::uint64_t>(block->AreaText) & MaskOfSize(parentInterface->accessSize);
  block->AreaText = ValueAsText(*block);
  CheckFloatingPointStr(&block->AreaText);
  type.IsFloat = false;
  type.IsDouble = false;
  block->ReferenceLevel -= 1;
  return true;
}

}  // namespace reference
