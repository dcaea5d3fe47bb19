#include <gtest/gtest.h>

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

AreaBlock Subscripted(const std::string& brackets, std::uint64_t value, const DataLableType& type) {
  AreaBlock block;
  block.AfterText = brackets;
  block.Value = value;
  block.Type = type;
  block.HasCastType = true;
  return block;
}

TEST(SquareBrackets, ATextWithoutThemOnlyRewritesTheValue) {
  FakeHost host;
  OpenResolver resolver(&host);
  host.ClearCalls();
  for (const std::uint32_t kind : {0U, 1U, 2U, 3U}) {
    AreaBlock block = Subscripted("]+", 12, host.types.Array(host.types.Signed(4), 2));
    block.ValueKind = kind;
    block.FloatValue = 0.333333333F;
    block.DoubleValue = 1e10;
    block.ReferenceLevel = 5;
    const DataLableType before = block.Type;
    EXPECT_TRUE(resolver.SolveSquareBracets(&block));
    EXPECT_EQ(block.AreaText, kind == 0 ? "12" : kind == 1 ? "0.333333" : "1e+10");
    EXPECT_EQ(block.AfterText, "]+");
    EXPECT_EQ(block.Value, 12U);
    EXPECT_EQ(block.ReferenceLevel, 5);
    EXPECT_TRUE(block.Type == before);
  }
  EXPECT_TRUE(host.calls.empty());
}

TEST(SquareBrackets, Malformed) {
  struct Case {
    std::string brackets;
    std::string message;
    std::string rest;
  };
  const std::string noEnd = "Can`t find ending quote ']'";
  const std::string order = "Quotes are placed in wrong order";
  const std::string empty = "Quotes are empty";
  const std::vector<Case> rows = {
      {"[1", noEnd, "[1"},     {"[", noEnd, "["},
      {"]1[", noEnd, "]1["},   {"[1][2", noEnd, "[2"},
      {"[[1]", noEnd, "[[1]"}, {"a][b]", order, "a][b]"},
      {"a]1[", order, "a]1["}, {"[]", empty, ""},
      {"[1][]", empty, ""},    {"x[]y", empty, "xy"},
      {"[nolabel]", "", ""},   {"[1][1/0]", "", ""},
      {"[ ]", "", ""},         {"[1][nolabel][2]", "", "[2]"},
  };
  for (const Case& row : rows) {
    SCOPED_TRACE("brackets: " + row.brackets);
    FakeHost host;
    OpenResolver resolver(&host);
    resolver.errorMessage = "before";
    AreaBlock block = Subscripted(row.brackets, 0x1000, host.types.Signed(4));
    const DataLableType before = block.Type;
    EXPECT_FALSE(resolver.SolveSquareBracets(&block));
    EXPECT_EQ(resolver.errorMessage, row.message.empty() ? "before" : row.message);
    EXPECT_EQ(block.AfterText, row.rest);
    EXPECT_EQ(block.Value, 0x1000U);
    EXPECT_TRUE(block.Type == before);
  }
}

TEST(SquareBrackets, AnArrayStepsByItsElementAndReadsNothing) {
  FakeHost host;
  OpenResolver resolver(&host);
  host.ClearCalls();
  const DataLableType array = host.types.Array(host.types.Signed(4), 4);
  AreaBlock block = Subscripted("[3]+", 0x1000, array);
  block.ReferenceLevel = 7;
  EXPECT_TRUE(resolver.SolveSquareBracets(&block));
  EXPECT_EQ(block.Value, 0x100cU);
  EXPECT_EQ(block.AreaText, "4108");
  EXPECT_EQ(block.AfterText, "+");
  EXPECT_EQ(block.ReferenceLevel, -1);
  EXPECT_TRUE(block.Type.IsPointer);
  EXPECT_TRUE(block.Type.IsAddress);
  ASSERT_EQ(block.Type.Members.size(), 1U);
  EXPECT_TRUE(block.Type.Members.front() == array);
  EXPECT_EQ(host.calls, (std::vector<std::string>{"GetFileName() accessSize=8",
                                                  "FindLabel(\"3\") accessSize=8"}));
}

