#ifndef STRINGRESOLVER_TARGETS_ADDRESSTABLE_H
#define STRINGRESOLVER_TARGETS_ADDRESSTABLE_H

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace targets {

/// Which label an address lies in. Filled first, asked afterwards.
class AddressTable {
 public:
  struct Entry {
    std::uint64_t address = 0;
    /// The first address behind it.
    std::uint64_t end = 0;
    /// Keeps no copy: the names lie in the program's own string tables.
    std::string_view name;
    /// Of several labels at one address, the one of the highest rank is meant.
    int rank = 0;
  };

  void Add(const Entry& entry) { entries_.push_back(entry); }
  /// To be called once, behind the last `Add`.
  void Sort();

  /// The last entry that starts at or before `address` and ends behind it.
  [[nodiscard]] const Entry* Find(std::uint64_t address) const;

 private:
  std::vector<Entry> entries_;
  /// The greatest end of the entries up to this one: says when none before it can reach.
  std::vector<std::uint64_t> reach_;
};

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_ADDRESSTABLE_H
