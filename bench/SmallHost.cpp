#include "bench/SmallHost.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>

#include "tests/support/TypeKit.h"

namespace bench {
namespace {

constexpr std::uint64_t kBase = 0x10000;

/// Addresses of the objects.
constexpr std::uint64_t kX = kBase;
constexpr std::uint64_t kF = kBase + 8;
constexpr std::uint64_t kD = kBase + 16;
constexpr std::uint64_t kA = kBase + 32;
constexpr std::uint64_t kS = kBase + 64;
constexpr std::uint64_t kFirst = kBase + 80;
constexpr std::uint64_t kSecond = kBase + 96;
constexpr std::uint64_t kThird = kBase + 112;
constexpr std::uint64_t kHead = kBase + 128;
constexpr std::uint64_t kP = kBase + 136;
constexpr std::uint64_t kRing = kBase + 144;

constexpr std::uint64_t kNextInNode = 8;

template <typename Number>
void WriteNumber(Number number, std::string* text) {
  std::array<char, 32> digits;
  text->assign(digits.data(),
               std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr);
}

}  // namespace

template <typename Number>
void SmallHost::Poke(std::uint64_t address, Number value) {
  std::memcpy(bytes_.data() + (address - kBase), &value, sizeof value);
}

SmallHost::SmallHost() {
  const testsupport::TypeKit kit;
  const DataLableType integer = kit.Signed(4);
  const DataLableType node = kit.Stub("structnode", 16);
  const DataLableType inner = kit.Stub("structinner", 8);
  types_["int"] = integer;
  types_["double"] = kit.Double();
  types_["ZV_Lorn"] = kit.Unsigned(4);
  types_["structnode"] =
      kit.Struct("structnode", 16,
                 {kit.Field("v", 0, integer), kit.Field("next", kNextInNode, kit.Pointer(node))});
  types_["structinner"] =
      kit.Struct("structinner", 8, {kit.Field("x", 0, integer), kit.Field("y", 4, integer)});
  types_["structouter"] =
      kit.Struct("structouter", 12, {kit.Field("a", 0, integer), kit.Shell("in", 4, inner)});

  labels_["x"] = {kX, integer};
  labels_["f"] = {kF, kit.Single()};
  labels_["d"] = {kD, kit.Double()};
  labels_["a"] = {kA, kit.Array(integer, 8)};
  labels_["s"] = {kS, kit.Stub("structouter", 12)};
  labels_["head"] = {kHead, kit.Pointer(node)};
  labels_["p"] = {kP, kit.Pointer(node)};

  Poke(kX, 42);
  Poke(kF, 1.5F);
  Poke(kD, 2.25);
  for (int i = 0; i < 8; ++i) Poke(kA + 4 * static_cast<std::uint64_t>(i), i);
  for (int i = 0; i < 3; ++i) Poke(kS + 4 * static_cast<std::uint64_t>(i), i + 1);
  const auto pokeNode = [this](std::uint64_t address, int value, std::uint64_t next) {
    Poke(address, value);
    Poke(address + kNextInNode, next);
  };
  pokeNode(kFirst, 1, kSecond);
  pokeNode(kSecond, 2, kThird);
  pokeNode(kThird, 3, 0);
  pokeNode(kRing, 7, kRing);
  Poke(kHead, kFirst);
  Poke(kP, kRing);
}

bool SmallHost::CheckAddress(std::uint64_t address, std::uint8_t memorySpace) {
  return memorySpace == 0 && address - kBase < bytes_.size();
}

bool SmallHost::IsTypeName(std::string text) {
  text.erase(text.find_last_not_of('*') + 1);
  return types_.contains(text);
}

DataLableType SmallHost::GetTypeDescription(std::string typeName, bool* unknown) {
  const auto found = types_.find(typeName);
  *unknown = found == types_.end();
  return *unknown ? DataLableType() : found->second;
}

std::uint64_t SmallHost::FindLabel(const char* text, bool* undefined, bool* confirmed) {
  std::string_view name = text;
  name.remove_prefix(std::min(name.find_first_not_of('*'), name.size()));
  if (!name.empty() && name.front() >= '0' && name.front() <= '9') {
    std::uint64_t value = 0;
    const char* const end = name.data() + name.size();
    *undefined = std::from_chars(name.data(), end, value).ptr != end;
    *confirmed = true;
    return value;
  }
  const auto found = labels_.find(name);
  if (found == labels_.end()) {
    *undefined = true;
    return 0;
  }
  *confirmed = true;
  LabelTyped = true;
  LabelType.Assign(found->second.type);
  return found->second.address;
}

void SmallHost::ReadMemory(std::uint64_t first, std::uint64_t /*last*/,
                           std::uint16_t /*memorySpace*/, std::uint8_t, std::string* text,
                           std::uint32_t, bool isFloat, bool isDouble) {
  const auto read = [&](auto value) {
    const std::size_t offset = first - kBase;
    const std::size_t wanted = std::min<std::size_t>(sizeof value, accessSize);
    std::memcpy(&value, bytes_.data() + offset, std::min(wanted, bytes_.size() - offset));
    WriteNumber(value, text);
  };
  if (isDouble) {
    read(0.0);
  } else if (isFloat) {
    read(0.0F);
  } else {
    read(std::uint64_t{0});
  }
}

}  // namespace bench
