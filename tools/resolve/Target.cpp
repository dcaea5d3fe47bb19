#include "tools/resolve/Target.h"

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include "tools/resolve/CoreTarget.h"
#include "tools/resolve/DescribedTarget.h"
#include "tools/resolve/FileTarget.h"
#include "tools/resolve/OverlaidTarget.h"
#include "tools/resolve/ProcessTarget.h"
#include "tools/resolve/RemoteTarget.h"

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
  choices.debugFolder = options.debugFolder;
  choices.stop = options.stop;
  return std::make_unique<ProcessTarget>(std::move(choices));
}

std::unique_ptr<Target> Open(const TargetOptions& options) {
  if (options.process) return OpenProcess(options);
  if (options.remote) return std::make_unique<RemoteTarget>(options);
  if (options.core) {
    return std::make_unique<CoreTarget>(*options.core, Program(options), options.debugFolder);
  }
  const std::uint64_t highest = HighestAddressOf(options.memory);
  if (options.description) {
    return std::make_unique<DescribedTarget>(*options.description, highest);
  }
  return std::make_unique<FileTarget>(options.program, options.debugFolder, highest);
}

}  // namespace

std::unique_ptr<Target> OpenTarget(const TargetOptions& options) {
  std::unique_ptr<Target> target = Open(options);
  if (!options.memory.empty() || options.wordSize) {
    target = std::make_unique<OverlaidTarget>(std::move(target), options.memory, options.wordSize);
  }
  if (options.file) target->SetCurrentFile(*options.file);
  return target;
}

}  // namespace tool