TEST(SquareBrackets, StepsAndReads) {
  struct Case {
    std::string brackets;
    DataLableType type;
    bool address;
    std::uint64_t value;
    int reads;
  };
  FakeHost host;
  LoadProgram(host);
  const testsupport::TypeKit& t = host.types;
  const DataLableType number = t.Signed(4);
  const DataLableType row = t.Array(number, 4);
  DataLableType bare;
  bare.IsArray = true;
  DataLableType empty = t.Unsigned(0);
  const std::vector<Case> rows = {
      {"[3]", number, false, 0x2000 + 12, 0},
      {"[3]", t.Unsigned(3), false, 0x2000 + 9, 0},
      {"[3]", t.Pointer(number), false, 0x2000 + 24, 0},
      {"[3]", row, false, 0x2000 + 12, 0},
      {"[1]", t.Array(row, 2), false, 0x2000 + 16, 0},
      // An array without an element has elements of the default type.
      {"[3]", bare, false, 0x2000 + 24, 0},
      {"[3]", empty, false, 0x2000, 0},
      {"[1][2]", t.Array(row, 2), false, 0x2000 + 16 + 8, 0},
      // Between two subscripts the pointer is read: 0x2180 holds 0x2000.
      {"[0x30][2]", t.Pointer(number), false, 0x2008, 1},
      {"[0]", t.Pointer(row), true, 0x2000, 0},
      {"[2]", t.Pointer(row), true, 0x2008, 0},
      {"[1]", t.Pointer(t.Pointer(number)), true, 10 + 8 + (20ULL << 32U), 1},
      {"[0-1]", number, false, 0x2000 - 4, 0},
      {"[0x4000000000000001]", number, false, 0x2004, 0},
      {"[(1+2)*1]", number, false, 0x200c, 0},
      {"[arr[1]]", number, false, 0x2000 + 80, 0},
      // A negative signed subscript counts by its magnitude.
      {"[i]", number, false, 0x2000 + 20, 0},
      {"[1.9]", number, false, 0x2004, 0},
      {"[ 2 ]", number, false, 0x2008, 0},
  };
  for (const Case& c : rows) {
    SCOPED_TRACE("brackets: " + c.brackets + " on size " + std::to_string(c.type.Size));
    OpenResolver resolver(&host);
    AreaBlock block = Subscripted(c.brackets, 0x2000, c.type);
    block.Type.IsAddress = c.address;
    int reads = 0;
    // Reads made for the subscripts themselves are those of a nested resolver.
    host.onCall = [&](std::size_t, const std::string& call) {
      const bool nested = c.brackets == "[arr[1]]" || c.brackets == "[i]";
      if (call.starts_with("ReadMemory") && !nested) ++reads;
    };
    EXPECT_TRUE(resolver.SolveSquareBracets(&block));
    EXPECT_EQ(block.Value, c.value);
    EXPECT_EQ(reads, c.reads);
    EXPECT_EQ(block.AreaText, std::to_string(block.Value));
    EXPECT_TRUE(block.Type.IsAddress);
    EXPECT_EQ(block.ReferenceLevel, -1);
    host.onCall = nullptr;
  }
}

TEST(SquareBrackets, AllAreEvaluatedBeforeTheFirstIsApplied) {
  FakeHost host;
  LoadProgram(host);
  OpenResolver resolver(&host);
  host.ClearCalls();
  AreaBlock block = Subscripted("[1][plain][2]", 0x1000, host.types.Pointer(host.types.Signed(4)));
  EXPECT_TRUE(resolver.SolveSquareBracets(&block));
  std::vector<std::string> names;
  for (const std::string& call : host.calls) names.push_back(call.substr(0, call.find('(')));
  EXPECT_EQ(names, (std::vector<std::string>{"GetFileName", "FindLabel", "GetFileName", "FindLabel",
                                             "GetFileName", "FindLabel", "CheckAddress",
                                             "ReadMemory", "CheckAddress", "ReadMemory"}));
}

TEST(SquareBrackets, AFailingReadDoesNotStopThem) {
  FakeHost host;
  host.MakeUnreadable(0, ~0ULL);
  OpenResolver resolver(&host);
  AreaBlock block = Subscripted("[1][2]", 0x1000, host.types.Pointer(host.types.Signed(4)));
  EXPECT_TRUE(resolver.SolveSquareBracets(&block));
  // The address stays, its type is the pointee's all the same: 0x1000 + 8 + 2 * 4.
  EXPECT_EQ(block.Value, 0x1010U);
  EXPECT_EQ(resolver.errorMessage, "Invalid address");
}

TEST(SquareBrackets, KeepTheMemorySpaceUntilTheFirstRead) {
  FakeHost host;
  host.Poke(0x1008, 0x3000, 8, 1);
  OpenResolver resolver(&host);
  AreaBlock one = Subscripted("[1]", 0x1000, host.types.Unsigned(8));
  one.MemorySpace = 1;
  EXPECT_TRUE(resolver.SolveSquareBracets(&one));
  EXPECT_EQ(one.MemorySpace, 1);
  AreaBlock two = Subscripted("[1][1]", 0x1000, host.types.Pointer(host.types.Unsigned(8)));
  two.MemorySpace = 1;
  EXPECT_TRUE(resolver.SolveSquareBracets(&two));
  EXPECT_EQ(two.MemorySpace, 0);
  EXPECT_EQ(two.Value, 0x3008U);
}

