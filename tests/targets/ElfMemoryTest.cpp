#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <limits>

#include "tests/targets/ProgramUnderTest.h"

namespace targettests {
namespace {

using targets::ElfProgram;

std::string Read(ElfProgram& program, std::uint64_t address, std::size_t size,
                 std::uint8_t space = 0) {
  std::vector<std::byte> bytes(size, std::byte{0xEE});
  const std::size_t got = program.Memory().Read(address, space, bytes).size;
  return std::string(reinterpret_cast<const char*>(bytes.data()), got);
}

TEST(ElfMemory, HoldsTheInitialContents) {
  ElfProgram program(FixturePath("values-x64-dwarf5"));
  const std::uint64_t address = program.FindLabel("c")->value;
  EXPECT_EQ(Read(program, address, 5), "hello");
  EXPECT_EQ(Read(program, address + 1, 3), "ell");
  EXPECT_EQ(Read(program, address + 4, 4), std::string("o\0\0\0", 4));
  EXPECT_EQ(Read(program, address, 0), "");
}

TEST(ElfMemory, IsZeroBehindTheFilesPartOfASegment) {
  ElfProgram program(FixturePath("values-x64-dwarf5"));
  EXPECT_EQ(Read(program, program.FindLabel("opaque")->value, 8), std::string(8, '\0'));
  // The last two bytes of the program, and what lies behind them.
  EXPECT_EQ(Read(program, program.FindLabel("_end")->value - 2, 8).size(), 2U);
  EXPECT_EQ(Read(program, program.FindLabel("_end")->value, 8), "");
}

TEST(ElfMemory, HasNothingElsewhere) {
  for (const char* fixture : {"values-x64-dwarf5", "values-x64-pie", "values-m32-pie"}) {
    ElfProgram program(FixturePath(fixture));
    for (const std::uint64_t address :
         {std::uint64_t{0}, std::uint64_t{8}, std::uint64_t{1} << 40, ~std::uint64_t{0},
          ~std::uint64_t{0} - 3, std::uint64_t{1} << 63}) {
      EXPECT_EQ(Read(program, address, 8), "") << address << " of " << fixture;
    }
    EXPECT_EQ(Read(program, program.FindLabel("c")->value, 5, 1), "") << fixture;
  }
}

TEST(ElfMemory, RelocatesWhatTheLoaderWouldFillIn) {
  // Bytes of one relocated pointer, also when a read takes only some of them.
  for (const char* fixture :
       {"values-x64-pie", "values-x64-static-pie", "values-m32-pie", "values-powerpc-pie",
        "values-powerpc64-pie", "values-mips-pie", "values-aarch64-pie", "values-arm-pie"}) {
    if (!HasFixture(fixture)) continue;
    ElfProgram program(FixturePath(fixture));
    const std::uint64_t pointer = program.FindLabel("p")->value;
    const std::uint64_t target = program.FindLabel("a")->value + 4;
    const std::uint32_t size = program.PointerSize();
    std::string expected;
    for (std::uint32_t i = 0; i < size; ++i) {
      const std::uint32_t shift = program.Order() == targets::ByteOrder::kBig ? size - 1 - i : i;
      expected += static_cast<char>(target >> (8 * shift));
    }
    for (std::uint32_t from = 0; from < size; ++from) {
      for (std::uint32_t to = from; to <= size; ++to) {
        EXPECT_EQ(Read(program, pointer + from, to - from), expected.substr(from, to - from))
            << fixture << " bytes " << from << " to " << to;
      }
    }
    EXPECT_EQ(Read(program, pointer - 3, size + 3).substr(3), expected) << fixture;
  }
}

}  // namespace
}  // namespace targettests
