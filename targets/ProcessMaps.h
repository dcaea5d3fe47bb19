#ifndef STRINGRESOLVER_TARGETS_PROCESSMAPS_H
#define STRINGRESOLVER_TARGETS_PROCESSMAPS_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "targets/LoadedFiles.h"
#include "targets/MemorySource.h"
#include "targets/Process.h"

namespace targets {

/// A part of a process's memory, as a line of `/proc/ID/maps` tells it.
struct ProcessMapping {
  std::uint64_t start = 0;  ///< address of its first byte
  std::uint64_t end = 0;    ///< address behind its last byte
  bool readable = false;
  std::uint64_t fileOffset = 0;  ///< where its first byte stands in the file, in bytes
  std::uint64_t inode = 0;       ///< of the file; 0 when there is none
  /// The file, followed by ` (deleted)` when it was; a line feed in it reads `\012`. Or what the
  /// system calls the part, as in `[stack]`. Empty for most memory without a file.
  std::string name;
};

/// The parts that the text of `/proc/ID/maps` lists, in order of addresses. Throws `Error`
/// (`kBrokenInfo`) for a line that is none.
std::vector<ProcessMapping> ParseMaps(std::string_view text);

/// The part that `address` lies in, or null.
const ProcessMapping* FindMapping(const std::vector<ProcessMapping>& mappings,
                                  std::uint64_t address);

/// Why the byte at `address`, which could not be read, cannot be.
MemoryGap WhyUnreadable(const std::vector<ProcessMapping>& mappings, std::uint64_t address);

/// What a process has loaded.
struct ProcessFiles {
  LoadedFile program;
  std::vector<LoadedFile> libraries;  ///< in the order in which the dynamic linker searches them
  friend bool operator==(const ProcessFiles&, const ProcessFiles&);
};

/// What `process` has loaded, now, each file with a path that it can be opened by: its own where
/// that still leads to the same file, or else one below `/proc/ID`, which leads to deleted files
/// and into other mount namespaces as well. `memory` is the process's. Throws `Error`
/// (`kTargetLost`).
ProcessFiles FindProcessFiles(Process& process, MemorySource& memory);

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_PROCESSMAPS_H
