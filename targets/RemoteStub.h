#ifndef STRINGRESOLVER_TARGETS_REMOTESTUB_H
#define STRINGRESOLVER_TARGETS_REMOTESTUB_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "targets/Error.h"
#include "targets/MemorySource.h"
#include "targets/RemoteLink.h"
#include "targets/RemotePackets.h"

namespace targets {

/// A conversation with a stub that speaks gdb's remote serial protocol: the stub holds a stopped
/// target, and is asked for its memory and for where its program lies. Nothing is ever written to
/// the target.
///
/// Operations throw `Error` (`kTargetLost`) when the link fails, when the stub takes longer than
/// its time for an answer, or when an answer makes no sense. From then on all of them throw the
/// same: a late answer could be taken for that to another question. Not for use by two threads at
/// once.
class RemoteStub {
 public:
  enum class Leaving {
    kGoOn,     ///< the target runs on, as it did before the stub stopped it
    kStopped,  ///< nothing is said: a stub that survives its connection keeps the target stopped
  };

  /// What one request for memory brought.
  struct Answer {
    std::size_t size = 0;            ///< bytes read, at least one unless refused
    std::optional<MemoryGap> gap{};  ///< refused, and why: `size` is 0
  };

  /// Where a stub says that a program's parts were moved, each in target bytes.
  struct Offsets {
    std::uint64_t text = 0;
    std::uint64_t data = 0;
  };

  /// Greets the stub behind `link`, which is borrowed. `timeout` is the time for each answer.
  /// Throws as every operation does, and also when nothing runs there (any more).
  RemoteStub(RemoteLink& link, std::chrono::milliseconds timeout, Leaving leaving);
  /// Leaves the stub; that takes a second at most.
  ~RemoteStub();
  RemoteStub(const RemoteStub&) = delete;
  RemoteStub& operator=(const RemoteStub&) = delete;

  [[nodiscard]] const std::string& Name() const { return link_.Name(); }

  /// The most bytes that one request for memory may ask for, at least 8.
  [[nodiscard]] std::size_t MostBytes() const { return mostBytes_; }

  /// Makes one request for 1 to `MostBytes()` bytes at `address`. A stub may give fewer.
  Answer ReadMemory(std::uint64_t address, std::span<std::byte> bytes);

  /// Is the target a process of an operating system, as far as the stub tells?
  [[nodiscard]] bool HoldsProcess() const { return hasAuxiliaryVector_; }

  /// The auxiliary vector of the process, as the target stores it; nothing when the stub has none.
  std::optional<std::string> AuxiliaryVector();

  /// Nothing when the stub does not know.
  std::optional<Offsets> ProgramOffsets();

 private:
  void Greet();
  void Leave() noexcept;
  void ReadFeatures(std::string_view features);
  void RequireStopped(std::string answer);
  void LimitPackets(std::uint64_t size);
  Answer TakeHexadecimal(const std::string& answer, std::span<std::byte> bytes) const;
  std::optional<Answer> TakeBinary(const std::string& answer, std::span<std::byte> bytes) const;
  /// Runs `operation`, and remembers the error that it ends with.
  template <typename Operation>
  auto Guarded(Operation operation);
  std::string Ask(std::string_view request, std::size_t longest);
  [[nodiscard]] RemoteClock::time_point Deadline() const { return RemoteClock::now() + timeout_; }
  [[noreturn]] void Fail(const std::string& what) const;

  RemoteLink& link_;
  RemotePackets packets_;
  std::chrono::milliseconds timeout_;
  Leaving leaving_;
  std::size_t mostBytes_ = 0;
  bool readsBinary_ = false;
  bool hasAuxiliaryVector_ = false;
  /// What every operation throws from now on.
  std::optional<Error> lost_;
};

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_REMOTESTUB_H
