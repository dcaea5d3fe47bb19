#include "targets/LoadedFiles.h"

#include <elf.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>
#include <span>
#include <string_view>

#include "targets/LabelSource.h"
#include "targets/TargetNumber.h"

namespace targets {
namespace {

/// No file has so many program headers, or such long notes, but broken memory may say so.
constexpr std::uint64_t kMostHeaders = 256;
constexpr std::uint64_t kLongestNotes = 4096;

struct ProgramHeader {
  std::uint64_t type = 0;
  std::uint64_t fileOffset = 0;
  std::uint64_t address = 0;  ///< in the file
  std::uint64_t fileSize = 0;
  std::uint64_t memorySize = 0;
};

std::optional<std::vector<std::byte>> ReadAll(MemorySource& memory, std::uint64_t address,
                                              std::uint64_t size) {
  std::vector<std::byte> bytes(static_cast<std::size_t>(size));
  if (memory.Read(address, 0, bytes).size < bytes.size()) return std::nullopt;
  return bytes;
}

/// The headers of an ELF file, as they lie in a target's memory.
class MemoryHeaders {
 public:
  /// False when there are none at `start`.
  bool Read(MemorySource& memory, std::uint64_t start) {
    const auto identification = ReadAll(memory, start, EI_NIDENT);
    if (!identification || std::memcmp(identification->data(), ELFMAG, SELFMAG) != 0) return false;
    const int kind = std::to_integer<int>((*identification)[EI_CLASS]);
    if (kind != ELFCLASS32 && kind != ELFCLASS64) return false;
    wide_ = kind == ELFCLASS64;
    order_ = std::to_integer<int>((*identification)[EI_DATA]) == ELFDATA2MSB ? ByteOrder::kBig
                                                                             : ByteOrder::kLittle;
    const auto header = ReadAll(memory, start, wide_ ? sizeof(Elf64_Ehdr) : sizeof(Elf32_Ehdr));
    if (!header) return false;
    const std::uint64_t table = wide_ ? Number(*header, offsetof(Elf64_Ehdr, e_phoff), 8)
                                      : Number(*header, offsetof(Elf32_Ehdr, e_phoff), 4);
    const std::size_t sizes =
        wide_ ? offsetof(Elf64_Ehdr, e_phentsize) : offsetof(Elf32_Ehdr, e_phentsize);
    const std::uint64_t entrySize = Number(*header, sizes, 2);
    const std::uint64_t count = Number(*header, sizes + 2, 2);
    const std::uint64_t expected = wide_ ? sizeof(Elf64_Phdr) : sizeof(Elf32_Phdr);
    if (entrySize != expected || count == 0 || count > kMostHeaders) return false;
    const auto bytes = ReadAll(memory, start + table, entrySize * count);
    if (!bytes) return false;
    for (std::uint64_t i = 0; i < count; ++i) headers_.push_back(Header(*bytes, i * entrySize));
    return true;
  }

  [[nodiscard]] const std::vector<ProgramHeader>& All() const { return headers_; }
  [[nodiscard]] ByteOrder Order() const { return order_; }
  /// Addresses wrap within the size of a pointer.
  [[nodiscard]] std::uint64_t Wrapped(std::uint64_t address) const {
    return wide_ ? address : address & 0xFFFFFFFF;
  }

 private:
  [[nodiscard]] std::uint64_t Number(const std::vector<std::byte>& bytes, std::size_t at,
                                     std::size_t size) const {
    return TargetNumber(std::span(bytes).subspan(at, size), order_);
  }

  [[nodiscard]] ProgramHeader Header(const std::vector<std::byte>& bytes, std::size_t at) const {
    const auto field = [&](std::size_t wide, std::size_t narrow) {
      return Number(bytes, at + (wide_ ? wide : narrow), wide_ ? 8 : 4);
    };
    ProgramHeader header;
    header.type = Number(bytes, at, 4);
    header.fileOffset = field(offsetof(Elf64_Phdr, p_offset), offsetof(Elf32_Phdr, p_offset));
    header.address = field(offsetof(Elf64_Phdr, p_vaddr), offsetof(Elf32_Phdr, p_vaddr));
    header.fileSize = field(offsetof(Elf64_Phdr, p_filesz), offsetof(Elf32_Phdr, p_filesz));
    header.memorySize = field(offsetof(Elf64_Phdr, p_memsz), offsetof(Elf32_Phdr, p_memsz));
    return header;
  }

