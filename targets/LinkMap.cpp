#include "targets/LinkMap.h"

#include <elf.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <span>

#include "targets/TargetNumber.h"

namespace targets {
namespace {

/// Far more than any program has; broken memory may lead in circles.
constexpr std::uint64_t kMostEntries = 1024;
constexpr std::size_t kMostLibraries = 4096;

class TargetWords {
 public:
  TargetWords(std::uint32_t pointerSize, ByteOrder order, MemorySource& memory)
      : size_(pointerSize), order_(order), memory_(memory) {}

  /// The `index`-th word behind `address`.
  std::optional<std::uint64_t> At(std::uint64_t address, std::uint64_t index) {
    std::array<std::byte, 8> bytes{};
    const std::span<std::byte> word = std::span(bytes).first(size_);
    if (memory_.Read(address + index * size_, 0, word).size < size_) return std::nullopt;
    return TargetNumber(word, order_);
  }

 private:
  std::uint32_t size_;
  ByteOrder order_;
  MemorySource& memory_;
};

/// What the dynamic linker tells debuggers; its second word leads to the first library.
std::optional<std::uint64_t> FindDebugStructure(std::uint64_t dynamicSection, TargetWords& words) {
  for (std::uint64_t i = 0; i < kMostEntries; ++i) {
    const auto tag = words.At(dynamicSection, 2 * i);
    if (!tag || *tag == DT_NULL) break;
    if (*tag == DT_DEBUG) return words.At(dynamicSection, 2 * i + 1);
  }
  return std::nullopt;
}

/// The dynamic sections of all files, in the order of the list.
std::vector<std::uint64_t> LinkedSections(std::uint64_t dynamicSection, TargetWords& words) {
  // struct link_map: the load bias, the name, the dynamic section, the next one.
  constexpr std::uint64_t kSection = 2;
  constexpr std::uint64_t kNext = 3;
  std::vector<std::uint64_t> sections;
  const auto debug = FindDebugStructure(dynamicSection, words);
  auto entry = debug && *debug != 0 ? words.At(*debug, 1) : std::nullopt;
  while (entry && *entry != 0 && sections.size() < kMostLibraries) {
    const auto section = words.At(*entry, kSection);
    if (!section) break;
    sections.push_back(*section);
    entry = words.At(*entry, kNext);
  }
  return sections;
}

}  // namespace

void OrderAsLinked(const LoadedFile& program, std::uint32_t pointerSize, ByteOrder order,
                   MemorySource& memory, std::vector<LoadedFile>* libraries) {
  if (program.dynamicSection == 0) return;
  TargetWords words(pointerSize, order, memory);
  const std::vector<std::uint64_t> sections = LinkedSections(program.dynamicSection, words);
  const auto position = [&sections](const LoadedFile& library) {
    return std::find(sections.begin(), sections.end(), library.dynamicSection) - sections.begin();
  };
  std::stable_sort(
      libraries->begin(), libraries->end(),
      [&](const LoadedFile& a, const LoadedFile& b) { return position(a) < position(b); });
}

}  // namespace targets
