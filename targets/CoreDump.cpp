#include "targets/CoreDump.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <utility>

#include "targets/Error.h"
#include "targets/LinkMap.h"
#include "targets/Texts.h"

namespace targets {
namespace {

[[noreturn]] void Unusable(const std::string& sentence) {
  throw Error(ErrorCode::kFileUnusable, sentence);
}

std::string Quoted(const std::string& path) {
  return "'" + path + "'";
}

/// Where the program headers of `program` lie once it is loaded without a bias.
std::optional<std::uint64_t> HeadersAddress(const ElfFile& program) {
  std::size_t count = 0;
  elf_getphdrnum(program.Handle(), &count);
  const std::uint64_t offset = program.Header().e_phoff;
  for (std::size_t i = 0; i < count; ++i) {
    GElf_Phdr header{};
    if (gelf_getphdr(program.Handle(), static_cast<int>(i), &header) == nullptr) break;
    if (header.p_type == PT_LOAD && offset - header.p_offset < header.p_filesz) {
      return header.p_vaddr + (offset - header.p_offset);
    }
  }
  return std::nullopt;
}

std::string MachineText(const ElfFile& file) {
  const std::string width = file.PointerSize() == 8 ? "64-bit " : "32-bit ";
  switch (file.Header().e_machine) {
    case EM_386:
      return width + "x86";
    case EM_X86_64:
      return width + "x86-64";
    case EM_ARM:
      return width + "ARM";
    case EM_AARCH64:
      return width + "AArch64";
    default:
      return width + "machine " + std::to_string(file.Header().e_machine);
  }
}

/// In seconds; 0 when there is no such regular file.
std::time_t LastChange(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) ? status.st_mtime : 0;
}

/// A dump's memory, and where it holds nothing of a mapped file, what the file has now, if that did
/// not change since: good enough to see where a file was loaded when its headers were not saved.
class HeaderMemory final : public MemorySource {
 public:
  HeaderMemory(MemorySource& saved, const std::vector<FileMapping>& mappings, std::time_t dumped)
      : saved_(saved), mappings_(mappings), dumped_(dumped) {}

  MemoryRead Read(std::uint64_t address, std::uint8_t space, std::span<std::byte> bytes) override {
    const MemoryRead read = saved_.Read(address, space, bytes);
    if (read.size == bytes.size() || read.gap != MemoryGap::kNotSaved) return read;
    for (const FileMapping& mapping : mappings_) {
      if (address < mapping.start || address >= mapping.end) continue;
      const std::time_t changed = LastChange(mapping.path);
      if (changed == 0 || changed > dumped_) return read;
      std::ifstream file(mapping.path, std::ios::binary);
      file.seekg(static_cast<std::streamoff>(mapping.fileOffset + (address - mapping.start)));
      file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
      if (file) return {bytes.size(), MemoryGap::kNotThere};
      return read;
    }
    return read;
  }

 private:
  MemorySource& saved_;
  const std::vector<FileMapping>& mappings_;
  std::time_t dumped_;
};

/// The text that ends with a zero byte at `address`; empty when it cannot be read.
std::string ReadText(MemorySource& memory, std::uint64_t address) {
  constexpr std::size_t kLongestPath = 4096;
  std::array<std::byte, kLongestPath> bytes{};
  const std::size_t size = memory.Read(address, 0, bytes).size;
  const char* const text = reinterpret_cast<const char*>(bytes.data());
  const std::size_t length = strnlen(text, size);
  return length == size ? "" : std::string(text, length);
}

}  // namespace

CoreDump::CoreDump(const std::string& path, const std::optional<std::string>& program)
    : core_(path, ElfFile::Use::kCoreDump),
      notes_(ReadCoreNotes(core_)),
      memory_(core_, notes_.mappings) {
  CheckContents();
  HeaderMemory headers(memory_, notes_.mappings, LastChange(path));
  std::vector<LoadedFile> files = FindLoadedFiles(notes_.mappings, headers);
  const std::optional<LoadedFile> loaded = FindProgram(files);
  program_.path = program ? *program : FindProgramPath(loaded);
  const ElfFile file(program_.path);
  CheckMachine(file);
  WarnOfOtherBuild(file, loaded);
  program_.loadBias = LoadBias(file, loaded);
  const auto wrapped = [&file](std::uint64_t address) {
    return file.PointerSize() == 8 ? address : address & 0xFFFFFFFF;
  };
  program_.start = loaded ? loaded->start : wrapped(program_.loadBias);
  program_.end = loaded ? loaded->end : wrapped(program_.loadBias + file.HighestAddress()) + 1;
  if (loaded) program_.dynamicSection = loaded->dynamicSection;
  UseFiles(loaded, std::move(files));
}

