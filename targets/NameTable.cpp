#include "targets/NameTable.h"

#include <bit>
#include <functional>
#include <stdexcept>

namespace targets {

void NameTable::Add(std::string_view name) {
  if (names_.size() == kNone) throw std::length_error("more names than 32 bits can number");
  names_.push_back(name);
}

std::uint32_t NameTable::First(std::string_view name) {
  if (next_.size() != names_.size()) BuildChains();
  if (names_.empty()) return kNone;
  return FirstIn(heads_[std::hash<std::string_view>{}(name) & (heads_.size() - 1)], name);
}

std::uint32_t NameTable::Next(std::uint32_t number) const {
  return FirstIn(next_[number], names_[number]);
}

void NameTable::BuildChains() {
  heads_.assign(std::bit_ceil(names_.size()), kNone);
  next_.assign(names_.size(), kNone);
  // Backwards, so that every chain ascends.
  for (std::uint32_t number = Size(); number-- > 0;) {
    const std::size_t bucket = std::hash<std::string_view>{}(names_[number]) & (heads_.size() - 1);
    next_[number] = heads_[bucket];
    heads_[bucket] = number;
  }
}

std::uint32_t NameTable::FirstIn(std::uint32_t number, std::string_view name) const {
  while (number != kNone && names_[number] != name) number = next_[number];
  return number;
}

}  // namespace targets
