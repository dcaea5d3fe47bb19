#include "tools/resolve/Session.h"

#include <unistd.h>

#include <optional>
#include <string_view>
#include <variant>

#include "targets/Error.h"
#include "tools/resolve/Complaint.h"
#include "tools/resolve/Display.h"
#include "tools/resolve/ExpressionText.h"
#include "tools/resolve/Interruption.h"
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

void Session::RunOne(const std::string& expression) {
  Interruption::Check();
  Outcome outcome = evaluator_.Evaluate(expression);
  if (const auto* failure = std::get_if<Failure>(&outcome)) {
    Fail(expression, failure->message);
    return;
  }
  auto& answer = std::get<Answer>(outcome);
  std::string line;
  try {
    line = LineOf(&answer);
  } catch (const targets::Error& error) {
    if (error.Code() == targets::ErrorCode::kTargetLost) throw;
    Fail(expression, error.what());
    return;
  }
  output_->WriteLine(verbose_ ? line + "  " + FormatDetails(answer) : line);
  // Whoever writes the expressions may wait for each answer.
  output_->Flush();
  for (const std::string& note : answer.notes) NoteOn(expression, note);
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
  ExplainOnce(message);
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
