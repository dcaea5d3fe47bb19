#ifndef STRINGRESOLVER_TARGETS_REMOTEMEMORY_H
#define STRINGRESOLVER_TARGETS_REMOTEMEMORY_H

#include <cstddef>
#include <cstdint>
#include <span>

#include "targets/FetchedBytes.h"
#include "targets/MemorySource.h"
#include "targets/RemoteStub.h"

namespace targets {

/// The memory of the target behind a stub. Each byte is asked for at most once from one `Refresh`
/// to the next, and never unless it is read: the registers of a peripheral may change when they are
/// looked at. When a stub refuses a request, smaller ones find out how far memory can be read.
/// Space 0 alone has contents.
class RemoteMemory final : public MemorySource {
 public:
  /// `stub` is borrowed. Addresses have `addressSize` bytes, 1 to 8: there is nothing above.
  RemoteMemory(RemoteStub& stub, std::uint32_t addressSize);

  MemoryRead Read(std::uint64_t address, std::uint8_t space, std::span<std::byte> bytes) override;
  void Refresh() override { fetched_.Clear(); }

 private:
  /// Asks for some of the `size` bytes from `address` on, of which nothing is known, until
  /// something is known of the first.
  void Fetch(std::uint64_t address, std::size_t size);

  RemoteStub& stub_;
  std::uint64_t highestAddress_;
  FetchedBytes fetched_;
};

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_REMOTEMEMORY_H
