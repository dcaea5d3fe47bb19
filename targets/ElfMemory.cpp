#include "targets/ElfMemory.h"

#include <algorithm>

namespace targets {

MemoryRead ElfMemory::Read(std::uint64_t address, std::uint8_t space, std::span<std::byte> bytes) {
  if (space != 0) return {};
  const std::size_t size = file_.ReadImage(address, bytes);
  Relocate(address, bytes.first(size));
  return {size, MemoryGap::kNotThere};
}

void ElfMemory::Relocate(std::uint64_t address, std::span<std::byte> bytes) {
  if (bytes.empty()) return;
  if (!words_) words_ = RelocatedWords(file_);
  const std::uint64_t wordSize = file_.PointerSize();
  const std::uint64_t last = address + (bytes.size() - 1);
  const std::uint64_t earliest = address < wordSize ? 0 : address - (wordSize - 1);
  auto word = std::lower_bound(
      words_->begin(), words_->end(), earliest,
      [](const RelocatedWord& entry, std::uint64_t at) { return entry.address < at; });
  for (; word != words_->end() && word->address <= last; ++word) {
    for (std::uint64_t i = 0; i < wordSize; ++i) {
      const std::uint64_t at = word->address + i - address;
      if (at >= bytes.size()) continue;
      const std::uint64_t shift = 8 * (file_.Order() == ByteOrder::kBig ? wordSize - 1 - i : i);
      bytes[static_cast<std::size_t>(at)] = static_cast<std::byte>(word->value >> shift);
    }
  }
}

}  // namespace targets
