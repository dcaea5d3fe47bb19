#include "targets/RemoteSocket.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>

#include "targets/Error.h"
#include "targets/RemoteProgram.h"
#include "tests/targets/ProgramUnderTest.h"
#include "tests/targets/ScriptedLink.h"

namespace targettests {
namespace {

using targets::ReadRemoteAddress;
using targets::RemoteClock;
using targets::RemoteSocket;

/// Long enough for the slowest machine: only what hangs takes it.
RemoteClock::time_point Patiently() {
  return RemoteClock::now() + std::chrono::minutes(2);
}
RemoteClock::time_point Soon() {
  return RemoteClock::now() + std::chrono::milliseconds(30);
}

/// Two ends of a connection; the first is the socket under test.
struct Pair {
  explicit Pair(int interruption = -1) {
    std::array<int, 2> ends{};
    EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()), 0);
    socket.emplace(ends[0], "stub", interruption);
    other = ends[1];
  }
  Pair(const Pair&) = delete;
  Pair& operator=(const Pair&) = delete;
  ~Pair() { CloseOther(); }

  void CloseOther() {
    if (other >= 0) close(other);
    other = -1;
  }
  void Write(const std::string& text) const {
    EXPECT_EQ(write(other, text.data(), text.size()), static_cast<ssize_t>(text.size()));
  }

  std::optional<RemoteSocket> socket;
  int other = -1;
};

struct Pipe {
  Pipe() { EXPECT_EQ(pipe(ends.data()), 0); }
  ~Pipe() {
    for (const int end : ends) close(end);
  }
  void Signal() const { EXPECT_EQ(write(ends[1], "", 1), 1); }
  std::array<int, 2> ends{};
};

TEST(RemoteSocket, ReceivesWhatArrives) {
  Pair pair;
  pair.Write("abc");
  EXPECT_EQ(pair.socket->Receive(Patiently()), "abc");
  pair.socket->Send("xyz", Patiently());
  std::array<char, 8> got{};
  EXPECT_EQ(read(pair.other, got.data(), got.size()), 3);
  EXPECT_EQ(std::string(got.data()), "xyz");
}

TEST(RemoteSocket, WaitsForWhatComesLate) {
  Pair pair;
  std::thread late([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    pair.Write("late");
  });
  EXPECT_EQ(pair.socket->Receive(Patiently()), "late");
  late.join();
}

TEST(RemoteSocket, EndsEveryWait) {
  Pair silent;
  EXPECT_EQ(ErrorOf([&] { silent.socket->Receive(Soon()); }),
            "no answer in time from the stub at 'stub'");
  const std::string much(1 << 20, 'x');
  EXPECT_EQ(ErrorOf([&] {
              for (int i = 0; i < 100; ++i) silent.socket->Send(much, Soon());
            }),
            "nothing was taken in time by the stub at 'stub'");
  Pair closed;
  closed.CloseOther();
  EXPECT_EQ(ErrorOf([&] { closed.socket->Receive(Patiently()); }),
            "the connection was closed by the stub at 'stub'");
  EXPECT_EQ(ErrorOf([&] { closed.socket->Send("x", Patiently()); }),
            "the connection was closed by the stub at 'stub'");
  EXPECT_EQ(ErrorCodeOf([&] { closed.socket->Receive(Patiently()); }),
            targets::ErrorCode::kTargetLost);
}

TEST(RemoteSocket, EndsAWaitThatIsInterrupted) {
  Pipe pipe;
  Pair pair(pipe.ends[0]);
  std::thread interrupter([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    pipe.Signal();
  });
  EXPECT_EQ(ErrorOf([&] { pair.socket->Receive(Patiently()); }),
            "interrupted while waiting for the stub at 'stub'");
  interrupter.join();
  // Also when there is something to read all the time.
  pair.Write("more");
  EXPECT_EQ(ErrorOf([&] { pair.socket->Receive(Patiently()); }),
            "interrupted while waiting for the stub at 'stub'");
  pair.socket->IgnoreInterruption();
  EXPECT_EQ(pair.socket->Receive(Patiently()), "more");
}

