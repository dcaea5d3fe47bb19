#ifndef STRINGRESOLVER_TARGETS_PROCESS_H
#define STRINGRESOLVER_TARGETS_PROCESS_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "targets/Error.h"

namespace targets {

/// A running process of this machine, and the program that it runs now: neither a later process
/// that gets the same number nor another program that this one starts is taken for it.
///
/// Looking at it takes the rights of a debugger, but leaves it alone: it is neither stopped nor
/// does it get a signal.
class Process {
 public:
  /// The process called `id`, or the one that has a thread called `id`. Throws `Error` with a
  /// sentence for each case: `kTargetLost` when there is none or it has ended, `kUnreadable` when
  /// it has no memory of its own (a kernel thread) or may not be read.
  explicit Process(std::int64_t id);
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;
  ~Process();

  [[nodiscard]] int Id() const { return id_; }

  /// A thread of it that has not ended, as far as is known. The first one may end before the
  /// others, and then neither memory nor mappings can be had through it.
  [[nodiscard]] int LivingThread() const { return thread_; }

  /// Looks for another thread that has not ended. Throws `Error` (`kTargetLost`) when there is
  /// none.
  void FindLivingThread();

  /// Throws `Error` (`kTargetLost`) when the process has ended, or runs another program now.
  void CheckSame() const;

  /// `/proc/ID/NAME`, ID being the living thread.
  [[nodiscard]] std::string Path(std::string_view name) const;

  /// The contents of that file, now. Throws `Error` (`kTargetLost`) when it cannot be read.
  [[nodiscard]] std::string Contents(std::string_view name);

  /// The numbers of its threads, now, those that are just ending included; empty when it has ended.
  [[nodiscard]] std::vector<int> Threads() const;

  /// The error to report when the system refuses to let the process be read or stopped: `action`
  /// says what was tried, as in `read`. Names the cause, as far as the system shows it.
  [[nodiscard]] Error Refusal(std::string_view action) const;

 private:
  void OpenMemory();
  [[nodiscard]] bool HasAddressSpace() const;

  int id_ = 0;
  int thread_ = 0;
  /// Its address space, which ends with the process, and when it starts another program.
  int addressSpace_ = -1;
};

/// The letter for the state of a thread: `R` running, `S` and `D` waiting, `T` stopped, `t` held by
/// a debugger, `Z` and `X` ended. A space when there is no such thread.
char ThreadState(int process, int thread);

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_PROCESS_H
