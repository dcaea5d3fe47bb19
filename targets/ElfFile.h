#ifndef STRINGRESOLVER_TARGETS_ELFFILE_H
#define STRINGRESOLVER_TARGETS_ELFFILE_H

#include <gelf.h>
#include <libelf.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "targets/LabelSource.h"

namespace targets {

/// A loadable segment: `memorySize` bytes from `address`, of which the first `fileSize` come from
/// the file at `fileOffset` and the rest is zero. `address` + `memorySize` does not wrap.
struct Segment {
  std::uint64_t address = 0;
  std::uint64_t memorySize = 0;
  std::uint64_t fileOffset = 0;
  std::uint64_t fileSize = 0;
  bool isWritable = false;
};

/// An ELF file, opened and checked.
class ElfFile {
 public:
  enum class Use {
    kProgram,           ///< must be linked
    kDebugInformation,  ///< may be of any type
    kCoreDump,          ///< must be one
  };

  /// Throws `Error` (`kFileUnusable`): missing, unreadable, a directory, no ELF, not linked,
  /// broken.
  explicit ElfFile(const std::string& path, Use use = Use::kProgram);

  [[nodiscard]] Elf* Handle() const { return elf_.get(); }
  [[nodiscard]] const std::string& Path() const { return path_; }
  [[nodiscard]] const GElf_Ehdr& Header() const { return header_; }
  [[nodiscard]] ByteOrder Order() const;
  [[nodiscard]] std::uint32_t PointerSize() const;
  /// The loadable segments, in the order of the file.
  [[nodiscard]] const std::vector<Segment>& Segments() const { return segments_; }
  /// The last address that the program occupies; 0 without segments.
  [[nodiscard]] std::uint64_t HighestAddress() const;
  [[nodiscard]] bool Occupies(std::uint64_t address) const;
  [[nodiscard]] bool HasSection(const char* name) const;
  [[nodiscard]] bool HasSectionOfType(std::uint32_t type) const;
  /// The bytes of a section; none when there is no such section, or it has none in the file.
  [[nodiscard]] std::span<const std::byte> SectionBytes(const char* name) const;
  /// The number that tells this build from all others; empty when it has none.
  [[nodiscard]] std::span<const std::byte> BuildId() const;
  /// The whole file.
  [[nodiscard]] std::span<const std::byte> Contents() const { return file_; }

  /// Copies what the file puts at `address` when it is loaded, before relocation. Returns the bytes
  /// copied, up to the first that the file does not define or does not hold any more.
  std::size_t ReadImage(std::uint64_t address, std::span<std::byte> bytes) const;

 private:
  struct CloseDescriptor {
    int value = -1;
    CloseDescriptor() = default;
    CloseDescriptor(const CloseDescriptor&) = delete;
    CloseDescriptor& operator=(const CloseDescriptor&) = delete;
    ~CloseDescriptor();
  };
  struct EndElf {
    void operator()(Elf* elf) const { elf_end(elf); }
  };

  void CheckKind(Use use);
  [[nodiscard]] Elf_Scn* FindSection(const char* name) const;
  void ReadSegments();
  void LeaveOutHeaders(Segment* segment) const;
  [[nodiscard]] const Segment* SegmentAt(std::uint64_t address) const;

  std::string path_;
  CloseDescriptor descriptor_;
  std::unique_ptr<Elf, EndElf> elf_;
  GElf_Ehdr header_{};
  std::span<const std::byte> file_;
  std::vector<Segment> segments_;
};

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_ELFFILE_H
