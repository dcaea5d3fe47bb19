#ifndef STRINGRESOLVER_TOOLS_RESOLVE_INTERRUPTION_H
#define STRINGRESOLVER_TOOLS_RESOLVE_INTERRUPTION_H

#include <cstddef>
#include <stdexcept>

namespace tool {

/// A signal has asked the command to end.
class Interrupted : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// While it lives, SIGINT, SIGTERM and SIGHUP no longer end the command on the spot: the functions
/// below throw instead, so that what the command holds is given back first. When it goes, it passes
/// the signal on, which then ends the command in the usual way. A second signal of the kind ends it
/// at once. Signals that were ignored stay ignored.
///
/// There may be one at a time; without one, the functions do nothing.
class Interruption {
 public:
  Interruption();
  Interruption(const Interruption&) = delete;
  Interruption& operator=(const Interruption&) = delete;
  ~Interruption();

  /// Can be read once a signal has come; -1 without an interruption. Belongs to the interruption.
  static int Descriptor();

  /// Throws `Interrupted` when a signal has come.
  static void Check();

  /// Waits until `descriptor` has something to read, or its end. Throws `Interrupted` when a signal
  /// comes first.
  static void AwaitInput(int descriptor);

  /// Waits until something can be written to `descriptor`, likewise. Returns the most bytes that
  /// one call may write without waiting again.
  static std::size_t AwaitOutput(int descriptor);
};

}  // namespace tool

#endif  // STRINGRESOLVER_TOOLS_RESOLVE_INTERRUPTION_H
