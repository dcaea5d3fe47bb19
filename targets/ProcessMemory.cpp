#include "targets/ProcessMemory.h"

#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <limits>
#include <string>

#include "targets/ProcessMaps.h"

namespace targets {
namespace {

/// So many are asked for at a time.
constexpr std::size_t kMostPages = 64;

iovec Piece(std::uint64_t address, std::size_t size) {
  // An address of the other process, which nothing here dereferences.
  // NOLINTNEXTLINE(performance-no-int-to-ptr)
  return {reinterpret_cast<void*>(static_cast<std::uintptr_t>(address)), size};
}

/// Copies what it can of `bytes.size()` bytes, at least 1, of `thread`'s memory. -1 and `errno`
/// when not even the first one can be had.
ssize_t CopyPages(int thread, std::uint64_t address, std::span<std::byte> bytes) {
  static const auto kPage = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  // The system promises to copy whole pieces only, so none may reach over the border of a page.
  std::array<iovec, kMostPages> pieces{};
  std::size_t count = 0;
  std::size_t size = 0;
  while (count < kMostPages && size < bytes.size()) {
    const std::uint64_t at = address + size;
    const std::size_t length = std::min(bytes.size() - size, kPage - at % kPage);
    pieces[count++] = Piece(at, length);
    size += length;
  }
  const iovec own{bytes.data(), size};
  return process_vm_readv(thread, &own, 1, pieces.data(), count, 0);
}

}  // namespace

ProcessMemory::ProcessMemory(Process& process) : process_(process) {
  // Whether there is anything at 0 does not matter, only whether the question is allowed.
  std::byte byte{};
  const bool refused = CopyPages(process_.LivingThread(), 0, {&byte, 1}) < 0 && errno != EFAULT;
  if (!refused || errno == ESRCH) return;
  if (errno == EPERM) throw process_.Refusal("read");
  throw Error(ErrorCode::kUnreadable, "cannot read the memory of process " +
                                          std::to_string(process_.Id()) + ": " +
                                          std::strerror(errno));
}

MemoryRead ProcessMemory::Read(std::uint64_t address, std::uint8_t space,
                               std::span<std::byte> bytes) {
  if (space != 0 || bytes.empty()) return {};
  constexpr std::uint64_t kLast = std::numeric_limits<std::uintptr_t>::max();
  if (address > kLast) return {};
  if (bytes.size() - 1 > kLast - address) {
    bytes = bytes.first(static_cast<std::size_t>(kLast - address) + 1);
  }
  std::size_t done = 0;
  while (done < bytes.size()) {
    const std::size_t count = ReadPages(address + done, bytes.subspan(done));
    if (count == 0) {
      const auto mappings = ParseMaps(process_.Contents("maps"));
      return {done, WhyUnreadable(mappings, address + done)};
    }
    done += count;
  }
  return {done, MemoryGap::kNotThere};
}

/// As many bytes as can be had at once; 0 when the first one cannot.
std::size_t ProcessMemory::ReadPages(std::uint64_t address, std::span<std::byte> bytes) {
  ssize_t count = CopyPages(process_.LivingThread(), address, bytes);
  if (count < 0 && errno == ESRCH) {
    process_.CheckSame();
    process_.FindLivingThread();
    count = CopyPages(process_.LivingThread(), address, bytes);
  }
  if (count >= 0) return static_cast<std::size_t>(count);
  if (errno == EFAULT) return 0;
  const std::string reason = std::strerror(errno);
  process_.CheckSame();
  throw Error(ErrorCode::kTargetLost, "the memory of process " + std::to_string(process_.Id()) +
                                          " cannot be read any more: " + reason);
}

}  // namespace targets
