#include "targets/RemoteSocket.h"

#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "targets/Error.h"
#include "targets/HostLookup.h"

namespace targets {
namespace {

/// Where a connection was tried, and how that ended: 0 or an error number.
struct Attempt {
  int descriptor = -1;
  int error = 0;
  bool interrupted = false;
};

Attempt Try(int family, const sockaddr* address, socklen_t size, int interruption,
            RemoteClock::time_point deadline) {
  Attempt attempt;
  attempt.descriptor = socket(family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  if (attempt.descriptor < 0) {
    attempt.error = errno;
    return attempt;
  }
  attempt.error = connect(attempt.descriptor, address, size) == 0 ? 0 : errno;
  if (attempt.error == EINPROGRESS || attempt.error == EINTR) {
    attempt.error = ETIMEDOUT;
    if (WaitFor(attempt.descriptor, POLLOUT, interruption, deadline, &attempt.interrupted)) {
      socklen_t length = sizeof(attempt.error);
      if (getsockopt(attempt.descriptor, SOL_SOCKET, SO_ERROR, &attempt.error, &length) != 0) {
        attempt.error = errno;
      }
    }
  }
  if (attempt.error != 0) {
    close(attempt.descriptor);
    attempt.descriptor = -1;
  }
  return attempt;
}

}  // namespace

RemoteSocket::RemoteSocket(const RemoteAddress& address, std::string name,
                           RemoteClock::time_point deadline, int interruption)
    : name_(std::move(name)), interruption_(interruption) {
  if (address.path.empty()) {
    ConnectToHost(address, deadline);
  } else {
    ConnectToPath(address.path, deadline);
  }
}

RemoteSocket::RemoteSocket(int descriptor, std::string name, int interruption)
    : name_(std::move(name)), interruption_(interruption), descriptor_(descriptor) {
  const int flags = fcntl(descriptor_, F_GETFL);
  if (flags >= 0) fcntl(descriptor_, F_SETFL, flags | O_NONBLOCK);
}

RemoteSocket::~RemoteSocket() {
  if (descriptor_ >= 0) close(descriptor_);
}

void RemoteSocket::Fail(const std::string& what, int error) const {
  throw Error(
      ErrorCode::kTargetLost,
      what + " '" + name_ + "'" + (error == 0 ? "" : std::string(": ") + std::strerror(error)));
}

void RemoteSocket::ConnectToPath(const std::string& path, RemoteClock::time_point deadline) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.size() >= sizeof(address.sun_path)) {
    throw Error(ErrorCode::kTargetLost, "'" + path + "' is too long for the path of a socket");
  }
  std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
  while (true) {
    Attempt attempt = Try(AF_UNIX, reinterpret_cast<const sockaddr*>(&address), sizeof(address),
                          interruption_, deadline);
    descriptor_ = attempt.descriptor;
    if (attempt.error == 0) return;
    if (attempt.error == EAGAIN) {
      // As many others wait as the stub lets wait, and nothing tells when one is let in.
      const auto next = std::min(deadline, RemoteClock::now() + std::chrono::milliseconds(20));
      WaitFor(-1, 0, interruption_, next, &attempt.interrupted);
      if (!attempt.interrupted && RemoteClock::now() < deadline) continue;
      attempt.error = ETIMEDOUT;
    }
    if (attempt.interrupted) Fail("interrupted while connecting to the stub at", 0);
    if (attempt.error == ENOENT) Fail("there is no socket", 0);
    if (attempt.error == ECONNREFUSED) Fail("nobody listens on", 0);
    Fail("cannot connect to the stub at", attempt.error);
  }
}

void RemoteSocket::ConnectToHost(const RemoteAddress& address, RemoteClock::time_point deadline) {
  const HostAddresses addresses = LookUpHost(address, deadline, interruption_);
  int count = 0;
  for (const addrinfo* at = addresses.get(); at != nullptr; at = at->ai_next) ++count;
  Attempt attempt;
  for (const addrinfo* at = addresses.get(); at != nullptr; at = at->ai_next, --count) {
    // An address that nobody answers at leaves time for those behind it.
    const auto now = RemoteClock::now();
    const auto until = deadline <= now ? now : now + (deadline - now) / count;
    attempt = Try(at->ai_family, at->ai_addr, at->ai_addrlen, interruption_, until);
    if (attempt.error == 0 || attempt.interrupted) break;
  }
  if (attempt.interrupted) Fail("interrupted while connecting to the stub at", 0);
  if (attempt.error == ECONNREFUSED) Fail("nobody listens on", 0);
  if (attempt.error != 0) Fail("cannot connect to the stub at", attempt.error);
  descriptor_ = attempt.descriptor;
  // Small packets go back and forth: none may wait for company.
  const int on = 1;
  setsockopt(descriptor_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof(on));
}

void RemoteSocket::Send(std::string_view bytes, RemoteClock::time_point deadline) {
  while (!bytes.empty()) {
    const ssize_t sent = send(descriptor_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (sent >= 0) {
      bytes.remove_prefix(static_cast<std::size_t>(sent));
      continue;
    }
    if (errno == EPIPE || errno == ECONNRESET) Fail("the connection was closed by the stub at", 0);
    if (errno != EAGAIN && errno != EINTR) Fail("the connection failed to the stub at", errno);
    bool interrupted = false;
    if (!WaitFor(descriptor_, POLLOUT, interruption_, deadline, &interrupted)) {
      Fail(interrupted ? "interrupted while writing to the stub at"
                       : "nothing was taken in time by the stub at",
           0);
    }
  }
}

std::string_view RemoteSocket::Receive(RemoteClock::time_point deadline) {
  while (true) {
    bool interrupted = false;
    // Asked first, so that a stub which never stops sending can be interrupted.
    if (!WaitFor(descriptor_, POLLIN, interruption_, deadline, &interrupted)) {
      Fail(interrupted ? "interrupted while waiting for the stub at"
                       : "no answer in time from the stub at",
           0);
    }
    const ssize_t size = recv(descriptor_, buffer_.data(), buffer_.size(), 0);
    if (size > 0) return {buffer_.data(), static_cast<std::size_t>(size)};
    if (size == 0 || errno == ECONNRESET) Fail("the connection was closed by the stub at", 0);
    if (errno != EAGAIN && errno != EINTR) Fail("the connection failed to the stub at", errno);
  }
}

}  // namespace targets
