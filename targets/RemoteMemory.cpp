#include "targets/RemoteMemory.h"

#include <algorithm>
#include <vector>

namespace targets {

RemoteMemory::RemoteMemory(RemoteStub& stub, std::uint32_t addressSize)
    : stub_(stub),
      highestAddress_(addressSize >= 8 ? ~std::uint64_t{0}
                                       : (std::uint64_t{1} << 8 * addressSize) - 1) {}

MemoryRead RemoteMemory::Read(std::uint64_t address, std::uint8_t space,
                              std::span<std::byte> bytes) {
  if (space != 0 || address > highestAddress_) return {};
  // The last byte of a 64-bit address space is given up, so that no end ever wraps.
  const std::uint64_t behind = std::min(highestAddress_, ~std::uint64_t{0} - 1) - address + 1;
  bytes = bytes.first(static_cast<std::size_t>(std::min<std::uint64_t>(bytes.size(), behind)));
  std::size_t done = 0;
  while (done < bytes.size()) {
    const std::uint64_t at = address + done;
    done += fetched_.Copy(at, bytes.subspan(done));
    if (done == bytes.size()) break;
    if (const auto gap = fetched_.GapAt(address + done)) return {done, *gap};
    Fetch(address + done, fetched_.Unknown(address + done, bytes.size() - done));
  }
  return {done, MemoryGap::kNotThere};
}

void RemoteMemory::Fetch(std::uint64_t address, std::size_t size) {
  std::vector<std::byte> bytes(std::min(size, stub_.MostBytes()));
  while (true) {
    const RemoteStub::Answer answer = stub_.ReadMemory(address, bytes);
    if (!answer.gap) {
      fetched_.Keep(address, std::span(bytes).first(answer.size));
      return;
    }
    if (bytes.size() == 1) {
      fetched_.KeepGap(address, *answer.gap);
      return;
    }
    // Refused as a whole: the beginning may be readable all the same.
    bytes.resize(bytes.size() / 2);
  }
}

}  // namespace targets
