// Binary operators on blocks of the test's own: codes and rows, what survives a call, and states
// that no expression brings about.
#include <gtest/gtest.h>

#include <limits>
#include <map>
#include <string>
#include <vector>

#include "tests/support/FakeHost.h"
#include "tests/support/OpenResolver.h"

namespace {

using testsupport::FakeHost;
using testsupport::OpenResolver;

AreaBlock Number(const std::string& text, const DataLableType& type = {}) {
  AreaBlock block;
  block.AreaText = text;
  block.Type = type;
  block.HasCastType = true;
  return block;
}

TEST(BinaryRow, EveryCodeBelongsToOneRow) {
  const std::map<int, int> rowOf = {{4, 1},  {5, 1},  {11, 1}, {2, 2},  {3, 2},   {12, 3},
                                    {13, 3}, {14, 4}, {15, 4}, {16, 5}, {17, 5},  {18, 6},
                                    {19, 6}, {20, 7}, {22, 8}, {21, 9}, {23, 10}, {24, 11}};
  const std::map<int, std::string> results = {
      {4, "18"}, {5, "2"},  {11, "0"}, {2, "9"},  {3, "3"},  {12, "48"},
      {13, "0"}, {14, "0"}, {15, "0"}, {16, "1"}, {17, "1"}, {18, "0"},
      {19, "1"}, {20, "2"}, {21, "7"}, {22, "5"}, {23, "1"}, {24, "1"}};
  std::vector<int> codes;
  for (int code = 0; code <= 40; ++code) codes.push_back(code);
  codes.push_back(255);
  codes.push_back(std::numeric_limits<int>::max());
  for (const int code : codes) {
    for (int row = 1; row <= 11; ++row) {
      SCOPED_TRACE("code " + std::to_string(code) + " in row " + std::to_string(row));
      FakeHost host;
      OpenResolver resolver(&host);
      AreaBlock left = Number("6");
      AreaBlock right = Number("3");
      const int done = resolver.ThirdRawRaw(&left, &right, code, row);
      const auto own = rowOf.find(code);
      if (own == rowOf.end()) {
        EXPECT_EQ(done, 0);
        EXPECT_EQ(resolver.errorMessage, "Undefined relations between arguments");
        EXPECT_FALSE(right.IsConsumed);
      } else if (own->second != row) {
        EXPECT_EQ(done, 1);
        EXPECT_EQ(left.AreaText, "6");
        EXPECT_FALSE(right.IsConsumed);
        EXPECT_EQ(resolver.errorMessage, "");
      } else {
        EXPECT_EQ(done, 2);
        EXPECT_EQ(left.AreaText, results.at(code));
        EXPECT_TRUE(right.IsConsumed);
        EXPECT_FALSE(left.IsConsumed);
      }
    }
  }
}

TEST(BinaryRow, ReadsAndRestoredTextsSurviveACallInAForeignRow) {
  FakeHost host;
  host.Poke(0x1000, 0xfff0, 2);
  OpenResolver resolver(&host);
  AreaBlock left = Number("4096", host.types.Pointer(host.types.Signed(2)));
  left.Type.IsAddress = true;
  left.Value = 0x1000;
  AreaBlock right = Number("2,5e,3");
  right.ValueKind = 1;
  right.FloatValue = 2500;
  right.DoubleValue = 2500;
  host.ClearCalls();
  EXPECT_EQ(resolver.ThirdRawRaw(&left, &right, 2, 1), 1);
  EXPECT_EQ(host.callCount, 2U);
  EXPECT_EQ(left.AreaText, "65520");
  EXPECT_EQ(left.Type.Size, 2U);
  EXPECT_EQ(left.ReferenceLevel, -1);
  EXPECT_EQ(right.AreaText, "2.5e+3");
  EXPECT_EQ(resolver.ThirdRawRaw(&left, &right, 2, 2), 2);
  EXPECT_EQ(host.callCount, 2U);
  // -16 + 2500
  EXPECT_EQ(left.AreaText, "2484");
  EXPECT_EQ(left.ValueKind, 1U);
}

TEST(BinaryRow, ReadsHappenEvenForACodeOfNoOperator) {
  FakeHost host;
  OpenResolver resolver(&host);
  AreaBlock left = Number("1");
  AreaBlock right = Number("4096", host.types.Pointer(host.types.Signed(2)));
  right.Type.IsAddress = true;
  host.ClearCalls();
  EXPECT_EQ(resolver.ThirdRawRaw(&left, &right, 9, 1), 0);
  EXPECT_EQ(host.callCount, 2U);
}

TEST(BinaryRow, AnArrayOnTheRightIsReadDownToItsElement) {
  FakeHost host;
  host.Poke(0x1000, 5, 4);
  OpenResolver resolver(&host);
  AreaBlock left = Number("1");
  left.Value = 1;
  AreaBlock right = Number("4096", host.types.Array(host.types.Array(host.types.Signed(4), 2), 2));
  right.Value = 0x1000;
  EXPECT_EQ(resolver.ThirdRawRaw(&left, &right, 2, 2), 2);
  EXPECT_EQ(left.AreaText, "6");
  EXPECT_EQ(left.Value, 1U);
}

TEST(BinaryRow, AnArrayThatCannotBeReadEndsTheLoopOnEitherSide) {
  for (const bool onTheLeft : {true, false}) {
    FakeHost host;
    host.MakeUnreadable(0, ~0ULL);
    OpenResolver resolver(&host);
    AreaBlock array = Number("4096", host.types.Array(host.types.Signed(4), 2));
    array.Value = 0x1000;
    AreaBlock number = Number("1");
    EXPECT_EQ(onTheLeft ? resolver.ThirdRawRaw(&array, &number, 2, 2)
                        : resolver.ThirdRawRaw(&number, &array, 2, 2),
              2);
    EXPECT_EQ((onTheLeft ? array : number).AreaText, "1");
    EXPECT_EQ(resolver.errorMessage, "Invalid address");
  }
}

TEST(BinaryRow, AnArrayWithoutAnElementIsReadAsTheDefaultType) {
  FakeHost host;
  host.Poke(0x1000, 5, 8);
  OpenResolver resolver(&host);
  AreaBlock left = Number("4096");
  left.Type.IsArray = true;
  left.Value = 0x1000;
  AreaBlock right = Number("1");
  EXPECT_EQ(resolver.ThirdRawRaw(&left, &right, 2, 2), 2);
  EXPECT_EQ(left.AreaText, "6");
}

TEST(BinaryRow, PointerScalingRunsTheOtherSidesPrefixOperators) {
  FakeHost host;
  OpenResolver resolver(&host);
  const DataLableType pointer = host.types.Pointer(host.types.Signed(4));
  {
    // The number was read before its operators were run: they change the block, not the sum.
    AreaBlock left = Number("100", pointer);
    AreaBlock right = Number("3");
    right.Value = 3;
    right.BeforeText = "-";
    EXPECT_EQ(resolver.ThirdRawRaw(&left, &right, 2, 2), 2);
    EXPECT_EQ(left.AreaText, "112");
  }
  {
    AreaBlock left = Number("100", pointer);
    AreaBlock right = Number("3");
    right.BeforeText = "?";
    EXPECT_EQ(resolver.ThirdRawRaw(&left, &right, 2, 2), 0);
    EXPECT_EQ(resolver.errorMessage, "Unknown operation: ?");
  }
  {
    // Operators that make a pointer of it: nothing is scaled.
    resolver.savedTypes = {pointer};
    AreaBlock left = Number("100", pointer);
    AreaBlock right = Number("3");
    right.Value = 3;
    right.BeforeText = "\x18\x18";
    EXPECT_EQ(resolver.ThirdRawRaw(&left, &right, 3, 2), 2);
    EXPECT_EQ(left.AreaText, "97");
  }
  {
    // On the left success is failure, and failure goes on.
    resolver.errorMessage = "before";
    AreaBlock left = Number("3");
    left.Value = 3;
    AreaBlock right = Number("100", pointer);
    EXPECT_EQ(resolver.ThirdRawRaw(&left, &right, 2, 2), 0);
    EXPECT_EQ(resolver.errorMessage, "before");
  }
  {
    AreaBlock left = Number("3");
    left.Value = 3;
    left.AfterText = "?";
    AreaBlock right = Number("100", pointer);
    EXPECT_EQ(resolver.ThirdRawRaw(&left, &right, 2, 2), 2);
    EXPECT_EQ(left.AreaText, "112");
    EXPECT_TRUE(left.Type.IsPointer);
    EXPECT_EQ(resolver.errorMessage, "Invalid operation ?");
  }
  {
    resolver.savedTypes = {pointer};
    AreaBlock left = Number("3");
    left.Value = 3;
    left.BeforeText = "\x18\x18";
    left.AfterText = "?";
    AreaBlock right = Number("100", pointer);
    EXPECT_EQ(resolver.ThirdRawRaw(&left, &right, 2, 2), 2);
    EXPECT_EQ(left.AreaText, "103");
  }
}

TEST(BinaryRow, TheElementOfAPointerToAnArrayIsTheArraysElement) {
  FakeHost host;
  OpenResolver resolver(&host);
  DataLableType toArray = host.types.Pointer(host.types.Array(host.types.Signed(4), 4));
  AreaBlock left = Number("100", toArray);
  AreaBlock right = Number("3");
  EXPECT_EQ(resolver.ThirdRawRaw(&left, &right, 2, 2), 2);
  EXPECT_EQ(left.AreaText, "112");

  // A pointer to nothing known points to the default type.
  DataLableType bare;
  bare.IsPointer = true;
  AreaBlock bareLeft = Number("100", bare);
  AreaBlock bareRight = Number("3");
  EXPECT_EQ(resolver.ThirdRawRaw(&bareLeft, &bareRight, 2, 2), 2);
  EXPECT_EQ(bareLeft.AreaText, "124");
}

TEST(BinaryRow, TypesThatHaveNoArithmetic) {
  FakeHost host;
  DataLableType nested;
  nested.NestedTypes.emplace_back("record");
  DataLableType members;
  members.Members.emplace_back();
  DataLableType nestedPointer = host.types.Pointer(host.types.Signed(4));
  nestedPointer.NestedTypes.emplace_back("record");
  const std::string message = "Can`t convert one type to another";
  for (const DataLableType& type : {nested, members, nestedPointer}) {
    for (const bool onTheLeft : {true, false}) {
      OpenResolver resolver(&host);
      AreaBlock strange = Number("6", type);
      AreaBlock plain = Number("3");
      EXPECT_EQ(onTheLeft ? resolver.ThirdRawRaw(&strange, &plain, 4, 1)
                          : resolver.ThirdRawRaw(&plain, &strange, 4, 1),
                0);
      EXPECT_EQ(resolver.errorMessage, message);
      EXPECT_FALSE(strange.IsConsumed);
      EXPECT_FALSE(plain.IsConsumed);
    }
  }
}

TEST(BinaryRow, TheFloatFlagDecidesTheResultsType) {
  FakeHost host;
  struct Case {
    DataLableType left;
    DataLableType right;
    bool leftStays;
  };
  const std::vector<Case> rows = {
      {host.types.Signed(4), host.types.Unsigned(4), true},
      {host.types.Signed(2), host.types.Unsigned(4), false},
      {host.types.Signed(8), host.types.Unsigned(4), true},
      {host.types.Single(), host.types.Unsigned(8), true},
      {host.types.Single(), host.types.Double(), true},
      {host.types.Unsigned(8), host.types.Single(), false},
      {host.types.Double(), host.types.Single(), false},
      {host.types.Single(), host.types.Single(), true},
      {host.types.Signed(4), host.types.Double(), false},
  };
  for (std::size_t n = 0; n < rows.size(); ++n) {
    OpenResolver resolver(&host);
    DataLableType leftType = rows[n].left;
    DataLableType rightType = rows[n].right;
    leftType.Name = "left";
    rightType.Name = "right";
    AreaBlock left = Number("6", leftType);
    AreaBlock right = Number("3", rightType);
    EXPECT_EQ(resolver.ThirdRawRaw(&left, &right, 4, 1), 2);
    EXPECT_EQ(left.Type.Name, rows[n].leftStays ? "left" : "right") << "row " << n;
  }
}

TEST(BinaryRow, WhatIsLeftInTheBlocks) {
  FakeHost host;
  OpenResolver resolver(&host);
  AreaBlock left = Number("300", host.types.Unsigned(1));
  left.Value = 77;
  left.FloatValue = 1.25F;
  left.DoubleValue = 2.25;
  AreaBlock right = Number("1", host.types.Unsigned(1));
  right.MemorySpace = 1;
  EXPECT_EQ(resolver.ThirdRawRaw(&left, &right, 2, 2), 2);
  // An integer result is in the text alone.
  EXPECT_EQ(left.AreaText, "45");
  EXPECT_EQ(left.Value, 77U);
  EXPECT_EQ(left.FloatValue, 1.25F);
  EXPECT_EQ(left.DoubleValue, 2.25);
  EXPECT_EQ(left.MemorySpace, 1);

  AreaBlock single = Number("1");
  single.ValueKind = 1;
  single.FloatValue = 0.1F;
  single.DoubleValue = 0.1;
  AreaBlock three = Number("3");
  EXPECT_EQ(resolver.ThirdRawRaw(&single, &three, 2, 2), 2);
  EXPECT_EQ(single.AreaText, "3,1");
  EXPECT_EQ(single.FloatValue, 0.1F + 3.0F);
  EXPECT_EQ(single.DoubleValue, static_cast<double>(0.1F + 3.0F));
  EXPECT_EQ(single.Value, 3U);
  EXPECT_EQ(single.ValueKind, 1U);

  AreaBlock twice = Number("1");
  twice.ValueKind = 2;
  twice.FloatValue = 1e10F;
  twice.DoubleValue = 1e10;
  EXPECT_EQ(resolver.ThirdRawRaw(&twice, &three, 4, 1), 2);
  EXPECT_EQ(twice.AreaText, "3e,10");
  EXPECT_EQ(twice.DoubleValue, 3e10);
  EXPECT_EQ(twice.FloatValue, 3e10F);
  EXPECT_EQ(twice.Value, 30000000000U);
  EXPECT_EQ(twice.ValueKind, 2U);
}

TEST(BinaryRow, ComparisonsGiveBothSidesTheDefaultType) {
  FakeHost host;
  for (const int code : {14, 15, 16, 17, 18, 19, 23, 24}) {
    const int row = code <= 15 ? 4 : code <= 17 ? 5 : code <= 19 ? 6 : code - 13;
    OpenResolver resolver(&host);
    AreaBlock left = Number("1", host.types.Signed(1));
    AreaBlock right = Number("1", host.types.Stub("record", 4));
    EXPECT_EQ(resolver.ThirdRawRaw(&left, &right, code, row), 2) << "code " << code;
    EXPECT_TRUE(left.Type == resolver.defaultType) << "code " << code;
    EXPECT_TRUE(right.Type == resolver.defaultType) << "code " << code;
  }
}

TEST(BinaryRow, ValuesWiderThanTheirType) {
  struct Case {
    std::string left;
    std::uint32_t size;
    int code;
    int row;
    std::string right;
    std::string result;
  };
  // Signed operands. The text may hold more than `size` bytes: the sign bit asks for extension, and
  // the extension starts at the highest bit that is set.
  const std::vector<Case> rows = {
      {"384", 1, 2, 2, "0", "128"},
      {"384", 1, 18, 6, "18446744073709551488", "1"},
      {"300", 1, 18, 6, "300", "1"},
      {"300", 1, 5, 1, "1", "44"},
      {"256", 1, 11, 1, "7", "0"},
      {"5", 1, 11, 1, "256", "error"},
      {"18446744073709551616", 8, 2, 2, "0", "18446744073709551615"},
      {"-1", 8, 2, 2, "0", "18446744073709551615"},
      {"12abc", 8, 2, 2, "1", "13"},
      {"", 8, 2, 2, "1", "1"},
      {" 4", 8, 2, 2, "1", "5"},
      // Sizes of zero and above eight: whole masks, the sign bit modulo 64.
      {"18446744073709551615", 0, 2, 2, "0", "18446744073709551615"},
      {"18446744073709551614", 16, 5, 1, "1", "18446744073709551614"},
  };
  for (const Case& row : rows) {
    FakeHost host;
    OpenResolver resolver(&host);
    AreaBlock left = Number(row.left, host.types.Signed(row.size));
    AreaBlock right = Number(row.right, host.types.Signed(row.size));
    const int done = resolver.ThirdRawRaw(&left, &right, row.code, row.row);
    EXPECT_EQ(done == 2 ? left.AreaText : "error", row.result)
        << row.left << " (" << row.size << " bytes), code " << row.code << ", " << row.right;
  }
}

}  // namespace
