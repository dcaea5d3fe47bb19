#include "targets/MemoryRegions.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>

#include "targets/RegionRequest.h"
#include "tests/targets/ProgramUnderTest.h"

namespace targettests {
namespace {

using targets::MemoryGap;
using targets::MemoryRead;
using targets::MemoryRegion;
using targets::MemoryRegions;

MemoryRegion Region(std::uint64_t address, std::string_view bytes, std::uint8_t space = 0) {
  MemoryRegion region;
  region.space = space;
  region.address = address;
  region.size = bytes.size();
  region.origin = "'" + std::string(bytes) + "'";
  for (const char c : bytes) region.bytes.push_back(static_cast<std::byte>(c));
  return region;
}

std::string Read(targets::MemorySource& memory, std::uint64_t address, std::size_t size,
                 std::uint8_t space = 0) {
  std::vector<std::byte> bytes(size, std::byte{'?'});
  const MemoryRead read = memory.Read(address, space, bytes);
  return std::string(reinterpret_cast<const char*>(bytes.data()), read.size);
}

/// Dots from 0x0 to 0xffff, but none from 0x100 to 0x1ff, where nothing was saved.
class Dots final : public targets::MemorySource {
 public:
  MemoryRead Read(std::uint64_t address, std::uint8_t space, std::span<std::byte> bytes) override {
    reads.emplace_back(address, bytes.size());
    MemoryRead read;
    while (space == 0 && read.size < bytes.size()) {
      const std::uint64_t at = address + read.size;
      if (at > 0xffff) return {read.size, MemoryGap::kNotThere};
      if (at >= 0x100 && at < 0x200) return {read.size, MemoryGap::kNotSaved};
      bytes[read.size++] = std::byte{'.'};
    }
    return read;
  }
  void Refresh() override { ++refreshed; }

