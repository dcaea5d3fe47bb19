#ifndef STRINGRESOLVER_TARGETS_MAPPEDFILES_H
#define STRINGRESOLVER_TARGETS_MAPPEDFILES_H

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <functional>
#include <memory>
#include <span>
#include <vector>

#include "targets/ElfFile.h"
#include "targets/LoadedFiles.h"

namespace targets {

/// Memory that a dump leaves out because files hold it: of the programs and libraries that a
/// process had loaded, what it could not have changed.
///
/// A file counts only when it is still the one that was loaded: the part of it that the dump holds,
/// its headers, must be the same, and either hold its build-id, or the file must be older than the
/// dump.
class MappedFiles {
 public:
  /// Copies what the dump itself holds from a run-time address on; returns the bytes copied.
  using SavedMemory = std::function<std::size_t(std::uint64_t address, std::span<std::byte> bytes)>;

  /// `mappings` are in order of their addresses; `dumped` is when the dump was written.
  MappedFiles(std::vector<FileMapping> mappings, std::vector<LoadedFile> files, SavedMemory saved,
              std::time_t dumped);

  /// Copies what the file mapped at `address` holds, where it lies in a segment that the process
  /// could not write. Returns the bytes copied; 0 when there is nothing to rely on.
  std::size_t Read(std::uint64_t address, std::span<std::byte> bytes);

  /// How many bytes from `address` on belong to a segment's part that no file fills.
  std::uint64_t ZeroFilled(std::uint64_t address);

 private:
  struct Image {
    LoadedFile loaded;
    std::unique_ptr<ElfFile> file;  ///< null before it is looked at, and when it is another one
    bool tried = false;
  };

  Image* ImageAt(std::uint64_t address);
  [[nodiscard]] bool IsTheOneLoaded(const LoadedFile& loaded, const ElfFile& file) const;
  [[nodiscard]] const FileMapping* MappingAt(std::uint64_t address) const;

  std::vector<FileMapping> mappings_;
  std::vector<Image> images_;
  SavedMemory saved_;
  std::time_t dumped_;
};

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_MAPPEDFILES_H
