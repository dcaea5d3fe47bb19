#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "model/RelationCode.h"
#include "tests/support/FakeHost.h"
#include "tests/support/Outcome.h"
#include "tests/support/Program.h"

namespace {

using testsupport::FakeHost;
using testsupport::LoadProgram;
using testsupport::OpenResolver;
using testsupport::Resolve;
using testsupport::Row;
using testsupport::Visible;

std::list<AreaBlock> Blocks(const std::vector<std::string>& areas) {
  std::list<AreaBlock> blocks;
  for (const std::string& area : areas) {
    blocks.emplace_back();
    blocks.back().AreaText = area;
  }
  return blocks;
}

TEST(Relation, IsReadFromTheOperatorBehindABlock) {
  struct Case {
    std::string after;
    int code;
  };
  const std::vector<Case> rows = {
      {"", 9},
      {"->", 7},
      {">>", 13},
      {"<<", 12},
      {">=", 17},
      {"<=", 15},
      {"==", 18},
      {"!=", 19},
      {"&&", 23},
      {"||", 24},
      {".", 6},
      {"+", 2},
      {"-", 3},
      {"*", 4},
      {"/", 5},
      {"%", 11},
      {">", 16},
      {"<", 14},
      {"&", 20},
      {"|", 21},
      {"^", 22},
      // No binary operators.
      {"!", 9},
      {"~", 9},
      {"=", 9},
      {"\x18", 9},
      {"\x08", 9},
      {"[", 9},
      {"!!", 9},
      {"~+", 9},
      {"=+", 9},
      {"!+", 9},
      // Only the first two characters count, and two win over one.
      {"+-", 2},
      {"--", 3},
      {"-->", 3},
      {"->-", 7},
      {">>=", 13},
      {"<<<", 12},
      {"<>", 14},
      {"><", 16},
      {"*-", 4},
      {"&&&", 23},
      {"&*", 20},
      {"|&", 21},
      {"===", 18},
      {"!=!", 19},
      {".-", 6},
      {"%!", 11},
      {"^~", 22},
      {"/\x18\x18", 5},
  };
  FakeHost host;
  OpenResolver resolver(&host);
  for (const Case& row : rows) {
    SCOPED_TRACE("operator: " + Visible(row.after));
    resolver.areaBlocks = Blocks({"x"});
    auto block = resolver.areaBlocks.begin();
    block->AfterText = row.after;
    EXPECT_EQ(resolver.GetAfterRelations(&block), row.code);
    EXPECT_EQ(block->AfterText, row.code == 9 ? row.after : "");
    EXPECT_TRUE(block == resolver.areaBlocks.begin());
  }
}

TEST(Relation, ItsCodeAloneDecidesWhatTheRightBlockLoses) {
  std::vector<int> codes;
  for (int code = 0; code <= 30; ++code) codes.push_back(code);
  codes.push_back(std::numeric_limits<int>::max());
  for (const int code : codes) {
    SCOPED_TRACE("code: " + std::to_string(code));
    FakeHost host;
    OpenResolver resolver(&host);
    resolver.areaBlocks = Blocks({"x"});
    auto block = resolver.areaBlocks.begin();
    block->BeforeText = "+-*";
    block->IsMemberName = code % 2 == 0;
    block->Relation = 77;

    const bool rejected = code == 0 || code == 1 || code == 9;
    const bool member = code == 6 || code == 7;
    const bool twoCharacters = code == 7 || code == 12 || code == 13 || code == 15 || code == 17 ||
                               code == 18 || code == 19 || code == 23 || code == 24;
    EXPECT_EQ(resolver.CheckBeforeRelations(&block, code, "ignored"), !rejected);
    EXPECT_EQ(block->Relation, static_cast<std::uint32_t>(code));
    EXPECT_EQ(block->IsMemberName, rejected ? code % 2 == 0 : member);
    EXPECT_EQ(block->BeforeText, rejected ? "+-*" : twoCharacters ? "*" : "-*");
    EXPECT_EQ(resolver.errorMessage,
              rejected ? "Internal error. Wrong relations between arguments" : "");
  }
}

TEST(Relation, ATextShorterThanItsOperatorIsEmptied) {
  FakeHost host;
  OpenResolver resolver(&host);
  for (const char* before : {"", "+"}) {
    for (const int code : {2, 6, 7, 12, 24, 40}) {
      resolver.areaBlocks = Blocks({"x"});
      auto block = resolver.areaBlocks.begin();
      block->BeforeText = before;
      EXPECT_TRUE(resolver.CheckBeforeRelations(&block, code, ""));
      EXPECT_EQ(block->BeforeText, "") << "code: " << code;
    }
  }
}

TEST(Relation, ABlockWithoutTextGivesItsTypeToTheNext) {
  FakeHost host;
  OpenResolver resolver(&host);
  resolver.areaBlocks = Blocks({"", "x"});
  auto left = resolver.areaBlocks.begin();
  auto right = std::next(left);
  left->BeforeText = "-";
  left->Type.Size = 2;
  left->HasCastType = true;
  right->BeforeText = "~";
  EXPECT_TRUE(resolver.ProcessTypeRelations(&left, &right, 3));
  ASSERT_EQ(resolver.areaBlocks.size(), 1U);
  EXPECT_EQ(right->AreaText, "x");
  EXPECT_EQ(right->BeforeText, "-~");
  EXPECT_EQ(right->Type.Size, 2U);
  EXPECT_TRUE(right->HasCastType);

  resolver.areaBlocks = Blocks({"y", "x"});
  left = resolver.areaBlocks.begin();
  right = std::next(left);
  left->Type.Size = 2;
  left->HasCastType = true;
  EXPECT_TRUE(resolver.ProcessTypeRelations(&left, &right, 9));
  EXPECT_EQ(resolver.areaBlocks.size(), 2U);
  EXPECT_EQ(right->Type.Size, 8U);
  EXPECT_FALSE(right->HasCastType);
}

TEST(Relation, MemberNamesAreMarked) {
  FakeHost host;
  LoadProgram(host);
  OpenResolver resolver(&host);
  resolver.areaBlocks = Blocks({"nolabel", "m"});
  resolver.areaBlocks.front().AfterText = "->";
  resolver.areaBlocks.back().BeforeText = "->";
  EXPECT_FALSE(resolver.ProcessBasicBlocksRelations(&resolver.areaBlocks));
  EXPECT_EQ(resolver.errorMessage, "Undefined label nolabel");
  EXPECT_EQ(resolver.areaBlocks.front().Relation, 1U);
  EXPECT_EQ(resolver.areaBlocks.front().AfterText, "");
  EXPECT_TRUE(resolver.areaBlocks.back().IsMemberName);
  EXPECT_EQ(resolver.areaBlocks.back().Relation, 7U);
  EXPECT_EQ(resolver.areaBlocks.back().BeforeText, "");
}

TEST(Relation, ASingleBlockOnlyRunsThroughTheOperandAndUnaryRows) {
  FakeHost host;
  LoadProgram(host);
  OpenResolver resolver(&host);
  resolver.areaBlocks = Blocks({"plain"});
  resolver.areaBlocks.front().BeforeText = "-";
  resolver.areaBlocks.front().Relation = 9;
  EXPECT_TRUE(resolver.ProcessBasicBlocksRelations(&resolver.areaBlocks));
  EXPECT_EQ(resolver.areaBlocks.front().AreaText, "18446744073709551611");
  EXPECT_EQ(resolver.areaBlocks.front().Relation, 1U);
}

TEST(Relation, WorksOnAListOfTheCallersOwn) {
  FakeHost host;
  OpenResolver resolver(&host);
  std::list<AreaBlock> blocks = Blocks({"7", "2", "3"});
  auto second = std::next(blocks.begin());
  blocks.front().AfterText = "-";
  second->BeforeText = "-";
  second->AfterText = "*";
  blocks.back().BeforeText = "*";
  EXPECT_TRUE(resolver.ProcessBasicBlocksRelations(&blocks));
  ASSERT_EQ(blocks.size(), 1U);
  EXPECT_EQ(blocks.front().AreaText, "1");
  EXPECT_TRUE(resolver.areaBlocks.empty());
}

TEST(Precedence, RowsRunInOrderAndFoldFromTheLeft) {
  const std::vector<Row> rows = {
      {"10-3-2", "5/8"},
      {"100/5/2", "10/8"},
      {"100/5*2", "40/8"},
      {"100%7*2", "4/8"},
      {"2*100%7", "4/8"},
      {"2+3*4", "14/8"},
      {"2*3+4*5", "26/8"},
      {"1<<2<<3", "32/8"},
      {"1<<2+3", "32/8"},
      {"256>>2>>1", "32/8"},
      // "<" and "<=" bind tighter than ">" and ">=".
      {"3>2<1", "1/8"},
      {"3>2<9", "1/8"},
      {"1>2<9", "0/8"},
      {"1>=5<=9", "1/8"},
      {"0>=5<=9", "0/8"},
      {"5<9>0", "1/8"},
      {"1<2>1", "0/8"},
      {"3>2>1", "0/8"},
      {"1<2<2", "1/8"},
      {"1==2>1", "1/8"},
      {"2==2==2", "0/8"},
      {"6&3==3", "0/8"},
      {"6&3", "2/8"},
      {"1^3&2", "3/8"},
      {"1|2^3", "1/8"},
      {"0&&1|1", "0/8"},
      {"1||0&&0", "1/8"},
      {"0||2&&3", "1/8"},
      {"1|2&&0", "0/8"},
      {"2+2==4&&3*3==9", "1/8"},
      {"1||1/1", "1/8"},
      // Nothing is skipped.
      {"1||1/0", "error: Division by zero"},
      {"0&&1/0", "error: Division by zero"},
      {"(1+2)*3", "9/8"},
      {"((1))", "1/8"},
      {"((1+2)*(3+4))", "21/8"},
      {"2*(3+(4-1))", "12/8"},
      {"-2*-3", "6/8"},
      {"2- -1", "3/8"},
      {"2--1", "3/8"},
      {"2-+1", "1/8"},
      {"1!=!1", "1/8"},
      {"5&~1", "4/8"},
      {"j*-j", "-9/4"},
  };
  FakeHost host;
  LoadProgram(host);
  for (const Row& row : rows) {
    EXPECT_EQ(Resolve(host, row.expression), row.outcome) << "expression: " << row.expression;
  }
}

TEST(Precedence, MalformedOperatorSequencesAreRejected) {
  const std::vector<Row> rows = {
      {"1=2", "error: Internal error. Wrong relations between arguments"},
      {"1~2", "error: Internal error. Wrong relations between arguments"},
      {"1!2", "error: Internal error. Wrong relations between arguments"},
      {"(1)(2)", "error: Internal error. Wrong relations between arguments"},
      {"1(2)", "error: Internal error. Wrong relations between arguments"},
      {"(1)2", "error: Internal error. Wrong relations between arguments"},
      {"1(int)2", "error: Internal error. Wrong relations between arguments"},
      {"1=", "error: Invalid operation ="},
      {"1+", "error: Invalid operation +"},
      // Behind the last of several operands a binary operator is read and forgotten.
      {"1+2-", "3/8"},
      {"1+2&&", "3/8"},
      {"1+2=", "error: Invalid operation ="},
      {"j(int)", "error: Invalid operation \\x18\\x18"},
      {"=1", "error: Unknown operation: ="},
      {"/1", "error: Unknown operation: /"},
      {"-/1", "error: Unknown operation: -/"},
      {"/-1", "error: Unknown operation: /"},
      {"1+/2", "error: Unknown operation: /"},
      {"1<<<2", "error: Unknown operation: <"},
      {"1===2", "error: Unknown operation: ="},
      {"1+*2", "error: Can`t do the dereference operation with this type"},
      {"%", "error: Missing an address in the string"},
      {")", "error: Undefined label )"},
      {"1)", "error: Undefined label 1)"},
      {"1+2)", "error: Undefined label 2)"},
      {"(1", "error: Can`t find the end quote."},
      {"((1)", "error: Can`t find the end quote."},
      {"1)(", "error: Can`t find the end quote."},
      {"(1]", "error: Address before square brackets isn`t defined"},
  };
  FakeHost host;
  LoadProgram(host);
  for (const Row& row : rows) {
    EXPECT_EQ(Resolve(host, row.expression), row.outcome) << "expression: " << row.expression;
  }
}

TEST(Precedence, AFailureStopsTheRowsAtOnce) {
  FakeHost host;
  LoadProgram(host);
  TStringResolver resolver(&host);
  host.ClearCalls();
  EXPECT_EQ(Resolve(resolver, "nolabel+i"), "error: Undefined label nolabel");
  EXPECT_EQ(host.calls, (std::vector<std::string>{"FindLabel(\"nolabel\") accessSize=8"}));
  host.ClearCalls();
  EXPECT_EQ(Resolve(resolver, "i=nolabel"),
            "error: Internal error. Wrong relations between arguments");
  EXPECT_TRUE(host.calls.empty());
}

}  // namespace
