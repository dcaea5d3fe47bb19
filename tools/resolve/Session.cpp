#include "tools/resolve/Session.h"

#include <unistd.h>

#include <optional>
#include <string_view>
#include <utility>
#include <variant>

#include "tools/resolve/Complaint.h"
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
      verbose_(options.verbose),
      explain_(options.explain),
      json_(options.json),
      output_(output) {
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

void Session::RunOne(const std::string& expression) {
  Interruption::Check();
  const Outcome outcome = evaluator_.Evaluate(expression);
  std::vector<NamedNote> notes;
  if (const auto* answer = std::get_if<Answer>(&outcome)) {
    for (const std::string& note : answer->notes) notes.push_back({"value", note});
  }
  if (json_) return WriteJson(outcome, std::move(notes));
  if (explain_) WriteExplanation(outcome);
  if (const auto* failure = std::get_if<Failure>(&outcome)) {
    status_ = kNotResolved;
    std::string sentence = failure->message;
    if (LooksLikeOption(expression)) sentence += " (options stand before the program)";
    ComplainOf(expression, sentence);
    ExplainOnce(failure->message);
    return;
  }
  const auto& answer = std::get<Answer>(outcome);
  output_->WriteLine(verbose_ ? FormatValue(answer) + "  " + FormatDetails(answer)
                              : FormatValue(answer));
  // Whoever writes the expressions may wait for each answer.
  output_->Flush();
  for (const NamedNote& note : notes) NoteOn(expression, note.text);
}

void Session::WriteJson(const Outcome& outcome, std::vector<NamedNote> notes) {
  if (std::holds_alternative<Failure>(outcome)) {
    status_ = kNotResolved;
    if (auto reason = target_.WhyIncomplete()) notes.push_back({"incomplete", *std::move(reason)});
  }
  output_->WriteLine(
      JsonOfResolution(evaluator_.Log(), outcome, notes, explain_, target_.Labels()));
  output_->Flush();
}

void Session::WriteExplanation(const Outcome& outcome) {
  for (const std::string& line : ExplainResolution(evaluator_.Log(), outcome, target_.Labels())) {
    output_->WriteLine(line);
  }
  output_->Flush();
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
