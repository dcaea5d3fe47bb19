#ifndef STRINGRESOLVER_FUZZ_MEMORYFILE_H
#define STRINGRESOLVER_FUZZ_MEMORYFILE_H

#include <sys/mman.h>
#include <unistd.h>

#include <string>
#include <string_view>

#include "fuzz/Require.h"

namespace fuzzing {

/// A file in memory, the same one for every input.
class MemoryFile {
 public:
  MemoryFile() : descriptor_(memfd_create("input", MFD_CLOEXEC)) {
    Require(descriptor_ >= 0, "a file in memory can be made");
  }
  void Hold(std::string_view bytes) const {
    Require(ftruncate(descriptor_, 0) == 0, "the file in memory can be emptied");
    const ssize_t written = pwrite(descriptor_, bytes.data(), bytes.size(), 0);
    Require(written == static_cast<ssize_t>(bytes.size()), "the file in memory can be filled");
  }
  [[nodiscard]] std::string Path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

 private:
  int descriptor_;
};

}  // namespace fuzzing

#endif  // STRINGRESOLVER_FUZZ_MEMORYFILE_H
