#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "tests/support/FakeHost.h"
#include "tests/support/OpenResolver.h"

namespace {

using testsupport::FakeHost;
using testsupport::OpenResolver;

AreaBlock At(std::uint64_t address, const DataLableType& type) {
  AreaBlock block;
  block.Value = address;
  block.Type = type;
  return block;
}

std::vector<std::string> ReadCalls(const std::string& address, int space, int accessSize,
                                   const std::string& flags = "float=0, double=0") {
  const std::string end = " accessSize=" + std::to_string(accessSize);
  const std::string where = std::to_string(space);
  return {"CheckAddress(" + address + ", " + where + ")" + end,
          "ReadMemory(" + address + ", " + address + ", " + where + ", 1, 1, " + flags + ")" + end};
}

TEST(MemoryRead, SizesOfTheAccess) {
  const testsupport::TypeKit t;
  const testsupport::TypeKit narrow(2);
  const testsupport::TypeKit middle(4);
  DataLableType bare;
  bare.IsPointer = true;
  DataLableType bareArray;
  bareArray.IsArray = true;
  struct Case {
    std::string name;
    DataLableType type;
    int space;
    int before;  ///< accessSize during the read
    std::uint32_t after;
    std::uint64_t value;
  };
  // The bytes at 0x1000 are 01 02 03 04 05 06 07 08.
  const std::vector<Case> rows = {
      {"1 byte", t.Pointer(t.Unsigned(1)), 0, 1, 1, 0x01},
      {"2 bytes", t.Pointer(t.Signed(2)), 0, 2, 2, 0x0201},
      {"3 bytes", t.Pointer(t.Signed(3)), 0, 3, 3, 0x030201},
      {"4 bytes", t.Pointer(t.Signed(4)), 0, 4, 4, 0x04030201},
      {"5 bytes", t.Pointer(t.Signed(5)), 0, 5, 5, 0x0504030201},
      {"6 bytes", t.Pointer(t.Signed(6)), 0, 6, 6, 0x060504030201},
      {"7 bytes", t.Pointer(t.Signed(7)), 0, 7, 7, 0x07060504030201},
      {"8 bytes", t.Pointer(t.Signed(8)), 0, 8, 8, 0x0807060504030201},
      {"size 0", t.Pointer(t.Unsigned(0)), 0, 8, 8, 0x0807060504030201},
      {"size 12", t.Pointer(t.Unsigned(12)), 0, 4, 4, 0x04030201},
      {"size 17", t.Pointer(t.Unsigned(17)), 0, 1, 1, 0x01},
      {"size 24", t.Pointer(t.Unsigned(24)), 0, 8, 8, 0x0807060504030201},
      // A pointer below 8 bytes is read with 4.
      {"2-byte pointer", narrow.Pointer(narrow.Pointer(t.Signed(1))), 0, 4, 2, 0x0201},
      {"4-byte pointer", middle.Pointer(middle.Pointer(t.Signed(1))), 0, 4, 4, 0x04030201},
      {"8-byte pointer", t.Pointer(t.Pointer(t.Signed(1))), 0, 8, 8, 0x0807060504030201},
      // The second space is always read with 8.
      {"1 byte in space 1", t.Pointer(t.Unsigned(1)), 1, 8, 1, 0xfa},
      {"4 bytes in space 1", t.Pointer(t.Unsigned(4)), 1, 8, 4, 0xf7f8f9fa},
      {"8 bytes in space 1", t.Pointer(t.Unsigned(8)), 1, 8, 8, 0xf3f4f5f6f7f8f9fa},
      // Without a pointee it is the default type.
      {"no pointer", t.Signed(2), 0, 8, 8, 0x0807060504030201},
      {"bare pointer", bare, 0, 8, 8, 0x0807060504030201},
      {"bare array", bareArray, 0, 8, 8, 0x0807060504030201},
      {"array", t.Array(t.Unsigned(2), 8), 0, 2, 2, 0x0201},
  };
  for (const Case& row : rows) {
    SCOPED_TRACE(row.name);
    FakeHost host;
    host.Poke(0x1000, 0x0807060504030201, 8);
    host.Poke(0x1000, 0xf3f4f5f6f7f8f9fa, 8, 1);
    OpenResolver resolver(&host);
    host.ClearCalls();
    AreaBlock block = At(0x1000, row.type);
    block.MemorySpace = static_cast<std::uint8_t>(row.space);
    block.Type.Size = 8;
    bool spaceFlag = true;
    EXPECT_TRUE(resolver.MoveFromPointerToObject(&block, &spaceFlag));
    EXPECT_EQ(host.calls, ReadCalls("0x1000", row.space, row.before));
    EXPECT_EQ(host.accessSize, row.after);
    EXPECT_EQ(block.Value, row.value);
    EXPECT_EQ(block.AreaText, std::to_string(row.value));
    EXPECT_EQ(block.ValueKind, 0U);
    EXPECT_EQ(block.ReferenceLevel, -2);
    EXPECT_EQ(block.MemorySpace, 0);
    EXPECT_FALSE(spaceFlag);
    EXPECT_TRUE(host.violations.empty());
  }
}

TEST(MemoryRead, AnArrayIsItsAddress) {
  struct Case {
    std::uint32_t size;
    std::uint64_t value;
    std::uint32_t access;
  };
  const std::vector<Case> rows = {
      {16, 0x123456789a, 8}, {8, 0x123456789a, 8}, {4, 0x3456789a, 4},   {12, 0x3456789a, 4},
      {3, 0x56789a, 3},      {1, 0x9a, 1},         {0, 0x123456789a, 8},
  };
  for (const Case& row : rows) {
    SCOPED_TRACE("array of size " + std::to_string(row.size));
    FakeHost host;
    OpenResolver resolver(&host);
    DataLableType array = host.types.Array(host.types.Single(), 1);
    array.Size = row.size;
    AreaBlock block = At(0x123456789a, host.types.Pointer(array));
    block.MemorySpace = 1;
    block.AreaText = "before";
    host.ClearCalls();
    bool spaceFlag = true;
    EXPECT_TRUE(resolver.MoveFromPointerToObject(&block, &spaceFlag));
    EXPECT_TRUE(host.calls.empty());
    EXPECT_TRUE(block.Type.IsArray);
    EXPECT_EQ(block.Value, row.value);
    EXPECT_EQ(block.AreaText, std::to_string(row.value));
    EXPECT_EQ(host.accessSize, row.access);
    EXPECT_EQ(block.MemorySpace, 0);
    EXPECT_FALSE(spaceFlag);
    EXPECT_EQ(block.ReferenceLevel, -2);
  }
}

TEST(MemoryRead, TheAddressIsCutToThePointersSize) {
  struct Case {
    std::uint32_t size;
    std::string address;
  };
  const std::vector<Case> rows = {
      {1, "0x88"},
      {2, "0x7788"},
      {3, "0x667788"},
      {4, "0x55667788"},
      {7, "0x22334455667788"},
      {8, "0x1122334455667788"},
      {0, "0x1122334455667788"},
      {12, "0x1122334455667788"},
  };
  for (const Case& row : rows) {
    FakeHost host;
    OpenResolver resolver(&host);
    AreaBlock block = At(0x1122334455667788, host.types.Pointer(host.types.Signed(2)));
    block.Type.Size = row.size;
    host.ClearCalls();
    bool spaceFlag = false;
    EXPECT_TRUE(resolver.MoveFromPointerToObject(&block, &spaceFlag));
    EXPECT_EQ(host.calls, ReadCalls(row.address, 0, 2)) << "pointer of size " << row.size;
  }
}

TEST(MemoryRead, TextsAreReadAsFarAsTheyAreNumbers) {
  struct Case {
    std::string answer;
    std::uint32_t size;
    std::uint64_t value;
  };
  const std::vector<Case> rows = {
      {"17", 4, 17},
      {"", 4, 0},
      {"abc", 4, 0},
      {"12abc", 4, 12},
      {" 12", 4, 12},
      {"1 2", 4, 1},
      {"\t12\t3", 4, 123},
      {"4\t2", 4, 42},
      {"-1", 4, 0xffffffff},
      {"-1", 8, ~0ULL},
      {"300", 1, 44},
      {"2.5", 4, 2},
      {"0x10", 4, 0},
      {"1,000", 4, 1},
      {"18446744073709551615", 8, ~0ULL},
      {"18446744073709551616", 8, ~0ULL},
      {"99999999999999999999999", 2, 0xffff},
      {"-99999999999999999999999", 8, ~0ULL},
  };
  for (const Case& row : rows) {
    FakeHost host;
    host.Answer(0x1000, row.answer);
    OpenResolver resolver(&host);
    AreaBlock block = At(0x1000, host.types.Pointer(host.types.Unsigned(row.size)));
    bool spaceFlag = false;
    EXPECT_TRUE(resolver.MoveFromPointerToObject(&block, &spaceFlag));
    EXPECT_EQ(block.Value, row.value) << "answer: " << testsupport::Visible(row.answer);
    EXPECT_EQ(block.AreaText, std::to_string(row.value))
        << "answer: " << testsupport::Visible(row.answer);
  }
}

TEST(MemoryRead, FloatingReadsSetBothValuesAndProtectTheirText) {
  struct Case {
    std::string answer;
    bool isDouble;
    double value;
    std::string text;
    std::uint64_t integer;
  };
  const double largest = std::numeric_limits<double>::max();
  const std::vector<Case> rows = {
      {"1.5", true, 1.5, "1,5", 1},
      {"1.5", false, 1.5, "1,5", 1},
      {"-1.5", true, -1.5, "-1,5", ~0ULL},
      {"-1.5", false, -1.5, "-1,5", 0xffffffff},
      {"0.1", true, 0.1, "0,1", 0},
      {"0.1", false, static_cast<double>(0.1F), "0,1", 0},
      {"3.14159265358979", true, 3.14159265358979, "3,14159", 3},
      {"1e+10", true, 1e10, "1e,10", 1},
      {"10000000000", true, 1e10, "1e,10", 10000000000},
      {"1e-05", true, 1e-5, "1@,05", 1},
      {"\t2.25", true, 2.25, "2,25", 2},
      {"\t2.25", false, 2.25, "2,25", 2},
      {"1\t.5", true, 1, "1", 1},
      {"", true, 0, "0", 0},
      {"inf", true, 0, "0", 0},
      {"nan", false, 0, "0", 0},
      {"x", false, 0, "0", 0},
      {"1e400", true, largest, "1,79769e,308", 1},
      {"-1e400", true, -largest, "-1,79769e,308", ~0ULL},
      {"1e400", false, std::numeric_limits<double>::infinity(), "inf", 1},
      {"7", true, 7, "7", 7},
  };
  for (const Case& row : rows) {
    SCOPED_TRACE("answer: " + testsupport::Visible(row.answer) +
                 (row.isDouble ? " (double)" : " (single)"));
    FakeHost host;
    host.Answer(0x1000, row.answer);
    OpenResolver resolver(&host);
    host.ClearCalls();
    AreaBlock block =
        At(0x1000, host.types.Pointer(row.isDouble ? host.types.Double() : host.types.Single()));
    block.FloatValue = 77;
    block.DoubleValue = 77;
    bool spaceFlag = false;
    EXPECT_TRUE(resolver.MoveFromPointerToObject(&block, &spaceFlag));
    EXPECT_EQ(host.calls, ReadCalls("0x1000", 0, row.isDouble ? 8 : 4,
                                    row.isDouble ? "float=0, double=1" : "float=1, double=0"));
    EXPECT_EQ(block.ValueKind, row.isDouble ? 2U : 1U);
    EXPECT_EQ(block.DoubleValue, row.value);
    EXPECT_EQ(block.FloatValue, static_cast<float>(row.value));
    EXPECT_EQ(block.AreaText, row.text);
    EXPECT_EQ(block.Value, row.integer);
    EXPECT_FALSE(block.Type.IsFloat);
    EXPECT_FALSE(block.Type.IsDouble);
  }
}

TEST(MemoryRead, TheDoubleFlagWinsOverTheFloatFlag) {
  FakeHost host;
  host.Answer(0x1000, "0.1");
  OpenResolver resolver(&host);
  DataLableType both = host.types.Double();
  both.IsFloat = true;
  AreaBlock block = At(0x1000, host.types.Pointer(both));
  host.ClearCalls();
  bool spaceFlag = false;
  EXPECT_TRUE(resolver.MoveFromPointerToObject(&block, &spaceFlag));
  EXPECT_EQ(host.calls, ReadCalls("0x1000", 0, 8, "float=1, double=1"));
  EXPECT_EQ(block.ValueKind, 2U);
  EXPECT_EQ(block.DoubleValue, 0.1);
}

TEST(MemoryRead, AnIntegerReadLeavesTheValueKind) {
  FakeHost host;
  host.Poke(0x1000, 9, 4);
  OpenResolver resolver(&host);
  AreaBlock block = At(0x1000, host.types.Pointer(host.types.Signed(4)));
  block.ValueKind = 1;
  block.FloatValue = 2.5F;
  bool spaceFlag = false;
  EXPECT_TRUE(resolver.MoveFromPointerToObject(&block, &spaceFlag));
  EXPECT_EQ(block.ValueKind, 1U);
  EXPECT_EQ(block.Value, 9U);
  EXPECT_EQ(block.AreaText, "2,5");
}

TEST(MemoryRead, ARefusedAddressLeavesTheNewTypeAndNoText) {
  FakeHost host;
  host.MakeUnreadable(0x1000, 0x1000, 1);
  OpenResolver resolver(&host);
  AreaBlock block = At(0x1000, host.types.Pointer(host.types.Single()));
  block.AreaText = "before";
  block.MemorySpace = 1;
  host.ClearCalls();
  bool spaceFlag = true;
  EXPECT_FALSE(resolver.MoveFromPointerToObject(&block, &spaceFlag));
  EXPECT_EQ(resolver.errorMessage, "Invalid address");
  EXPECT_EQ(host.calls, (std::vector<std::string>{"CheckAddress(0x1000, 1) accessSize=8"}));
  EXPECT_TRUE(block.Type.IsFloat);
  EXPECT_EQ(block.Type.Size, 4U);
  EXPECT_EQ(block.AreaText, "");
  EXPECT_EQ(block.Value, 0x1000U);
  EXPECT_EQ(block.ValueKind, 0U);
  EXPECT_EQ(block.MemorySpace, 1);
  EXPECT_EQ(block.ReferenceLevel, -1);
  EXPECT_EQ(host.accessSize, 8U);
  EXPECT_TRUE(spaceFlag);

  AreaBlock plain = At(0x2000, host.types.Pointer(host.types.Signed(2)));
  host.MakeUnreadable(0x2000, 0x2000);
  EXPECT_FALSE(resolver.MoveFromPointerToObject(&plain, &spaceFlag));
  EXPECT_EQ(host.accessSize, 2U);
}

TEST(MemoryRead, TheSecondSpaceIsLeftByTheFirstRead) {
  FakeHost host;
  host.Poke(0x1000, 0x2000, 8, 1);
  host.Poke(0x2000, 5, 4, 0);
  host.Poke(0x2000, 6, 4, 1);
  OpenResolver resolver(&host);
  AreaBlock block = At(0x1000, host.types.Pointer(host.types.Pointer(host.types.Signed(4))));
  block.MemorySpace = 1;
  bool spaceFlag = true;
  EXPECT_TRUE(resolver.MoveFromPointerToObject(&block, &spaceFlag));
  EXPECT_TRUE(resolver.MoveFromPointerToObject(&block, &spaceFlag));
  EXPECT_EQ(block.Value, 5U);
}

}  // namespace
