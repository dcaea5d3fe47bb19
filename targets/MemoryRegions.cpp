#include "targets/MemoryRegions.h"

#include <algorithm>
#include <cstring>

#include "targets/Error.h"
#include "targets/Texts.h"

namespace targets {
namespace {

/// The last address of a region; it does not wrap for one that has been checked.
std::uint64_t LastOf(const MemoryRegion& region) {
  return region.address + (region.size - 1);
}

std::string Describe(const MemoryRegion& region) {
  return Hexadecimal(region.address) + " to " + Hexadecimal(LastOf(region)) +
         (region.space == 0 ? "" : " in space " + std::to_string(region.space)) + " from " +
         region.origin;
}

std::size_t ReadRegion(const MemoryRegion& region, std::uint64_t inside,
                       std::span<std::byte> bytes) {
  if (region.file) return region.file->Read(region.fileOffset + inside, bytes);
  std::memcpy(bytes.data(), region.bytes.data() + inside, bytes.size());
  return bytes.size();
}

}  // namespace

std::uint64_t MemoryRegions::LastAddress() const {
  return pointerSize_ >= 8 ? ~std::uint64_t{0} : (std::uint64_t{1} << pointerSize_ * 8) - 1;
}

void MemoryRegions::Check(const MemoryRegion& region) const {
  const std::uint64_t last = LastAddress();
  if (region.address > last || region.size - 1 > last - region.address) {
    throw Error(ErrorCode::kFileUnusable,
                std::to_string(region.size) + " bytes at " + Hexadecimal(region.address) +
                    " from " + region.origin + " go past the end of the address space, " +
                    Hexadecimal(last));
  }
  // The first region that ends at or behind the start of the new one: they do not overlap among
  // themselves, so it is the one around that address or the next one.
  auto other = regions_.upper_bound({region.space, region.address});
  if (other != regions_.begin()) {
    const auto before = std::prev(other);
    if (before->first.first == region.space && LastOf(before->second) >= region.address) {
      other = before;
    }
  }
  if (other == regions_.end() || other->first.first != region.space) return;
  if (other->second.address > LastOf(region)) return;
  throw Error(ErrorCode::kFileUnusable, "two regions of memory overlap: " +
                                            Describe(other->second) + ", and " + Describe(region));
}

void MemoryRegions::Add(MemoryRegion region) {
  Check(region);
  const Key key{region.space, region.address};
  regions_.emplace(key, std::move(region));
}

std::optional<std::uint64_t> MemoryRegions::HighestAddress() const {
  const auto behind = regions_.lower_bound({1, 0});
  if (behind == regions_.begin()) return std::nullopt;
  return LastOf(std::prev(behind)->second);
}

MemoryRead MemoryRegions::Read(std::uint64_t address, std::uint8_t space,
                               std::span<std::byte> bytes) {
  const std::uint64_t last = LastAddress();
  std::size_t done = 0;
  while (done < bytes.size()) {
    const std::uint64_t at = address + done;
    if (at < address || at > last) break;
    std::span<std::byte> rest = bytes.subspan(done);
    const auto next = regions_.upper_bound({space, at});
    const auto here = next == regions_.begin() ? regions_.end() : std::prev(next);
    if (here != regions_.end() && here->first.first == space && LastOf(here->second) >= at) {
      const std::uint64_t left = LastOf(here->second) - at;  // behind the byte at `at`
      if (rest.size() - 1 > left) rest = rest.first(static_cast<std::size_t>(left) + 1);
      const std::size_t got = ReadRegion(here->second, at - here->second.address, rest);
      done += got;
      if (got < rest.size()) break;
      continue;
    }
    if (below_ == nullptr) break;
    const bool bounded = next != regions_.end() && next->first.first == space;
    const std::uint64_t gap = (bounded ? next->first.second - 1 : last) - at;
    if (rest.size() - 1 > gap) rest = rest.first(static_cast<std::size_t>(gap) + 1);
    const MemoryRead read = below_->Read(at, space, rest);
    done += read.size;
    if (read.size < rest.size()) return {done, read.gap};
  }
  return {done, MemoryGap::kNotThere};
}

void MemoryRegions::Refresh() {
  if (below_ != nullptr) below_->Refresh();
}

}  // namespace targets
