#ifndef STRINGRESOLVER_TARGETS_REMOTESOCKET_H
#define STRINGRESOLVER_TARGETS_REMOTESOCKET_H

#include <array>
#include <string>
#include <string_view>

#include "targets/RemoteAddress.h"
#include "targets/RemoteLink.h"

namespace targets {

/// A connection to a stub, over TCP or a Unix socket. Not for use by two threads at once.
class RemoteSocket final : public RemoteLink {
 public:
  /// Connects. `name` is what messages call the stub. A wait ends early, with an `Error`, when
  /// `interruption` becomes readable: a descriptor such as an eventfd or the end of a pipe, which
  /// is borrowed; -1 for none. Throws `Error` (`kTargetLost`): the host is not known, nobody
  /// listens there, or not within the time until `deadline`.
  RemoteSocket(const RemoteAddress& address, std::string name, RemoteClock::time_point deadline,
               int interruption = -1);
  /// Takes over `descriptor`, a connected stream socket.
  RemoteSocket(int descriptor, std::string name, int interruption = -1);
  ~RemoteSocket() override;

  [[nodiscard]] const std::string& Name() const override { return name_; }
  void Send(std::string_view bytes, RemoteClock::time_point deadline) override;
  std::string_view Receive(RemoteClock::time_point deadline) override;
  void IgnoreInterruption() override { interruption_ = -1; }

 private:
  void ConnectToPath(const std::string& path, RemoteClock::time_point deadline);
  void ConnectToHost(const RemoteAddress& address, RemoteClock::time_point deadline);
  [[noreturn]] void Fail(const std::string& what, int error) const;

  std::string name_;
  int interruption_ = -1;
  int descriptor_ = -1;
  std::array<char, 16384> buffer_;
};

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_REMOTESOCKET_H
