#ifndef STRINGRESOLVER_TOOLS_RESOLVE_SESSION_H
#define STRINGRESOLVER_TOOLS_RESOLVE_SESSION_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tools/resolve/Command.h"
#include "tools/resolve/Evaluator.h"
#include "tools/resolve/NamedNote.h"
#include "tools/resolve/Notes.h"
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

  /// What an expression came to.
  struct Result {
    Outcome outcome;
    std::string line;  ///< the value as it is shown; of an answer only
    std::vector<NamedNote> notes;
  };
  /// Evaluates one expression and writes nothing. Throws `targets::Error` (`kTargetLost`).
  Result Resolve(const std::string& expression);

  /// The steps of the last evaluation, as `--explain` shows them.
  [[nodiscard]] std::vector<std::string> Explanation(const Outcome& outcome) const;

  /// How values are shown from here on, and as how many elements.
  void ShowAs(Format format, std::optional<std::uint64_t> count);

 private:
  void RunStandardInput();
  void RunOne(const std::string& expression);
  void Fail(const std::string& expression, const std::string& message);
  /// The answer's line. Throws `targets::Error`.
  std::string LineOf(Answer* answer);
  std::vector<NamedNote> NotesOn(const std::string& expression, const Outcome& outcome);
  void WriteJson(const Outcome& outcome, const std::string& line, std::vector<NamedNote> notes);
  void ExplainOnce(const std::string& message);

  Target& target_;
  Evaluator evaluator_;
  NoteFinder notes_;
  Options::Notes wantedNotes_;
  bool exact_;
  bool explained_ = false;
  bool verbose_;
  bool explain_;
  bool json_;
  Format format_;
  std::optional<std::uint64_t> count_;
  Output* output_;
  Status status_ = kAllResolved;
};

}  // namespace tool

#endif  // STRINGRESOLVER_TOOLS_RESOLVE_SESSION_H
