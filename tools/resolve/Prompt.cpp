#include "tools/resolve/Prompt.h"

#include <unistd.h>

#include <iostream>
#include <utility>
#include <variant>
#include <vector>

#include "targets/Error.h"
#include "tools/resolve/ExpressionText.h"
#include "tools/resolve/Layout.h"
#include "tools/resolve/LineEditor.h"
#include "tools/resolve/LineReader.h"
#include "tools/resolve/Listing.h"
#include "tools/resolve/Printable.h"

namespace tool {
namespace {

constexpr const char* kPrompt = "resolve> ";

}  // namespace

Prompt::Prompt(Target& target, const Options& options, Output* output)
    : target_(target),
      options_(options),
      output_(output),
      format_(options.format),
      completer_(target, last_) {
  Open();
}

bool Prompt::IsPossible() {
  return isatty(STDIN_FILENO) != 0 && isatty(STDOUT_FILENO) != 0;
}

void Prompt::Open() {
  session_.emplace(target_, options_, output_);
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
  try {
    if (!IsCommand(line)) {
      Evaluate(line);
      return true;
    }
    const auto read = ReadCommand(line);
    if (const auto* call = std::get_if<CommandCall>(&read)) return RunCommand(*call);
    ShowError(std::get<CommandError>(read).message);
    return true;
  } catch (const targets::Error& error) {
    ShowError(error.what());
    return true;
  }
}

void Prompt::Evaluate(const std::string& line) {
  const auto asked = ReadLine(line);
  if (const auto* error = std::get_if<CommandError>(&asked)) return ShowError(error->message);
  const auto& request = std::get<PromptLine>(asked);
  const LastValue::Inserted inserted = last_.Insert(request.expression);
  if (!inserted.error.empty()) return ShowError(inserted.error);
  session_->ShowAs(request.format.value_or(format_),
                   request.count ? request.count : options_.count);
  const auto [outcome, value, notes] = session_->Resolve(inserted.text);
  if (options_.explain) {
    for (const std::string& step : session_->Explanation(outcome)) output_->WriteLine(step);
  }
  const auto* const failure = std::get_if<Failure>(&outcome);
  if (failure == nullptr) {
    const auto& answer = std::get<Answer>(outcome);
    output_->WriteLine(options_.verbose ? value + "  " + FormatDetails(answer) : value);
    last_.Keep(inserted.text, answer, target_.Labels());
  }
  output_->Flush();
  if (failure != nullptr) ShowFailure(failure->message);
  for (const NamedNote& note : notes) {
    if (failure == nullptr || note.text != failure->message) ShowNote(note.text);
  }
}

void Prompt::ShowFailure(const std::string& message) {
  ShowError(message);
  const std::optional<std::string> reason = target_.WhyIncomplete();
  if (explained_ || !reason) return;
  explained_ = true;
  if (message.find(*reason) == std::string::npos) ShowNote(*reason);
}

void Prompt::Explain(const std::string& expression) {
  const LastValue::Inserted inserted = last_.Insert(expression);
  if (!inserted.error.empty()) return ShowError(inserted.error);
  session_->ShowAs(format_, options_.count);
  const Session::Result result = session_->Resolve(inserted.text);
  for (const std::string& step : session_->Explanation(result.outcome)) output_->WriteLine(step);
  output_->Flush();
}

void Prompt::ShowLayout(const std::string& type) {
  const targets::TypeNumber number = TypeNamed(target_.Labels(), type);
  if (number == 0) return ShowError("no type of " + target_.Name() + " is called " + type);
  output_->Write(LayoutText(target_.Labels(), number));
  output_->Flush();
}

void Prompt::ShowOrChooseFormat(const std::string& name) {
  if (!name.empty()) {
    const std::optional<Format> format = FormatNamed(name);
    if (!format) {
      return ShowError("there is no format " + name + "; there are " + FormatNames());
    }
    format_ = *format;
  }
  for (const std::string& word : LongFormatNames()) {
    if (FormatNamed(word) == format_) output_->WriteLine(word);
  }
  output_->Flush();
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
    case CommandName::kLayout:
      ShowLayout(call.argument);
      return true;
    case CommandName::kFormat:
      ShowOrChooseFormat(call.argument);
      return true;
    case CommandName::kExplain:
      Explain(call.argument);
      return true;
    case CommandName::kFile:
      ShowOrChooseFile(call.argument);
      return true;
    case CommandName::kReload:
      Reload();
      return true;
    case CommandName::kQuit:
      return false;
  }
  return true;
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
