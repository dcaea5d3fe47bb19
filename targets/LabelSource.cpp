#include "targets/LabelSource.h"

namespace targets {

bool LabelSource::CurrentFileIsAssembly() const {
  const std::string file = CurrentFile();
  for (const std::string_view ending : {".s", ".S", ".sx", ".asm", ".ASM"}) {
    if (std::string_view(file).ends_with(ending)) return true;
  }
  return false;
}

bool LabelSource::IsIncomplete(std::string_view /*name*/) {
  return false;
}

}  // namespace targets
