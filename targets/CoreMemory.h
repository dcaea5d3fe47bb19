#ifndef STRINGRESOLVER_TARGETS_COREMEMORY_H
#define STRINGRESOLVER_TARGETS_COREMEMORY_H

#include <optional>
#include <vector>

#include "targets/ElfFile.h"
#include "targets/LoadedFiles.h"
#include "targets/MappedFiles.h"
#include "targets/MemorySource.h"

namespace targets {

/// The memory that a core dump holds, at run-time addresses: its segments, as far as the file has
/// them, and what it left out because the mapped files hold it. The rest of what the process had
/// mapped is `kNotSaved`; everything else, `kNotThere`. Space 0 alone has contents.
///
/// Memory that a program's file leaves to be zero, and that the process never wrote, is not in a
/// dump either. It counts as zero where the dump shows that what was written would be there.
class CoreMemory final : public MemorySource {
 public:
  /// `core` is borrowed and must outlive this object.
  CoreMemory(const ElfFile& core, std::vector<FileMapping> mappings);

  /// From now on `files` are used for what the dump leaves out, where they are what was loaded. The
  /// mappings of each have its path.
  void UseFiles(std::vector<LoadedFile> files, std::vector<FileMapping> mappings,
                std::time_t dumped);

  MemoryRead Read(std::uint64_t address, std::uint8_t space, std::span<std::byte> bytes) override;

  /// How many bytes a complete dump would have; more than the file has when it was cut.
  [[nodiscard]] std::uint64_t CompleteSize() const { return completeSize_; }

 private:
  [[nodiscard]] const Segment* SegmentAt(std::uint64_t address) const;
  [[nodiscard]] const FileMapping* MappingAt(std::uint64_t address) const;
  [[nodiscard]] bool SavesWrittenMemory() const;
  std::size_t ReadSaved(std::uint64_t address, std::span<std::byte> bytes) const;
  std::size_t ReadLeftOut(const Segment* segment, std::uint64_t address,
                          std::span<std::byte> bytes);

  const ElfFile& core_;
  std::vector<Segment> segments_;      ///< in order of their addresses
  std::vector<FileMapping> mappings_;  ///< likewise
  std::optional<MappedFiles> files_;
  std::uint64_t completeSize_ = 0;
  bool savesWritten_;
};

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_COREMEMORY_H
