#include "tools/resolve/ObjectReader.h"

#include <algorithm>

#include "targets/ProgramHost.h"

namespace tool {
namespace {

constexpr std::size_t kPiece = 4096;

}  // namespace

std::string SentenceOf(const Unreadable& unreadable) {
  return targets::UnreadableMemory(unreadable.address, unreadable.space, unreadable.gap).what();
}

ObjectReader::ObjectReader(const Denoted& denoted, std::uint64_t size,
                           targets::MemorySource& memory)
    : memory_(memory),
      start_(denoted.address.value_or(0)),
      size_(size),
      space_(denoted.space),
      hasAddress_(denoted.address.has_value()),
      held_(denoted.bytes),
      piece_(start_) {}

void ObjectReader::Fetch(std::uint64_t address, std::size_t size) {
  const std::uint64_t inside = address - start_;
  const std::uint64_t left = inside < size_ ? size_ - inside : 0;
  const std::size_t wanted =
      std::max(size, static_cast<std::size_t>(std::min<std::uint64_t>(left, kPiece)));
  held_.resize(wanted);
  piece_ = address;
  gap_.reset();
  if (!hasAddress_) {
    held_.clear();
    return;
  }
  const targets::MemoryRead read = memory_.Read(address, space_, held_);
  if (read.size < wanted) gap_ = read.gap;
  held_.resize(std::min(read.size, wanted));
}

std::optional<Unreadable> ObjectReader::Read(std::uint64_t address, std::span<std::byte> bytes) {
  // Distances, since an object may end at the last address there is.
  const auto held = [&] {
    const std::uint64_t into = address - piece_;
    return into <= held_.size() && held_.size() - into >= bytes.size();
  };
  const auto endsInside = [&] {
    const std::uint64_t end = address - piece_;
    return gap_ && end <= held_.size() && held_.size() - end < bytes.size();
  };
  if (!held() && !endsInside()) Fetch(address, bytes.size());
  if (!held()) {
    readAny_ = readAny_ || !held_.empty();
    return Unreadable{piece_ + held_.size(), space_, gap_.value_or(targets::MemoryGap::kNotThere)};
  }
  const auto from = held_.begin() + static_cast<std::ptrdiff_t>(address - piece_);
  std::copy_n(from, bytes.size(), bytes.begin());
  readAny_ = readAny_ || !bytes.empty();
  return std::nullopt;
}

}  // namespace tool