/// A socket that listens, with a folder of its own for those with a path.
struct Listener {
  explicit Listener(int family) {
    descriptor = socket(family, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (family == AF_UNIX) {
      std::string pattern = std::filesystem::temp_directory_path() / "stub-XXXXXX";
      folder = mkdtemp(pattern.data());
      sockaddr_un named{};
      named.sun_family = AF_UNIX;
      address = folder + "/socket";
      address.copy(named.sun_path, sizeof(named.sun_path) - 1);
      Listen(reinterpret_cast<sockaddr*>(&named), sizeof(named));
    } else if (family == AF_INET) {
      sockaddr_in named{};
      named.sin_family = AF_INET;
      named.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
      Listen(reinterpret_cast<sockaddr*>(&named), sizeof(named));
      socklen_t size = sizeof(named);
      getsockname(descriptor, reinterpret_cast<sockaddr*>(&named), &size);
      address = "127.0.0.1:" + std::to_string(ntohs(named.sin_port));
    } else {
      sockaddr_in6 named{};
      named.sin6_family = AF_INET6;
      named.sin6_addr = in6addr_loopback;
      Listen(reinterpret_cast<sockaddr*>(&named), sizeof(named));
      socklen_t size = sizeof(named);
      getsockname(descriptor, reinterpret_cast<sockaddr*>(&named), &size);
      address = "[::1]:" + std::to_string(ntohs(named.sin6_port));
    }
  }
  Listener(const Listener&) = delete;
  Listener& operator=(const Listener&) = delete;
  ~Listener() {
    Close();
    if (!folder.empty()) std::filesystem::remove_all(folder);
  }
  void Listen(const sockaddr* named, socklen_t size) {
    listens = descriptor >= 0 && bind(descriptor, named, size) == 0 && listen(descriptor, 1) == 0;
  }
  void Close() {
    if (descriptor >= 0) close(descriptor);
    descriptor = -1;
  }

  int descriptor = -1;
  bool listens = false;
  std::string folder;
  std::string address;
};

TEST(RemoteSocket, Connects) {
  for (const int family : {AF_UNIX, AF_INET, AF_INET6}) {
    Listener listener(family);
    if (!listener.listens) {
      EXPECT_EQ(family, AF_INET6);
      std::cerr << "this machine has no IPv6: connecting over it is not tested\n";
      continue;
    }
    RemoteSocket socket(*ReadRemoteAddress(listener.address), "stub", Patiently());
    const int accepted = accept(listener.descriptor, nullptr, nullptr);
    ASSERT_GE(accepted, 0);
    EXPECT_EQ(write(accepted, "hi", 2), 2);
    EXPECT_EQ(socket.Receive(Patiently()), "hi");
    close(accepted);
  }
}

std::string ConnectionError(const std::string& address, RemoteClock::time_point deadline,
                            int interruption = -1) {
  return ErrorOf([&] {
    const RemoteSocket socket(*ReadRemoteAddress(address), address, deadline, interruption);
  });
}

TEST(RemoteSocket, SaysWhyItCannotConnect) {
  for (const int family : {AF_UNIX, AF_INET}) {
    Listener listener(family);
    listener.Close();
    EXPECT_EQ(ConnectionError(listener.address, Patiently()),
              "nobody listens on '" + listener.address + "'");
  }
  EXPECT_EQ(ConnectionError("/nowhere/at/all", Patiently()),
            "there is no socket '/nowhere/at/all'");
  const std::string longPath = "/" + std::string(200, 'x');
  EXPECT_EQ(ConnectionError(longPath, Patiently()),
            "'" + longPath + "' is too long for the path of a socket");
  // The name cannot be: whatever servers of names are asked says so, or says nothing in time.
  const std::string unknown = ConnectionError("no.such.host.invalid:1", Soon());
  EXPECT_NE(unknown.find("no.such.host.invalid'"), std::string::npos) << unknown;
}

TEST(RemoteSocket, EndsAConnectionThatNobodyTakes) {
  // Unix sockets make those wait that find the queue full; the network drops them.
  Listener listener(AF_UNIX);
  std::vector<std::unique_ptr<RemoteSocket>> queue;
  std::string error;
  for (int i = 0; i < 20 && error.empty(); ++i) {
    error = ErrorOf([&] {
      queue.push_back(
          std::make_unique<RemoteSocket>(*ReadRemoteAddress(listener.address), "stub", Soon()));
    });
    if (error == "nothing was thrown") error.clear();
  }
  EXPECT_EQ(error, "cannot connect to the stub at 'stub': Connection timed out");
  Pipe pipe;
  pipe.Signal();
  EXPECT_EQ(ConnectionError(listener.address, Patiently(), pipe.ends[0]),
            "interrupted while connecting to the stub at '" + listener.address + "'");
}

/// A stub that takes a connection and sends the same over and over, whatever it is asked.
TEST(RemoteSocket, BoundsWhatAStubSendsWithoutEnd) {
  Pair pair;
  std::thread babbler([descriptor = pair.other] {
    const std::string babble(4096, '~');
    while (send(descriptor, babble.data(), babble.size(), MSG_NOSIGNAL) > 0) {
    }
  });
  const std::string error = ErrorOf([&] {
    const targets::RemoteStub stub(*pair.socket, std::chrono::seconds(60),
                                   targets::RemoteStub::Leaving::kStopped);
  });
  EXPECT_EQ(error, "the stub at 'stub' sends without end");
  pair.socket.reset();
  babbler.join();
}

}  // namespace
}  // namespace targettests
