#include "tools/resolve/Command.h"

#include <unistd.h>

#include <algorithm>
#include <exception>
#include <functional>
#include <memory>
#include <new>
#include <variant>

#include "tools/resolve/Complaint.h"
#include "tools/resolve/JsonLines.h"
#include "tools/resolve/Layout.h"
#include "tools/resolve/Listing.h"
#include "tools/resolve/Options.h"
#include "tools/resolve/Output.h"
#include "tools/resolve/Prompt.h"
#include "tools/resolve/Session.h"
#include "tools/resolve/Target.h"
#include "tools/resolve/WatchRun.h"

namespace tool {
namespace {

bool WriteJsonListing(const Lister& lister, std::string_view pattern, Output* output) {
  bool any = false;
  lister([&](const targets::Listing& entry) {
    if (!pattern.empty() && !MatchesPattern(entry.name, pattern)) return;
    any = true;
    output->WriteLine(JsonOfListing(entry));
  });
  output->Flush();
  return any;
}

/// A program that reads the answers must learn from them as well that there will be no more.
Status Refuse(const std::vector<std::string>& arguments, const std::string& sentence,
              const std::string& advice = "") {
  Complain(sentence + advice);
  // The command line may be what is wrong, so it is only looked at.
  if (std::find(arguments.begin(), arguments.end(), "--json") == arguments.end()) return kUnusable;
  try {
    Output output(STDOUT_FILENO, "standard output");
    output.WriteLine(JsonOfError(sentence));
    output.Flush();
  } catch (const std::exception&) {
    // The stream itself may be what is wrong; the complaint is out.
    return kUnusable;
  }
  return kUnusable;
}

Status List(Target& target, const Options& options, Output* output) {
  const bool labels = options.task == Options::Task::kListLabels;
  const Lister lister = [&](const std::function<void(const targets::Listing&)>& visit) {
    if (labels) {
      target.Labels().ListLabels(visit);
    } else {
      target.Labels().ListTypes(visit);
    }
  };
  const bool any = options.json ? WriteJsonListing(lister, options.pattern, output)
                                : WriteListing(lister, options.pattern, output);
  if (any) return kAllResolved;
  const std::string what = labels ? "label" : "type";
  Complain(options.pattern.empty()
               ? target.Name() + " has no " + what + "s"
               : "no " + what + " of " + target.Name() + " matches " + options.pattern);
  return kNotResolved;
}

Status ShowLayout(Target& target, const std::string& name, Output* output) {
  const targets::TypeNumber type = TypeNamed(target.Labels(), name);
  if (type == 0) {
    Complain("no type of " + target.Name() + " is called " + name);
    return kNotResolved;
  }
  output->Write(LayoutText(target.Labels(), type));
  output->Flush();
  return kAllResolved;
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
  if (options.task == Options::Task::kLayout) return ShowLayout(*target, options.type, &output);
  if (options.task != Options::Task::kEvaluate) return List(*target, options, &output);
  if (options.watch) return RunWatch(*target, options, &output);
  if (options.expressions.empty()) {
    if (!options.json && Prompt::IsPossible()) return Prompt(*target, options, &output).Run();
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
    return Refuse(arguments, error.what(), "; see resolve --help");
  } catch (const std::bad_alloc&) {
    return Refuse(arguments, "there is not enough memory");
  } catch (const std::exception& error) {
    return Refuse(arguments, error.what());
  }
}

}  // namespace tool
