#ifndef STRINGRESOLVER_TARGETS_REMOTELINK_H
#define STRINGRESOLVER_TARGETS_REMOTELINK_H

#include <chrono>
#include <string>
#include <string_view>

namespace targets {

using RemoteClock = std::chrono::steady_clock;

/// Bytes to and from a stub. Every wait ends at a deadline.
class RemoteLink {
 public:
  RemoteLink() = default;
  RemoteLink(const RemoteLink&) = delete;
  RemoteLink& operator=(const RemoteLink&) = delete;
  virtual ~RemoteLink() = default;

  /// What messages call the other end: `localhost:1234`.
  [[nodiscard]] virtual const std::string& Name() const = 0;

  /// Sends all of `bytes`. Throws `Error` (`kTargetLost`): the deadline passed, the other end is
  /// gone, the wait was interrupted.
  virtual void Send(std::string_view bytes, RemoteClock::time_point deadline) = 0;

  /// At least one byte, as soon as there is one; the view is valid until the next call. Throws
  /// likewise.
  virtual std::string_view Receive(RemoteClock::time_point deadline) = 0;

  /// From now on nothing interrupts a wait: for the last words.
  virtual void IgnoreInterruption() {}
};

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_REMOTELINK_H
