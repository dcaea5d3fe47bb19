#ifndef STRINGRESOLVER_TOOLS_RESOLVE_EVALUATOR_H
#define STRINGRESOLVER_TOOLS_RESOLVE_EVALUATOR_H

#include <string>
#include <string_view>
#include <variant>

#include "targets/LabelSource.h"
#include "targets/MemorySource.h"
#include "tools/resolve/Answer.h"
#include "tools/resolve/ExplainingHost.h"
#include "tools/resolve/ResolutionLog.h"

namespace tool {

/// Why an expression has no answer: one sentence without a full stop. It may quote the expression
/// and names of the program, and so hold any bytes.
struct Failure {
  std::string message;
};

using Outcome = std::variant<Answer, Failure>;

/// Evaluates expressions over one program, each with a resolver of its own, so that no expression
/// sees anything of the ones before it.
///
/// The resolver goes on where C would stop: it counts what it cannot read as 0, reads the first
/// bytes of a structure, and takes a bit-field for the unit that holds it. Here the first is a
/// failure; structures, arrays and bit-fields are denoted as what they are, unless only numbers are
/// asked for. A bit-field that counts in a sum is an answer with a note.
class Evaluator {
 public:
  enum class Text {
    kC,      ///< prepared by `PrepareExpression`
    kExact,  ///< handed over as it is
  };

  /// Borrows both sources.
  Evaluator(targets::LabelSource& labels, targets::MemorySource& memory, Text text)
      : labels_(labels), host_(labels, memory), text_(text) {}

  /// See `targets::ProgramHost::SetWordSize`.
  void SetWordSize(std::uint32_t size) { host_.SetWordSize(size); }

  /// Answers are numbers only, and have nothing `denoted`: what has no number is a failure.
  void AskForNumbers() { numbersOnly_ = true; }

  /// Throws `targets::Error` (`kTargetLost`) when the target is gone, and with it all answers.
  Outcome Evaluate(std::string_view expression);

  /// What the last evaluation was.
  [[nodiscard]] const ResolutionLog& Log() const { return host_.Log(); }

 private:
  targets::LabelSource& labels_;
  ExplainingHost host_;
  Text text_;
  bool numbersOnly_ = false;
};

}  // namespace tool

#endif  // STRINGRESOLVER_TOOLS_RESOLVE_EVALUATOR_H
