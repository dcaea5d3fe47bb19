#ifndef STRINGRESOLVER_TOOLS_RESOLVE_LINEEDITOR_H
#define STRINGRESOLVER_TOOLS_RESOLVE_LINEEDITOR_H

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "tools/resolve/Completion.h"

namespace tool {

/// Reads lines from a terminal, with editing, earlier lines and completion, on the standard streams
/// of the process. From its construction to its destruction it owns the terminal's settings and
/// the signals that concern them; there can be one at a time.
///
/// Between two lines the terminal does not echo, and keeps what is typed or pasted for the next
/// one: several lines that arrive at once are all read, one after the other. Ctrl-C is then a
/// signal that `WasInterrupted` tells of.
class LineEditor {
 public:
  /// `text` is the line up to the cursor.
  using CompleteText = std::function<Completions(std::string_view text)>;

  /// Can lines be edited here: are standard input and output terminals that can move the cursor?
  static bool IsPossible();

  explicit LineEditor(CompleteText complete);
  LineEditor(const LineEditor&) = delete;
  LineEditor& operator=(const LineEditor&) = delete;
  ~LineEditor();

  enum class Event {
    kLine,
    kDropped,  ///< Ctrl-C: what was typed does not count
    kEnd,      ///< Ctrl-D on an empty line, or the terminal is gone
  };

  /// Shows `prompt` and reads a line, without its end.
  Event Read(const std::string& prompt, std::string* line);

  /// Adds a line to those that the arrow keys bring back.
  void Remember(const std::string& line);

  /// Was Ctrl-C typed since the last call, or since a line was read?
  bool WasInterrupted();

  /// What the constructor made and the signal handlers share; of the implementation.
  struct Parts;

 private:
  std::unique_ptr<Parts> parts_;
};

}  // namespace tool

#endif  // STRINGRESOLVER_TOOLS_RESOLVE_LINEEDITOR_H
