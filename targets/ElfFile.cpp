#include "targets/ElfFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string_view>

#include "targets/Error.h"

namespace targets {
namespace {

[[noreturn]] void Unusable(const std::string& sentence) {
  throw Error(ErrorCode::kFileUnusable, sentence);
}

std::string Quoted(const std::string& path) {
  return "'" + path + "'";
}

/// Opens `path` for reading, or says in words why that cannot be.
int OpenRegularFile(const std::string& path) {
  if (path.find('\0') != std::string::npos) Unusable("a file name cannot hold a zero byte");
  struct stat status {};
  // Asked before opening, because opening a pipe would wait for a writer.
  if (stat(path.c_str(), &status) != 0) {
    if (errno == ENOENT || errno == ENOTDIR) Unusable("there is no file " + Quoted(path));
    Unusable("the file " + Quoted(path) + " cannot be read: " + std::strerror(errno));
  }
  if (S_ISDIR(status.st_mode)) Unusable(Quoted(path) + " is a directory, not a program");
  if (!S_ISREG(status.st_mode)) Unusable(Quoted(path) + " is not a regular file");
  const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor < 0) {
    Unusable("the file " + Quoted(path) + " cannot be read: " + std::strerror(errno));
  }
  return descriptor;
}

}  // namespace

ElfFile::CloseDescriptor::~CloseDescriptor() {
  if (value >= 0) close(value);
}

ElfFile::ElfFile(const std::string& path, Use use) : path_(path) {
  descriptor_.value = OpenRegularFile(path);
  elf_version(EV_CURRENT);
  elf_.reset(elf_begin(descriptor_.value, ELF_C_READ_MMAP, nullptr));
  CheckKind(use);
  std::size_t size = 0;
  const char* const start = elf_rawfile(elf_.get(), &size);
  if (start != nullptr) file_ = std::as_bytes(std::span(start, size));
  ReadSegments();
}

void ElfFile::CheckKind(Use use) {
  if (elf_ != nullptr && elf_kind(elf_.get()) == ELF_K_AR) {
    Unusable(Quoted(path_) + " is an archive of object files, not a program");
  }
  if (elf_ == nullptr || elf_kind(elf_.get()) != ELF_K_ELF) {
    Unusable(Quoted(path_) + " is not an ELF file");
  }
  if (gelf_getehdr(elf_.get(), &header_) == nullptr) {
    Unusable(Quoted(path_) + " has a broken ELF header: " + elf_errmsg(-1));
  }
  if (use == Use::kDebugInformation) return;
  if (use == Use::kCoreDump) {
    if (header_.e_type != ET_CORE) Unusable(Quoted(path_) + " is not a core dump");
    return;
  }
  if (header_.e_type == ET_REL) {
    Unusable(Quoted(path_) + " is an object file that has not been linked");
  }
  if (header_.e_type == ET_CORE) Unusable(Quoted(path_) + " is a core dump, not a program");
}

void ElfFile::ReadSegments() {
  std::size_t count = 0;
  if (elf_getphdrnum(elf_.get(), &count) != 0) {
    Unusable(Quoted(path_) + " has a broken table of segments: " + elf_errmsg(-1));
  }
  for (std::size_t i = 0; i < count; ++i) {
    GElf_Phdr program{};
    if (gelf_getphdr(elf_.get(), static_cast<int>(i), &program) == nullptr) {
      Unusable(Quoted(path_) + " has a broken table of segments: " + elf_errmsg(-1));
    }
    if (program.p_type != PT_LOAD || program.p_memsz == 0) continue;
    Segment segment;
    segment.address = program.p_vaddr;
    // The last byte of the address space is given up, so that the end never wraps.
    segment.memorySize = std::min<std::uint64_t>(program.p_memsz, ~program.p_vaddr);
    segment.fileOffset = program.p_offset;
    segment.fileSize = std::min<std::uint64_t>(program.p_filesz, segment.memorySize);
    segment.isWritable = (program.p_flags & PF_W) != 0;
    LeaveOutHeaders(&segment);
    segments_.push_back(segment);
  }
}

/// A position-independent program is linked at 0, where its file headers then lie. No program ever
/// reads them, but every null pointer would.
void ElfFile::LeaveOutHeaders(Segment* segment) const {
  if (header_.e_type != ET_DYN || segment->address != 0 || segment->fileOffset != 0) return;
  const std::uint64_t end = header_.e_phoff + std::uint64_t{header_.e_phnum} * header_.e_phentsize;
  const std::uint64_t size = std::max<std::uint64_t>(header_.e_ehsize, end);
  if (size >= segment->fileSize) return;
  segment->address += size;
  segment->memorySize -= size;
  segment->fileOffset += size;
  segment->fileSize -= size;
}

