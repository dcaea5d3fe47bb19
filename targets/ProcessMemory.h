#ifndef STRINGRESOLVER_TARGETS_PROCESSMEMORY_H
#define STRINGRESOLVER_TARGETS_PROCESSMEMORY_H

#include "targets/MemorySource.h"
#include "targets/Process.h"

namespace targets {

/// The memory of a running process, as the process itself may read it, while it runs. Space 0 alone
/// has contents. Nothing is kept: two reads may see different states.
///
/// Memory that the process has closed to itself is not read, though a debugger could: an expression
/// says what the program would find, and there it would find a fault. What lies in a guard page
/// would pass for a value.
class ProcessMemory final : public MemorySource {
 public:
  /// `process` is borrowed and must outlive this object. Throws `Error` (`kUnreadable`) when its
  /// memory may not be read, and the reason that the system shows.
  explicit ProcessMemory(Process& process);

  /// Throws `Error` (`kTargetLost`) when the process has ended, or has started another program.
  MemoryRead Read(std::uint64_t address, std::uint8_t space, std::span<std::byte> bytes) override;

  /// Throws likewise.
  void Refresh() override { process_.CheckSame(); }

 private:
  std::size_t ReadPages(std::uint64_t address, std::span<std::byte> bytes);

  Process& process_;
};

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_PROCESSMEMORY_H
