#include "tools/resolve/Target.h"

#include <cstdint>
#include <utility>

#include "tools/resolve/DescribedTarget.h"
#include "tools/resolve/FileTarget.h"
#include "tools/resolve/OverlaidTarget.h"

namespace tool {

std::unique_ptr<Target> OpenTarget(const Options& options) {
  const std::uint64_t highest = HighestAddressOf(options.memory);
  std::unique_ptr<Target> target;
  if (options.description) {
    target = std::make_unique<DescribedTarget>(*options.description, highest);
  } else {
    target = std::make_unique<FileTarget>(options.program, options.debugFolder, highest);
  }
  if (!options.memory.empty() || options.wordSize) {
    target = std::make_unique<OverlaidTarget>(std::move(target), options.memory, options.wordSize);
  }
  if (options.file) target->SetCurrentFile(*options.file);
  return target;
}

}  // namespace tool
