#include <bit>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>

#include "resolver/Markers.h"
#include "resolver/Owed.h"
#include "resolver/SizeMask.h"
#include "resolver/StringParametersResolving.h"
#include "resolver/ValueText.h"

namespace {

constexpr std::int32_t kPlainValue = -1;

/// Converts the block's value to its `CastType`. The steps build on each other: a floating value
/// cast to a double is truncated by the first and reinterpreted by the third.
void ConvertToCastType(AreaBlock* block) {
  const DataLableType& to = block->CastType;
  if (block->ValueKind != 0 && !to.IsFloat) {
    if (block->ValueKind == 1) {
      block->DoubleValue = static_cast<double>(block->FloatValue);
    } else {
      block->FloatValue = static_cast<float>(block->DoubleValue);
    }
    block->Value = resolver::TruncateToUnsigned(block->DoubleValue);
    block->ValueKind = 0;
    resolver::OweValue(block);
  }
  // Integers become floating by their bits: memory that was read as an integer turns into the
  // number stored there.
  if (block->ValueKind == 0 && to.IsFloat) {
    block->ValueKind = 1;
    block->FloatValue = std::bit_cast<float>(static_cast<std::uint32_t>(block->Value));
    block->DoubleValue = static_cast<double>(block->FloatValue);
    resolver::OweValue(block);
  }
  if (block->ValueKind == 0 && to.IsDouble) {
    block->ValueKind = 2;
    block->DoubleValue = std::bit_cast<double>(block->Value);
    block->FloatValue = static_cast<float>(block->DoubleValue);
    resolver::OweValue(block);
  }
  if (block->ValueKind == 0 && block->Type.IsSigned && to.Size > block->Type.Size) {
    // The distance is that of the two sizes, so the sign reaches the top bit only in 8 bytes.
    const std::uint32_t distance = (to.Size - block->Type.Size) * 8 % 64;
    block->Value =
        static_cast<std::uint64_t>(static_cast<std::int64_t>(block->Value << distance) >> distance);
  }
}

}  // namespace

bool TStringResolver::ApplyPrefixes(AreaBlock* block) {
  while (!block->BeforeText.empty()) {
    switch (block->BeforeText.back()) {
      case resolver::kCastMark:
        if (!ApplyCast(block)) return false;
        break;
      case resolver::kSizeofMark:
        ApplySizeof(block);
        break;
      case '+':
        block->BeforeText.pop_back();
        break;
      case '-':
        if (!ApplyMinus(block)) return false;
        break;
      case '&':
        resolver::WriteOwedPointer(block);
        block->ReferenceLevel -= 1;
        if (!Settle(block)) return false;
        break;
      case '*':
        if (!ApplyDereference(block)) return false;
        break;
      case '~':
        if (!ApplyNot(block, "Invalid type for ~ operation")) return false;
        break;
      case '!':
        if (!ApplyNot(block, "Invalid type for ! operation")) return false;
        break;
      default:
        return Fail("Unknown operation: ", block->BeforeText);
    }
  }
  if (!IndexBlock(block)) return false;
  if (block->AfterText.empty()) return true;
  return Fail("Invalid operation ", block->AfterText);
}

/// Ends an operator that changed how many reads the block owes: drops its character, evens the
/// count out and makes the reads.
bool TStringResolver::Settle(AreaBlock* block) {
  block->BeforeText.pop_back();
  if (block->ReferenceLevel < kPlainValue && block->Type.IsAddress) {
    block->Type.IsAddress = false;
    block->ReferenceLevel += 1;
  }
  if (block->ReferenceLevel < kPlainValue) return Fail("The pointer doesn`t exist");
  if (block->ReferenceLevel == kPlainValue) {
    resolver::OweNumber(block->Value, block);
  }
  return ReadPending(block);
}

