#include "tests/reference/WorldHost.h"

#include <cstring>
#include <vector>

#include "tests/reference/Values.h"

namespace reference {
namespace {

// What a host should not write, and may: each ends in some number or in 0.
const std::vector<std::string> kOddTexts = {"",
                                            "abc",
                                            "\t5",
                                            "5\t6",
                                            " 7",
                                            "\n12",
                                            "-3",
                                            "-1.5",
                                            "+4",
                                            "0x10",
                                            "1,5",
                                            "1.5",
                                            "1e5",
                                            "1.5e",
                                            "2e+",
                                            "inf",
                                            "nan",
                                            "-inf",
                                            "-0.0",
                                            "1.5e+300",
                                            "-1e-400",
                                            "1e999",
                                            "-2e20",
                                            "1e19",
                                            "9e18",
                                            "1\t.5",
                                            "4 2",
                                            "18446744073709551615",
                                            "18446744073709551616",
                                            "-18446744073709551616",
                                            "99999999999999999999",
                                            "0,25",
                                            "1e-3",
                                            "-9223372036854775809"};

/// Less the blanks that the resolver keeps, and less the stars in front or behind.
std::string Plain(std::string text) {
  for (std::size_t i = text.find(":@:"); i != std::string::npos; i = text.find(":@:")) {
    text.erase(i, 3);
  }
  while (text.starts_with("*")) text.erase(0, 1);
  while (text.ends_with("*")) text.pop_back();
  return text;
}

template <typename Floating>
std::string FloatingText(std::uint64_t bits, int digits) {
  Floating number = 0;
  std::memcpy(&number, &bits, sizeof number);
  std::ostringstream stream;
  stream.imbue(std::locale::classic());
  stream.precision(digits);
  stream << number;
  return stream.str();
}

}  // namespace

bool WorldHost::CheckAddress(std::uint64_t address, std::uint8_t memorySpace) {
  const bool readable = world_.Readable(address, memorySpace);
  log += "CheckAddress " + std::to_string(address) + " space " + std::to_string(memorySpace) +
         " access " + std::to_string(accessSize) + (readable ? "" : " refused") + "\n";
  return readable;
}

std::string WorldHost::GetFileName() {
  log += "GetFileName\n";
  return world_.fileName;
}

bool WorldHost::IsTypeName(std::string text) {
  log += "IsTypeName " + text + "\n";
  if (text.starts_with("*")) return false;
  return world_.IsType(Plain(text));
}

DataLableType WorldHost::GetTypeDescription(std::string typeName, bool* unknown) {
  log += "GetTypeDescription " + typeName + (*unknown ? " unknown before\n" : "\n");
  const auto found = world_.namedTypes.find(Plain(typeName));
  if (found != world_.namedTypes.end()) return found->second;
  *unknown = true;
  DataLableType nothing;
  nothing.Size = 3;
  return nothing;
}

std::uint64_t WorldHost::FindLabel(const char* text, bool* undefined, bool* confirmed) {
  log += std::string("FindLabel ") + text + (*undefined ? " undefined before" : "") +
         (LabelTyped ? " typed before" : "") +
         (LabelType != DataLableType() || LabelType.PointerSize != 8 ? " odd type before" : "") +
         "\n";
  const std::string name = Plain(text);
  const auto found = world_.labelByName.find(name);
  if (found == world_.labelByName.end()) {
    *confirmed = true;
    LabelTyped = world_.typedNumerals;
    LabelType.Size = 4;
    LabelType.PointerSize = world_.pointerSize;
    return Numeral(name, undefined);
  }
  const Label& label = world_.labels[found->second];
  if (label.confirmed) *confirmed = true;
  LabelTyped = label.typed;
  LabelType = label.type;
  return label.value;
}

std::uint64_t WorldHost::Numeral(const std::string& text, bool* undefined) const {
  if (text.size() == 3 && text.front() == '\'' && text.back() == '\'') {
    return static_cast<std::uint8_t>(text[1]);
  }
  const bool hexadecimal = text.starts_with("0x") && text.size() > 2;
  const std::string digits = hexadecimal ? text.substr(2) : text;
  std::uint64_t value = 0;
  for (const char byte : digits) {
    const std::size_t digit = std::string("0123456789abcdef").find(byte);
    if (digit == std::string::npos || digit >= (hexadecimal ? 16 : 10)) *undefined = true;
    value = value * (hexadecimal ? 16 : 10) + digit;
  }
  if (digits.empty()) *undefined = true;
  return value;
}

void WorldHost::ReadMemory(std::uint64_t first, std::uint64_t last, std::uint16_t memorySpace,
                           std::uint8_t one, std::string* text, std::uint32_t count, bool isFloat,
                           bool isDouble) {
  log += "ReadMemory " + std::to_string(first) + " " + std::to_string(last) + " space " +
         std::to_string(memorySpace) + " " + std::to_string(one) + " '" + *text + "' " +
         std::to_string(count) + (isFloat ? " float" : "") + (isDouble ? " double" : "") +
         " access " + std::to_string(accessSize) + "\n";
  Random random(first * 2 + world_.seed);
  if (random.Chance(world_.dirt)) {
    *text = random.Of(kOddTexts);
    return;
  }
  std::uint64_t value = 0;
  for (std::uint32_t i = 0; i < accessSize; ++i) {
    value |= std::uint64_t{world_.ByteAt(first + i, memorySpace)} << (8 * i);
  }
  if (isDouble) {
    *text = FloatingText<double>(value, 17);
  } else if (isFloat) {
    *text = FloatingText<float>(value, 9);
  } else {
    *text = WriteNumber(value);
  }
}

}  // namespace reference
