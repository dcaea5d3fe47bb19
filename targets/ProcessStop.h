#ifndef STRINGRESOLVER_TARGETS_PROCESSSTOP_H
#define STRINGRESOLVER_TARGETS_PROCESSSTOP_H

#include <chrono>
#include <functional>
#include <map>

#include "targets/Process.h"

namespace targets {

/// Holds every thread of a process while it lives: none of them runs, so that what is read together
/// belongs together. Afterwards they go on as if nothing had been: system calls that can be resumed
/// are, signals that came in between arrive, and a process that was stopped before stays stopped.
///
/// The system itself lets the threads go when the thread that made this object ends in any way,
/// killed by SIGKILL included, and delivers what was held back. Not held are other processes that
/// share memory with this one, and a transfer that the kernel has under way.
class ProcessStop {
 public:
  /// How long one thread may take to stop. Only one that waits in the kernel and cannot be woken
  /// takes longer than an instant.
  static constexpr std::chrono::seconds kPatience{10};

  /// Returns once all threads are held. Calls `interrupted` while it waits, which may throw to end
  /// that. Throws `Error` (`kUnreadable`) when the system refuses or a thread does not stop,
  /// `kTargetLost` when the process ends. Whatever it throws, nothing stays held.
  ///
  /// `process` is borrowed and must outlive this object, which belongs to the thread that made it.
  ProcessStop(Process& process, const std::function<void()>& interrupted);
  ProcessStop(const ProcessStop&) = delete;
  ProcessStop& operator=(const ProcessStop&) = delete;
  ~ProcessStop();

 private:
  bool Seize(int thread);
  void Await(int thread, const std::function<void()>& interrupted);
  void Release();

  Process& process_;
  /// Number of each thread that is held, or is to be, with the signal to deliver when it goes on.
  std::map<int, int> threads_;
};

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_PROCESSSTOP_H
