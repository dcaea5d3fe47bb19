#include "tests/targets/CoreBuilder.h"

#include <elf.h>
#include <cstdlib>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "targets/ElfFile.h"

namespace targettests {
namespace {

constexpr std::uint64_t kPage = 4096;

std::uint64_t PageBefore(std::uint64_t address) {
  return address & ~(kPage - 1);
}

std::uint64_t PageBehind(std::uint64_t address) {
  return PageBefore(address + kPage - 1);
}

}  // namespace

CoreBuilder::Kind CoreBuilder::X64() {
  return {EM_X86_64, 8, targets::ByteOrder::kLittle};
}

CoreBuilder::Kind CoreBuilder::X86() {
  return {EM_386, 4, targets::ByteOrder::kLittle};
}

CoreBuilder::Kind CoreBuilder::PowerPc() {
  return {EM_PPC, 4, targets::ByteOrder::kBig};
}

CoreBuilder& CoreBuilder::Add(std::uint64_t address, std::string bytes, std::uint64_t memorySize,
                              Access access) {
  pieces_.push_back({address, std::move(bytes), memorySize, access});
  return *this;
}

CoreBuilder& CoreBuilder::AddMapping(targets::FileMapping mapping) {
  mappings_.push_back(std::move(mapping));
  return *this;
}

CoreBuilder& CoreBuilder::AddAuxiliary(std::uint64_t type, std::uint64_t value) {
  auxiliary_ += Word(type) + Word(value);
  return *this;
}

CoreBuilder& CoreBuilder::AddProcess() {
  hasProcess_ = true;
  return *this;
}

CoreBuilder& CoreBuilder::Load(const std::string& path, std::uint64_t loadBias, Access others,
                               std::size_t beginning) {
  const targets::ElfFile file(path);
  std::size_t count = 0;
  elf_getphdrnum(file.Handle(), &count);
  for (std::size_t i = 0; i < count; ++i) {
    GElf_Phdr header{};
    gelf_getphdr(file.Handle(), static_cast<int>(i), &header);
    if (header.p_type != PT_LOAD) continue;
    const std::uint64_t start = PageBefore(header.p_vaddr);
    const std::uint64_t end = PageBehind(header.p_vaddr + header.p_memsz);
    const std::uint64_t fileStart = PageBefore(header.p_offset);
    const std::uint64_t fileEnd = PageBehind(header.p_vaddr + header.p_filesz);
    // Whole pages of the file are mapped, beyond the segment as well.
    std::string bytes(reinterpret_cast<const char*>(file.Contents().data()) + fileStart,
                      std::min<std::uint64_t>(fileEnd - start, file.Contents().size() - fileStart));
    bytes.resize(fileEnd - start);
    const bool isWritable = (header.p_flags & PF_W) != 0;
    if (isWritable) {
      const std::uint64_t zeros = header.p_vaddr + header.p_filesz - start;
      std::fill(bytes.begin() + static_cast<std::ptrdiff_t>(zeros), bytes.end(), '\0');
      Add(start + loadBias, bytes);
      if (end > fileEnd) Add(fileEnd + loadBias, "", end - fileEnd);
    } else {
      Add(start + loadBias, bytes.substr(0, header.p_offset == 0 ? beginning : 0), end - start,
          others);
    }
    AddMapping({start + loadBias, fileEnd + loadBias, fileStart, path});
  }
  return *this;
}

std::string CoreBuilder::Number(std::uint64_t value, std::size_t size) const {
  std::string bytes;
  for (std::size_t i = 0; i < size; ++i) bytes += static_cast<char>(value >> i * 8);
  if (kind_.order == targets::ByteOrder::kBig) std::reverse(bytes.begin(), bytes.end());
  return bytes;
}

std::string CoreBuilder::Note(std::uint32_t type, const std::string& contents) const {
  const std::string owner("CORE\0\0\0\0", 8);
  std::string note = Number(5, 4) + Number(contents.size(), 4) + Number(type, 4) + owner + contents;
  note.resize((note.size() + 3) / 4 * 4);
  return note;
}

std::string CoreBuilder::Notes() const {
  std::string notes;
  if (hasProcess_) notes += Note(NT_PRPSINFO, std::string(16, '\0'));
  if (!auxiliary_.empty()) notes += Note(NT_AUXV, auxiliary_ + Word(AT_NULL) + Word(0));
  if (mappings_.empty()) return notes;
  std::string files = Word(mappings_.size()) + Word(kPage);
  for (const targets::FileMapping& mapping : mappings_) {
    files += Word(mapping.start) + Word(mapping.end) + Word(mapping.fileOffset / kPage);
  }
  for (const targets::FileMapping& mapping : mappings_) files += mapping.path + '\0';
  return notes + Note(NT_FILE, files);
}

std::string CoreBuilder::Header(std::uint64_t count) const {
  const bool wide = kind_.pointerSize == 8;
  std::string header = ELFMAG;
  header += static_cast<char>(wide ? ELFCLASS64 : ELFCLASS32);
  header += static_cast<char>(kind_.order == targets::ByteOrder::kBig ? ELFDATA2MSB : ELFDATA2LSB);
  header += static_cast<char>(EV_CURRENT);
  header.resize(EI_NIDENT);
  header += Number(ET_CORE, 2) + Number(kind_.machine, 2) + Number(EV_CURRENT, 4) + Word(0);
  header += Word(wide ? sizeof(Elf64_Ehdr) : sizeof(Elf32_Ehdr)) + Word(0) + Number(0, 4);
  header += Number(wide ? sizeof(Elf64_Ehdr) : sizeof(Elf32_Ehdr), 2);
  header += Number(wide ? sizeof(Elf64_Phdr) : sizeof(Elf32_Phdr), 2) + Number(count, 2);
  return header + Number(0, 2) + Number(0, 2) + Number(0, 2);
}

std::string CoreBuilder::ProgramHeader(std::uint32_t type, std::uint32_t flags,
                                       std::uint64_t offset, std::uint64_t address,
                                       std::uint64_t fileSize, std::uint64_t memorySize) const {
  const bool wide = kind_.pointerSize == 8;
  std::string header = Number(type, 4);
  if (wide) header += Number(flags, 4);
  header += Word(offset) + Word(address) + Word(0) + Word(fileSize) + Word(memorySize);
  if (!wide) header += Number(flags, 4);
  return header + Word(1);
}

std::string CoreBuilder::Bytes() const {
  const std::string notes = Notes();
  const bool wide = kind_.pointerSize == 8;
  const std::uint64_t count = pieces_.size() + 1;
  std::uint64_t offset = wide ? sizeof(Elf64_Ehdr) + count * sizeof(Elf64_Phdr)
                              : sizeof(Elf32_Ehdr) + count * sizeof(Elf32_Phdr);
  std::string headers = Header(count) + ProgramHeader(PT_NOTE, 0, offset, 0, notes.size(), 0);
  std::string contents = notes;
  for (const Piece& piece : pieces_) {
    const std::uint32_t flags = piece.access == Access::kWrite ? PF_R | PF_W : PF_R;
    headers += ProgramHeader(PT_LOAD, flags, offset + contents.size(), piece.address,
                             piece.bytes.size(), piece.memorySize);
    contents += piece.bytes;
  }
  return headers + contents;
}

TestFolder::TestFolder() : path_(FIXTURE_DIR "/test-XXXXXX") {
  if (mkdtemp(path_.data()) == nullptr) throw std::runtime_error("no folder can be made");
}

TestFolder::~TestFolder() {
  std::error_code error;
  std::filesystem::remove_all(path_, error);
}

std::string TestFolder::Write(const std::string& name, const std::string& bytes) const {
  std::ofstream(Path(name), std::ios::binary) << bytes;
  return Path(name);
}

}  // namespace targettests
