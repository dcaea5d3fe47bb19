#include "targets/FetchedBytes.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace targets {

void FetchedBytes::Clear() {
  runs_.clear();
  gaps_.clear();
}

void FetchedBytes::Keep(std::uint64_t address, std::span<const std::byte> bytes) {
  if (bytes.empty()) return;
  // Most reads go upwards, so a run mostly grows at its end.
  const auto before = Holding(address - 1);
  if (address != 0 && before != runs_.end()) {
    std::vector<std::byte>& run = runs_[before->first];
    run.insert(run.end(), bytes.begin(), bytes.end());
  } else {
    runs_.emplace(address, std::vector<std::byte>(bytes.begin(), bytes.end()));
  }
}

FetchedBytes::Runs::const_iterator FetchedBytes::Holding(std::uint64_t address) const {
  const auto behind = runs_.upper_bound(address);
  if (behind == runs_.begin()) return runs_.end();
  const auto run = std::prev(behind);
  return address - run->first < run->second.size() ? run : runs_.end();
}

std::size_t FetchedBytes::Copy(std::uint64_t address, std::span<std::byte> bytes) const {
  std::size_t done = 0;
  while (done < bytes.size()) {
    const auto run = Holding(address + done);
    if (run == runs_.end()) break;
    const auto inside = static_cast<std::size_t>(address + done - run->first);
    const std::size_t size = std::min(run->second.size() - inside, bytes.size() - done);
    std::memcpy(bytes.data() + done, run->second.data() + inside, size);
    done += size;
  }
  return done;
}

std::size_t FetchedBytes::Unknown(std::uint64_t address, std::size_t size) const {
  if (Holding(address) != runs_.end()) return 0;
  std::uint64_t unknown = size;
  const auto run = runs_.lower_bound(address);
  if (run != runs_.end()) unknown = std::min(unknown, run->first - address);
  const auto gap = gaps_.lower_bound(address);
  if (gap != gaps_.end()) unknown = std::min(unknown, gap->first - address);
  return static_cast<std::size_t>(unknown);
}

std::optional<MemoryGap> FetchedBytes::GapAt(std::uint64_t address) const {
  const auto gap = gaps_.find(address);
  return gap == gaps_.end() ? std::nullopt : std::optional(gap->second);
}

}  // namespace targets
