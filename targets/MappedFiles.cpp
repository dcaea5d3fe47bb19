#include "targets/MappedFiles.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

#include "targets/Error.h"

namespace targets {
namespace {

/// Kernels save so much of a file's beginning: the smallest page.
constexpr std::size_t kSavedBeginning = 4096;

bool IsOlder(const std::string& path, std::time_t than) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 && status.st_mtime <= than;
}

/// The loadable segment of `file` that has `address`, as its headers have it.
std::optional<GElf_Phdr> HeaderAt(const ElfFile& file, std::uint64_t address) {
  std::size_t count = 0;
  elf_getphdrnum(file.Handle(), &count);
  for (std::size_t i = 0; i < count; ++i) {
    GElf_Phdr header{};
    if (gelf_getphdr(file.Handle(), static_cast<int>(i), &header) == nullptr) break;
    // Below the segment the difference wraps to something larger than any size.
    if (header.p_type == PT_LOAD && address - header.p_vaddr < header.p_memsz) return header;
  }
  return std::nullopt;
}

std::uint64_t FileAddress(const ElfFile& file, const LoadedFile& loaded, std::uint64_t address) {
  const std::uint64_t difference = address - loaded.loadBias;
  return file.PointerSize() == 8 ? difference : difference & 0xFFFFFFFF;
}

}  // namespace

MappedFiles::MappedFiles(std::vector<FileMapping> mappings, std::vector<LoadedFile> files,
                         SavedMemory saved, std::time_t dumped)
    : mappings_(std::move(mappings)), saved_(std::move(saved)), dumped_(dumped) {
  for (LoadedFile& file : files) images_.push_back({std::move(file), nullptr, false});
}

std::size_t MappedFiles::Read(std::uint64_t address, std::span<std::byte> bytes) {
  const FileMapping* const mapping = MappingAt(address);
  Image* const image = mapping == nullptr ? nullptr : ImageAt(address);
  if (image == nullptr || image->loaded.path != mapping->path) return 0;
  const std::uint64_t fileAddress = FileAddress(*image->file, image->loaded, address);
  const std::optional<GElf_Phdr> header = HeaderAt(*image->file, fileAddress);
  if (!header || (header->p_flags & PF_W) != 0) return 0;
  const std::uint64_t inside = fileAddress - header->p_vaddr;
  const std::uint64_t offset = header->p_offset + inside;
  const std::span<const std::byte> contents = image->file->Contents();
  if (inside >= header->p_filesz || offset < inside || offset >= contents.size() ||
      mapping->fileOffset + (address - mapping->start) != offset) {
    return 0;
  }
  const std::uint64_t size =
      std::min({std::uint64_t{bytes.size()}, header->p_filesz - inside, mapping->end - address,
                std::uint64_t{contents.size()} - offset});
  std::memcpy(bytes.data(), contents.data() + offset, static_cast<std::size_t>(size));
  return static_cast<std::size_t>(size);
}

std::uint64_t MappedFiles::ZeroFilled(std::uint64_t address) {
  if (MappingAt(address) != nullptr) return 0;
  Image* const image = ImageAt(address);
  if (image == nullptr) return 0;
  const std::uint64_t fileAddress = FileAddress(*image->file, image->loaded, address);
  const std::optional<GElf_Phdr> header = HeaderAt(*image->file, fileAddress);
  if (!header || fileAddress - header->p_vaddr < header->p_filesz) return 0;
  return header->p_memsz - (fileAddress - header->p_vaddr);
}

MappedFiles::Image* MappedFiles::ImageAt(std::uint64_t address) {
  const auto image = std::find_if(images_.begin(), images_.end(), [&](const Image& candidate) {
    return address >= candidate.loaded.start && address < candidate.loaded.end;
  });
  if (image == images_.end()) return nullptr;
  if (!image->tried) {
    image->tried = true;
    try {
      auto file = std::make_unique<ElfFile>(image->loaded.path);
      if (IsTheOneLoaded(image->loaded, *file)) image->file = std::move(file);
    } catch (const Error&) {
      // What the file held was not saved, then.
    }
  }
  return image->file ? &*image : nullptr;
}

bool MappedFiles::IsTheOneLoaded(const LoadedFile& loaded, const ElfFile& file) const {
  std::array<std::byte, kSavedBeginning> beginning{};
  const std::size_t size =
      std::min(saved_(loaded.start, beginning), std::min(beginning.size(), file.Contents().size()));
  const std::size_t headers =
      static_cast<std::size_t>(file.Header().e_phnum) * file.Header().e_phentsize;
  if (file.Header().e_phoff > kSavedBeginning || size < file.Header().e_phoff + headers) {
    return false;
  }
  if (std::memcmp(beginning.data(), file.Contents().data(), size) != 0) return false;
  const std::span<const std::byte> buildId = file.BuildId();
  if (!buildId.empty() && !loaded.buildId.empty()) {
    return std::equal(buildId.begin(), buildId.end(), loaded.buildId.begin(), loaded.buildId.end());
  }
  return IsOlder(loaded.path, dumped_);
}

const FileMapping* MappedFiles::MappingAt(std::uint64_t address) const {
  const auto behind = std::upper_bound(
      mappings_.begin(), mappings_.end(), address,
      [](std::uint64_t at, const FileMapping& mapping) { return at < mapping.start; });
  if (behind == mappings_.begin()) return nullptr;
  const FileMapping& mapping = *(behind - 1);
  return address < mapping.end ? &mapping : nullptr;
}

}  // namespace targets
