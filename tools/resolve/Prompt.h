#ifndef STRINGRESOLVER_TOOLS_RESOLVE_PROMPT_H
#define STRINGRESOLVER_TOOLS_RESOLVE_PROMPT_H

#include <functional>
#include <optional>
#include <string>

#include "tools/resolve/Command.h"
#include "tools/resolve/Completion.h"
#include "tools/resolve/Format.h"
#include "tools/resolve/HistoryFile.h"
#include "tools/resolve/LastValue.h"
#include "tools/resolve/Options.h"
#include "tools/resolve/Output.h"
#include "tools/resolve/PromptCommands.h"
#include "tools/resolve/Session.h"
#include "tools/resolve/Style.h"
#include "tools/resolve/Target.h"

namespace tool {

/// The prompt: evaluates what a person types, line by line. Answers go to the output, everything
/// else to standard error.
class Prompt {
 public:
  /// All are borrowed and must outlive the prompt.
  Prompt(Target& target, const Options& options, Output* output);

  /// Can a person type here: are standard input and output terminals?
  static bool IsPossible();

  /// Reads lines from the terminal until the person ends the session. A line that cannot be
  /// evaluated is no failure of the session. Throws `StreamError`.
  Status Run();

  /// Does what one line asks for: a command or an expression. False when it ends the session.
  bool Handle(const std::string& line);

  [[nodiscard]] Completer& Completing() { return completer_; }

  /// What tells, while a line is dealt with, that it need not be finished.
  void StopWhen(std::function<bool()> interrupted) { interrupted_ = std::move(interrupted); }

 private:
  void RunEdited();
  void RunPlain();
  void OpenHistory();
  void KeepInHistory(const std::string& line);
  void Open();

  void Evaluate(const std::string& line);
  void ShowFailure(const std::string& message);
  void Explain(const std::string& expression);
  void ShowLayout(const std::string& type);
  void ShowOrChooseFormat(const std::string& name);
  bool RunCommand(const CommandCall& call);
  void ShowHelp(const std::string& name);
  void List(const CommandCall& call);
  void ShowOrChooseFile(const std::string& name);
  void Reload();

  void ShowError(const std::string& sentence);
  void ShowNote(const std::string& sentence);

  Target& target_;
  const Options& options_;
  Output* output_;
  Style errors_ = Style::For(2);
  std::optional<Session> session_;
  Format format_;
  LastValue last_;
  Completer completer_;
  std::optional<HistoryFile> history_;
  std::function<bool()> interrupted_;
  bool explained_ = false;
};

}  // namespace tool

#endif  // STRINGRESOLVER_TOOLS_RESOLVE_PROMPT_H
