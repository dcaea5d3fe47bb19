// A file opened as a core dump: its notes, the files that it had loaded, and reads all over its
// memory, where the mapped files are one small program.

#include <elf.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/ByteSource.h"
#include "fuzz/MemoryFile.h"
#include "fuzz/Require.h"
#include "targets/CoreDump.h"
#include "targets/CoreMemory.h"
#include "targets/CoreNotes.h"
#include "targets/Error.h"
#include "targets/LinkMap.h"
#include "targets/LoadedFiles.h"

namespace {

using fuzzing::Require;

/// So many places of a dump are looked at.
constexpr std::size_t kMostPlaces = 16;
constexpr std::byte kUntouched{0xA5};

/// The program that dumps are of: a read-only segment with headers, a build-id and text, and one
/// that is written, with a dynamic section. fuzz/make_core_seeds has the same.
std::string ProgramBytes() {
  constexpr std::uint64_t kHeaders = sizeof(Elf64_Ehdr) + 4 * sizeof(Elf64_Phdr);
  constexpr std::uint64_t kData = 0x180;
  constexpr std::uint64_t kDataAddress = 0x1180;
  constexpr std::uint64_t kDataSize = 0x40;
  struct File {
    Elf64_Ehdr header{};
    std::array<Elf64_Phdr, 4> segments{};
  } file;
  std::copy_n(ELFMAG, SELFMAG, file.header.e_ident);
  file.header.e_ident[EI_CLASS] = ELFCLASS64;
  file.header.e_ident[EI_DATA] = ELFDATA2LSB;
  file.header.e_ident[EI_VERSION] = EV_CURRENT;
  file.header.e_type = ET_DYN;
  file.header.e_machine = EM_X86_64;
  file.header.e_version = EV_CURRENT;
  file.header.e_entry = 0x150;
  file.header.e_phoff = sizeof(Elf64_Ehdr);
  file.header.e_ehsize = sizeof(Elf64_Ehdr);
  file.header.e_phentsize = sizeof(Elf64_Phdr);
  file.header.e_phnum = 4;
  file.segments[0] = {PT_LOAD, PF_R | PF_X, 0, 0, 0, kData, kData, 0x1000};
  file.segments[1] = {PT_LOAD,      PF_R | PF_W, kData, kDataAddress,
                      kDataAddress, kDataSize,   0x100, 0x1000};
  file.segments[2] = {PT_NOTE, PF_R, kHeaders, kHeaders, kHeaders, 20, 20, 4};
  file.segments[3] = {PT_DYNAMIC,   PF_R | PF_W, kData,     kDataAddress,
                      kDataAddress, kDataSize,   kDataSize, 8};
  std::string bytes(reinterpret_cast<const char*>(&file), sizeof(file));
  bytes += std::string("\4\0\0\0\4\0\0\0\3\0\0\0GNU\0mark", 20);
  bytes.resize(kData, 't');
  bytes.resize(kData + kDataSize, 'd');
  return bytes;
}

/// The program's path stands for every path in a dump: an input must not make the fuzzer open files
/// of the machine.
const std::string& ProgramPath() {
  static const fuzzing::MemoryFile kFile;
  static const std::string kPath = [] {
    kFile.Hold(ProgramBytes());
    return kFile.Path();
  }();
  return kPath;
}

/// Runs a step that may fail, with words.
void Attempt(const std::function<void()>& step) {
  try {
    step();
  } catch (const targets::Error& error) {
    Require(!std::string_view(error.what()).empty(), "an error says what is wrong");
  }
}

struct Part {
  std::array<std::byte, 24> bytes{};
  targets::MemoryRead read;
};

Part Read(targets::MemorySource& memory, std::uint64_t address, std::size_t size) {
  Part part;
  part.bytes.fill(kUntouched);
  part.read = memory.Read(address, 0, std::span(part.bytes).first(size));
  Require(part.read.size <= size, "no more is read than asked for");
  Require(part.read.size == 0 || address + (part.read.size - 1) >= address, "a read does not wrap");
  Require(std::all_of(part.bytes.begin() + static_cast<std::ptrdiff_t>(part.read.size),
                      part.bytes.end(), [](std::byte byte) { return byte == kUntouched; }),
          "what is not read stays as it was");
  return part;
}

/// However memory is read, it is the same.
void CheckReads(targets::MemorySource& memory, std::uint64_t address) {
  const Part whole = Read(memory, address, 16);
  const Part again = Read(memory, address, 16);
  Require(whole.bytes == again.bytes && whole.read.size == again.read.size,
          "two reads bring the same");
  const Part first = Read(memory, address, 5);
  Require(first.read.size == std::min<std::size_t>(whole.read.size, 5),
          "a shorter read ends where a longer one does");
  Require(std::equal(first.bytes.begin(),
                     first.bytes.begin() + static_cast<std::ptrdiff_t>(first.read.size),
                     whole.bytes.begin()),
          "a shorter read brings the same bytes");
  if (whole.read.size < 16 && address + whole.read.size >= address) {
    const Part behind = Read(memory, address + whole.read.size, 1);
    Require(behind.read.size == 0 && behind.read.gap == whole.read.gap,
            "the byte behind a read cannot be read, for the same reason");
  }
  Require(Read(memory, address, 0).read.size == 0, "nothing is read when nothing is asked for");
  std::array<std::byte, 4> other{};
  Require(memory.Read(address, 1, other).size == 0, "the second space has no contents");
}

std::vector<std::uint64_t> Places(const targets::ElfFile& core,
                                  const std::vector<targets::FileMapping>& mappings) {
  std::vector<std::uint64_t> places{0, 0x401000, ~std::uint64_t{0} - 7};
  for (const targets::Segment& segment : core.Segments()) {
    if (places.size() >= kMostPlaces) break;
    places.push_back(segment.address);
    places.push_back(segment.address + segment.fileSize - 3);
    places.push_back(segment.address + segment.memorySize - 3);
  }
  for (const targets::FileMapping& mapping : mappings) {
    if (places.size() >= 2 * kMostPlaces) break;
    places.push_back(mapping.start);
    places.push_back(mapping.end - 3);
  }
  return places;
}

void CheckNotes(const targets::CoreNotes& notes) {
  std::uint64_t last = 0;
  for (const targets::FileMapping& mapping : notes.mappings) {
    Require(mapping.start < mapping.end, "a mapping is not empty");
    Require(mapping.start >= last, "mappings are in order");
    Require(!mapping.path.empty() && mapping.path.find('\0') == std::string::npos,
            "a mapping has a path");
    last = mapping.start;
  }
}

void UseParts(const std::string& path) {
  const targets::ElfFile core(path, targets::ElfFile::Use::kCoreDump);
  targets::CoreNotes notes = ReadCoreNotes(core);
  CheckNotes(notes);
  targets::CoreMemory memory(core, notes.mappings);
  const std::vector<std::uint64_t> places = Places(core, notes.mappings);
  for (const std::uint64_t place : places) CheckReads(memory, place);
  for (const targets::Segment& segment : core.Segments()) {
    if (segment.memorySize == 0) continue;
    const Part part = Read(memory, segment.address, 1);
    Require(part.read.size == 1 || part.read.gap == targets::MemoryGap::kNotSaved,
            "what a segment covers was there");
  }
  for (targets::FileMapping& mapping : notes.mappings) mapping.path = ProgramPath();
  std::vector<targets::LoadedFile> files = FindLoadedFiles(notes.mappings, memory);
  Require(files.size() <= notes.mappings.size(), "a file is loaded where one is mapped");
  if (!files.empty()) {
    const std::size_t count = files.size();
    const targets::LoadedFile program = files.front();
    OrderAsLinked(program, core.PointerSize(), core.Order(), memory, &files);
    Require(files.size() == count, "an order loses no library");
  }
  memory.UseFiles(std::move(files), std::move(notes.mappings), 0x7FFFFFFF);
  for (const std::uint64_t place : places) CheckReads(memory, place);
}

/// Does no mapped path but that of the program occur, so that the dump may be opened as a whole?
bool IsHarmless(std::string_view bytes) {
  return bytes.find('/') == std::string_view::npos;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const fuzzing::MemoryFile kFile;
  const std::string_view bytes = fuzzing::AsText(data, size);
  kFile.Hold(bytes);
  Attempt([] { UseParts(kFile.Path()); });
  if (!IsHarmless(bytes)) return 0;
  Attempt([] {
    targets::CoreDump dump(kFile.Path(), ProgramPath());
    CheckReads(dump.Memory(), dump.Program().start);
    for (const targets::LoadedFile& library : dump.Libraries()) {
      CheckReads(dump.Memory(), library.start);
    }
  });
  return 0;
}