void CoreDump::CheckContents() {
  const std::string dump = "the core dump " + Quoted(core_.Path());
  const std::uint64_t size = core_.Contents().size();
  const GElf_Ehdr& header = core_.Header();
  // Segments that the file has lost are not even counted by libelf.
  const std::uint64_t table = std::uint64_t{header.e_phnum} * header.e_phentsize;
  if (header.e_phoff > size || table > size - header.e_phoff) {
    Unusable(dump + " is cut off: its table of segments is not complete");
  }
  const bool cut = memory_.CompleteSize() > size;
  if (!notes_.hasProcess && notes_.mappings.empty() && !notes_.programHeaders && !notes_.entry) {
    Unusable(dump + (cut ? " is cut off: it" : "") + " has no notes about its process");
  }
  if (cut) {
    warnings_.push_back(dump + " is cut off: it has " + std::to_string(size) + " of " +
                        std::to_string(memory_.CompleteSize()) +
                        " bytes, and the rest counts as not saved");
  }
}

std::optional<LoadedFile> CoreDump::FindProgram(const std::vector<LoadedFile>& files) const {
  for (const auto& address : {notes_.programHeaders, notes_.entry}) {
    if (!address) continue;
    for (const LoadedFile& file : files) {
      if (*address >= file.start && *address < file.end) return file;
    }
  }
  return std::nullopt;
}

std::string CoreDump::FindProgramPath(const std::optional<LoadedFile>& loaded) {
  std::string path;
  if (loaded) {
    path = loaded->path;
  } else {
    for (const auto& address : {notes_.programHeaders, notes_.entry}) {
      for (const FileMapping& mapping : notes_.mappings) {
        const bool here = address && *address >= mapping.start && *address < mapping.end;
        if (here && path.empty()) path = mapping.path;
      }
    }
  }
  if (path.empty() && notes_.programName) path = ReadText(memory_, *notes_.programName);
  if (path.empty()) {
    Unusable("the core dump " + Quoted(core_.Path()) +
             " does not say which program it is of: name the program");
  }
  std::error_code error;
  if (!std::filesystem::exists(path, error)) {
    Unusable("there is no file " + Quoted(path) + ", the program of the core dump " +
             Quoted(core_.Path()) + ": name the program");
  }
  return path;
}

void CoreDump::CheckMachine(const ElfFile& program) const {
  if (program.Header().e_machine == core_.Header().e_machine &&
      program.PointerSize() == core_.PointerSize() && program.Order() == core_.Order()) {
    return;
  }
  Unusable("the program " + Quoted(program.Path()) + " is for " + MachineText(program) +
           ", and the core dump " + Quoted(core_.Path()) + " is of " + MachineText(core_));
}

std::uint64_t CoreDump::LoadBias(const ElfFile& program,
                                 const std::optional<LoadedFile>& loaded) const {
  if (program.Header().e_type == ET_EXEC) return 0;
  if (loaded) return loaded->loadBias;
  const std::optional<std::uint64_t> headers = HeadersAddress(program);
  if (notes_.programHeaders && headers) return *notes_.programHeaders - *headers;
  if (notes_.entry) return *notes_.entry - program.Header().e_entry;
  Unusable("the core dump " + Quoted(core_.Path()) + " does not say where the program " +
           Quoted(program.Path()) + " was loaded");
}

void CoreDump::WarnOfOtherBuild(const ElfFile& program, const std::optional<LoadedFile>& loaded) {
  if (!loaded) return;
  const std::vector<std::byte> buildId(program.BuildId().begin(), program.BuildId().end());
  const std::string sentence = "the program " + Quoted(program.Path()) +
                               " is not the one that the core dump " + Quoted(core_.Path()) +
                               " is of: ";
  if (buildId.empty() && loaded->buildId.empty()) {
    if (BaseName(program.Path()) == BaseName(loaded->path)) return;
    warnings_.push_back(sentence + "that is " + Quoted(loaded->path));
  } else if (buildId.empty() && !loaded->buildId.empty()) {
    warnings_.push_back(sentence + "it has no build-id, and that one has");
  } else if (buildId != loaded->buildId && !loaded->buildId.empty()) {
    warnings_.push_back(sentence + "its build-id is " + BuildIdText(buildId) + ", not " +
                        BuildIdText(loaded->buildId));
  }
}

/// The program's file may lie elsewhere now than where the process had it.
void CoreDump::UseFiles(const std::optional<LoadedFile>& loaded, std::vector<LoadedFile> files) {
  std::vector<FileMapping> mappings = notes_.mappings;
  if (loaded) {
    for (FileMapping& mapping : mappings) {
      if (mapping.path == loaded->path) mapping.path = program_.path;
    }
    for (LoadedFile& file : files) {
      if (file.path == loaded->path) file.path = program_.path;
    }
  }
  for (const LoadedFile& file : files) {
    if (!loaded || file.start != loaded->start) libraries_.push_back(file);
  }
  memory_.UseFiles(std::move(files), std::move(mappings), LastChange(core_.Path()));
  OrderAsLinked(program_, core_.PointerSize(), core_.Order(), memory_, &libraries_);
}

}  // namespace targets
