#include <elf.h>
#include <gtest/gtest.h>
#include <utime.h>

#include <ctime>
#include <filesystem>
#include <fstream>

#include "targets/CoreDump.h"
#include "targets/CoreMemory.h"
#include "targets/CoreNotes.h"
#include "tests/targets/CoreBuilder.h"
#include "tests/targets/ProgramUnderTest.h"

namespace targettests {
namespace {

using targets::CoreMemory;
using targets::ElfFile;
using targets::MemoryGap;

const char* GapName(MemoryGap gap) {
  switch (gap) {
    case MemoryGap::kNotThere:
      return "not there";
    case MemoryGap::kNotSaved:
      return "not saved";
    case MemoryGap::kNotAllowed:
      return "not allowed";
  }
  return "?";
}

/// What is read, and why the byte behind it is not: `bc, not there`; a zero byte as `.`.
std::string Read(targets::MemorySource& memory, std::uint64_t address, std::size_t size,
                 std::uint8_t space = 0) {
  std::string bytes(size, '?');
  const targets::MemoryRead read =
      memory.Read(address, space, std::as_writable_bytes(std::span(bytes)));
  EXPECT_LE(read.size, size);
  EXPECT_EQ(bytes.substr(read.size), std::string(size - read.size, '?'));
  for (char& byte : bytes) byte = byte == '\0' ? '.' : byte;
  if (read.size == size) return bytes;
  return bytes.substr(0, read.size) + ", " + GapName(read.gap);
}

struct ReadRow {
  std::uint64_t address;
  std::size_t size;
  std::string expected;
};

void ExpectReads(targets::MemorySource& memory, const std::vector<ReadRow>& rows) {
  for (const ReadRow& row : rows) {
    EXPECT_EQ(Read(memory, row.address, row.size), row.expected) << std::hex << row.address;
  }
}

TEST(CoreMemory, HoldsWhatItsSegmentsHold) {
  const TestFolder folder;
  for (const CoreBuilder::Kind& kind :
       {CoreBuilder::X64(), CoreBuilder::X86(), CoreBuilder::PowerPc()}) {
    CoreBuilder builder(kind);
    // Out of order, two of them adjacent.
    builder.Add(0x3000, "ijkl", 8).Add(0x1000, "abcd").Add(0x1004, "efgh");
    builder.Add(0xFFFFFFF8, "last8byt").AddMapping({0x5000, 0x6000, 0, "/nowhere/file"});
    const ElfFile file(folder.Write("core", builder.Bytes()), ElfFile::Use::kCoreDump);
    CoreMemory memory(file, ReadCoreNotes(file).mappings);
    ExpectReads(memory, {{0x1000, 4, "abcd"},
                         {0x1001, 2, "bc"},
                         {0x1002, 4, "cdef"},
                         {0x1000, 9, "abcdefgh, not there"},
                         {0x1000, 0, ""},
                         {0xFFF, 4, ", not there"},
                         {0x1008, 1, ", not there"},
                         {0x3002, 4, "kl, not saved"},
                         {0x3004, 1, ", not saved"},
                         {0x3007, 1, ", not saved"},
                         {0x3008, 1, ", not there"},
                         {0x5000, 1, ", not saved"},
                         {0x5FFF, 1, ", not saved"},
                         {0x6000, 1, ", not there"},
                         {0, 8, ", not there"},
                         {0xFFFFFFFC, 4, "8byt"},
                         {~std::uint64_t{0} - 3, 8, ", not there"}});
    EXPECT_EQ(Read(memory, 0x1000, 4, 1), ", not there");
    EXPECT_EQ(memory.CompleteSize(), file.Contents().size());
  }
}

TEST(CoreMemory, HasOverlappingSegmentsWhole) {
  const TestFolder folder;
  CoreBuilder builder(CoreBuilder::X64());
  builder.Add(0x1002, "CDEFGH").Add(0x1000, "abcd").Add(0x1000, "XYZ", 6).Add(0x1001, "Q", 16);
  const ElfFile file(folder.Write("core", builder.Bytes()), ElfFile::Use::kCoreDump);
  CoreMemory memory(file, {});
  // The second segment, the end of the third, of the fourth, and the rest is hidden.
  ExpectReads(memory, {{0x1000, 5, "abcd, not saved"},
                       {0x1005, 1, ", not saved"},
                       {0x1006, 2, ", not saved"},
                       {0x1010, 1, ", not saved"},
                       {0x1011, 1, ", not there"}});
}

TEST(CoreMemory, LacksWhatWasCutOff) {
  const TestFolder folder;
  CoreBuilder builder(CoreBuilder::X64());
  builder.Add(0x1000, "abcd").Add(0x2000, "efghijkl");
  const std::string whole = builder.Bytes();
  const ElfFile file(folder.Write("core", whole.substr(0, whole.size() - 5)),
                     ElfFile::Use::kCoreDump);
  CoreMemory memory(file, {});
  ExpectReads(memory, {{0x1000, 4, "abcd"},
                       {0x2000, 8, "efg, not saved"},
                       {0x2003, 1, ", not saved"},
                       {0x2008, 1, ", not there"}});
  EXPECT_EQ(memory.CompleteSize(), whole.size());
}

class CoreOfAProgram : public testing::Test {
 protected:
  static constexpr std::uint64_t kBias = 0x555555554000;

  /// The run-time address of what `program_` calls `name`.
  std::uint64_t AddressOf(const std::string& name) {
    return targets::ElfProgram(program_).FindLabel(name)->value + kBias;
  }

  CoreBuilder Builder() const {
    CoreBuilder builder(CoreBuilder::X64());
    builder.Load(program_, kBias).AddProcess().AddAuxiliary(AT_PHDR, kBias + 0x40);
    return builder;
  }

