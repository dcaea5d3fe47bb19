#include "tools/resolve/Command.h"

#include <unistd.h>

#include <exception>
#include <functional>
#include <memory>
#include <new>
#include <variant>

#include "tools/resolve/Complaint.h"
#include "tools/resolve/Listing.h"
#include "tools/resolve/Options.h"
#include "tools/resolve/Output.h"
#include "tools/resolve/Prompt.h"
#include "tools/resolve/Session.h"
#include "tools/resolve/Target.h"

namespace tool {
namespace {

Status List(Target& target, const Options& options, Output* output) {
  const bool labels = options.task == Options::Task::kListLabels;
  const Lister lister = [&](const std::function<void(const targets::Listing&)>& visit) {
    if (labels) {
      target.Labels().ListLabels(visit);
    } else {
      target.Labels().ListTypes(visit);
    }
  };
  if (WriteListing(lister, options.pattern, output)) return kAllResolved;
  const std::string what = labels ? "label" : "type";
  Complain(options.pattern.empty()
               ? target.Name() + " has no " + what + "s"
               : "no " + what + " of " + target.Name() + " matches " + options.pattern);
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
  const std::unique_ptr<Target> target = OpenTarget(options);
  for (const std::string& warning : target->Warnings()) Warn(warning);
  if (options.task != Options::Task::kEvaluate) return List(*target, options, &output);
  if (options.expressions.empty()) {
    if (Prompt::IsPossible()) return Prompt(*target, options, &output).Run();
    return Session(*target, options, &output).Run({"-"});
  }
  if (options.verbose) Note("reading " + target->Description());
  return Session(*target, options, &output).Run(options.expressions);
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
