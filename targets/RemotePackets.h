#ifndef STRINGRESOLVER_TARGETS_REMOTEPACKETS_H
#define STRINGRESOLVER_TARGETS_REMOTEPACKETS_H

#include <cstddef>
#include <string>
#include <string_view>

#include "targets/RemoteFrames.h"
#include "targets/RemoteLink.h"

namespace targets {

/// Requests and answers over a link: framed, checked, acknowledged and sent once more where that is
/// wanted, up to `kMostTries` times.
///
/// Every operation throws `Error` (`kTargetLost`) when the link fails, and when the stub does not
/// keep to the protocol: what it sends afterwards could be taken for the wrong answer, so nothing
/// but `Part` is of use then.
class RemotePackets {
 public:
  /// How often a packet that does not arrive intact is sent, in either direction.
  static constexpr int kMostTries = 4;

  /// `link` is borrowed.
  explicit RemotePackets(RemoteLink& link) : link_(link) {}

  /// Sends `request` and waits for the answer, of at most `longest` bytes before escapes are
  /// undone.
  std::string Ask(std::string_view request, std::size_t longest, RemoteClock::time_point deadline);

  /// Waits for one more packet, as after an answer that only announces another.
  std::string Receive(std::size_t longest, RemoteClock::time_point deadline);

  /// From now on neither side acknowledges. To be called when the stub has agreed.
  void StopAcknowledging();

  /// Sends `request` whatever was left unanswered, and waits for an answer `OK`, or an empty one,
  /// or one of error. Throws nothing: a stub that does not answer is left as it is.
  void Part(std::string_view request, RemoteClock::time_point deadline) noexcept;

 private:
  RemoteFrames::Event Next(RemoteClock::time_point deadline);
  void Allow(std::size_t longest);
  void Accept(RemoteClock::time_point deadline);
  void AwaitAcceptance(const std::string& frame, RemoteClock::time_point deadline);
  [[noreturn]] void Fail(const std::string& what) const;

  RemoteLink& link_;
  RemoteFrames frames_;
  bool acknowledges_ = true;
  /// Received and not yet looked at, in the link's own buffer.
  std::string_view received_;
  /// How many more bytes may come before the exchange counts as endless.
  std::size_t allowed_ = 0;
};

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_REMOTEPACKETS_H
