#include "tools/resolve/Command.h"

#include <unistd.h>

#include <exception>
#include <iostream>
#include <new>
#include <string_view>
#include <variant>

#include "targets/ElfProgram.h"
#include "targets/Error.h"
#include "tools/resolve/Evaluator.h"
#include "tools/resolve/ExpressionText.h"
#include "tools/resolve/LineReader.h"
#include "tools/resolve/Listing.h"
#include "tools/resolve/Options.h"
#include "tools/resolve/Output.h"
#include "tools/resolve/Printable.h"

namespace tool {
namespace {

constexpr std::string_view kStandardInput = "-";

/// Each line on standard error goes out in one piece, so that lines of several commands do not mix.
void Complain(const std::string& sentence) {
  std::cerr << "resolve: " + Printable(sentence) + "\n" << std::flush;
}

/// Gives each expression its line: an answer on standard output or an error on standard error.
class Session {
 public:
  Session(targets::ElfProgram& program, const Options& options, Output* output)
      : program_(program),
        evaluator_(program, program.Memory(),
                   options.exact ? Evaluator::Text::kExact : Evaluator::Text::kC),
        verbose_(options.verbose),
        output_(output) {}

  Status Run(const std::vector<std::string>& expressions) {
    if (expressions.size() == 1 && expressions.front() == kStandardInput) {
      RunStandardInput();
    } else {
      for (const std::string& expression : expressions) RunOne(expression);
    }
    return status_;
  }

 private:
  void RunStandardInput() {
    // One byte more than the longest, so that what was cut is still too long.
    LineReader reader(STDIN_FILENO, "standard input", kLongestExpression + 1);
    std::string line;
    while (reader.Read(&line)) {
      if (!IsBlankText(line)) RunOne(line);
    }
  }

  void RunOne(const std::string& expression) {
    const Outcome outcome = evaluator_.Evaluate(expression);
    const std::string echo = Printable(expression);
    if (const auto* failure = std::get_if<Failure>(&outcome)) {
      status_ = kNotResolved;
      std::string sentence = Printable(failure->message);
      if (LooksLikeOption(expression)) sentence += " (options stand before the program)";
      std::cerr << "resolve: " + echo + ": " + sentence + "\n" << std::flush;
      ExplainOnce(failure->message);
      return;
    }
    const auto& answer = std::get<Answer>(outcome);
    output_->WriteLine(verbose_ ? FormatValue(answer) + "  " + FormatDetails(answer)
                                : FormatValue(answer));
    // Whoever writes the expressions may wait for each answer.
    output_->Flush();
    for (const std::string& note : answer.notes) {
      std::cerr << "note: " + echo + ": " + Printable(note) + "\n" << std::flush;
    }
  }

  /// A label whose type could not be read fails like one that has no such member. The reason is
  /// worth a line then, but not one for every expression.
  void ExplainOnce(const std::string& message) {
    const std::optional<std::string> reason = program_.WhyIncomplete();
    if (explained_ || !reason) return;
    explained_ = true;
    if (message.find(*reason) != std::string::npos) return;
    std::cerr << "note: " + Printable(*reason) + "\n" << std::flush;
  }

  targets::ElfProgram& program_;
  Evaluator evaluator_;
  bool explained_ = false;
  bool verbose_;
  Output* output_;
  Status status_ = kAllResolved;
};

Status List(targets::ElfProgram& program, const Options& options, Output* output) {
  const bool labels = options.task == Options::Task::kListLabels;
  const Lister lister = [&](const std::function<void(const targets::Listing&)>& visit) {
    if (labels) {
      program.ListLabels(visit);
    } else {
      program.ListTypes(visit);
    }
  };
  if (WriteListing(lister, options.pattern, output)) return kAllResolved;
  const std::string what = labels ? "label" : "type";
  Complain(options.pattern.empty()
               ? options.program + " has no " + what + "s"
               : "no " + what + " of " + options.program + " matches " + options.pattern);
  return kNotResolved;
}

Status Run(const std::vector<std::string>& arguments) {
  Output output(STDOUT_FILENO, "standard output");
  const auto request = ReadOptions(arguments);
  if (const auto* information = std::get_if<Information>(&request)) {
    output.Write(information->text);
    output.Flush();
    return kAllResolved;
  }
  const auto& options = std::get<Options>(request);
  targets::ElfProgram program(options.program, options.debugFolder);
  if (options.file) program.SetCurrentFile(*options.file);
  if (options.task != Options::Task::kEvaluate) return List(program, options, &output);
  return Session(program, options, &output).Run(options.expressions);
}

}  // namespace

Status RunCommand(const std::vector<std::string>& arguments) {
  try {
    return Run(arguments);
  } catch (const UsageError& error) {
    Complain(std::string(error.what()) + "; see resolve --help");
  } catch (const std::bad_alloc&) {
    Complain("there is not enough memory");
  } catch (const std::exception& error) {
    Complain(error.what());
  }
  return kUnusable;
}

}  // namespace tool