  std::vector<std::pair<std::uint64_t, std::size_t>> reads;
  int refreshed = 0;
};

TEST(MemoryRegions, HoldExactlyTheirBytes) {
  MemoryRegions memory(4);
  memory.Add(Region(0x20, "cdef"));
  memory.Add(Region(0x10, "ab"));
  memory.Add(Region(0x24, "gh"));
  memory.Add(Region(0x10, "xy", 1));
  struct Row {
    std::uint64_t address;
    std::size_t size;
    std::uint8_t space;
    const char* bytes;
  };
  for (const Row& row : std::vector<Row>{{0x10, 2, 0, "ab"},
                                         {0x10, 8, 0, "ab"},
                                         {0x11, 1, 0, "b"},
                                         {0x12, 1, 0, ""},
                                         {0x0f, 4, 0, ""},
                                         {0x20, 4, 0, "cdef"},
                                         {0x22, 3, 0, "efg"},
                                         {0x20, 9, 0, "cdefgh"},
                                         {0x10, 8, 1, "xy"},
                                         {0x20, 4, 1, ""},
                                         {0x10, 4, 2, ""},
                                         {0x10, 0, 0, ""}}) {
    EXPECT_EQ(Read(memory, row.address, row.size, row.space), row.bytes) << row.address;
  }
  EXPECT_EQ(memory.HighestAddress(), 0x25U);
  EXPECT_EQ(memory.Count(), 4U);
}

TEST(MemoryRegions, LieOverAnotherSource) {
  Dots below;
  MemoryRegions memory(4);
  memory.Add(Region(0x10, "ab"));
  memory.Add(Region(0xfe, "cdef"));
  memory.Add(Region(0xfffe, "ghij"));
  memory.SetBelow(&below);
  EXPECT_EQ(Read(memory, 0x0e, 8), "..ab....");
  EXPECT_EQ(below.reads, (std::vector<std::pair<std::uint64_t, std::size_t>>{{0x0e, 2}, {0x12, 4}}))
      << "only what lies outside of the regions is asked for";
  EXPECT_EQ(Read(memory, 0xfd, 8), ".cdef");
  EXPECT_EQ(Read(memory, 0xfffc, 9), "..ghij");
  EXPECT_EQ(Read(memory, 0x10, 2, 1), "");
  std::array<std::byte, 4> bytes{};
  EXPECT_EQ(memory.Read(0x100, 0, bytes).size, 2U);
  EXPECT_EQ(memory.Read(0x101, 0, bytes).gap, MemoryGap::kNotSaved);
  EXPECT_EQ(memory.Read(0x10002, 0, bytes).gap, MemoryGap::kNotThere);
  memory.Refresh();
  EXPECT_EQ(below.refreshed, 1);
}

TEST(MemoryRegions, EndWithTheAddressSpace) {
  for (const std::uint32_t size : {1U, 2U, 3U, 4U, 8U}) {
    const std::uint64_t last = size == 8 ? ~std::uint64_t{0} : (std::uint64_t{1} << size * 8) - 1;
    Dots below;
    MemoryRegions memory(size);
    memory.SetBelow(&below);
    memory.Add(Region(last - 1, "ab"));
    EXPECT_EQ(Read(memory, last - 1, 8), "ab") << size;
    EXPECT_EQ(Read(memory, last, 8), "b") << size;
    MemoryRegions other(size);
    EXPECT_NE(ErrorOf([&] { other.Add(Region(last, "ab")); }).find("past the end"),
              std::string::npos)
        << size;
    EXPECT_EQ(other.Count(), 0U);
  }
  MemoryRegions memory(4);
  EXPECT_EQ(ErrorOf([&] { memory.Add(Region(0xfffffffe, "abc")); }),
            "3 bytes at 0xfffffffe from 'abc' go past the end of the address space, 0xffffffff");
}

TEST(MemoryRegions, MayNotOverlap) {
  struct Row {
    std::uint64_t address;
    const char* bytes;
    bool overlaps;
  };
  for (const Row& row : std::vector<Row>{{0x10, "x", true},
                                         {0x13, "x", true},
                                         {0x0f, "xx", true},
                                         {0x0e, "xxxxxxxx", true},
                                         {0x0f, "x", false},
                                         {0x14, "x", false},
                                         {0x1f, "xx", true},
                                         {0x14, "xxxxxxxxxxxx", false}}) {
    MemoryRegions memory(4);
    memory.Add(Region(0x10, "abcd"));
    memory.Add(Region(0x20, "efgh"));
    memory.Add(Region(0x10, "abcd", 1));
    const std::string error = ErrorOf([&] { memory.Add(Region(row.address, row.bytes)); });
    EXPECT_EQ(error != "nothing was thrown", row.overlaps) << row.address << ": " << error;
  }
  MemoryRegions memory(4);
  memory.Add(Region(0x10, "abcd", 1));
  EXPECT_EQ(ErrorOf([&] { memory.Add(Region(0x13, "xy", 1)); }),
            "two regions of memory overlap: 0x10 to 0x13 in space 1 from 'abcd', and 0x13 to 0x14 "
            "in space 1 from 'xy'");
}

TEST(RegionRequest, IsReadFromATextOrRefused) {
  struct Row {
    const char* text;
    const char* meaning;
  };
  for (const Row& row : std::vector<Row>{
           {"0x100=a.bin", "0 256 a.bin"},
           {"16=a", "0 16 a"},
           {"0X10=a", "0 16 a"},
           {"1:0=a", "1 0 a"},
           {"0:8=a", "0 8 a"},
           {"0=a@4", "0 0 a from 4"},
           {"0=a@0x10:32", "0 0 a from 16, 32"},
           {"0=a@b", "0 0 a@b"},
           {"0=a@4:", "0 0 a@4:"},
           {"0=a@b@4", "0 0 a@b from 4"},
           {"0=a@4@0", "0 0 a@4 from 0"},
           {"0=x=y", "0 0 x=y"},
           {"0xffffffffffffffff=a", "0 18446744073709551615 a"},
           {"a.bin", "'a.bin' is no region of memory: [SPACE:]ADDRESS=FILE[@OFFSET[:LENGTH]] is"},
           {"5=", "'5=' is no region of memory: [SPACE:]ADDRESS=FILE[@OFFSET[:LENGTH]] is"},
           {"", "'' is no region of memory: [SPACE:]ADDRESS=FILE[@OFFSET[:LENGTH]] is"},
           {"2:0=a", "'2' in '2:0=a' is no memory space: 0 and 1 are"},
           {"-1=a",
            "'-1' in '-1=a' is no address: a decimal number or one behind 0x is, below "
            "2^64"},
           {"=a", "'' in '=a' is no address: a decimal number or one behind 0x is, below 2^64"},
           {"0x=a",
            "'0x' in '0x=a' is no address: a decimal number or one behind 0x is, below 2^64"},
           {"18446744073709551616=a",
            "'18446744073709551616' in '18446744073709551616=a' is no address: a decimal number or "
            "one behind 0x is, below 2^64"},
       }) {
    std::string meaning;
    const std::string error = ErrorOf([&] {
      const targets::RegionRequest request = targets::ReadRegionRequest(row.text);
      meaning = std::to_string(request.space) + " " + std::to_string(request.address) + " " +
                request.path;
      if (request.offset) meaning += " from " + std::to_string(*request.offset);
      if (request.length) meaning += ", " + std::to_string(*request.length);
    });
    EXPECT_EQ(error == "nothing was thrown" ? meaning : error, row.meaning) << row.text;
  }
}

class RegionFiles : public testing::Test {
 protected:
  RegionFiles()
      : folder_(std::filesystem::path(testing::TempDir()) /
                ("regions-" +
                 std::string(testing::UnitTest::GetInstance()->current_test_info()->name()))) {
    std::filesystem::create_directories(folder_);
  }
  ~RegionFiles() override { std::filesystem::remove_all(folder_); }

  std::string File(const std::string& name, const std::string& content) {
    std::ofstream(folder_ / name, std::ios::binary) << content;
    return (folder_ / name).string();
  }

