#include "tools/resolve/Target.h"

#include "tools/resolve/FileTarget.h"
#include "tools/resolve/RemoteTarget.h"

namespace tool {

std::unique_ptr<Target> OpenTarget(const Options& options) {
  std::unique_ptr<Target> target;
  if (options.remote) {
    target = std::make_unique<RemoteTarget>(options);
  } else {
    target = std::make_unique<FileTarget>(options.program, options.debugFolder);
  }
  if (options.file) target->SetCurrentFile(*options.file);
  return target;
}

}  // namespace tool
