#ifndef STRINGRESOLVER_TOOLS_RESOLVE_TERMINALSIGNALS_H
#define STRINGRESOLVER_TOOLS_RESOLVE_TERMINALSIGNALS_H

#include <termios.h>

#include <array>
#include <csignal>
#include <cstddef>

namespace tool {

/// Takes over the signals that matter to a terminal whose settings were changed, as long as it
/// lives; there can be one at a time. A signal that ends the process puts the settings back first.
/// One that someone else handles is kept until this object goes, and then raised again.
class TerminalSignals {
 public:
  /// For a terminal whose settings stay as they are, or an output that is none.
  TerminalSignals() : TerminalSignals(nullptr, "") {}
  /// `restored` are the settings to put back, if any, and `farewell` what is written to the
  /// terminal then; it must live as long as the process.
  TerminalSignals(const termios* restored, const char* farewell);
  TerminalSignals(const TerminalSignals&) = delete;
  TerminalSignals& operator=(const TerminalSignals&) = delete;
  ~TerminalSignals();

  /// Becomes readable when a signal has come. Owned by this object.
  [[nodiscard]] int Descriptor() const;

  /// Which signals came since the last call: forgets them.
  struct Seen {
    bool interrupt = false;  ///< Ctrl-C
    bool resumed = false;    ///< the process was stopped, and runs on
    bool resized = false;    ///< the terminal has another size
    bool ended = false;      ///< the process is to end
  };
  Seen Take();

 private:
  static constexpr std::size_t kSignals = 6;
  std::array<struct sigaction, kSignals> former_{};
};

}  // namespace tool

#endif  // STRINGRESOLVER_TOOLS_RESOLVE_TERMINALSIGNALS_H
