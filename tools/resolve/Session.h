#ifndef STRINGRESOLVER_TOOLS_RESOLVE_SESSION_H
#define STRINGRESOLVER_TOOLS_RESOLVE_SESSION_H

#include <string>
#include <vector>

#include "tools/resolve/Command.h"
#include "tools/resolve/Evaluator.h"
#include "tools/resolve/NamedNote.h"
#include "tools/resolve/Options.h"
#include "tools/resolve/Output.h"
#include "tools/resolve/Target.h"

namespace tool {

/// Evaluates the expressions of one command, and gives each its line: an answer on the output or an
/// error on standard error.
class Session {
 public:
  /// All are borrowed and must outlive the session.
  Session(Target& target, const Options& options, Output* output);

  /// Evaluates each of `expressions`, or the lines of standard input for a lone `-`.
  Status Run(const std::vector<std::string>& expressions);

 private:
  void RunStandardInput();
  void RunOne(const std::string& expression);
  void WriteJson(const Outcome& outcome, std::vector<NamedNote> notes);
  void WriteExplanation(const Outcome& outcome);
  void ExplainOnce(const std::string& message);

  Target& target_;
  Evaluator evaluator_;
  bool explained_ = false;
  bool verbose_;
  bool explain_;
  bool json_;
  Output* output_;
  Status status_ = kAllResolved;
};

}  // namespace tool

#endif  // STRINGRESOLVER_TOOLS_RESOLVE_SESSION_H