  std::string Fails(const std::string& text, std::uint32_t pointerSize = 4) {
    MemoryRegions memory(pointerSize);
    std::string error =
        ErrorOf([&] { targets::AddRegions(targets::ReadRegionRequest(text), &memory); });
    const std::string prefix = folder_.string() + "/";
    for (std::size_t at = error.find(prefix); at != error.npos; at = error.find(prefix)) {
      error.erase(at, prefix.size());
    }
    return error;
  }

  std::filesystem::path folder_;
};

TEST_F(RegionFiles, AreReadWholeOrInPart) {
  const std::string raw = File("raw", "0123456789");
  const std::string hex = File("fw.hex", ":020000040800F2\n:0201000041427A\n:00000001FF\n");
  MemoryRegions memory(4);
  for (const std::string& text : {"0x100=" + raw, "0x200=" + raw + "@4", "0x300=" + raw + "@4:3",
                                  "1:0x10=" + raw + "@9", "0=" + hex, "0x1000=" + hex}) {
    targets::AddRegions(targets::ReadRegionRequest(text), &memory);
  }
  EXPECT_EQ(Read(memory, 0x100, 20), "0123456789");
  EXPECT_EQ(Read(memory, 0x105, 2), "56");
  EXPECT_EQ(Read(memory, 0x200, 20), "456789");
  EXPECT_EQ(Read(memory, 0x300, 20), "456");
  EXPECT_EQ(Read(memory, 0x10, 20, 1), "9");
  EXPECT_EQ(Read(memory, 0x8000100, 20), "AB");
  EXPECT_EQ(Read(memory, 0x8001100, 20), "AB");
  // A file that becomes shorter ends earlier.
  std::filesystem::resize_file(raw, 3);
  EXPECT_EQ(Read(memory, 0x100, 20), "012");
}

TEST_F(RegionFiles, EachErrorIsOneSentence) {
  const std::string raw = File("raw", "0123456789");
  const std::string empty = File("empty", "");
  const std::string hex = File("fw.hex", ":0201000041427A\n:00000001FF\n");
  const std::string srec = File("fw.s19", "S104FFFF55A8\nS9030000FC\n");
  const std::string bad = File("bad.hex", ":0201000041427B\n:00000001FF\n");
  std::filesystem::create_directory(folder_ / "folder");
  const std::string pipe = (folder_ / "pipe").string();
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  const std::string at = folder_.string() + "/";
  EXPECT_EQ(Fails("0=" + at + "missing"), "there is no file 'missing'");
  EXPECT_EQ(Fails("0=" + at + "folder"), "'folder' is a directory, not a file");
  EXPECT_EQ(Fails("0=" + pipe), "'pipe' is not a regular file");
  EXPECT_EQ(Fails("0=/dev/zero"), "'/dev/zero' is not a regular file");
  EXPECT_EQ(Fails("0=" + empty), "the file 'empty' is empty");
  EXPECT_EQ(Fails("0=" + raw + "@10"),
            "the offset 0xa lies behind the end of 'raw', which has 10 bytes");
  EXPECT_EQ(Fails("0=" + raw + "@4:7"), "'raw' has no 7 bytes behind offset 0x4, but 6");
  EXPECT_EQ(Fails("0=" + raw + "@4:0"), "a length of 0 leaves nothing of 'raw'");
  EXPECT_EQ(Fails("0xfffffffa=" + raw),
            "10 bytes at 0xfffffffa from 'raw' go past the end of the address space, 0xffffffff");
  EXPECT_EQ(Fails("0xfffffffffffffffa=" + raw, 8),
            "10 bytes at 0xfffffffffffffffa from 'raw' go past the end of the address space, "
            "0xffffffffffffffff");
  EXPECT_EQ(Fails("0=" + hex + "@0"),
            "'fw.hex' holds Intel HEX: an offset and a length count the bytes of raw files");
  EXPECT_EQ(Fails("0=" + bad),
            "'bad.hex', line 1: the checksum is 0x7b, but the record's bytes make it 0x7a");
  EXPECT_EQ(Fails("0xffffffffffffffff=" + hex, 8),
            "the address 0x100 in 'fw.hex', moved by 0xffffffffffffffff, is past the end of the "
            "address space");
  EXPECT_EQ(Fails("1=" + srec, 2),
            "1 bytes at 0x10000 from 'fw.s19' go past the end of the address space, 0xffff");
}

TEST_F(RegionFiles, HugeFilesAreNoTrouble) {
  const std::string raw = File("raw", "0123456789");
  const std::string hex = File("fw.hex", ":0201000041427A\n:00000001FF\n");
  std::filesystem::resize_file(raw, std::uintmax_t{1} << 40U);
  std::filesystem::resize_file(hex, std::uintmax_t{1} << 40U);
  MemoryRegions memory(8);
  targets::AddRegions(targets::ReadRegionRequest("0x100=" + raw), &memory);
  EXPECT_EQ(Read(memory, 0x100, 10), "0123456789");
  EXPECT_EQ(Read(memory, (std::uint64_t{1} << 40U) + 0xfc, 10), std::string(4, '\0'));
  EXPECT_EQ(Fails("0=" + hex), "'fw.hex' has more than 64 MiB, too much for Intel HEX");
}

}  // namespace
}  // namespace targettests
