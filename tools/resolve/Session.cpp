#include "tools/resolve/Session.h"

#include <unistd.h>

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>
#include <variant>

#include "targets/Error.h"
#include "tools/resolve/Complaint.h"
#include "tools/resolve/Display.h"
#include "tools/resolve/Explanation.h"
#include "tools/resolve/ExpressionText.h"
#include "tools/resolve/Interruption.h"
#include "tools/resolve/JsonLines.h"
#include "tools/resolve/LineReader.h"

namespace tool {
namespace {

constexpr std::string_view kStandardInput = "-";

}  // namespace

Session::Session(Target& target, const Options& options, Output* output)
    : target_(target),
      evaluator_(target.Labels(), target.Memory(),
                 options.exact ? Evaluator::Text::kExact : Evaluator::Text::kC),
      notes_(target.Labels(), target.Memory(),
             target.IsLive() ? NoteFinder::Reading::kAlreadyRead : NoteFinder::Reading::kFree),
      wantedNotes_(options.notes),
      exact_(options.exact),
      verbose_(options.verbose),
      explain_(options.explain),
      json_(options.json),
      format_(options.format),
      count_(options.count),
      output_(output) {
  if (options.plain) evaluator_.AskForNumbers();
  if (const auto size = target.WordSize()) evaluator_.SetWordSize(*size);
}

Status Session::Run(const std::vector<std::string>& expressions) {
  if (expressions.size() == 1 && expressions.front() == kStandardInput) {
    RunStandardInput();
  } else {
    for (const std::string& expression : expressions) RunOne(expression);
  }
  return status_;
}

void Session::RunStandardInput() {
  // One byte more than the longest, so that what was cut is still too long.
  LineReader reader(STDIN_FILENO, "standard input", kLongestExpression + 1);
  std::string line;
  while (reader.Read(&line)) {
    if (!IsBlankText(line)) RunOne(line);
  }
}

Session::Result Session::Resolve(const std::string& expression) {
  Interruption::Check();
  Outcome outcome = evaluator_.Evaluate(expression);
  const std::vector<NamedNote> notes = NotesOn(expression, outcome);
  std::string line;
  if (auto* answer = std::get_if<Answer>(&outcome)) {
    try {
      line = LineOf(answer);
    } catch (const targets::Error& error) {
      if (error.Code() == targets::ErrorCode::kTargetLost) throw;
      outcome = Failure{error.what()};
    }
  }
  if (wantedNotes_ == Options::Notes::kError && !notes.empty() &&
      std::holds_alternative<Answer>(outcome)) {
    outcome = Failure{notes.front().text};
  }
  return {std::move(outcome), std::move(line), notes};
}

void Session::RunOne(const std::string& expression) {
  const auto [outcome, line, notes] = Resolve(expression);
  if (json_) return WriteJson(outcome, line, notes);
  if (explain_) {
    for (const std::string& step : Explanation(outcome)) output_->WriteLine(step);
    output_->Flush();
  }
  const auto* failure = std::get_if<Failure>(&outcome);
  if (failure == nullptr) {
    const auto& answer = std::get<Answer>(outcome);
    output_->WriteLine(verbose_ ? line + "  " + FormatDetails(answer) : line);
    // Whoever writes the expressions may wait for each answer.
    output_->Flush();
  } else {
    Fail(expression, failure->message);
  }
  for (const NamedNote& note : notes) {
    if (failure == nullptr || note.text != failure->message) NoteOn(expression, note.text);
  }
  if (failure != nullptr) ExplainOnce(failure->message);
}

std::vector<NamedNote> Session::NotesOn(const std::string& expression, const Outcome& outcome) {
  if (wantedNotes_ == Options::Notes::kNone) return {};
  // The differences are those of a text that is prepared.
  std::vector<NamedNote> notes;
  if (!exact_) notes = notes_.Find(expression, outcome, evaluator_.Log());
  if (const auto* answer = std::get_if<Answer>(&outcome)) {
    for (const NamedNote& note : answer->notes) {
      // What the finder knows about bit-fields is more.
      const bool found = std::any_of(notes.begin(), notes.end(), [&](const NamedNote& other) {
        return other.name == note.name;
      });
      const bool settled = note.name == kBitFieldNote && !exact_ && notes_.Agreed();
      if (!found && !settled) notes.push_back(note);
    }
  }
  return notes;
}

void Session::WriteJson(const Outcome& outcome, const std::string& line,
                        std::vector<NamedNote> notes) {
  if (std::holds_alternative<Failure>(outcome)) {
    status_ = kNotResolved;
    if (auto reason = target_.WhyIncomplete()) notes.push_back({"incomplete", *std::move(reason)});
  }
  output_->WriteLine(
      JsonOfResolution(evaluator_.Log(), outcome, line, notes, explain_, target_.Labels()));
  output_->Flush();
}

std::vector<std::string> Session::Explanation(const Outcome& outcome) const {
  return ExplainResolution(evaluator_.Log(), outcome, target_.Labels());
}

void Session::ShowAs(Format format, std::optional<std::uint64_t> count) {
  format_ = format;
  count_ = count;
}

std::string Session::LineOf(Answer* answer) {
  if (!answer->denoted) return FormatValue(*answer);
  Denoted& denoted = *answer->denoted;
  if (count_) {
    denoted = WithCount(denoted, *count_, target_.Labels(), target_.Memory());
    answer->isNumber = false;
    answer->size = denoted.made.size;
    answer->typeName = denoted.made.name;
    answer->address = denoted.address;
  }
  return Display(denoted, target_.Labels(), target_.Memory(), DisplayLimits(), format_);
}

void Session::Fail(const std::string& expression, const std::string& message) {
  status_ = kNotResolved;
  std::string sentence = message;
  if (LooksLikeOption(expression)) sentence += " (options stand before the program)";
  ComplainOf(expression, sentence);
}

/// A label whose type could not be read fails like one that has no such member. The reason is worth
/// a line then, but not one for every expression.
void Session::ExplainOnce(const std::string& message) {
  const std::optional<std::string> reason = target_.WhyIncomplete();
  if (explained_ || !reason) return;
  explained_ = true;
  if (message.find(*reason) == std::string::npos) Note(*reason);
}

}  // namespace tool
