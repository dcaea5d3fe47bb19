#ifndef STRINGRESOLVER_TOOLS_RESOLVE_LASTVALUE_H
#define STRINGRESOLVER_TOOLS_RESOLVE_LASTVALUE_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "targets/LabelSource.h"
#include "tools/resolve/Answer.h"

namespace tool {

/// What `$` stands for at the prompt: the value of the last expression that had one.
///
/// The resolver knows no `$`; text takes its place. That text names the object again when the value
/// was read from one whose type has a name, `(*(struct node*)0x404010)`, so that members, addresses
/// and subscripts of it can be had; it is the number, with its type, when the value was computed;
/// and it is the expression itself for all else, arrays above all. So the object is read anew, as
/// the program has it now.
class LastValue {
 public:
  /// Takes note of a value of the program with these labels. `expression` is the text that was
  /// evaluated, without `$`.
  void Keep(std::string_view expression, const Answer& answer, targets::LabelSource& labels);

  void Forget() { text_.clear(); }

  [[nodiscard]] bool IsThere() const { return !text_.empty(); }

  /// Does `$` stand in `text` as a word of its own? It may be part of a name, and of a character
  /// constant.
  static bool IsUsedIn(std::string_view text);

  /// `text` with the last value for every `$`, or a sentence that says why it cannot be had.
  struct Inserted {
    std::string text;
    std::string error;  ///< empty when there is none
  };
  [[nodiscard]] Inserted Insert(std::string_view text) const;

  /// The same for a text that may be incomplete; `$` stays where nothing can be had.
  [[nodiscard]] std::string InsertForCompletion(std::string_view text) const;

 private:
  std::string text_;
};

}  // namespace tool

#endif  // STRINGRESOLVER_TOOLS_RESOLVE_LASTVALUE_H
