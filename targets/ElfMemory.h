#ifndef STRINGRESOLVER_TARGETS_ELFMEMORY_H
#define STRINGRESOLVER_TARGETS_ELFMEMORY_H

#include <optional>
#include <vector>

#include "targets/ElfFile.h"
#include "targets/ElfRelocations.h"
#include "targets/MemorySource.h"

namespace targets {

/// A program's memory as it is right after loading: its loadable segments, with zeros where they
/// are longer than the file's part, and the words that relocation fills in. Space 0 alone has
/// contents.
class ElfMemory final : public MemorySource {
 public:
  /// `file` is borrowed and must outlive this object.
  explicit ElfMemory(const ElfFile& file) : file_(file) {}

  MemoryRead Read(std::uint64_t address, std::uint8_t space, std::span<std::byte> bytes) override;

 private:
  void Relocate(std::uint64_t address, std::span<std::byte> bytes);

  const ElfFile& file_;
  /// Read together with the first memory.
  std::optional<std::vector<RelocatedWord>> words_;
};

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_ELFMEMORY_H
