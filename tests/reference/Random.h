#ifndef STRINGRESOLVER_TESTS_REFERENCE_RANDOM_H
#define STRINGRESOLVER_TESTS_REFERENCE_RANDOM_H

#include <cstddef>
#include <cstdint>
#include <vector>

namespace reference {

/// The same numbers from the same seed with every standard library.
class Random {
 public:
  explicit Random(std::uint64_t seed) : state_(seed) {}

  std::uint64_t Next() {
    state_ += 0x9E3779B97F4A7C15;
    std::uint64_t mixed = state_;
    mixed = (mixed ^ (mixed >> 30)) * 0xBF58476D1CE4E5B9;
    mixed = (mixed ^ (mixed >> 27)) * 0x94D049BB133111EB;
    return mixed ^ (mixed >> 31);
  }
  /// 0 to `count` - 1.
  std::size_t Below(std::size_t count) { return static_cast<std::size_t>(Next() % count); }
  /// True in `percent` of a hundred cases.
  bool Chance(unsigned percent) { return Below(100) < percent; }

  template <typename Item>
  const Item& Of(const std::vector<Item>& items) {
    return items[Below(items.size())];
  }

 private:
  std::uint64_t state_;
};

}  // namespace reference

#endif  // STRINGRESOLVER_TESTS_REFERENCE_RANDOM_H
