#include "tools/resolve/Target.h"

#include <optional>
#include <string>
#include <utility>

#include "tools/resolve/CoreTarget.h"
#include "tools/resolve/FileTarget.h"
#include "tools/resolve/ProcessTarget.h"

namespace tool {
namespace {

std::optional<std::string> Program(const TargetOptions& options) {
  if (options.program.empty()) return std::nullopt;
  return options.program;
}

std::unique_ptr<Target> OpenProcess(const TargetOptions& options) {
  ProcessTarget::Choices choices;
  choices.process = *options.process;
  choices.program = Program(options);
  choices.file = options.file;
  choices.debugFolder = options.debugFolder;
  choices.stop = options.stop;
  return std::make_unique<ProcessTarget>(std::move(choices));
}

std::unique_ptr<Target> Open(const TargetOptions& options) {
  if (options.core) {
    return std::make_unique<CoreTarget>(*options.core, Program(options), options.debugFolder);
  }
  return std::make_unique<FileTarget>(options.program, options.debugFolder);
}

}  // namespace

std::unique_ptr<Target> OpenTarget(const TargetOptions& options) {
  // A process may be held, and what goes wrong from then on must let it go.
  if (options.process) return OpenProcess(options);
  std::unique_ptr<Target> target = Open(options);
  if (options.file) target->SetCurrentFile(*options.file);
  return target;
}

}  // namespace tool
