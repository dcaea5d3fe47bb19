#include "bench/MemoryHost.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cstring>
#include <span>
#include <stdexcept>

namespace bench {
namespace {

/// Objects of the labels reach no further than this many bytes.
constexpr std::size_t kLargestObject = 4096;

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

template <typename Number>
void WriteNumber(Number number, std::string* text) {
  std::array<char, 32> digits;
  text->assign(digits.data(),
               std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr);
}

/// A floating value that is a number of thousandths, as most in programs are, is written as that;
/// for any other the shortest digits have to be found, which takes ten times as long.
void WriteFloating(double value, std::string* text) {
  const double scaled = value * 1000;
  const auto thousandths = static_cast<std::uint64_t>(scaled >= 0 && scaled < 1e15 ? scaled : 0);
  // Zero, which may have a sign, takes the long way as well.
  if (thousandths == 0 || static_cast<double>(thousandths) / 1000 != value) {
    return WriteNumber(value, text);
  }
  WriteNumber(thousandths / 1000, text);
  std::uint64_t rest = thousandths % 1000;
  if (rest != 0) *text += '.';
  for (; rest != 0; rest = rest * 10 % 1000) *text += static_cast<char>('0' + rest / 100);
}

}  // namespace

MemoryHost::MemoryHost(targets::LabelSource& labels, targets::MemorySource& memory,
                       const std::vector<std::string>& names) {
  std::uint64_t end = 0;
  base_ = ~std::uint64_t{0};
  for (const std::string& name : names) {
    const std::optional<targets::Label> label = labels.FindLabel(name);
    if (!label || !label->typed) throw std::runtime_error("no variable is called " + name);
    labels_[name] = {label->value, label->type};
    TakeStructures(label->type, labels);
    base_ = std::min(base_, label->value);
    end = std::max(end, label->value + kLargestObject);
  }
  bytes_.resize(end - base_);
  memory.Read(base_, 0, std::as_writable_bytes(std::span(bytes_)));
  for (const char* name : {"int", "char", "long", "double", "float", "struct node"}) {
    if (const std::optional<DataLableType> type = labels.FindType(name)) {
      std::string text = name;
      std::erase(text, ' ');
      types_[text] = *type;
    }
  }
}

void MemoryHost::TakeStructures(const DataLableType& type, targets::LabelSource& labels) {
  std::vector<DataLableType> pending{type};
  while (!pending.empty()) {
    const DataLableType next = pending.back();
    pending.pop_back();
    for (const DataLableType& member : next.Members) pending.push_back(member);
    for (const std::string& name : next.NestedTypes) {
      if (types_.contains(name)) continue;
      const std::optional<DataLableType> full = labels.FindType(name);
      if (!full) throw std::runtime_error("no type is called " + name);
      types_[name] = *full;
      pending.push_back(*full);
    }
  }
}

bool MemoryHost::CheckAddress(std::uint64_t address, std::uint8_t memorySpace) {
  return memorySpace == 0 && address - base_ < bytes_.size();
}

bool MemoryHost::IsTypeName(std::string text) {
  while (text.ends_with('*')) text.pop_back();
  return types_.contains(text);
}

DataLableType MemoryHost::GetTypeDescription(std::string typeName, bool* unknown) {
  const auto found = types_.find(typeName);
  *unknown = found == types_.end();
  return *unknown ? DataLableType() : found->second;
}

std::uint64_t MemoryHost::FindLabel(const char* text, bool* undefined, bool* confirmed) {
  if (IsDigit(*text)) {
    std::uint64_t value = 0;
    for (; IsDigit(*text); ++text) value = value * 10 + static_cast<std::uint64_t>(*text - '0');
    *undefined = *text != '\0';
    *confirmed = true;
    return value;
  }
  const auto found = labels_.find(std::string_view(text));
  if (found == labels_.end()) {
    *undefined = true;
    return 0;
  }
  *confirmed = true;
  LabelTyped = true;
  LabelType.Assign(found->second.type);
  return found->second.address;
}

void MemoryHost::ReadMemory(std::uint64_t first, std::uint64_t /*last*/,
                            std::uint16_t /*memorySpace*/, std::uint8_t, std::string* text,
                            std::uint32_t, bool isFloat, bool isDouble) {
  static_assert(std::endian::native == std::endian::little);
  const std::size_t offset = first - base_;
  const std::size_t size = isDouble ? 8 : isFloat ? 4 : accessSize;
  std::uint64_t bits = 0;
  std::memcpy(&bits, bytes_.data() + offset, std::min(size, bytes_.size() - offset));
  if (isDouble) {
    WriteFloating(std::bit_cast<double>(bits), text);
  } else if (isFloat) {
    WriteFloating(static_cast<double>(std::bit_cast<float>(static_cast<std::uint32_t>(bits))),
                  text);
  } else {
    WriteNumber(bits, text);
  }
}

}  // namespace bench
