#include "targets/ProcessStop.h"

#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "targets/Error.h"

namespace targets {
namespace {

constexpr std::chrono::microseconds kShortestPause{50};
constexpr std::chrono::microseconds kLongestPause{20000};

/// The system takes the signal to deliver as an address.
void* AsAddress(int signal) {
  // NOLINTNEXTLINE(performance-no-int-to-ptr)
  return reinterpret_cast<void*>(static_cast<std::intptr_t>(signal));
}

/// The signal that a thread was about to get when it stopped with this status; 0 when it stopped
/// for another reason: because it was told to, or with its whole process.
int PendingSignal(int status) {
  return status >> 16 == 0 ? WSTOPSIG(status) : 0;
}

}  // namespace

ProcessStop::ProcessStop(Process& process, const std::function<void()>& interrupted)
    : process_(process) {
  if (process_.Id() == getpid()) {
    throw Error(ErrorCode::kUnreadable,
                "process " + std::to_string(process_.Id()) + " is this one: it cannot hold itself");
  }
  try {
    // Threads that are not held yet may start others. Once a look at all of them finds no new one,
    // nobody is left to do that.
    for (bool any = true; any;) {
      std::vector<int> fresh;
      for (const int thread : process_.Threads()) {
        if (!threads_.contains(thread) && Seize(thread)) fresh.push_back(thread);
      }
      for (const int thread : fresh) Await(thread, interrupted);
      any = !fresh.empty();
    }
    if (threads_.empty()) process_.FindLivingThread();
    process_.CheckSame();
  } catch (...) {
    Release();
    throw;
  }
}

ProcessStop::~ProcessStop() {
  Release();
}

/// False when the thread has ended meanwhile.
bool ProcessStop::Seize(int thread) {
  // Without PTRACE_O_EXITKILL, so that the end of this command is not the end of the process.
  if (ptrace(PTRACE_SEIZE, thread, nullptr, nullptr) != 0) {
    const int reason = errno;
    const char state = ThreadState(process_.Id(), thread);
    if (reason == ESRCH || state == 'Z' || state == 'X' || state == ' ') return false;
    if (reason == EPERM) throw process_.Refusal("stop");
    throw Error(ErrorCode::kUnreadable, "cannot stop thread " + std::to_string(thread) +
                                            " of process " + std::to_string(process_.Id()) + ": " +
                                            std::strerror(reason));
  }
  threads_.emplace(thread, 0);
  // Fails only when the thread has ended, which waiting for it will tell.
  ptrace(PTRACE_INTERRUPT, thread, nullptr, nullptr);
  return true;
}

void ProcessStop::Await(int thread, const std::function<void()>& interrupted) {
  const auto end = std::chrono::steady_clock::now() + kPatience;
  std::chrono::microseconds pause = kShortestPause;
  while (true) {
    int status = 0;
    const pid_t got = waitpid(thread, &status, __WALL | WNOHANG);
    if (got == thread && WIFSTOPPED(status)) {
      threads_[thread] = PendingSignal(status);
      return;
    }
    // The end of a process's first thread is reported only after that of all others.
    const bool ended =
        got == thread || (got < 0 && errno != EINTR) || ThreadState(process_.Id(), thread) == 'Z';
    if (ended) {
      threads_.erase(thread);
      return;
    }
    interrupted();
    if (std::chrono::steady_clock::now() > end) {
      throw Error(ErrorCode::kUnreadable, "thread " + std::to_string(thread) + " of process " +
                                              std::to_string(process_.Id()) +
                                              " does not stop: it waits in the kernel");
    }
    std::this_thread::sleep_for(pause);
    pause = std::min(pause * 2, kLongestPause);
  }
}

void ProcessStop::Release() {
  for (const auto& [thread, signal] : threads_) {
    // Fails for a thread that was killed, and for one that has not stopped, which the system lets
    // go when this command ends.
    ptrace(PTRACE_DETACH, thread, nullptr, AsAddress(signal));
  }
  threads_.clear();
}

}  // namespace targets
