#include <gtest/gtest.h>

#include <limits>
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

TEST(Driver, ResolvesWholeExpressions) {
  const std::vector<Row> rows = {
      {"5", "5/8 at 0x5"},
      {" 5 ", "5/8 at 0x5"},
      {"1 + 2", "3/8 at 0x3"},
      {"(1+2)*3", "9/8 at 0x9"},
      {"((1))", "1/8 at 0x1"},
      {"plain", "5/8 at 0x5"},
      {"c", "-1/1 at 0x1000"},
      {"uc", "200/1 at 0x1008"},
      {"sh", "-2/2 at 0x1010"},
      {"us", "65535/2 at 0x1018"},
      {"i", "-5/4 at 0x1020"},
      {"u", "7/4 at 0x1028"},
      {"ll", "-9/8 at 0x1030"},
      {"ull", "18364758544493064720/8 at 0x1038"},
      {"f", "1.5f/4 at 0x1040"},
      {"d", "2.25f/8 at 0x1048"},
      {"(i)", "-5/4 at 0x1020"},
      {"((i))", "-5/4 at 0x1020"},
      {"p", "8192/8 at 0x1050"},
      {"*p", "10/4 at 0x2000"},
      {"arr", "10/4 at 0x2000"},
      {"arr[3]", "40/4 at 0x200c"},
      {"m", "0/4 at 0x2200"},
      {"m[1]", "10/4 at 0x2210"},
      {"m[1][2]", "12/4 at 0x2218"},
      {"chars[4]", "111/1 at 0x2104"},
      {"s.b", "101/4 at 0x3004"},
      {"ps->b", "101/4 at 0x3004"},
      {"ss[1].b", "201/4 at 0x321c"},
      {"&i", "4128/8 at 0x1020"},
      {"#0x100", "777/4 # at 0x100"},
      {"i+0", "18446744073709551611/8 at 0xfffffffb"},
      {"1.5", "1.5f/8 at 0x1"},
      {"10000000000.0", "1e+10f/8 at 0x1"},
      {"-1.5", "-1.5f/8 at 0xffffffff"},
  };
  FakeHost host;
  LoadProgram(host);
  for (const Row& row : rows) {
    EXPECT_EQ(ResolveWithAddress(host, row.expression), row.outcome)
        << "expression: " << row.expression;
  }
  EXPECT_TRUE(host.violations.empty());
}

TEST(Driver, TheAddressKeepsThirtyTwoBitsTheValueAll) {
  FakeHost host;
  host.AddLabel("far", 0x1234567890, host.types.Signed(4));
  host.Poke(0x1234567890, 17, 4);
  EXPECT_EQ(ResolveWithAddress(host, "0x1234567890"), "78187493520/8 at 0x34567890");
  EXPECT_EQ(ResolveWithAddress(host, "far"), "17/4 at 0x34567890");
  EXPECT_EQ(ResolveWithAddress(host, "-1"), "18446744073709551615/8 at 0xffffffff");
}

TEST(Driver, TextsThatDenoteNothing) {
  FakeHost host;
  LoadProgram(host);
  for (const char* expression : {"", " ", "()", "(())", " ( ) ", "()()"}) {
    TStringResolver resolver(&host);
    EXPECT_EQ(Resolve(resolver, expression), "error: ") << "expression: " << expression;
    Resolve(resolver, "nolabel");
    EXPECT_EQ(Resolve(resolver, expression), "error: Undefined label nolabel")
        << "expression: " << expression;
  }
}

TEST(Driver, ParenthesesWithoutAPartner) {
  const std::string message = "error: Can`t find the end quote.";
  const std::vector<Row> rows = {
      {"(", message},
      {"(1", message},
      {"((1)", message},
      {"1)(", message},
      {"arr[1", message},
      {"f(1", message},
      {"sizeof(i", message},
      {"(int", message},
      {")(1)", "error: Internal error. Wrong relations between arguments"},
      {"(1))", "error: Internal error. Wrong relations between arguments"},
  };
  FakeHost host;
  LoadProgram(host);
  for (const Row& row : rows) {
    EXPECT_EQ(Resolve(host, row.expression), row.outcome) << "expression: " << row.expression;
  }
}

