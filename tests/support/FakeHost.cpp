#include "tests/support/FakeHost.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>

#include "tests/support/Numeral.h"

namespace testsupport {
namespace {

std::string Hex(std::uint64_t value) {
  std::array<char, 16> digits{};
  const auto [end, error] = std::to_chars(digits.begin(), digits.end(), value, 16);
  return "0x" + std::string(digits.begin(), end);
}

template <typename Number>
std::string Decimal(Number value) {
  std::array<char, 400> digits{};
  const auto [end, error] = std::to_chars(digits.begin(), digits.end(), value);
  return std::string(digits.begin(), end);
}

std::string Quoted(std::string_view text) {
  return "\"" + Visible(text) + "\"";
}

}  // namespace

std::string Visible(std::string_view text) {
  static constexpr std::string_view kHex = "0123456789abcdef";
  std::string shown;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '\r') {
      shown += "\\r";
    } else if (byte < 0x20 || byte == 0x7f) {
      shown += "\\x";
      shown += kHex[byte >> 4U];
      shown += kHex[byte & 0xFU];
    } else {
      shown += c;
    }
  }
  return shown;
}

std::string FakeHost::Canonical(std::string_view name) {
  std::string result;
  for (std::size_t i = 0; i < name.size(); ++i) {
    if (name.substr(i, 3) == ":@:") {
      i += 2;
    } else if (name[i] != ' ') {
      result += name[i];
    }
  }
  return result;
}

void FakeHost::AddLabel(const std::string& name, std::uint64_t value) {
  labels_[Canonical(name)] = {value, std::nullopt};
}

void FakeHost::AddLabel(const std::string& name, std::uint64_t address, const DataLableType& type) {
  labels_[Canonical(name)] = {address, type};
}

void FakeHost::AddType(const std::string& name, const DataLableType& record) {
  records_.insert_or_assign(Canonical(name), record);
}

void FakeHost::Poke(std::uint64_t address, std::uint64_t value, std::uint32_t size,
                    unsigned space) {
  for (std::uint32_t i = 0; i < size; ++i) {
    const std::uint32_t place = order_ == ByteOrder::kLittle ? i : size - 1 - i;
    memory_[{space, address + place}] = static_cast<std::uint8_t>(value);
    value >>= 8U;
  }
}

void FakeHost::PokeFloat(std::uint64_t address, float value, unsigned space) {
  Poke(address, std::bit_cast<std::uint32_t>(value), 4, space);
}

void FakeHost::PokeDouble(std::uint64_t address, double value, unsigned space) {
  Poke(address, std::bit_cast<std::uint64_t>(value), 8, space);
}

void FakeHost::PokeString(std::uint64_t address, std::string_view bytes, unsigned space) {
  for (const char c : bytes) memory_[{space, address++}] = static_cast<std::uint8_t>(c);
}

void FakeHost::Answer(std::uint64_t address, const std::string& text, unsigned space) {
  answers_[{space, address}] = text;
}

void FakeHost::MakeUnreadable(std::uint64_t first, std::uint64_t last, unsigned space) {
  unreadable_.push_back({first, last, space});
}

void FakeHost::ClearCalls() {
  calls.clear();
  callCount = 0;
  throwAt_.reset();
  failAt_.reset();
}

bool FakeHost::Enter(const std::string& call) {
  const std::size_t index = callCount++;
  if (!quiet) calls.push_back(call + " accessSize=" + Decimal(accessSize));
  if (onCall) onCall(index, call);
  if (throwAt_ == index) throw HostFailure("the host failed in " + call);
  return failAt_ == index;
}

void FakeHost::Require(bool kept, const char* rule) {
  if (!kept) violations.emplace_back(rule);
}

std::uint64_t FakeHost::Peek(std::uint64_t address, std::uint32_t size, unsigned space) const {
  std::uint64_t value = 0;
  for (std::uint32_t i = 0; i < size; ++i) {
    const std::uint32_t place = order_ == ByteOrder::kLittle ? size - 1 - i : i;
    const auto byte = memory_.find({space, address + place});
    value = (value << 8U) | (byte == memory_.end() ? 0 : byte->second);
  }
  return value;
}

