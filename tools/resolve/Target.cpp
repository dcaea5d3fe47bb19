#include "tools/resolve/Target.h"

#include <optional>
#include <string>
#include <utility>

#include "tools/resolve/CoreTarget.h"
#include "tools/resolve/FileTarget.h"
#include "tools/resolve/ProcessTarget.h"

namespace tool {
namespace {

std::unique_ptr<Target> OpenProcess(const Options& options) {
  ProcessTarget::Choices choices;
  choices.process = *options.process;
  if (!options.program.empty()) choices.program = options.program;
  choices.debugFolder = options.debugFolder;
  choices.stop = options.stop;
  return std::make_unique<ProcessTarget>(std::move(choices));
}

std::unique_ptr<Target> Open(const Options& options) {
  if (options.process) return OpenProcess(options);
  if (options.core) {
    return std::make_unique<CoreTarget>(
        *options.core,
        options.program.empty() ? std::nullopt : std::optional<std::string>(options.program),
        options.debugFolder);
  }
  return std::make_unique<FileTarget>(options.program, options.debugFolder);
}

}  // namespace

std::unique_ptr<Target> OpenTarget(const Options& options) {
  std::unique_ptr<Target> target = Open(options);
  if (options.file) target->SetCurrentFile(*options.file);
  return target;
}

}  // namespace tool
