#ifndef STRINGRESOLVER_TARGETS_LOADEDFILES_H
#define STRINGRESOLVER_TARGETS_LOADEDFILES_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "targets/MemorySource.h"

namespace targets {

/// A part of a file that a target has mapped into its memory.
struct FileMapping {
  std::uint64_t start = 0;       ///< run-time address of its first byte
  std::uint64_t end = 0;         ///< run-time address behind its last byte
  std::uint64_t fileOffset = 0;  ///< where its first byte stands in the file, in bytes
  std::string path;              ///< as the target sees it
};

/// An ELF file that a target has loaded: its program, or a shared library.
struct LoadedFile {
  std::string path;
  /// Run-time address minus file address of everything in the file; wraps.
  std::uint64_t loadBias = 0;
  std::uint64_t start = 0;  ///< run-time address of its first byte
  std::uint64_t end = 0;    ///< run-time address behind its last byte, zero-filled memory included
  /// As the target's memory holds it; empty when it holds none, or that part cannot be read.
  std::vector<std::byte> buildId = {};
  /// Run-time address of its dynamic section; 0 when it has none.
  std::uint64_t dynamicSection = 0;
};

/// The ELF files among `mappings`, in order of their addresses. A file counts as loaded when its
/// beginning is mapped, is an ELF header, and its last segment is mapped where that header puts it;
/// a file that is merely looked at as data does not. Headers are read from `memory`; what cannot be
/// read there is left out. Throws what `memory` throws.
std::vector<LoadedFile> FindLoadedFiles(const std::vector<FileMapping>& mappings,
                                        MemorySource& memory);

/// The bytes of a build-id as messages write them: hexadecimal digits.
std::string BuildIdText(const std::vector<std::byte>& buildId);

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_LOADEDFILES_H