bool FakeHost::CheckAddress(std::uint64_t address, std::uint8_t memorySpace) {
  Require(accessSize >= 1 && accessSize <= 8, "CheckAddress: accessSize is 1 to 8");
  Require(memorySpace <= 1, "CheckAddress: the memory space is 0 or 1");
  const bool fail =
      Enter("CheckAddress(" + Hex(address) + ", " + Decimal(unsigned{memorySpace}) + ")");
  return !fail && std::none_of(unreadable_.begin(), unreadable_.end(), [&](const Range& range) {
    return range.space == memorySpace && range.first <= address && address <= range.last;
  });
}

std::string FakeHost::GetFileName() {
  const bool fail = Enter("GetFileName()");
  return fail ? std::string() : fileName;
}

bool FakeHost::IsTypeName(std::string text) {
  if (Enter("IsTypeName(" + Quoted(text) + ")")) return false;
  text.erase(text.find_last_not_of('*') + 1);
  const std::string name = Canonical(text);
  return records_.contains(name) || vanishing_.contains(name);
}

DataLableType FakeHost::GetTypeDescription(std::string typeName, bool* unknown) {
  Require(!*unknown, "GetTypeDescription: *unknown is false before the call");
  const bool fail = Enter("GetTypeDescription(" + Quoted(typeName) + ")");
  const auto found = records_.find(Canonical(typeName));
  if (fail || found == records_.end()) {
    *unknown = true;
    return {};
  }
  return found->second;
}

std::uint64_t FakeHost::FindLabel(const char* text, bool* undefined, bool* confirmed) {
  Require(!*undefined, "FindLabel: *undefined is false before the call");
  Require(!*confirmed, "FindLabel: *confirmed is false before the call");
  Require(!LabelTyped, "FindLabel: LabelTyped is false before the call");
  DataLableType eightBytes;
  Require(LabelType == eightBytes, "FindLabel: LabelType is 8 bytes unsigned before the call");
  const std::string_view spelled(text);
  const bool fail = Enter("FindLabel(" + Quoted(spelled) + ")");
  const std::string name =
      Canonical(spelled.substr(std::min(spelled.find_first_not_of('*'), spelled.size())));
  *confirmed = !unconfirmed_.contains(name);
  const auto found = labels_.find(name);
  if (!fail && found != labels_.end()) {
    if (found->second.type) {
      LabelTyped = true;
      LabelType = *found->second.type;
    }
    return found->second.value;
  }
  const std::optional<std::uint64_t> numeral = ReadNumeral(name);
  if (fail || !numeral) *undefined = true;
  return numeral.value_or(0);
}

void FakeHost::Reserved() {
  Enter("Reserved()");
}

void FakeHost::ReadMemory(std::uint64_t first, std::uint64_t last, std::uint16_t memorySpace,
                          std::uint8_t one, std::string* text, std::uint32_t count, bool isFloat,
                          bool isDouble) {
  Require(accessSize >= 1 && accessSize <= 8, "ReadMemory: accessSize is 1 to 8");
  Require(first == last, "ReadMemory: one object, so first and last are the same");
  Require(one == 1 && count == 1, "ReadMemory: the two constants are 1");
  Require(text->empty(), "ReadMemory: *text is empty before the call");
  const bool fail =
      Enter("ReadMemory(" + Hex(first) + ", " + Hex(last) + ", " + Decimal(unsigned{memorySpace}) +
            ", " + Decimal(unsigned{one}) + ", " + Decimal(count) +
            ", float=" + (isFloat ? "1" : "0") + ", double=" + (isDouble ? "1" : "0") + ")");
  if (fail) return;
  const auto answer = answers_.find({memorySpace, first});
  if (answer != answers_.end()) {
    *text = answer->second;
  } else if (isDouble) {
    *text = Decimal(std::bit_cast<double>(Peek(first, 8, memorySpace)));
  } else if (isFloat) {
    const auto bits = static_cast<std::uint32_t>(Peek(first, 4, memorySpace));
    *text = Decimal(std::bit_cast<float>(bits));
  } else {
    *text = Decimal(Peek(first, std::min(accessSize, 8U), memorySpace));
  }
}

}  // namespace testsupport