  targets::CoreDump Open(const CoreBuilder& builder) {
    return targets::CoreDump(folder_.Write("core", builder.Bytes()));
  }

  TestFolder folder_;
  std::string program_ = [this] {
    std::filesystem::copy(FixturePath("user"), folder_.Path("user"));
    return folder_.Path("user");
  }();
};

TEST_F(CoreOfAProgram, LeavesToTheFileWhatItCouldNotWrite) {
  targets::CoreDump dump = Open(Builder());
  EXPECT_EQ(Read(dump.Memory(), AddressOf("greeting"), 9), "good day.");
  EXPECT_EQ(Read(dump.Memory(), AddressOf("numbers") + 8000, 4), "....");
}

TEST_F(CoreOfAProgram, UsesNoFileThatWasReplaced) {
  const std::string core = folder_.Write("core", Builder().Bytes());
  const std::uint64_t address = AddressOf("greeting");
  // The same layout, another build-id.
  std::string bytes(std::filesystem::file_size(program_), '\0');
  std::ifstream(program_, std::ios::binary).read(bytes.data(), std::ssize(bytes));
  const std::size_t note = bytes.find("GNU", bytes.find(std::string("\4\0\0\0\x14\0\0\0\3", 9)));
  bytes[note + 4] = static_cast<char>(bytes[note + 4] ^ 1);
  std::filesystem::remove(program_);
  folder_.Write("user", bytes);
  targets::CoreDump dump(core);
  EXPECT_EQ(Read(dump.Memory(), address, 4), ", not saved");
  ASSERT_EQ(dump.Warnings().size(), 1U);
  EXPECT_NE(dump.Warnings().front().find("is not the one that the core dump"), std::string::npos);
}

TEST_F(CoreOfAProgram, UsesAFileWithoutBuildIdOnlyWhenItIsOlder) {
  std::filesystem::remove(program_);
  std::filesystem::copy(FixturePath("user-unmarked"), program_);
  const std::string core = folder_.Write("core", Builder().Bytes());
  const auto changed = [&](std::time_t when) {
    const utimbuf times{when, when};
    utime(program_.c_str(), &times);
    targets::CoreDump dump(core);
    return Read(dump.Memory(), AddressOf("greeting"), 4);
  };
  EXPECT_EQ(changed(1000000000), "good");
  EXPECT_EQ(changed(std::time(nullptr) + 100000), ", not saved");
}

TEST_F(CoreOfAProgram, UsesNoFileForWhatCouldBeWritten) {
  CoreBuilder builder(CoreBuilder::X64());
  builder.Load(program_, kBias, CoreBuilder::Access::kWrite);
  builder.AddProcess().AddAuxiliary(AT_PHDR, kBias + 0x40);
  targets::CoreDump dump = Open(builder);
  EXPECT_EQ(Read(dump.Memory(), AddressOf("greeting"), 4), ", not saved");
}

TEST_F(CoreOfAProgram, HasZerosWhereNothingWasEverWritten) {
  const std::uint64_t bias = 0x7F0000000000;
  const std::string library = FixturePath("libuser.so");
  const std::uint64_t address = targets::ElfProgram(library).FindLabel("untouched")->value + bias;
  CoreBuilder builder = Builder();
  builder.Load(library, bias);
  // Nothing shows that written memory would be there.
  targets::CoreDump without = Open(builder);
  EXPECT_EQ(Read(without.Memory(), address + 8000, 4), ", not saved");
  builder.Add(0x7FFFFFF00000, "stack...");
  targets::CoreDump with = Open(builder);
  EXPECT_EQ(Read(with.Memory(), address + 8000, 4), "....");
  EXPECT_EQ(Read(with.Memory(), 0x7FFFFFF00000, 5), "stack");
}

TEST(CoreNotes, AreReadAsFarAsTheyMakeSense) {
  const TestFolder folder;
  for (const CoreBuilder::Kind& kind :
       {CoreBuilder::X64(), CoreBuilder::X86(), CoreBuilder::PowerPc()}) {
    CoreBuilder builder(kind);
    builder.AddProcess().AddAuxiliary(AT_PHDR, 0x400040).AddAuxiliary(AT_ENTRY, 0x401000);
    builder.AddAuxiliary(AT_EXECFN, 0x7000).AddMapping({0x8000, 0x9000, 0x2000, "/b (deleted)"});
    builder.AddMapping({0x3000, 0x5000, 0, "/a"}).AddMapping({0x6000, 0x6000, 0, "/empty"});
    const std::string bytes = builder.Bytes();
    const ElfFile file(folder.Write("core", bytes), ElfFile::Use::kCoreDump);
    const targets::CoreNotes notes = ReadCoreNotes(file);
    EXPECT_TRUE(notes.hasProcess);
    EXPECT_EQ(notes.programHeaders, 0x400040U);
    EXPECT_EQ(notes.entry, 0x401000U);
    EXPECT_EQ(notes.programName, 0x7000U);
    ASSERT_EQ(notes.mappings.size(), 2U);
    EXPECT_EQ(notes.mappings[0].path, "/a");
    EXPECT_EQ(notes.mappings[1].path, "/b");
    EXPECT_EQ(notes.mappings[1].start, 0x8000U);
    EXPECT_EQ(notes.mappings[1].end, 0x9000U);
    EXPECT_EQ(notes.mappings[1].fileOffset, 0x2000U);
    // Cut anywhere, what is left is read, or nothing.
    for (std::size_t size = bytes.size(); size > bytes.size() - 200; size -= 7) {
      const ElfFile cut(folder.Write("cut", bytes.substr(0, size)), ElfFile::Use::kCoreDump);
      EXPECT_LE(ReadCoreNotes(cut).mappings.size(), 2U);
    }
  }
}

}  // namespace
}  // namespace targettests
