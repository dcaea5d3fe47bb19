#include <cstdint>
#include <string>

#include "resolver/Owed.h"
#include "resolver/SizeMask.h"
#include "resolver/StringParametersResolving.h"
#include "resolver/ValueText.h"

/// The type of what a location of this type holds: the pointee of a pointer, the element of an
/// array; the default type for all others, and where the host names none.
const DataLableType& TStringResolver::ObjectType(const DataLableType& location) const {
  const bool names = (location.IsArray || location.IsPointer) && !location.Members.empty();
  return names ? location.Members.front() : defaultType;
}

/// Reads an object of this type into the location that it is read from. `*text` receives what the
/// host writes. An array is not read: its value is its address.
bool TStringResolver::ReadLocation(const DataLableType& object, Location* at, std::string* text) {
  const std::uint32_t objectSize = resolver::AccessSize(object.Size);
  std::uint32_t& accessSize = parentInterface->accessSize;
  // A short pointer is fetched with the four bytes of an address.
  accessSize = object.IsPointer && object.Size < 8 ? 4 : objectSize;
  if (at->space != 0) accessSize = 8;

  if (object.IsArray) {
    at->value &= resolver::SizeMask(accessSize);
  } else {
    text->clear();
    if (!parentInterface->CheckAddress(at->value, at->space)) return Fail("Invalid address");
    parentInterface->ReadMemory(at->value, at->value, at->space, 1, text, 1, object.IsFloat,
                                object.IsDouble);
    if (object.IsDouble) {
      at->full = resolver::ReadDouble(*text);
      at->single = static_cast<float>(at->full);
      at->kind = 2;
    } else if (object.IsFloat) {
      at->single = static_cast<float>(resolver::ReadDouble(*text));
      at->full = static_cast<double>(at->single);
      at->kind = 1;
    }
    if (!resolver::ReadDigits(*text, &at->value)) {
      std::erase(*text, '\t');
      at->value = resolver::ReadUnsigned(*text);
    }
  }

  accessSize = objectSize;
  at->value &= resolver::SizeMask(accessSize);
  at->space = 0;
  return true;
}

/// Replaces an address by the object stored there.
bool TStringResolver::ReadThroughAddress(AreaBlock* block) {
  DataLableType& type = block->Type;
  if (block->OwesPointer) {
    // Moving to the pointee of a pointer that was never made is leaving it so.
    block->OwesPointer = false;
    block->Value &= resolver::SizeMask(type.PointerSize);
  } else {
    block->Value &= resolver::SizeMask(type.Size);
    type.Assign(ObjectType(type));
  }
  Location at{block->Value, block->MemorySpace, block->ValueKind, block->FloatValue,
              block->DoubleValue};
  if (!type.IsArray) block->Owed = OwedText::kNone;
  if (!ReadLocation(type, &at, &block->AreaText)) return false;
  block->Value = at.value;
  block->MemorySpace = at.space;
  block->ValueKind = at.kind;
  block->FloatValue = at.single;
  block->DoubleValue = at.full;
  // The value is in its own representation now; a later read of the type as a bit pattern would
  // take it for one that still has to be converted.
  type.IsFloat = false;
  type.IsDouble = false;
  block->ReferenceLevel -= 1;
  resolver::OweValue(block, OwedText::kProtectedFloating);
  return true;
}
