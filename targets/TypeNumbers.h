#ifndef STRINGRESOLVER_TARGETS_TYPENUMBERS_H
#define STRINGRESOLVER_TARGETS_TYPENUMBERS_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <unordered_map>
#include <vector>

#include "targets/DwarfFile.h"
#include "targets/TypeShape.h"

namespace targets {

/// Gives numbers to types of the debug information, in the order in which they are first met.
class TypeNumbers {
 public:
  /// Marks, in place of a dimension, the number of a bit-field by the entry of its member.
  static constexpr std::uint32_t kBitField = 0xFFFFFFFF;

  /// What a number stands for.
  struct Key {
    DieAddress die = nullptr;  ///< null for `void`
    /// Of an array of several dimensions: how many of them are taken off.
    std::uint32_t part = 0;
    bool operator==(const Key&) const = default;
  };

  explicit TypeNumbers(TypeNumber first) : first_(first) {}

  TypeNumber Of(DieAddress die, std::uint32_t part = 0) {
    const auto next = static_cast<TypeNumber>(first_ + keys_.size());
    const auto [entry, added] = numbers_.emplace(Key{die, part}, next);
    if (added) keys_.push_back(entry->first);
    return entry->second;
  }

  /// Nothing for a number that was not given here.
  [[nodiscard]] std::optional<Key> KeyOf(TypeNumber number) const {
    if (number < first_ || number - first_ >= keys_.size()) return std::nullopt;
    return keys_[number - first_];
  }

 private:
  struct Hash {
    std::size_t operator()(const Key& key) const {
      return std::hash<DieAddress>()(key.die) ^ (std::size_t{key.part} << 20U);
    }
  };

  TypeNumber first_;
  std::unordered_map<Key, TypeNumber, Hash> numbers_;
  std::vector<Key> keys_;
};

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_TYPENUMBERS_H
