#include <cstddef>
#include <string>

#include "tests/reference/Resolver.h"
#include "tests/reference/Values.h"

namespace reference {

Resolver::Resolver(TParrentInterface* parent) : parentInterface(parent) {
  const std::string file = parentInterface->GetFileName();
  bool assembly = file.find(".asm") != std::string::npos;
  if (!assembly) assembly = file.find(".s") != std::string::npos;
  if (assembly) {
    delimitersWithParentheses = "()%!~&*-><=^|+-/\x08\x18\x19";
    delimiters = "%!~&*-><=^|+-/\x08\x18\x19";
  } else {
    delimitersWithParentheses = "()%!~&*.-><=^|+-/\x08\x18\x19";
    delimiters = "%!~&*.-><=^|+-/\x08\x18\x19";
  }
}

bool Resolver::Fail(const std::string& message) {
  errorMessage = message;
  return false;
}

bool Resolver::SolveStringOfElements(std::string expression) {
  std::string text = expression;
  ProcessBasickTypes(&text);
  if (!RewriteSizeofs(&text)) return false;
  while (text.find(' ') != std::string::npos) text.erase(text.find(' '), 1);
  CheckFloatingPointStr(&text);
  RewriteBrackets(&text);
  if (!SolveGroups(&text)) return false;
  if (text.empty()) return false;
  if (!SolveBasicElement(text)) return false;
  return ConvertResult(areaBlocks.front());
}

bool Resolver::RewriteSizeofs(std::string* text) {
  const std::string keyword = "sizeof";
  std::size_t position = 0;
  while (text->find(keyword, position) != std::string::npos) {
    position = text->find(keyword, position);
    const std::size_t end = position + keyword.size();
    const bool stands = end < text->size() && ((*text)[end] == ' ' || (*text)[end] == '(');
    if (!stands) {  // glued to a name, or at the very end
      ++position;
      continue;
    }
    text->erase(position, keyword.size());

    const std::size_t close = text->find(')', position);
    if ((*text)[position] != '(' || close == std::string::npos) {
      text->insert(position, "\x08");
      continue;
    }
    std::string operand = text->substr(position + 1, close - position - 1);
    while (operand.find(' ') != std::string::npos) operand.erase(operand.find(' '), 1);
    if (!parentInterface->IsTypeName(operand)) {
      text->insert(position, "\x08");
      continue;
    }
    text->erase(position, close - position + 1);
    std::uint64_t size = 0;
    if (!MeasureType(operand, &size)) return false;
    text->insert(position, WriteNumber(size));
  }
  return true;
}

/// Leaves `savedTypes` and the message alone.
bool Resolver::MeasureType(std::string name, std::uint64_t* size) {
  for (char& byte : name) {
    if (byte == '*') byte = '\x0f';
  }
  int stars = 0;
  while (!name.empty() && name.back() == '\x0f') {
    name.pop_back();
    ++stars;
  }
  bool unknown = false;
  DataLableType type = parentInterface->GetTypeDescription(name, &unknown);
  if (unknown) return false;
  for (; stars > 0; --stars) type = type.FormPointer();
  *size = type.Size;
  return true;
}

void Resolver::RewriteBrackets(std::string* text) {
  for (std::size_t i = text->find('['); i != std::string::npos; i = text->find('[', i + 1)) {
    text->replace(i, 1, "[(");
  }
  for (std::size_t i = text->find(']'); i != std::string::npos; i = text->find(']', i + 2)) {
    text->replace(i, 1, ")]");
  }
}

bool Resolver::SolveGroups(std::string* text) {
  while (text->find('(') != std::string::npos) {
    const std::size_t position = text->rfind('(');
    const std::string rest = text->substr(position + 1);
    if (rest.find(')') == std::string::npos) return Fail("Can`t find the end quote.");
    std::string group = rest.substr(0, rest.find(')'));
    text->erase(position, group.size() + 2);
    if (group.empty()) continue;

    if (parentInterface->IsTypeName(group)) {
      for (char& byte : group) {
        if (byte == '*') byte = '\x0f';
      }
      if (RegisterType(&group)) return false;
      text->insert(position, group);
    } else {
      if (!SolveBasicElement(group)) return false;
      SpliceResult(text, position);
    }
  }
  return true;
}

void Resolver::SpliceResult(std::string* text, std::size_t position) {
  const std::string fence = "^*^*^^";
  AreaBlock result = areaBlocks.front();
  CheckFloatingPointStr(&result.AreaText);
  savedTypes.push_back(result.Type);
  const std::size_t index = savedTypes.size() - 1;

  text->insert(position, fence);
  text->insert(position, result.AreaText);
  if (result.MemorySpace != 0) text->insert(position, "#");
  text->insert(position, "\x0e");
  text->insert(position, WriteNumber(index));
  text->insert(position, "@");
  text->insert(position, "\r");
  text->insert(position, fence);
}

bool Resolver::ConvertResult(AreaBlock result) {
  RestoreFloatingPointStr(&result.AreaText);
  resultAddress = ReadNumber<std::uint64_t>(result.AreaText) & 0xFFFFFFFF;
  resultMemorySpace = result.MemorySpace != 0;

  bool spaceFlag = false;
  if (result.Type.IsAddress && !MoveFromPointerToObject(&result, &spaceFlag)) {
    return Fail("Error occurred");
  }
  while (result.Type.IsArray) {
    if (!MoveFromPointerToObject(&result, &spaceFlag)) return Fail("Error occurred");
  }
  if (result.HasCastType && result.Type.Size == 0) return Fail("Error occurred");
  resultSize = result.HasCastType ? result.Type.Size : 8;

  RestoreFloatingPointStr(&result.AreaText);
  if (result.ValueKind == 0) {
    const std::uint64_t mask = MaskOfSize(resultSize);
    resultValue = ReadNumber<std::uint64_t>(result.AreaText) & mask;
    resultNegative = result.Type.IsSigned && ((resultValue >> SignBit(resultSize)) & 1) != 0;
    if (resultNegative) resultValue = (0 - resultValue) & mask;
    resultFloating = false;
    return true;
  }
  if (result.Type.IsDouble) {
    const std::uint64_t bits = ReadNumber<std::uint64_t>(result.AreaText);
    resultFloat = static_cast<float>(DoubleOfBits(bits));
  } else if (result.Type.IsFloat) {
    resultFloat = FloatOfBits(ReadNumber<std::uint64_t>(result.AreaText));
  } else {
    resultFloat = ReadNumber<float>(result.AreaText);
  }
  resultValue = Truncate(resultFloat);
  resultNegative = false;
  resultFloating = true;
  return true;
}

}  // namespace reference
