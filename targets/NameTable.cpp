#include "targets/NameTable.h"

#include <bit>
#include <functional>
#include <stdexcept>

namespace targets {
namespace {

/// A command evaluates one expression, for which it looks up a few names. They are searched for:
/// building chains took a sixth of the time in which 10 MB of debug information are opened.
constexpr std::uint32_t kMostSearches = 16;

std::uint32_t HashOf(std::string_view name) {
  return static_cast<std::uint32_t>(std::hash<std::string_view>{}(name));
}

}  // namespace

void NameTable::Add(std::string_view name) {
  if (names_.size() == kNone) throw std::length_error("more names than 32 bits can number");
  names_.push_back(name);
  hashes_.push_back(HashOf(name));
}

std::uint32_t NameTable::First(std::string_view name) {
  if (names_.empty()) return kNone;
  if (!HasChains()) {
    if (searches_ < kMostSearches) {
      ++searches_;
      return Search(0, name);
    }
    BuildChains();
  }
  return FirstIn(heads_[HashOf(name) & (heads_.size() - 1)], name);
}

std::uint32_t NameTable::Next(std::uint32_t number) const {
  if (!HasChains()) return Search(number + 1, names_[number]);
  return FirstIn(next_[number], names_[number]);
}

void NameTable::BuildChains() {
  heads_.assign(std::bit_ceil(names_.size()), kNone);
  next_.assign(names_.size(), kNone);
  // Backwards, so that every chain ascends.
  for (std::uint32_t number = Size(); number-- > 0;) {
    std::uint32_t& head = heads_[hashes_[number] & (heads_.size() - 1)];
    next_[number] = head;
    head = number;
  }
}

/// The first one from `number` on that has this name, looked for among all.
std::uint32_t NameTable::Search(std::uint32_t number, std::string_view name) const {
  const std::uint32_t hash = HashOf(name);
  for (; number < Size(); ++number) {
    if (hashes_[number] == hash && names_[number] == name) return number;
  }
  return kNone;
}

std::uint32_t NameTable::FirstIn(std::uint32_t number, std::string_view name) const {
  while (number != kNone && names_[number] != name) number = next_[number];
  return number;
}

}  // namespace targets
