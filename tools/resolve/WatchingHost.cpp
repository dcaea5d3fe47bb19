#include "tools/resolve/WatchingHost.h"

#include <algorithm>
#include <charconv>
#include <string_view>
#include <utility>

namespace tool {
namespace {

// Stands for the tag in the record of a structure that has none.
constexpr std::string_view kNoTag = "<anonymous>";

}  // namespace

void WatchingHost::Start() {
  StartResolution();
  described_.clear();
  lastFloating_ = 0.0;
  failedLast_ = false;
}

bool WatchingHost::CheckAddress(std::uint64_t address, std::uint8_t memorySpace) {
  const bool before = FirstFailure().has_value();
  const bool readable = ProgramHost::CheckAddress(address, memorySpace);
  failedLast_ = FirstFailure().has_value() && !before;
  return readable;
}

std::uint64_t WatchingHost::FindLabel(const char* text, bool* undefined, bool* confirmed) {
  const bool before = FirstFailure().has_value();
  const std::uint64_t value = ProgramHost::FindLabel(text, undefined, confirmed);
  failedLast_ = FirstFailure().has_value() && !before;
  return value;
}

bool WatchingHost::Described(const std::string& record) const {
  if (described_.count(record) != 0) return true;
  const bool hasTag = record.find(' ') != std::string::npos;
  return !hasTag && std::any_of(described_.begin(), described_.end(), [](const std::string& name) {
    return name.find(kNoTag) != std::string::npos;
  });
}

DataLableType WatchingHost::GetTypeDescription(std::string typeName, bool* unknown) {
  failedLast_ = false;
  DataLableType type = ProgramHost::GetTypeDescription(std::move(typeName), unknown);
  if (!*unknown) described_.insert(type.Name);
  return type;
}

void WatchingHost::ReadMemory(std::uint64_t first, std::uint64_t last, std::uint16_t memorySpace,
                              std::uint8_t count, std::string* text, std::uint32_t step,
                              bool isFloat, bool isDouble) {
  const bool before = FirstFailure().has_value();
  ProgramHost::ReadMemory(first, last, memorySpace, count, text, step, isFloat, isDouble);
  failedLast_ = FirstFailure().has_value() && !before;
  if (!isFloat && !isDouble) return;
  lastFloating_ = 0.0;
  std::from_chars(text->data(), text->data() + text->size(), lastFloating_);
}

}  // namespace tool
