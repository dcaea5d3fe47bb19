#ifndef STRINGRESOLVER_TARGETS_NAMETABLE_H
#define STRINGRESOLVER_TARGETS_NAMETABLE_H

#include <cstdint>
#include <deque>
#include <string_view>
#include <vector>

namespace targets {

/// Numbers from names, several for one name allowed. Keeps no copy of the names, which must outlive
/// it: they lie in the program's own string tables. 20 bytes per name, 28 once many were asked for.
class NameTable {
 public:
  static constexpr std::uint32_t kNone = 0xFFFFFFFF;

  /// Adds `name`; its number is how many names were added before it.
  void Add(std::string_view name);

  [[nodiscard]] std::uint32_t Size() const { return static_cast<std::uint32_t>(names_.size()); }
  [[nodiscard]] std::string_view NameOf(std::uint32_t number) const { return names_[number]; }

  /// The first number of `name`, and the next one after `number` of the same name; ascending, at
  /// the end `kNone`. The first few names that are looked up cost time linear in the size.
  [[nodiscard]] std::uint32_t First(std::string_view name);
  [[nodiscard]] std::uint32_t Next(std::uint32_t number) const;

 private:
  void BuildChains();
  [[nodiscard]] bool HasChains() const { return next_.size() == names_.size(); }
  [[nodiscard]] std::uint32_t Search(std::uint32_t number, std::string_view name) const;
  [[nodiscard]] std::uint32_t FirstIn(std::uint32_t number, std::string_view name) const;

  /// Does not move its entries when it grows, which would cost more than the rest of `Add`.
  std::deque<std::string_view> names_;
  std::vector<std::uint32_t> hashes_;
  /// Names that were searched for.
  std::uint32_t searches_ = 0;
  /// `next_[n]` is the number after n whose name has the same hash bucket.
  std::vector<std::uint32_t> next_;
  std::vector<std::uint32_t> heads_;
};

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_NAMETABLE_H