TEST(Driver, SizeAndSignOfAnIntegerResult) {
  struct Case {
    std::string value;
    std::uint32_t size;
    bool isSigned;
    std::string outcome;
  };
  const std::vector<Case> rows = {
      {"65535", 2, true, "-1/2"},
      {"65535", 2, false, "65535/2"},
      {"65537", 2, false, "1/2"},
      {"65537", 2, true, "1/2"},
      {"32768", 2, true, "-32768/2"},
      {"32767", 2, true, "32767/2"},
      {"255", 1, true, "-1/1"},
      {"128", 1, true, "-128/1"},
      {"256", 1, true, "0/1"},
      {"0x800000", 3, true, "-8388608/3"},
      {"0xffffffff", 4, true, "-1/4"},
      {"0xffffffff", 5, true, "4294967295/5"},
      {"0xffffffffff", 5, true, "-1/5"},
      {"0x800000000000", 6, true, "-140737488355328/6"},
      {"0x80000000000000", 7, true, "-36028797018963968/7"},
      {"0xffffffffffffffff", 8, true, "-1/8"},
      {"0x8000000000000000", 8, true, "-9223372036854775808/8"},
      {"0xffffffffffffffff", 8, false, "18446744073709551615/8"},
      // Above 8 bytes the mask is whole and the sign bit is taken modulo 64.
      {"0xffffffffffffffff", 12, false, "18446744073709551615/12"},
      {"0xffffffffffffffff", 12, true, "-1/12"},
      {"0x80000000", 12, true, "-18446744071562067968/12"},
      {"0x40000000", 12, true, "1073741824/12"},
      {"0xffffffffffffffff", 16, true, "-1/16"},
      {"5", 0, false, "error: Error occurred"},
      {"5", 0, true, "error: Error occurred"},
  };
  for (const Case& row : rows) {
    FakeHost host;
    DataLableType type = host.types.Unsigned(row.size);
    type.IsSigned = row.isSigned;
    host.AddType("T", type);
    EXPECT_EQ(Resolve(host, "(T)" + row.value), row.outcome)
        << "expression: (T)" << row.value << " of size " << row.size << " signed " << row.isSigned;
  }
}

TEST(Driver, AResultWithoutAKnownTypeHasEightBytes) {
  FakeHost host;
  LoadProgram(host);
  EXPECT_EQ(Resolve(host, "sizeof i"), "4/8");
  EXPECT_EQ(Resolve(host, "(char)sizeof i"), "4/8");
}

TEST(Driver, AResultOfSizeZeroFailsAfterItsAddressIsSet) {
  FakeHost host;
  LoadProgram(host);
  host.AddType("void", host.types.Unsigned(0));
  DataLableType emptyFloat = host.types.Single();
  emptyFloat.Size = 0;
  host.AddType("nofloat", emptyFloat);
  host.AddLabel("hole", 0x1234, host.types.Unsigned(0));
  for (const char* expression : {"(void)0x1234", "hole", "(nofloat)0x1234"}) {
    TStringResolver resolver(&host);
    ASSERT_EQ(Resolve(resolver, "#0x100"), "777/4 #");
    EXPECT_EQ(Resolve(resolver, expression), "error: Error occurred") << expression;
    const bool floating = expression[1] == 'n';
    EXPECT_EQ(resolver.resultAddress, floating ? 6U : 0x1234U) << expression;
    EXPECT_FALSE(resolver.resultMemorySpace) << expression;
    EXPECT_EQ(resolver.resultSize, 4U) << expression;
    EXPECT_EQ(resolver.resultValue, 777U) << expression;
    EXPECT_FALSE(resolver.resultFloating) << expression;
  }
}

TEST(Driver, AFailingFinalReadLeavesTheAddress) {
  FakeHost host;
  LoadProgram(host);
  TStringResolver resolver(&host);
  ASSERT_EQ(Resolve(resolver, "1.5"), "1.5f/8");
  EXPECT_EQ(Resolve(resolver, "bad"), "error: Error occurred");
  EXPECT_EQ(resolver.resultAddress, 0x9000U);
  EXPECT_EQ(resolver.resultFloat, 1.5F);
  EXPECT_EQ(resolver.resultValue, 1U);
  EXPECT_TRUE(resolver.resultFloating);

  host.MakeUnreadable(0x150, 0x150, 1);
  EXPECT_EQ(Resolve(resolver, "#0x150"), "error: Error occurred");
  EXPECT_EQ(resolver.resultAddress, 0x150U);
  EXPECT_TRUE(resolver.resultMemorySpace);
}

TEST(Driver, AFailingReadOfAnArraysElementIsAnErrorToo) {
  FakeHost host;
  host.AddLabel("gone", 0x9000, host.types.Array(host.types.Signed(4), 4));
  host.MakeUnreadable(0x9000, 0x9fff);
  EXPECT_EQ(ResolveWithAddress(host, "gone"), "error: Error occurred at 0x9000");
  EXPECT_EQ(ResolveWithAddress(host, "gone[2]"), "error: Error occurred at 0x9008");
}

