#ifndef STRINGRESOLVER_TARGETS_CORENOTES_H
#define STRINGRESOLVER_TARGETS_CORENOTES_H

#include <cstdint>
#include <optional>
#include <vector>

#include "targets/ElfFile.h"
#include "targets/LoadedFiles.h"

namespace targets {

/// What the notes of a core dump say about its process. Run-time addresses throughout.
struct CoreNotes {
  /// The files mapped, in order of their addresses (NT_FILE).
  std::vector<FileMapping> mappings;
  // From the auxiliary vector that the kernel gave the process (NT_AUXV):
  std::optional<std::uint64_t> programHeaders;  ///< of the program
  std::optional<std::uint64_t> entry;           ///< where the program begins
  std::optional<std::uint64_t> programName;     ///< of the text that it was started by
  /// There is a note of a thread or a process: without one, this is hardly a process's dump.
  bool hasProcess = false;
};

/// Reads the notes of `core` as far as they make sense: what is cut off, or contradicts itself, is
/// left out.
CoreNotes ReadCoreNotes(const ElfFile& core);

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_CORENOTES_H
