#include <gtest/gtest.h>

#include <bit>
#include <functional>
#include <string>
#include <vector>

#include "tests/support/FakeHost.h"
#include "tests/support/Outcome.h"
#include "tests/support/Program.h"

namespace {

using testsupport::FakeHost;
using testsupport::LoadProgram;
using testsupport::OpenResolver;
using testsupport::Resolve;
using testsupport::ResolveWithAddress;
using testsupport::Row;
using testsupport::Visible;

void CheckRows(const std::vector<Row>& rows) {
  FakeHost host;
  LoadProgram(host);
  for (const Row& row : rows) {
    EXPECT_EQ(Resolve(host, row.expression), row.outcome) << "expression: " << row.expression;
  }
  EXPECT_TRUE(host.violations.empty());
}

TEST(Unary, SignAndBitOperators) {
  CheckRows({
      {"+5", "5/8"},
      {"-5", "18446744073709551611/8"},
      {"~5", "18446744073709551610/8"},
      {"!5", "0/8"},
      {"!0", "1/8"},
      {"-0", "0/8"},
      {"-i", "5/4"},
      {"-u", "4294967289/4"},
      {"-c", "1/1"},
      {"-uc", "56/1"},
      {"~i", "4/4"},
      {"~u", "4294967288/4"},
      {"~c", "0/1"},
      {"~uc", "55/1"},
      {"~sh", "1/2"},
      {"!i", "0/4"},
      {"!zero", "1/8"},
      {"+i", "-5/4"},
      {"-ll", "9/8"},
      {"-ull", "81985529216486896/8"},
      // The operator nearest to the operand comes first.
      {"-~5", "6/8"},
      {"~-5", "4/8"},
      {"!~5", "0/8"},
      {"~!5", "18446744073709551615/8"},
      {"-~i", "-4/4"},
      {"!!7", "1/8"},
      {"- - 5", "5/8"},
      {"+-+5", "18446744073709551611/8"},
      {"-(2+3)", "18446744073709551611/8"},
      {"-(i)", "5/4"},
      {"-(i+0)", "5/8"},
      {"!(1==1)", "0/8"},
      // Floating.
      {"+1.5", "1.5f/8"},
      {"-1.5", "-1.5f/8"},
      {"--1.5", "1.5f/8"},
      {"-f", "-1.5f/4"},
      {"-d", "-2.25f/8"},
      {"-0.0", "-0f/8"},
      {"~1.5", "error: Invalid type for ~ operation"},
      {"!1.5", "error: Invalid type for ! operation"},
      {"~f", "error: Invalid type for ~ operation"},
      {"!d", "error: Invalid type for ! operation"},
      // What cannot be read.
      {"-bad", "error: Invalid address"},
      {"~bad", "error: Invalid address"},
      {"!bad", "error: Invalid address"},
      {"+bad", "error: Error occurred"},
      {"(int)bad", "error: Invalid address"},
      {"&bad", "36864/8"},
      {"sizeof bad", "4/8"},
  });
}

TEST(Unary, AddressOfAndDereference) {
  CheckRows({
      {"&i", "4128/8"},
      {"&s", "12288/8"},
      {"&s.b", "12292/8"},
      {"&arr", "8192/8"},
      {"&arr[2]", "8200/8"},
      {"&p", "4176/8"},
      {"&*p", "8192/8"},
      {"*&i", "-5/4"},
      {"**&p", "10/4"},
      {"*p", "10/4"},
      {"**pp", "10/4"},
      {"*pp", "8192/8"},
      {"*pc", "72/1"},
      {"*arr", "10/4"},
      {"*chars", "72/1"},
      {"*(p+2)", "30/4"},
      {"*p+2", "12/8"},
      {"-*p", "-10/4"},
      {"~*p", "-11/4"},
      {"!*p", "0/4"},
      {"&5", "error: The pointer doesn`t exist"},
      {"&plain", "error: The pointer doesn`t exist"},
      {"&&i", "error: The pointer doesn`t exist"},
      {"&-i", "error: The pointer doesn`t exist"},
      {"&1.5", "error: The pointer doesn`t exist"},
      {"&(i+1)", "error: The pointer doesn`t exist"},
      {"*5", "error: Can`t do the dereference operation with this type"},
      {"*plain", "error: Can`t do the dereference operation with this type"},
      {"*i", "error: Can`t do the dereference operation with this type"},
      {"**p", "error: Can`t do the dereference operation with this type"},
      {"***pp", "error: Can`t do the dereference operation with this type"},
      {"*s", "error: Can`t do the dereference operation with this type"},
      {"*1.5", "error: Can`t do the dereference operation with this type"},
      {"*ptrs", "error: Can`t do the dereference operation with this type"},
      {"*-p", "0/4"},
      {"*(int*)0x2004", "20/4"},
      {"*(char*)0x2100", "72/1"},
      {"**(int**)0x1050", "10/4"},
      {"*(int*)0x9000", "error: Error occurred"},
      {"**(int**)0x9000", "error: Invalid address"},
      {"*(int*)bad", "error: Invalid address"},
      {"-*(int*)0x9000", "error: Invalid address"},
  });
}

TEST(Unary, AnAddressIsSetWhereItWasReadFrom) {
  FakeHost host;
  LoadProgram(host);
  EXPECT_EQ(ResolveWithAddress(host, "*p"), "10/4 at 0x2000");
  EXPECT_EQ(ResolveWithAddress(host, "**pp"), "10/4 at 0x2000");
  EXPECT_EQ(ResolveWithAddress(host, "-i"), "5/4 at 0x5");
}

TEST(Cast, IntegersKeepTheirBitsAndTakeTheTypesSize) {
  CheckRows({
      {"(int)5", "5/4"},
      {"(char)300", "44/1"},
      {"(char)200", "-56/1"},
      {"(unsigned char)200", "200/1"},
      {"(unsigned char)-1", "255/1"},
      {"-(char)1", "-1/1"},
      {"(short)i", "-5/2"},
      {"(int)u", "7/4"},
      {"(unsigned int)i", "4294967291/4"},
      {"(unsigned char)ull", "16/1"},
      {"(int)(char)200", "200/4"},
      {"(char)(int)200", "-56/1"},
      // The sign is extended by the difference of the sizes, so it arrives only in 8 bytes.
      {"(int)c", "255/4"},
      {"(short)c", "255/2"},
      {"(long long)c", "-1/8"},
      {"(long long)i", "-5/8"},
      {"(unsigned long long)i", "18446744073709551611/8"},
      {"(long long)uc", "200/8"},
      {"(int)sh", "65534/4"},
      {"(long long)(int)c", "255/8"},
      {"(int)p", "8192/4"},
      {"(int*)i", "18446744073709551611/8"},
      {"(int)&i", "4128/4"},
      {"(struct S*)0x3000", "12288/8"},
      {"(*(struct S*)0x3000).b", "101/4"},
      // "->" reads at the pointer's value, as if that were where the pointer lies.
      {"((struct S*)0x3000)->b", "0/4"},
      {"((struct S*)0x1068)->b", "101/4"},
      {"(int)nolabel", "error: Undefined label nolabel"},
      {"(int)(5", "error: Can`t find the end quote."},
      {"(int)", "error: Missing an address in the string"},
      {"(int)+", "error: Missing an address in the string"},
      {"(nothing)5", "error: Undefined label nothing"},
      {"-(int)5", "-5/4"},
      {"~(char)5", "-6/1"},
      {"(int)-5", "-5/4"},
      {"(int)5+(char)1", "6/4"},
  });
}

TEST(Cast, FloatingOperandsAreTruncatedIntegersAreReinterpreted) {
  CheckRows({
      {"(int)1.7", "1/4"},
      {"(int)-1.7", "-1/4"},
      {"(int)f", "1/4"},
      {"(int)d", "2/4"},
      {"(long long)-2.5", "-2/8"},
      {"(unsigned char)300.5", "44/1"},
      {"(unsigned long long)1.0e30", "18446744073709551615/8"},
      {"(unsigned long long)-1.0e30", "9223372036854775808/8"},
      {"(long long)-1.0e30", "-9223372036854775808/8"},
      {"(unsigned long long)(1.0e400-1.0e400)", "error: Undefined label nan"},
      {"(unsigned long long)1.0e400", "18446744073709551615/8"},
      {"(unsigned long long)-1.0e400", "9223372036854775808/8"},
      {"(float)1065353216==1.0", "1f/8"},
      {"(float)1069547520*2.0==3.0", "1f/8"},
      {"(float)0x13fc00000==1.5", "1f/8"},
      {"(double)4612248968380809216==2.25", "1f/8"},
      {"(double)f==2.25", "0f/8"},
      {"(float)1.5==1.5", "1f/8"},
      {"(float)d==2.25", "1f/8"},
      // A floating value on its way to double is an integer first, then a bit pattern.
      {"(int)(double)f", "0/4"},
      {"(int)(double)4612248968380809216", "2/4"},
      {"(int)(float)1084227584", "5/4"},
  });
}

/// A block as the operand row leaves one: a plain 8-byte value of the default type.
AreaBlock Plain(std::uint64_t value) {
  AreaBlock block;
  block.Value = value;
  block.AreaText = std::to_string(value);
  block.HasCastType = true;
  return block;
}

TEST(UnaryRow, MessagesThatNeedABlockOfOnesOwn) {
  struct Case {
    std::string before;
    std::string after;
    std::int32_t level;
    bool address;
    std::string message;
  };
  const std::vector<Case> rows = {
      {"x", "", -1, false, "Unknown operation: x"},
      {"-x", "", -1, false, "Unknown operation: -x"},
      {"-x+", "", -1, false, "Unknown operation: -x"},
      {"", "+", -1, false, "Invalid operation +"},
      {"-", "abc", -1, false, "Invalid operation abc"},
      {"\x18", "", -1, false, "Internal error is occurred during the type conversion"},
      {"-\x19\x18", "", -1, false, "Internal error is occurred during the type conversion"},
      {"\x18\x19\x18", "", -1, false, "Reference to unexisting type"},
      {"\x18\x19\x19\x19\x19\x18", "", -1, false, "Reference to unexisting type"},
      {"\x18\x18", "", -2, false, "The pointer doesn`t exist"},
      {"\x18\x18", "", -3, true, "The pointer doesn`t exist"},
      {"&", "", -1, false, "The pointer doesn`t exist"},
      {"&", "", -2, true, "The pointer doesn`t exist"},
      {"", "[", -1, false, "Can`t find ending quote ']'"},
      {"", "[]", -1, false, "Quotes are empty"},
  };
  for (const Case& row : rows) {
    SCOPED_TRACE("before: " + Visible(row.before) + " after: " + row.after);
    FakeHost host;
    OpenResolver resolver(&host);
    resolver.savedTypes = {host.types.Signed(4)};
    AreaBlock block = Plain(5);
    block.BeforeText = row.before;
    block.AfterText = row.after;
    block.ReferenceLevel = row.level;
    block.Type.IsAddress = row.address;
    EXPECT_FALSE(resolver.SecondRaw(&block));
    EXPECT_EQ(resolver.errorMessage, row.message);
  }
}

TEST(UnaryRow, APlainBlockStaysAsItIsHoweverOften) {
  FakeHost host;
  OpenResolver resolver(&host);
  AreaBlock block = Plain(5);
  for (int call = 0; call < 2; ++call) {
    EXPECT_TRUE(resolver.SecondRaw(&block));
    EXPECT_EQ(block.AreaText, "5");
    EXPECT_EQ(block.Value, 5U);
    EXPECT_EQ(block.ReferenceLevel, -1);
  }
}

TEST(UnaryRow, CastMarksSelectTheSavedType) {
  FakeHost host;
  OpenResolver resolver(&host);
  for (const std::uint32_t size : {1U, 2U, 3U}) {
    resolver.savedTypes.push_back(host.types.Unsigned(size));
  }
  for (std::uint32_t n = 0; n < 3; ++n) {
    AreaBlock block = Plain(5);
    block.BeforeText = "-\x18" + std::string(n, '\x19') + "\x18";
    EXPECT_TRUE(resolver.SecondRaw(&block));
    EXPECT_EQ(block.Type.Size, n + 1);
    EXPECT_EQ(block.CastType.Size, n + 1);
    EXPECT_EQ(block.Value, (1ULL << (8 * (n + 1))) - 5);
  }
}

TEST(UnaryRow, SizeofLeavesAPlainValueOfTheDefaultType) {
  FakeHost host;
  OpenResolver resolver(&host);
  AreaBlock block = Plain(5);
  block.BeforeText = "\x08";
  block.Type = host.types.Signed(2);
  block.MemorySpace = 1;
  block.IsMemberName = true;
  block.ReferenceLevel = 3;
  block.ValueKind = 2;
  EXPECT_TRUE(resolver.SecondRaw(&block));
  EXPECT_EQ(block.Value, 2U);
  EXPECT_EQ(block.AreaText, "2");
  EXPECT_EQ(block.MemorySpace, 0);
  EXPECT_FALSE(block.IsMemberName);
  EXPECT_EQ(block.ReferenceLevel, -1);
  EXPECT_EQ(block.ValueKind, 0U);
  EXPECT_FALSE(block.HasCastType);
  EXPECT_TRUE(block.Type == resolver.defaultType);

  // An address without a pointee stands for the default type.
  AreaBlock bare = Plain(5);
  bare.BeforeText = "\x08";
  bare.Type.Size = 2;
  bare.Type.IsAddress = true;
  EXPECT_TRUE(resolver.SecondRaw(&bare));
  EXPECT_EQ(bare.Value, 8U);
}

TEST(UnaryRow, PendingReadsAreMadeBySettling) {
  FakeHost host;
  LoadProgram(host);
  OpenResolver resolver(&host);
  AreaBlock block = Plain(0x1058);
  block.BeforeText = "*";
  block.Type = host.types.Pointer(host.types.Pointer(host.types.Pointer(host.types.Signed(4))));
  block.ReferenceLevel = 1;
  host.ClearCalls();
  EXPECT_TRUE(resolver.SecondRaw(&block));
  // Two reads were owed: 0x1058 -> 0x1050 -> 0x2000; the mark set by "*" outlives them.
  EXPECT_EQ(host.callCount, 4U);
  EXPECT_EQ(block.Value, 0x2000U);
  EXPECT_TRUE(block.Type.IsAddress);
  EXPECT_EQ(block.ReferenceLevel, -1);
}

TEST(UnaryRow, ADereferenceOfAReadPointerReadsNothing) {
  FakeHost host;
  LoadProgram(host);
  OpenResolver resolver(&host);
  AreaBlock block = Plain(0x2000);
  block.BeforeText = "*";
  block.Type = host.types.Pointer(host.types.Signed(4));
  host.ClearCalls();
  EXPECT_TRUE(resolver.SecondRaw(&block));
  EXPECT_TRUE(block.Type.IsAddress);
  EXPECT_EQ(block.Value, 0x2000U);
  EXPECT_TRUE(host.calls.empty());
}

TEST(UnaryRow, BothFloatingValuesAreNegated) {
  FakeHost host;
  OpenResolver resolver(&host);
  for (const std::uint32_t kind : {1U, 2U}) {
    AreaBlock block = Plain(1);
    block.BeforeText = "-";
    block.ValueKind = kind;
    block.FloatValue = 1.5F;
    block.DoubleValue = 2.5;
    EXPECT_TRUE(resolver.SecondRaw(&block));
    EXPECT_EQ(block.FloatValue, -1.5F);
    EXPECT_EQ(block.DoubleValue, -2.5);
    EXPECT_EQ(block.Value, ~0ULL);
    EXPECT_EQ(block.AreaText, kind == 1 ? "-1.5" : "-2.5");
  }
}

TEST(UnaryRow, CastsSetTheOtherFloatingValueToo) {
  FakeHost host;
  OpenResolver resolver(&host);
  resolver.savedTypes = {host.types.Signed(4), host.types.Single(), host.types.Double()};

  AreaBlock narrow = Plain(0);
  narrow.BeforeText = "\x18\x18";
  narrow.ValueKind = 2;
  narrow.DoubleValue = -2.75;
  EXPECT_TRUE(resolver.SecondRaw(&narrow));
  EXPECT_EQ(narrow.Value, ~0ULL - 1);
  EXPECT_EQ(narrow.FloatValue, -2.75F);
  EXPECT_EQ(narrow.ValueKind, 0U);

  AreaBlock widened = Plain(0);
  widened.BeforeText = "\x18\x18";
  widened.ValueKind = 1;
  widened.FloatValue = 2.75F;
  widened.DoubleValue = 77;
  EXPECT_TRUE(resolver.SecondRaw(&widened));
  EXPECT_EQ(widened.Value, 2U);
  EXPECT_EQ(widened.DoubleValue, 2.75);

  AreaBlock single = Plain(0xffffffff3fc00000);
  single.BeforeText = "\x18\x19\x18";
  EXPECT_TRUE(resolver.SecondRaw(&single));
  EXPECT_EQ(single.FloatValue, 1.5F);
  EXPECT_EQ(single.DoubleValue, 1.5);
  EXPECT_EQ(single.ValueKind, 1U);
  EXPECT_EQ(single.AreaText, "1.5");

  AreaBlock twice = Plain(std::bit_cast<std::uint64_t>(0.1));
  twice.BeforeText = "\x18\x19\x19\x18";
  EXPECT_TRUE(resolver.SecondRaw(&twice));
  EXPECT_EQ(twice.DoubleValue, 0.1);
  EXPECT_EQ(twice.FloatValue, 0.1F);
  EXPECT_EQ(twice.ValueKind, 2U);
  EXPECT_EQ(twice.AreaText, "0.1");
}

TEST(UnaryRow, SignExtensionMovesBitsByTheDifferenceOfTheSizes) {
  struct Case {
    std::uint32_t from;
    std::uint32_t to;
    std::uint64_t value;
    std::uint64_t expected;
  };
  const std::vector<Case> rows = {
      {1, 8, 0xff, ~0ULL},
      {1, 8, 0x7f, 0x7f},
      {1, 4, 0xff, 0xff},
      {2, 4, 0x8000, 0x8000},
      {4, 8, 0x80000000, 0xffffffff80000000},
      {4, 8, 0x7fffffff, 0x7fffffff},
      {7, 8, 0x80000000000000, 0xff80000000000000},
      // Bits above the operand's size are moved out and lost.
      {4, 8, 0x100000005, 5},
      {1, 4, 0x8000000000000005, 5},
      {8, 4, ~0ULL, ~0ULL},
      {4, 4, 0xffffffff, 0xffffffff},
      // 64 bits or more: the count is taken modulo 64.
      {0, 8, 0xff, 0xff},
      {1, 10, 0xff, 0xff},
  };
  for (const Case& row : rows) {
    FakeHost host;
    OpenResolver resolver(&host);
    resolver.savedTypes = {host.types.Unsigned(row.to)};
    AreaBlock block = Plain(row.value);
    block.Type = host.types.Signed(row.from);
    block.BeforeText = "\x18\x18";
    EXPECT_TRUE(resolver.SecondRaw(&block));
    EXPECT_EQ(block.Value, row.expected) << row.from << " to " << row.to << " of " << row.value;
    EXPECT_EQ(block.AreaText, std::to_string(row.expected));
  }
}

TEST(UnaryRow, AnOperandThatWasReadIsNoAddressWhateverItsRecordSays) {
  for (const char* prefix : {"-", "~", "!"}) {
    FakeHost host;
    host.Poke(0x1000, 5, 4);
    OpenResolver resolver(&host);
    DataLableType marked = host.types.Signed(4);
    marked.IsAddress = true;
    AreaBlock block = Plain(0x1000);
    block.Type = host.types.Pointer(marked);
    block.Type.IsAddress = true;
    block.BeforeText = prefix;
    EXPECT_TRUE(resolver.SecondRaw(&block));
    EXPECT_FALSE(block.Type.IsAddress) << "operator: " << prefix;
    EXPECT_EQ(block.ReferenceLevel, -1) << "operator: " << prefix;
  }
}

}  // namespace
