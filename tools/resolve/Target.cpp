#include "tools/resolve/Target.h"

#include "tools/resolve/FileTarget.h"

namespace tool {

std::unique_ptr<Target> OpenTarget(const Options& options) {
  std::unique_ptr<Target> target =
      std::make_unique<FileTarget>(options.program, options.debugFolder);
  if (options.file) target->SetCurrentFile(*options.file);
  return target;
}

}  // namespace tool
