#include "tools/resolve/Interruption.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstring>
#include <limits>
#include <string>
#include <system_error>

#include "tools/resolve/StreamError.h"

namespace tool {
namespace {

constexpr std::array kSignals = {SIGINT, SIGTERM, SIGHUP};

/// Handlers get no other data than what is global.
volatile std::sig_atomic_t caught = 0;
/// A pipe that can be read once a signal has come, so that waiting for it misses none.
std::array<int, 2> alarmPipe = {-1, -1};
std::array<struct sigaction, kSignals.size()> before;

extern "C" void NoteSignal(int signal) {
  const int error = errno;
  caught = signal;
  const char byte = 0;
  // The pipe cannot be full: each signal comes here once.
  [[maybe_unused]] const ssize_t written = write(alarmPipe[1], &byte, 1);
  errno = error;
}

void Await(int descriptor, short event) {
  Interruption::Check();
  std::array<pollfd, 2> waiting = {{{descriptor, event, 0}, {alarmPipe[0], POLLIN, 0}}};
  while (poll(waiting.data(), waiting.size(), -1) < 0) {
    if (errno != EINTR) {
      throw StreamError(std::string("cannot wait for a stream: ") + std::strerror(errno));
    }
    Interruption::Check();
  }
  Interruption::Check();
}

}  // namespace

Interruption::Interruption() {
  caught = 0;
  if (pipe2(alarmPipe.data(), O_CLOEXEC | O_NONBLOCK) != 0) {
    throw std::system_error(errno, std::generic_category(), "cannot make a pipe");
  }
  for (std::size_t i = 0; i < kSignals.size(); ++i) {
    sigaction(kSignals[i], nullptr, &before[i]);
    if (before[i].sa_handler == SIG_IGN) continue;
    struct sigaction noting {};
    noting.sa_handler = NoteSignal;
    // Without SA_RESTART, so that waiting calls return; once, so that a second signal ends all.
    noting.sa_flags = static_cast<int>(SA_RESETHAND);
    sigaction(kSignals[i], &noting, nullptr);
  }
}

Interruption::~Interruption() {
  for (std::size_t i = 0; i < kSignals.size(); ++i) sigaction(kSignals[i], &before[i], nullptr);
  for (int& end : alarmPipe) {
    close(end);
    end = -1;
  }
  if (caught != 0) std::raise(caught);
}

int Interruption::Descriptor() {
  return alarmPipe[0];
}

void Interruption::Check() {
  if (alarmPipe[0] >= 0 && caught != 0) throw Interrupted("interrupted by a signal");
}

void Interruption::AwaitInput(int descriptor) {
  if (alarmPipe[0] >= 0) Await(descriptor, POLLIN);
}

std::size_t Interruption::AwaitOutput(int descriptor) {
  if (alarmPipe[0] < 0) return std::numeric_limits<std::size_t>::max();
  Await(descriptor, POLLOUT);
  return PIPE_BUF;
}

}  // namespace tool
