#include <cstddef>
#include <iterator>
#include <string>

#include "tests/reference/Resolver.h"
#include "tests/reference/Values.h"

namespace reference {
namespace {

const char* const kNoPointer = "The pointer doesn`t exist";
const char* const kNoDereference = "Can`t do the dereference operation with this type";

}  // namespace

bool Resolver::SecondRaw(AreaBlock* block) {
  while (!block->BeforeText.empty()) {
    bool done = true;
    switch (block->BeforeText.back()) {
      case '\x18':
        done = Cast(block);
        break;
      case '\x08':
        done = SizeofOperator(block);
        break;
      case '+':
        block->BeforeText.pop_back();
        break;
      case '-':
        done = Minus(block);
        break;
      case '&':
        block->ReferenceLevel -= 1;
        done = Settle(block);
        break;
      case '*':
        done = Dereference(block);
        break;
      case '~':
        done = BitwiseNot(block);
        break;
      case '!':
        done = LogicalNot(block);
        break;
      default:
        return Fail("Unknown operation: " + block->BeforeText);
    }
    if (!done) return false;
  }
  if (!SolveSquareBracets(block)) return false;
  if (block->AfterText.empty()) return true;
  return Fail("Invalid operation " + block->AfterText);
}

bool Resolver::Settle(AreaBlock* block) {
  block->BeforeText.pop_back();
  if (block->ReferenceLevel < -1 && block->Type.IsAddress) {
    block->Type.IsAddress = false;
    block->ReferenceLevel += 1;
  }
  if (block->ReferenceLevel < -1) return Fail(kNoPointer);
  if (block->ReferenceLevel == -1) block->AreaText = WriteNumber(block->Value);
  return ReadOwed(block);
}

/// Carries out the reads that the block still owes.
bool Resolver::ReadOwed(AreaBlock* block) {
  while (block->ReferenceLevel >= 0) {
    const bool wasAddress = block->Type.IsAddress;
    block->Type.IsArray = false;
    bool space = false;
    if (!MoveFromPointerToObject(block, &space)) return false;
    block->Type.IsAddress = wasAddress;
  }
  return true;
}

/// For the operators that need the operand's value at once.
bool Resolver::ReadNow(AreaBlock* block) {
  if (!block->Type.IsAddress) return true;
  bool space = false;
  if (!MoveFromPointerToObject(block, &space)) return false;
  block->ReferenceLevel += 1;
  block->Type.IsAddress = false;
  return true;
}

bool Resolver::Cast(AreaBlock* block) {
  if (block->Type.IsAddress) {
    block->Type.IsAddress = false;
    block->ReferenceLevel += 1;
  }
  if (block->ReferenceLevel < -1) return Fail(kNoPointer);
  if (block->ReferenceLevel == -1) block->AreaText = ValueAsText(*block);
  if (!ReadOwed(block)) return false;

  block->BeforeText.pop_back();
  const std::size_t open = block->BeforeText.rfind('\x18');
  if (open == std::string::npos) {
    return Fail("Internal error is occurred during the type conversion");
  }
  const std::size_t index = block->BeforeText.size() - open - 1;
  block->BeforeText.erase(open, index);  // what is left of the encoding goes when settling

  if (index >= savedTypes.size()) return Fail("Reference to unexisting type");
  block->CastType = *std::next(savedTypes.begin(), static_cast<std::ptrdiff_t>(index));
  if (block->Type.IsAddress) block->CastType = block->CastType.FormPointer();
  block->CastType.IsAddress = block->Type.IsAddress;

  ConvertToCastType(block);
  block->Type = block->CastType;
  return Settle(block);
}

/// Four tests in a row, each seeing what the one before left.
void Resolver::ConvertToCastType(AreaBlock* block) {
  const DataLableType& target = block->CastType;
  if (block->ValueKind != 0 && !target.IsFloat) {
    if (block->ValueKind == 1) {
      block->Value = Truncate(block->FloatValue);
      block->DoubleValue = static_cast<double>(block->FloatValue);
    } else {
      block->Value = Truncate(block->DoubleValue);
      block->FloatValue = static_cast<float>(block->DoubleValue);
    }
    block->ValueKind = 0;
    block->AreaText = WriteNumber(block->Value);
  }
  if (block->ValueKind == 0 && target.IsFloat) {
    block->ValueKind = 1;
    block->FloatValue = FloatOfBits(block->Value);
    block->DoubleValue = static_cast<double>(block->FloatValue);
    block->AreaText = WriteNumber(block->FloatValue);
  }
  if (block->ValueKind == 0 && target.IsDouble) {
    block->ValueKind = 2;
    block->DoubleValue = DoubleOfBits(block->Value);
    block->FloatValue = static_cast<float>(block->DoubleValue);
    block->AreaText = WriteNumber(block->DoubleValue);
  }
  if (block->ValueKind == 0 && !target.IsFloat && block->Type.IsSigned &&
      target.Size > block->Type.Size) {
    const unsigned count = ((target.Size - block->Type.Size) * 8) % 64;
    block->Value = ArithmeticShiftRight(block->Value << count, count);
  }
}

bool Resolver::SizeofOperator(AreaBlock* block) {
  const std::uint32_t size =
      block->Type.IsAddress ? FirstMember(block->Type).Size : block->Type.Size;
  block->AreaText = WriteNumber(size);
  block->Value = size;
  block->MemorySpace = 0;
  block->IsMemberName = false;
  block->ReferenceLevel = -1;
  block->Type = defaultType;
  block->HasCastType = false;
  block->ValueKind = 0;
  return Settle(block);
}

bool Resolver::Minus(AreaBlock* block) {
  if (!ReadNow(block)) return false;
  block->Value = (0 - block->Value) & MaskOfSize(block->Type.Size);
  block->FloatValue = -block->FloatValue;
  block->DoubleValue = -block->DoubleValue;
  block->BeforeText.pop_back();
  block->AreaText = ValueAsText(*block);
  return true;
}

bool Resolver::Dereference(AreaBlock* block) {
  if (!block->Type.IsPointer) return Fail(kNoDereference);
  if (block->Type.IsAddress && !FirstMember(block->Type).IsPointer) return Fail(kNoDereference);
  if (block->Type.IsAddress) {
    block->ReferenceLevel += 1;
  } else {
    block->Type.IsAddress = true;
  }
  return Settle(block);
}

bool Resolver::BitwiseNot(AreaBlock* block) {
  if (!ReadNow(block)) return false;
  if (block->ValueKind != 0) return Fail("Invalid type for ~ operation");
  block->Value = ~block->Value & MaskOfSize(block->Type.Size);
  block->BeforeText.pop_back();
  block->AreaText = WriteNumber(block->Value);
  return true;
}

bool Resolver::LogicalNot(AreaBlock* block) {
  if (!ReadNow(block)) return false;
  if (block->ValueKind != 0) return Fail("Invalid type for ! operation");
  block->Value = (block->Value == 0 ? 1 : 0) & MaskOfSize(block->Type.Size);
  block->BeforeText.pop_back();
  block->AreaText = WriteNumber(block->Value);
  return true;
}

}  // namespace reference
