#include "tools/resolve/Prompt.h"

#include <unistd.h>

#include <iostream>
#include <utility>
#include <variant>
#include <vector>

#include "targets/Error.h"
#include "tools/resolve/ExpressionText.h"
#include "tools/resolve/LineEditor.h"
#include "tools/resolve/LineReader.h"
#include "tools/resolve/Listing.h"
#include "tools/resolve/Printable.h"

namespace tool {
namespace {

constexpr const char* kPrompt = "resolve> ";

}  // namespace

Prompt::Prompt(Target& target, const Options& options, Output* output)
    : target_(target), options_(options), output_(output), completer_(target, last_) {
  Open();
}

bool Prompt::IsPossible() {
  return isatty(STDIN_FILENO) != 0 && isatty(STDOUT_FILENO) != 0;
}

void Prompt::Open() {
  evaluator_.emplace(target_.Labels(), target_.Memory(),
                     options_.exact ? Evaluator::Text::kExact : Evaluator::Text::kC);
  if (const auto size = target_.WordSize()) evaluator_->SetWordSize(*size);
}

Status Prompt::Run() {
  output_->WriteLine(Printable("Reading " + target_.Description() +
                               ". :help tells what can be typed, Ctrl-D ends."));
  output_->Flush();
  OpenHistory();
  if (LineEditor::IsPossible()) {
    RunEdited();
  } else {
    RunPlain();
  }
  return kAllResolved;
}

void Prompt::RunEdited() {
  std::vector<std::string> earlier;
  if (history_) {
    try {
      earlier = history_->Read();
    } catch (const HistoryError& error) {
      ShowNote(std::string(error.what()) + "; there is no history");
      history_.reset();
    }
  }
  LineEditor editor([this](std::string_view text) { return completer_.Complete(text); });
  for (const std::string& line : earlier) editor.Remember(line);
  StopWhen([&] { return editor.WasInterrupted(); });
  std::string line;
  while (true) {
    const LineEditor::Event event = editor.Read(kPrompt, &line);
    if (event == LineEditor::Event::kEnd) break;
    if (event == LineEditor::Event::kDropped || IsBlankText(line)) continue;
    editor.Remember(line);
    KeepInHistory(line);
    if (!Handle(line)) break;
  }
  StopWhen(nullptr);
}

/// On a terminal that cannot move its cursor.
void Prompt::RunPlain() {
  LineReader reader(STDIN_FILENO, "standard input", kLongestExpression + 1);
  std::string line;
  while (true) {
    output_->Write(kPrompt);
    output_->Flush();
    if (!reader.Read(&line)) break;
    if (IsBlankText(line)) continue;
    KeepInHistory(line);
    if (!Handle(line)) return;
  }
  output_->WriteLine("");
  output_->Flush();
}

void Prompt::OpenHistory() {
  try {
    history_ = HistoryFile::OfUser();
  } catch (const HistoryError& error) {
    ShowNote(std::string(error.what()) + "; there is no history");
  }
}

void Prompt::KeepInHistory(const std::string& line) {
  if (!history_) return;
  try {
    history_->Add(line);
  } catch (const HistoryError& error) {
    ShowNote(std::string(error.what()) + "; what is typed from here on is not kept");
    history_.reset();
  }
}

bool Prompt::Handle(const std::string& line) {
  if (IsBlankText(line)) return true;
  if (!IsCommand(line)) {
    Evaluate(line);
    return true;
  }
  const auto read = ReadCommand(line);
  if (const auto* error = std::get_if<CommandError>(&read)) {
    ShowError(error->message);
    return true;
  }
  try {
    return RunCommand(std::get<CommandCall>(read));
  } catch (const targets::Error& error) {
    ShowError(error.what());
    return true;
  }
}

void Prompt::Evaluate(const std::string& expression) {
  const LastValue::Inserted inserted = last_.Insert(expression);
  if (!inserted.error.empty()) return ShowError(inserted.error);
  const Outcome outcome = evaluator_->Evaluate(inserted.text);
  if (const auto* failure = std::get_if<Failure>(&outcome)) {
    ShowError(failure->message);
    const std::optional<std::string> reason = target_.WhyIncomplete();
    if (!explained_ && reason && failure->message.find(*reason) == std::string::npos) {
      explained_ = true;
      ShowNote(*reason);
    }
    return;
  }
  const auto& answer = std::get<Answer>(outcome);
  output_->WriteLine(options_.verbose ? FormatValue(answer) + "  " + FormatDetails(answer)
                                      : FormatValue(answer));
  output_->Flush();
  for (const std::string& note : answer.notes) ShowNote(note);
  last_.Keep(inserted.text, answer, "", false);
}

bool Prompt::RunCommand(const CommandCall& call) {
  switch (call.command->command) {
    case CommandName::kHelp:
      ShowHelp(call.argument);
      return true;
    case CommandName::kLabels:
    case CommandName::kTypes:
      List(call);
      return true;
    case CommandName::kFile:
      ShowOrChooseFile(call.argument);
      return true;
    case CommandName::kReload:
      Reload();
      return true;
    case CommandName::kQuit:
      return false;
    default:
      return true;
  }
}

void Prompt::ShowHelp(const std::string& name) {
  const auto help = CommandHelp(name);
  if (const auto* error = std::get_if<CommandError>(&help)) return ShowError(error->message);
  for (const std::string& line : std::get<std::vector<std::string>>(help)) {
    output_->WriteLine(line);
  }
  output_->Flush();
}

void Prompt::List(const CommandCall& call) {
  const bool labels = call.command->command == CommandName::kLabels;
  const Lister lister = [&](const std::function<void(const targets::Listing&)>& visit) {
    if (labels) {
      target_.Labels().ListLabels(visit);
    } else {
      target_.Labels().ListTypes(visit);
    }
  };
  if (WriteListing(lister, call.argument, output_, interrupted_)) return;
  const std::string what = labels ? "label" : "type";
  ShowError(call.argument.empty()
                ? target_.Name() + " has no " + what + "s"
                : "no " + what + " of " + target_.Name() + " matches " + call.argument);
}

void Prompt::ShowOrChooseFile(const std::string& name) {
  if (!name.empty()) {
    target_.SetCurrentFile(name);
    completer_.Forget();
  }
  const std::string file = target_.Labels().CurrentFile();
  output_->WriteLine(file.empty() ? "there is no current source file" : Printable(file));
  output_->Flush();
}

void Prompt::Reload() {
  target_.Reload();
  Open();
  completer_.Forget();
  // Its object may lie elsewhere now.
  last_.Forget();
  output_->WriteLine(Printable("Reading " + target_.Description() + "."));
  output_->Flush();
}

void Prompt::ShowError(const std::string& sentence) {
  std::cerr << errors_.Paint(Style::Role::kError, "error: ") + Printable(sentence) + "\n"
            << std::flush;
}

void Prompt::ShowNote(const std::string& sentence) {
  std::cerr << errors_.Paint(Style::Role::kNote, "note: " + Printable(sentence)) + "\n"
            << std::flush;
}

}  // namespace tool
