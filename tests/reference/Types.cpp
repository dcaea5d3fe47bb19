#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>

#include "tests/reference/Resolver.h"
#include "tests/reference/Values.h"

namespace reference {

bool Resolver::RegisterType(std::string* text) {
  DataLableType type;
  bool unknown = false;
  int stars = 0;
  while (!text->empty() && text->back() == '\x0f') {
    text->pop_back();
    ++stars;
  }
  type = parentInterface->GetTypeDescription(*text, &unknown);
  for (; stars > 0; --stars) {
    type = type.FormPointer();
    type.IsAddress = false;
  }
  savedTypes.push_back(type);
  const std::size_t position = savedTypes.size() - 1;
  *text = "\x18" + std::string(position, '\x19') + "\x18";
  return unknown;
}

bool Resolver::ProcessAreaAsType(AreaBlock* block, std::string text) {
  if (!text.empty()) text.erase(0, 1);
  const std::uint64_t position = ReadNumber<std::uint64_t>(text);
  if (position >= savedTypes.size()) return Fail("Reference to unexisting type");
  block->Type = *std::next(savedTypes.begin(), static_cast<std::ptrdiff_t>(position));
  block->HasCastType = true;
  return true;
}

/// Of a type without members: the default type.
DataLableType Resolver::FirstMember(const DataLableType& type) {
  if (type.Members.empty()) return defaultType;
  return type.Members.front();
}

std::string Resolver::ValueAsText(const AreaBlock& block) {
  if (block.ValueKind == 0) return WriteNumber(block.Value);
  if (block.ValueKind == 1) return WriteNumber(block.FloatValue);
  return WriteNumber(block.DoubleValue);
}

}  // namespace reference