/// Makes the reads that the block owes. A mark that its value is still an address outlives them,
/// but for that of a pointer that is owed.
bool TStringResolver::ReadPending(AreaBlock* block) {
  while (block->ReferenceLevel > kPlainValue) {
    const bool isAddress = !block->OwesPointer && block->Type.IsAddress;
    // A pointer that is owed is no array, whatever its pointee is.
    if (!block->OwesPointer) block->Type.IsArray = false;
    if (!ReadThroughAddress(block)) return false;
    block->Type.IsAddress = isAddress;
  }
  return true;
}

/// Fetches the object of a block that holds an address, for an operator that needs its value.
bool TStringResolver::ReadOperand(AreaBlock* block) {
  if (!resolver::IsAddress(*block)) return true;
  if (!ReadThroughAddress(block)) return false;
  block->ReferenceLevel += 1;
  block->Type.IsAddress = false;
  return true;
}

bool TStringResolver::ApplyCast(AreaBlock* block) {
  if (resolver::IsAddress(*block)) {
    // The first read takes an owed pointer away. Without one to come, it has to be made.
    if (block->ReferenceLevel < kPlainValue) resolver::WriteOwedPointer(block);
    if (!block->OwesPointer) block->Type.IsAddress = false;
    block->ReferenceLevel += 1;
  }
  if (block->ReferenceLevel < kPlainValue) return Fail("The pointer doesn`t exist");
  if (block->ReferenceLevel == kPlainValue) resolver::OweValue(block);
  if (!ReadPending(block)) return false;

  std::string& before = block->BeforeText;
  before.pop_back();
  const std::size_t open = before.rfind(resolver::kCastMark);
  if (open == std::string::npos) {
    return Fail("Internal error is occurred during the type conversion");
  }
  const std::size_t position = before.size() - 1 - open;
  // One character of the encoding stays for `Settle` to drop.
  before.erase(open, position);
  const DataLableType* saved = SavedType(position);
  if (saved == nullptr) return Fail("Reference to unexisting type");
  block->CastType.Assign(*saved);
  // The reads above have left a plain value.
  block->CastType.IsAddress = false;
  ConvertToCastType(block);
  block->Type.Assign(block->CastType);
  return Settle(block);
}

void TStringResolver::ApplySizeof(AreaBlock* block) {
  const bool isPointer = block->Type.IsAddress && !block->OwesPointer;
  block->Value = isPointer ? FirstMember(block->Type).Size : block->Type.Size;
  block->OwesPointer = false;
  block->ValueKind = 0;
  block->MemorySpace = 0;
  block->IsMemberName = false;
  block->ReferenceLevel = kPlainValue;
  block->Type.Assign(defaultType);
  block->HasCastType = false;
  block->BeforeText.pop_back();
  resolver::OweValue(block);
}

/// The type stays: minus an unsigned number is its complement, not a negative one.
bool TStringResolver::ApplyMinus(AreaBlock* block) {
  if (!ReadOperand(block)) return false;
  block->Value = (0 - block->Value) & resolver::SizeMask(block->Type.Size);
  block->FloatValue = -block->FloatValue;
  block->DoubleValue = -block->DoubleValue;
  block->BeforeText.pop_back();
  resolver::OweValue(block);
  return true;
}

bool TStringResolver::ApplyNot(AreaBlock* block, const char* floatingMessage) {
  if (!ReadOperand(block)) return false;
  if (block->ValueKind != 0) return Fail(floatingMessage);
  const bool logical = block->BeforeText.back() == '!';
  const std::uint64_t value =
      logical ? static_cast<std::uint64_t>(block->Value == 0) : ~block->Value;
  block->Value = value & resolver::SizeMask(block->Type.Size);
  block->BeforeText.pop_back();
  resolver::OweValue(block);
  return true;
}

/// A pointer value is only marked as an address; the read is put off until its object is needed.
bool TStringResolver::ApplyDereference(AreaBlock* block) {
  resolver::WriteOwedPointer(block);
  DataLableType& type = block->Type;
  if (!type.IsPointer || (type.IsAddress && !FirstMember(type).IsPointer)) {
    return Fail("Can`t do the dereference operation with this type");
  }
  if (type.IsAddress) {
    block->ReferenceLevel += 1;
  } else {
    type.IsAddress = true;
  }
  return Settle(block);
}
