#include "tools/resolve/Target.h"

#include <utility>

#include "tools/resolve/FileTarget.h"
#include "tools/resolve/ProcessTarget.h"

namespace tool {
namespace {

std::unique_ptr<Target> OpenProcess(const Options& options) {
  ProcessTarget::Choices choices;
  choices.process = *options.process;
  if (!options.program.empty()) choices.program = options.program;
  choices.file = options.file;
  choices.debugFolder = options.debugFolder;
  choices.stop = options.stop;
  return std::make_unique<ProcessTarget>(std::move(choices));
}

}  // namespace

std::unique_ptr<Target> OpenTarget(const Options& options) {
  if (options.process) return OpenProcess(options);
  std::unique_ptr<Target> target =
      std::make_unique<FileTarget>(options.program, options.debugFolder);
  if (options.file) target->SetCurrentFile(*options.file);
  return target;
}

}  // namespace tool
