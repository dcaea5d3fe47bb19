#ifndef STRINGRESOLVER_TOOLS_RESOLVE_NOTES_H
#define STRINGRESOLVER_TOOLS_RESOLVE_NOTES_H

#include <string>
#include <string_view>
#include <vector>

#include "targets/LabelSource.h"
#include "targets/MemorySource.h"
#include "tools/resolve/CMeaning.h"
#include "tools/resolve/Evaluator.h"
#include "tools/resolve/NamedNote.h"
#include "tools/resolve/ResolutionLog.h"

namespace tool {

/// Finds where an expression does not mean here what it means in C. It works out what the
/// expression is in C, as far as that can be known, and is silent where C has the same answer:
/// better no note than a wrong one.
class NoteFinder {
 public:
  /// What may be read to find out more than the resolution has.
  enum class Reading {
    kFree,         ///< all of the memory: it stands still
    kAlreadyRead,  ///< only what the resolution has read: reading may change a live target
  };

  /// Both sources are borrowed.
  NoteFinder(targets::LabelSource& labels, targets::MemorySource& memory, Reading reading)
      : labels_(labels),
        memory_(memory),
        reading_(reading),
        evaluator_(labels, memory, Evaluator::Text::kC) {
    evaluator_.AskForNumbers();
  }

  /// The notes on an expression, a C text that was prepared for the resolver, with its outcome and
  /// the log of its resolution.
  std::vector<NamedNote> Find(std::string_view expression, const Outcome& outcome,
                              const ResolutionLog& log);
  /// Was the last answer known to be C's?
  [[nodiscard]] bool Agreed() const { return agreed_; }

 private:
  [[nodiscard]] CReading::Memory MemoryFor(const ResolutionLog& log);
  bool Confirms(const std::string& text, const CMeaning& wanted);

  targets::LabelSource& labels_;
  targets::MemorySource& memory_;
  Reading reading_;
  Evaluator evaluator_;
  bool agreed_ = false;
};

}  // namespace tool

#endif  // STRINGRESOLVER_TOOLS_RESOLVE_NOTES_H