ByteOrder ElfFile::Order() const {
  return header_.e_ident[EI_DATA] == ELFDATA2MSB ? ByteOrder::kBig : ByteOrder::kLittle;
}

std::uint32_t ElfFile::PointerSize() const {
  return header_.e_ident[EI_CLASS] == ELFCLASS64 ? 8 : 4;
}

std::uint64_t ElfFile::HighestAddress() const {
  std::uint64_t highest = 0;
  for (const Segment& segment : segments_) {
    highest = std::max(highest, segment.address + segment.memorySize - 1);
  }
  return highest;
}

bool ElfFile::Occupies(std::uint64_t address) const {
  return SegmentAt(address) != nullptr;
}

Elf_Scn* ElfFile::FindSection(const char* name) const {
  std::size_t names = 0;
  if (elf_getshdrstrndx(elf_.get(), &names) != 0) return nullptr;
  for (Elf_Scn* section = elf_nextscn(elf_.get(), nullptr); section != nullptr;
       section = elf_nextscn(elf_.get(), section)) {
    GElf_Shdr header{};
    if (gelf_getshdr(section, &header) == nullptr) continue;
    const char* const found = elf_strptr(elf_.get(), names, header.sh_name);
    if (found != nullptr && std::string_view(found) == name) return section;
  }
  return nullptr;
}

bool ElfFile::HasSection(const char* name) const {
  return FindSection(name) != nullptr;
}

bool ElfFile::HasSectionOfType(std::uint32_t type) const {
  for (Elf_Scn* section = elf_nextscn(elf_.get(), nullptr); section != nullptr;
       section = elf_nextscn(elf_.get(), section)) {
    GElf_Shdr header{};
    if (gelf_getshdr(section, &header) != nullptr && header.sh_type == type) return true;
  }
  return false;
}

std::span<const std::byte> ElfFile::SectionBytes(const char* name) const {
  Elf_Scn* const section = FindSection(name);
  GElf_Shdr header{};
  if (section == nullptr || gelf_getshdr(section, &header) == nullptr ||
      header.sh_type == SHT_NOBITS || header.sh_offset >= file_.size()) {
    return {};
  }
  const std::uint64_t size =
      std::min<std::uint64_t>(header.sh_size, file_.size() - header.sh_offset);
  return file_.subspan(static_cast<std::size_t>(header.sh_offset), static_cast<std::size_t>(size));
}

std::span<const std::byte> ElfFile::BuildId() const {
  // dwelf_elf_gnu_build_id() looks through the segments as well, which a debug file has no bytes
  // of.
  const std::span<const std::byte> note = SectionBytes(".note.gnu.build-id");
  const auto number = [&](std::size_t at) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < 4; ++i) {
      const std::size_t from = at + (Order() == ByteOrder::kBig ? i : 3 - i);
      value = value << 8 | std::to_integer<std::uint32_t>(note[from]);
    }
    return value;
  };
  constexpr std::size_t kHeader = 12;
  constexpr std::size_t kStart = kHeader + 4;  // behind the owner's name, "GNU"
  if (note.size() < kStart || number(0) != 4 || number(8) != NT_GNU_BUILD_ID) return {};
  const std::size_t size = number(4);
  return size > note.size() - kStart ? std::span<const std::byte>{} : note.subspan(kStart, size);
}

const Segment* ElfFile::SegmentAt(std::uint64_t address) const {
  for (const Segment& segment : segments_) {
    // Below the segment the difference wraps to something larger than any size.
    if (address - segment.address < segment.memorySize) return &segment;
  }
  return nullptr;
}

std::size_t ElfFile::ReadImage(std::uint64_t address, std::span<std::byte> bytes) const {
  std::size_t done = 0;
  while (done < bytes.size()) {
    const std::uint64_t at = address + done;
    if (at < address) break;
    const Segment* const segment = SegmentAt(at);
    if (segment == nullptr) break;
    const std::uint64_t inside = at - segment->address;
    const bool fromFile = inside < segment->fileSize;
    const std::uint64_t left = (fromFile ? segment->fileSize : segment->memorySize) - inside;
    std::size_t size = static_cast<std::size_t>(std::min<std::uint64_t>(left, bytes.size() - done));
    if (fromFile) {
      // A truncated file has lost these bytes: they are not zero, they are not there.
      const std::uint64_t offset = segment->fileOffset + inside;
      if (offset >= file_.size() || offset < inside) break;
      size = std::min<std::size_t>(size, file_.size() - static_cast<std::size_t>(offset));
      std::memcpy(bytes.data() + done, file_.data() + offset, size);
    } else {
      std::memset(bytes.data() + done, 0, size);
    }
    done += size;
  }
  return done;
}

}  // namespace targets