TEST(SquareBrackets, NestedOnesAreReducedInnermostFirst) {
  FakeHost host;
  LoadProgram(host);
  host.quiet = true;
  OpenResolver resolver(&host);
  // Only one nested resolver is at work at any depth: each level has become a number before.
  std::string deep = "0";
  for (int level = 0; level < 1000; ++level) deep = "arr[" + deep + "]";
  AreaBlock block = Subscripted("[" + deep + "]", 0x1000, host.types.Signed(4));
  EXPECT_TRUE(resolver.SolveSquareBracets(&block));
}

TEST(SquareBrackets, OnesThatEscapeReductionNestResolversUpToALimit) {
  // d ")" behind a "[" close the "(" that each of d nested resolvers puts there, so the bracket is
  // one still when it comes to the element d levels in. What "]" brings along ends up in the names.
  const auto escaping = [](int depth) {
    std::string text = "zero";
    for (int level = 1; level <= depth; ++level) {
      text += "[" + std::string(static_cast<std::size_t>(level), ')') + "zero";
    }
    return text + std::string(static_cast<std::size_t>(depth), ']');
  };
  FakeHost host;
  LoadProgram(host);
  host.quiet = true;
  for (std::size_t n = 1; n <= 200; ++n) host.AddLabel("zero" + std::string(n, ')'), 0);
  TStringResolver resolver(&host);
  EXPECT_TRUE(resolver.SolveStringOfElements(escaping(100)));
  resolver.errorMessage = "before";
  EXPECT_EQ(Resolve(resolver, escaping(101)), "error: before");
  EXPECT_EQ(Resolve(resolver, escaping(200)), "error: before");
  EXPECT_EQ(Resolve(resolver, "arr[1]"), "20/4");
}

TEST(SquareBrackets, InExpressions) {
  const std::vector<Row> rows = {
      {"arr[0]", "10/4 at 0x2000"},
      {"arr[3]", "40/4 at 0x200c"},
      {"arr[1+1]", "30/4 at 0x2008"},
      {"arr[(1+0)*2]", "30/4 at 0x2008"},
      {"arr[-1]", "0/4 at 0x1ffc"},
      // One subscript too many takes the element for an address.
      {"arr[1][0]", "0/4 at 0x14"},
      {"m[1][3]", "13/4 at 0x221c"},
      {"m[0][5]", "11/4 at 0x2214"},
      {"arr[j]", "0/4 at 0x6300"},
      {"arr[j+0]", "40/4 at 0x200c"},
      {"arr[arr[0]]", "0/4 at 0xa000"},
      {"arr[arr[0]-8]", "30/4 at 0x2008"},
      {"chars[1]", "101/1 at 0x2101"},
      {"p[0]", "85899345930/8 at 0x2000"},
      {"p[1]", "171798691870/8 at 0x2008"},
      {"ptrs[1]", "8200/8 at 0x2188"},
      {"ss[1].b", "201/4 at 0x321c"},
      {"s.h[1]", "106/2 at 0x3016"},
      {"arr[1]+arr[2]", "50/4 at 0x32"},
      {"arr[1]*2", "40/8 at 0x28"},
      {"&arr[1]", "8196/8 at 0x2004"},
      {"*arr[1]", "20/4 at 0x2004"},
      {"*&arr[1]", "20/4 at 0x2004"},
      {"-(arr[1]+0)", "18446744073709551596/8 at 0xffffffec"},
      {"(int)(arr[1]+0)", "20/4 at 0x14"},
      {"arr[1.9]", "20/4 at 0x2004"},
      {"arr[#0x100-777]", "10/4 at 0x2000"},
      {"5[1]", "0/8 at 0xd"},
      {"arr[1]2", "error: Undefined label arr2 at 0x0"},
      {"arr[1/0]", "error: Division by zero at 0x0"},
      {"arr[nolabel]", "error: Undefined label nolabel at 0x0"},
      {"arr[)nolabel(]", "error:  at 0x0"},
      {"arr[]", "error: Quotes are empty at 0x0"},
      {"arr[1", "error: Can`t find the end quote. at 0x0"},
      {"arr[int]", "error: Address before square brackets isn`t defined at 0x0"},
      {"arr[[1]]", "error: Address before square brackets isn`t defined at 0x0"},
  };
  FakeHost host;
  LoadProgram(host);
  for (const Row& row : rows) {
    EXPECT_EQ(ResolveWithAddress(host, row.expression), row.outcome)
        << "expression: " << row.expression;
  }
  EXPECT_TRUE(host.violations.empty());
}

}  // namespace
