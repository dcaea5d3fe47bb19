#include "targets/AddressTable.h"

#include <algorithm>
#include <tuple>

namespace targets {

void AddressTable::Sort() {
  std::sort(entries_.begin(), entries_.end(), [](const Entry& a, const Entry& b) {
    return std::tie(a.address, a.rank, b.name) < std::tie(b.address, b.rank, a.name);
  });
  reach_.clear();
  reach_.reserve(entries_.size());
  std::uint64_t reach = 0;
  for (const Entry& entry : entries_) reach_.push_back(reach = std::max(reach, entry.end));
}

const AddressTable::Entry* AddressTable::Find(std::uint64_t address) const {
  auto behind =
      std::upper_bound(entries_.begin(), entries_.end(), address,
                       [](std::uint64_t at, const Entry& entry) { return at < entry.address; });
  while (behind != entries_.begin()) {
    --behind;
    if (behind->end > address) return &*behind;
    if (reach_[static_cast<std::size_t>(behind - entries_.begin())] <= address) break;
  }
  return nullptr;
}

}  // namespace targets