TEST(Driver, FloatingResults) {
  const std::vector<Row> rows = {
      {"0.5", "0.5f/8"},
      {"1.0/3", "0.333333f/8"},
      {"f+d", "3.75f/8"},
      {"f*2", "3f/8"},
      {"-f", "-1.5f/4"},
      {"1e+5", "1e+05f/8"},
      {"2.5e-3", "0.0025f/8"},
      {"0x1e+5", "0f/8"},
      {"1.0e400", "0f/8"},
      {"1.0e400-1.0e400", "0f/8"},
      {"(1.5+1.5)", "3/8"},
      {"(1.5*2)/2", "1/8"},
      {"(1.5+1)/2", "1.25f/8"},
      {"1.5<2.5", "1f/8"},
      // A cast to a floating type leaves the type's flag, and the text is then read as bits.
      {"(float)1069547520", "1e-45f/4"},
      {"(float)1084227584", "7e-45f/4"},
      {"(float)1.5", "1e-45f/4"},
      {"(double)4612248968380809216", "0f/8"},
      {"(float)0", "0f/4"},
  };
  FakeHost host;
  LoadProgram(host);
  for (const Row& row : rows) {
    EXPECT_EQ(Resolve(host, row.expression), row.outcome) << "expression: " << row.expression;
  }
}

TEST(Driver, TheIntegerViewOfAFloatingResult) {
  struct Case {
    std::string expression;
    std::uint64_t value;
  };
  const std::uint64_t top = 1ULL << 63U;
  const std::vector<Case> rows = {
      {"1.75", 1},
      {"0.99", 0},
      {"-0.99", 0},
      {"-1.5", ~0ULL},
      {"-7.0", ~0ULL - 6},
      {"4294967296.0", 4294969856},
      {"9223372036854775808.0", 9223369837831520256U},
      {"9.3e18*1", 9300000300729368576U},
      {"18446744073709551616.0", 18446700093244440576U},
      {"2.0e19", ~0ULL},
      {"1.0e30", ~0ULL},
      {"-9.3e18", top},
      {"-1.0e30", top},
  };
  FakeHost host;
  for (const Case& row : rows) {
    TStringResolver resolver(&host);
    ASSERT_TRUE(resolver.SolveStringOfElements(row.expression)) << row.expression;
    EXPECT_TRUE(resolver.resultFloating) << row.expression;
    EXPECT_FALSE(resolver.resultNegative) << row.expression;
    EXPECT_EQ(resolver.resultValue, row.value) << "expression: " << row.expression;
  }
}

TEST(Driver, PointerSizes) {
  for (const std::uint32_t pointerSize : {2U, 4U, 8U}) {
    FakeHost host("main.c", pointerSize);
    LoadProgram(host);
    const std::string size = "/" + std::to_string(pointerSize);
    const std::vector<Row> rows = {
        {"i", "-5/4"},
        {"&i", "4128" + size},
        {"p", "8192" + size},
        {"*p", "10/4"},
        {"**pp", "10/4"},
        {"*(p+1)", "20/4"},
        {"p+1", "8196" + size},
        {"arr[3]", "40/4"},
        {"m[1][2]", "12/4"},
        {"*ptrs[1]", "error: Can`t do the dereference operation with this type"},
        {"s.b", "101/4"},
        {"ps->b", "101/4"},
        {"head->v", "1/4"},
        {"head->next->v", "2/4"},
        {"(int)p", "8192/4"},
        {"(char*)p", "8192" + size},
        {"*(char*)p", "10/1"},
    };
    for (const Row& row : rows) {
      EXPECT_EQ(Resolve(host, row.expression), row.outcome)
          << "expression: " << row.expression << " with " << pointerSize << "-byte pointers";
    }
    EXPECT_TRUE(host.violations.empty());
  }
}

TEST(Driver, BigEndianMemory) {
  FakeHost host("main.c", 4, testsupport::ByteOrder::kBig);
  LoadProgram(host);
  const std::vector<Row> rows = {
      {"c", "-1/1"},       {"us", "65535/2"},   {"i", "-5/4"},    {"ull", "18364758544493064720/8"},
      {"f", "1.5f/4"},     {"d", "2.25f/8"},    {"*p", "10/4"},   {"arr[2]", "30/4"},
      {"m[1][3]", "13/4"}, {"s.in.y", "103/4"}, {"**pp", "10/4"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(Resolve(host, row.expression), row.outcome) << "expression: " << row.expression;
  }
}

TEST(Driver, DeepNestingIsOnlyALongText) {
  FakeHost host;
  host.quiet = true;
  std::string text = "7";
  for (int n = 0; n < 300; ++n) text = "(" + text + "+1)";
  EXPECT_EQ(Resolve(host, text), "307/8");
  EXPECT_EQ(Resolve(host, std::string(3000, '-') + "1"), "1/8");
  std::string sum = "1";
  for (int n = 0; n < 300; ++n) sum += "+1";
  EXPECT_EQ(Resolve(host, sum), "301/8");
}

}  // namespace
