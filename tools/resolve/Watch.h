#ifndef STRINGRESOLVER_TOOLS_RESOLVE_WATCH_H
#define STRINGRESOLVER_TOOLS_RESOLVE_WATCH_H

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "tools/resolve/Output.h"
#include "tools/resolve/Style.h"

namespace tool {

/// What an expression came to, in one line that is fit to be shown.
struct WatchedValue {
  std::string text;
  bool failed = false;  ///< `text` says why there is no value
};

/// Evaluates the same expressions again and again, and shows what changed.
///
/// On a terminal the values stand in place, one line each, those marked with `*` that are not what
/// they were the round before. Elsewhere each line is `SECONDS EXPRESSION = VALUE`, the seconds
/// since the first round; the first round shows all, the later ones what changed.
class Watch {
 public:
  /// What a watch needs from outside.
  struct Needs {
    /// The value of an expression. What it throws ends the watch, and passes through.
    std::function<WatchedValue(const std::string& expression)> evaluate;
    /// Waits for the next round. False when the watch is to end.
    std::function<bool()> pause;
    /// Seconds since some moment.
    std::function<double()> clock;
    /// Columns and rows of the terminal; both 0 when the output is none, and gets lines.
    struct Size {
      std::size_t columns = 0;
      std::size_t rows = 0;
    };
    std::function<Size()> size;
  };

  /// `output` is borrowed.
  Watch(std::vector<std::string> expressions, Needs needs, Style style, Output* output);

  /// Runs until `pause` says so.
  void Run();

 private:
  struct Row {
    std::string expression;
    WatchedValue value;
    bool known = false;    ///< there was a round before
    bool changed = false;  ///< in the last round
  };

  void TakeRound();
  void WriteLines(double seconds);
  void DrawInPlace(Needs::Size size);

  std::vector<Row> rows_;
  Needs needs_;
  Style style_;
  Output* output_;
  std::size_t drawn_ = 0;  ///< lines that stand on the terminal
};

}  // namespace tool

#endif  // STRINGRESOLVER_TOOLS_RESOLVE_WATCH_H
