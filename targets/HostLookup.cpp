#include "targets/HostLookup.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <system_error>
#include <thread>

#include "targets/Error.h"

namespace targets {
namespace {

[[noreturn]] void Fail(const std::string& sentence) {
  throw Error(ErrorCode::kTargetLost, sentence);
}

addrinfo Wanted(int flags) {
  addrinfo wanted{};
  wanted.ai_family = AF_UNSPEC;
  wanted.ai_socktype = SOCK_STREAM;
  wanted.ai_flags = flags | AI_NUMERICSERV;
  return wanted;
}

/// One question, shared by the thread that asks and the one that waits: either may end first.
struct Lookup {
  explicit Lookup(RemoteAddress asked) : address(std::move(asked)) {
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
      Fail(std::string("no pipe can be had to look up a host: ") + std::strerror(errno));
    }
  }
  Lookup(const Lookup&) = delete;
  Lookup& operator=(const Lookup&) = delete;
  ~Lookup() {
    for (const int end : ends) close(end);
  }

  void Ask() {
    const addrinfo wanted = Wanted(0);
    addrinfo* list = nullptr;
    status = getaddrinfo(address.host.c_str(), address.port.c_str(), &wanted, &list);
    if (status == 0) found.reset(list);
    const char done = 0;
    // Nobody may wait any more; there is nobody to tell then.
    [[maybe_unused]] const ssize_t told = write(ends[1], &done, 1);
  }

  RemoteAddress address;
  std::array<int, 2> ends{-1, -1};
  int status = 0;
  HostAddresses found;
};

}  // namespace

bool WaitFor(int descriptor, short events, int interruption, RemoteClock::time_point deadline,
             bool* interrupted) {
  *interrupted = false;
  while (true) {
    std::array<pollfd, 2> waited{{{descriptor, events, 0}, {interruption, POLLIN, 0}}};
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(deadline - RemoteClock::now()).count();
    const auto wait = std::clamp<decltype(left)>(left, 0, 1'000'000'000);
    const int ready = poll(waited.data(), waited.size(), static_cast<int>(wait));
    if (ready > 0 && waited[1].revents != 0) {
      *interrupted = true;
      return false;
    }
    if (ready > 0) return true;
    if (ready == 0 && left <= 0) return false;
    if (ready < 0 && errno != EINTR) return false;
  }
}

HostAddresses LookUpHost(const RemoteAddress& address, RemoteClock::time_point deadline,
                         int interruption) {
  // A number needs nobody to be asked.
  const addrinfo wanted = Wanted(AI_NUMERICHOST);
  addrinfo* list = nullptr;
  if (getaddrinfo(address.host.c_str(), address.port.c_str(), &wanted, &list) == 0) {
    return HostAddresses(list);
  }
  const auto lookup = std::make_shared<Lookup>(address);
  try {
    std::thread([lookup] { lookup->Ask(); }).detach();
  } catch (const std::system_error& error) {
    Fail("no thread can be had to look up a host: " + std::string(error.what()));
  }
  bool interrupted = false;
  if (!WaitFor(lookup->ends[0], POLLIN, interruption, deadline, &interrupted)) {
    Fail("the look-up of the host '" + address.host + "' " +
         (interrupted ? "was interrupted" : "took too long"));
  }
  // The byte also tells that what the thread has written can be seen here.
  char done = 0;
  [[maybe_unused]] const ssize_t size = read(lookup->ends[0], &done, 1);
  if (lookup->status != 0) {
    const bool system = lookup->status == EAI_SYSTEM;
    Fail("the host '" + address.host + "' is not known" +
         (system ? "" : std::string(": ") + gai_strerror(lookup->status)));
  }
  return std::move(lookup->found);
}

}  // namespace targets
