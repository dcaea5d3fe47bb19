#include "tools/resolve/TerminalSignals.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "tools/resolve/StreamError.h"

namespace tool {
namespace {

constexpr std::array<int, 6> kHandled = {SIGINT, SIGCONT, SIGWINCH, SIGTERM, SIGHUP, SIGQUIT};

// What handlers may use: they see no objects.
volatile std::sig_atomic_t interruptSeen = 0;
volatile std::sig_atomic_t resumeSeen = 0;
volatile std::sig_atomic_t resizeSeen = 0;
volatile std::sig_atomic_t endSeen = 0;
/// Someone else has something to give back before the process ends.
volatile std::sig_atomic_t endWaits = 0;
std::array<int, 2> wakeUp = {-1, -1};
termios settings{};
volatile std::sig_atomic_t settingsChanged = 0;
const char* lastWords = "";
std::size_t lastWordsLength = 0;

void ForgetSeen() {
  interruptSeen = 0;
  resumeSeen = 0;
  resizeSeen = 0;
}

extern "C" void Handle(int signal) {
  const int error = errno;
  switch (signal) {
    case SIGINT:
      interruptSeen = 1;
      break;
    case SIGCONT:
      resumeSeen = 1;
      break;
    case SIGWINCH:
      resizeSeen = 1;
      break;
    default:
      if (endWaits != 0) {
        endSeen = signal;
        break;
      }
      if (settingsChanged != 0) tcsetattr(STDIN_FILENO, TCSANOW, &settings);
      if (write(STDOUT_FILENO, lastWords, lastWordsLength) < 0) errno = error;
      std::signal(signal, SIG_DFL);
      // Comes when this handler has returned.
      raise(signal);
      return;
  }
  // A full pipe wakes up as well.
  if (write(wakeUp[1], "", 1) < 0) errno = error;
  errno = error;
}

}  // namespace

TerminalSignals::TerminalSignals(const termios* restored, const char* farewell) {
  settingsChanged = restored != nullptr ? 1 : 0;
  if (restored != nullptr) settings = *restored;
  lastWords = farewell;
  lastWordsLength = std::strlen(farewell);
  if (pipe2(wakeUp.data(), O_CLOEXEC | O_NONBLOCK) != 0) {
    throw StreamError(std::string("cannot watch for signals: ") + std::strerror(errno));
  }
  ForgetSeen();
  endSeen = 0;
  endWaits = 0;
  struct sigaction action {};
  action.sa_handler = Handle;
  for (std::size_t n = 0; n < kHandled.size(); ++n) {
    // What is under way goes on: whoever waits for a key also waits for `Descriptor`.
    action.sa_flags = SA_RESTART;
    sigaction(kHandled[n], &action, &former_[n]);
    // One that was ignored on purpose, as by nohup, stays so.
    if (former_[n].sa_handler == SIG_IGN) sigaction(kHandled[n], &former_[n], nullptr);
    const bool ends = kHandled[n] == SIGTERM || kHandled[n] == SIGHUP;
    if (ends && former_[n].sa_handler != SIG_IGN) {
      endWaits = former_[n].sa_handler != SIG_DFL ? 1 : 0;
    }
  }
}

TerminalSignals::~TerminalSignals() {
  for (std::size_t n = 0; n < kHandled.size(); ++n) sigaction(kHandled[n], &former_[n], nullptr);
  for (int& end : wakeUp) {
    close(end);
    end = -1;
  }
  if (endSeen != 0) raise(endSeen);
}

int TerminalSignals::Descriptor() const {
  return wakeUp[0];
}

TerminalSignals::Seen TerminalSignals::Take() {
  std::array<char, 64> bytes{};
  while (read(wakeUp[0], bytes.data(), bytes.size()) > 0) {
  }
  const Seen seen{interruptSeen != 0, resumeSeen != 0, resizeSeen != 0, endSeen != 0};
  ForgetSeen();
  return seen;
}

}  // namespace tool