  std::vector<ProgramHeader> headers_;
  bool wide_ = false;
  ByteOrder order_ = ByteOrder::kLittle;
};

std::vector<std::byte> FindBuildId(std::span<const std::byte> notes, ByteOrder order) {
  constexpr std::size_t kHeader = sizeof(Elf32_Nhdr);
  const auto padded = [](std::uint64_t size) { return (size + 3) & ~std::uint64_t{3}; };
  while (notes.size() >= kHeader) {
    const std::uint64_t nameSize = TargetNumber(notes.subspan(0, 4), order);
    const std::uint64_t size = TargetNumber(notes.subspan(4, 4), order);
    const std::uint64_t type = TargetNumber(notes.subspan(8, 4), order);
    const std::uint64_t start = kHeader + padded(nameSize);
    if (start + size > notes.size()) break;
    if (type == NT_GNU_BUILD_ID && nameSize == 4 &&
        std::memcmp(notes.data() + kHeader, "GNU", 4) == 0) {
      const auto found =
          notes.subspan(static_cast<std::size_t>(start), static_cast<std::size_t>(size));
      return {found.begin(), found.end()};
    }
    if (start + padded(size) > notes.size()) break;
    notes = notes.subspan(static_cast<std::size_t>(start + padded(size)));
  }
  return {};
}

/// Is the byte at `address` the one at `fileOffset` of `path`?
bool IsMapped(const std::vector<FileMapping>& mappings, const std::string& path,
              std::uint64_t address, std::uint64_t fileOffset) {
  return std::any_of(mappings.begin(), mappings.end(), [&](const FileMapping& mapping) {
    return mapping.path == path && address >= mapping.start && address < mapping.end &&
           mapping.fileOffset + (address - mapping.start) == fileOffset;
  });
}

std::optional<LoadedFile> Load(const std::vector<FileMapping>& mappings, const FileMapping& first,
                               MemorySource& memory) {
  MemoryHeaders headers;
  if (!headers.Read(memory, first.start)) return std::nullopt;
  const ProgramHeader* lowest = nullptr;
  const ProgramHeader* lastOfFile = nullptr;
  for (const ProgramHeader& header : headers.All()) {
    if (header.type != PT_LOAD) continue;
    if (lowest == nullptr || header.address < lowest->address) lowest = &header;
    if (header.fileSize != 0 && (lastOfFile == nullptr || header.address > lastOfFile->address)) {
      lastOfFile = &header;
    }
  }
  if (lowest == nullptr || lastOfFile == nullptr) return std::nullopt;
  LoadedFile file;
  file.path = first.path;
  file.loadBias = headers.Wrapped(first.start - (lowest->address - lowest->fileOffset));
  const auto loaded = [&](std::uint64_t address) {
    return headers.Wrapped(address + file.loadBias);
  };
  if (!IsMapped(mappings, file.path, loaded(lastOfFile->address), lastOfFile->fileOffset)) {
    return std::nullopt;
  }
  file.start = loaded(lowest->address);
  file.end = first.end;
  for (const ProgramHeader& header : headers.All()) {
    const std::uint64_t address = loaded(header.address);
    if (header.type == PT_LOAD) {
      file.end = std::max(file.end, address + std::min(header.memorySize, ~address));
    } else if (header.type == PT_DYNAMIC) {
      file.dynamicSection = address;
    } else if (header.type == PT_NOTE && file.buildId.empty()) {
      const auto notes = ReadAll(memory, address, std::min(header.fileSize, kLongestNotes));
      if (notes) file.buildId = FindBuildId(*notes, headers.Order());
    }
  }
  return file;
}

}  // namespace

std::vector<LoadedFile> FindLoadedFiles(const std::vector<FileMapping>& mappings,
                                        MemorySource& memory) {
  std::vector<LoadedFile> files;
  for (const FileMapping& mapping : mappings) {
    if (mapping.fileOffset != 0) continue;
    if (auto file = Load(mappings, mapping, memory)) files.push_back(*std::move(file));
  }
  std::stable_sort(files.begin(), files.end(),
                   [](const LoadedFile& a, const LoadedFile& b) { return a.start < b.start; });
  return files;
}

std::string BuildIdText(const std::vector<std::byte>& buildId) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string digits;
  for (const std::byte byte : buildId) {
    digits += kDigits[std::to_integer<std::size_t>(byte >> 4)];
    digits += kDigits[std::to_integer<std::size_t>(byte & std::byte{15})];
  }
  return digits;
}

}  // namespace targets
