#include "tools/resolve/Target.h"

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include "tools/resolve/CoreTarget.h"
#include "tools/resolve/DescribedTarget.h"
#include "tools/resolve/FileTarget.h"
#include "tools/resolve/OverlaidTarget.h"

namespace tool {
namespace {

std::unique_ptr<Target> Open(const Options& options) {
  if (options.core) {
    return std::make_unique<CoreTarget>(
        *options.core,
        options.program.empty() ? std::nullopt : std::optional<std::string>(options.program),
        options.debugFolder);
  }
  const std::uint64_t highest = HighestAddressOf(options.memory);
  if (options.description) {
    return std::make_unique<DescribedTarget>(*options.description, highest);
  }
  return std::make_unique<FileTarget>(options.program, options.debugFolder, highest);
}

}  // namespace

std::unique_ptr<Target> OpenTarget(const Options& options) {
  std::unique_ptr<Target> target = Open(options);
  if (!options.memory.empty() || options.wordSize) {
    target = std::make_unique<OverlaidTarget>(std::move(target), options.memory, options.wordSize);
  }
  if (options.file) target->SetCurrentFile(*options.file);
  return target;
}

}  // namespace tool
