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
using testsupport::Row;
using testsupport::Visible;

struct Piece {
  std::string before;
  std::string area;
  std::string after;
  /// Where the next piece begins; `npos` when there is none.
  unsigned long next;
};

struct Split {
  std::string text;
  std::vector<Piece> pieces;
};

constexpr unsigned long kEnd = std::string::npos;

void CheckSplits(const std::string& file, const std::vector<Split>& rows) {
  FakeHost host(file);
  OpenResolver resolver(&host);
  for (const Split& row : rows) {
    SCOPED_TRACE("text: " + Visible(row.text) + " in " + file);
    unsigned long position = 0;
    for (const Piece& piece : row.pieces) {
      std::string before;
      std::string area;
      std::string after;
      ASSERT_TRUE(resolver.GetFirstLexicalBlockStartingFromPos(row.text, &position, &before, &area,
                                                               &after));
      EXPECT_EQ(before, piece.before);
      EXPECT_EQ(area, piece.area);
      EXPECT_EQ(after, piece.after);
      EXPECT_EQ(position, piece.next);
    }
    std::string before;
    std::string area;
    std::string after;
    EXPECT_FALSE(
        resolver.GetFirstLexicalBlockStartingFromPos(row.text, &position, &before, &area, &after));
    EXPECT_EQ(before + area + after, "");
  }
}

TEST(LexicalSplitting, OperatorsBelongToBothNeighbours) {
  const std::vector<Split> rows = {
      {"", {}},
      {"+-", {}},
      {"\x18\x19\x18", {}},
      {"a", {{"", "a", "", kEnd}}},
      {"abc", {{"", "abc", "", kEnd}}},
      {"a+b", {{"", "a", "+", 1}, {"+", "b", "", kEnd}}},
      {"a+-b", {{"", "a", "+-", 1}, {"+-", "b", "", kEnd}}},
      {"-a", {{"-", "a", "", kEnd}}},
      {"a+", {{"", "a", "+", kEnd}}},
      {"-a*", {{"-", "a", "*", kEnd}}},
      {"a->b", {{"", "a", "->", 1}, {"->", "b", "", kEnd}}},
      {"a--b", {{"", "a", "--", 1}, {"--", "b", "", kEnd}}},
      {"ab<<cd>>ef", {{"", "ab", "<<", 2}, {"<<", "cd", ">>", 6}, {">>", "ef", "", kEnd}}},
      {"a%b!c~d&e*f=g^h|i/j>k<l",
       {{"", "a", "%", 1},
        {"%", "b", "!", 3},
        {"!", "c", "~", 5},
        {"~", "d", "&", 7},
        {"&", "e", "*", 9},
        {"*", "f", "=", 11},
        {"=", "g", "^", 13},
        {"^", "h", "|", 15},
        {"|", "i", "/", 17},
        {"/", "j", ">", 19},
        {">", "k", "<", 21},
        {"<", "l", "", kEnd}}},
      {"\x18\x19\x18"
       "5",
       {{"\x18\x19\x18", "5", "", kEnd}}},
      {"\x08"
       "x",
       {{"\x08", "x", "", kEnd}}},
      // Everything else belongs to operands.
      {"a[1]", {{"", "a[1]", "", kEnd}}},
      {"a(b)c", {{"", "a(b)c", "", kEnd}}},
      {"#x@1,5\r\x0e", {{"", "#x@1,5\r\x0e", "", kEnd}}},
      {"a b", {{"", "a b", "", kEnd}}},
      {"'x'", {{"", "'x'", "", kEnd}}},
  };
  CheckSplits("main.c", rows);
  CheckSplits("main.asm", rows);
}

TEST(LexicalSplitting, APointSeparatesOnlyInC) {
  CheckSplits("main.c", {{"a.b", {{"", "a", ".", 1}, {".", "b", "", kEnd}}},
                         {".b", {{".", "b", "", kEnd}}},
                         {"a.-b", {{"", "a", ".-", 1}, {".-", "b", "", kEnd}}}});
  CheckSplits("main.asm", {{"a.b", {{"", "a.b", "", kEnd}}},
                           {".b", {{"", ".b", "", kEnd}}},
                           {"a.-b", {{"", "a.", "-", 2}, {"-", "b", "", kEnd}}}});
}

TEST(LexicalSplitting, AppendsToItsOutputs) {
  FakeHost host;
  OpenResolver resolver(&host);
  unsigned long position = 0;
  std::string before = "1";
  std::string area = "2";
  std::string after = "3";
  EXPECT_TRUE(
      resolver.GetFirstLexicalBlockStartingFromPos("-a+b", &position, &before, &area, &after));
  EXPECT_EQ(before, "1-");
  EXPECT_EQ(area, "2a");
  EXPECT_EQ(after, "3+");
}

/// The element's value text, or the error.
std::string SolveElement(OpenResolver* resolver, const std::string& element) {
  if (!resolver->SolveBasicElement(element)) return "error: " + Visible(resolver->errorMessage);
  return resolver->areaBlocks.front().AreaText;
}

struct ElementRow {
  std::string element;
  std::string result;
};

TEST(Element, IsCutEvaluatedAndReportsItsErrors) {
  const std::vector<ElementRow> rows = {
      {"plain", "5"},
      {"1+2", "3"},
      {"3+-1", "2"},
      {"", "error: Missing an address in the string"},
      {"+-", "error: Missing an address in the string"},
      {"^*^*^^", "error: Missing an address in the string"},
      {"plain+", "error: Invalid operation +"},
      // Fences vanish wherever they stand.
      {"^*^*^^5^*^*^^", "5"},
      {"2*^*^*^^3^*^*^^", "6"},
      {"2^^*^*^^3^*^*^^", "1"},
      {"^*^*^^2^*^*^^^^*^*^^3^*^*^^", "1"},
      // References to saved types: two are there, of 2 and 4 bytes.
      {"\r@0", "error: Can`t find the ending curly bracket"},
      {"x\r@0", "error: Can`t find the ending curly bracket"},
      {"\r@0\x0e"
       "65537+\r@0\x0e"
       "0",
       "1"},
      {"\r@1\x0e"
       "65537+\r@0\x0e"
       "0",
       "65537"},
      {"\r@0\x0e\r@1\x0e"
       "65537+\r@0\x0e"
       "0",
       "65537"},
      {"\r@2\x0e"
       "5",
       "error: Unknown type"},
      // Behind "[" the reference is dropped unread; it must be complete all the same.
      {"arr[\r@7\x0e"
       "1]",
       "8196"},
      {"arr[\r@7", "error: Can`t find the ending curly bracket"},
      // Subscripts cut apart by operators.
      {"]", "error: Address before square brackets isn`t defined"},
      {"1+]", "error: Address before square brackets isn`t defined"},
      {"[1]", "error: Address before square brackets isn`t defined"},
      {"[", "error: Address before square brackets isn`t defined"},
      {"arr[^*^*^^1^*^*^^]", "8196"},
      {"m[^*^*^^1^*^*^^][^*^*^^2^*^*^^]", "8728"},
      {"arr[^*^*^^1^*^*^^]+1", "21"},
      {"arr[1", "error: Can`t find ']' symbol"},
      {"arr]1[", "error: Symbols '[' and ']' are placed in wrong order"},
      {"arr[]", "error: Quotes are empty"},
      {"arr+[1]", "error: Invalid operation +"},
  };
  for (const ElementRow& row : rows) {
    FakeHost host;
    LoadProgram(host);
    OpenResolver resolver(&host);
    resolver.savedTypes = {host.types.Unsigned(2), host.types.Unsigned(4)};
    EXPECT_EQ(SolveElement(&resolver, row.element), row.result)
        << "element: " << Visible(row.element);
  }
}

TEST(Element, StartsAfreshAndKeepsItsBlocksOnFailure) {
  FakeHost host;
  OpenResolver resolver(&host);
  resolver.elementFlag = true;
  EXPECT_FALSE(resolver.SolveBasicElement("1+2=3"));
  EXPECT_FALSE(resolver.elementFlag);
  EXPECT_EQ(resolver.areaBlocks.size(), 3U);
  EXPECT_TRUE(resolver.SolveBasicElement("7"));
  EXPECT_EQ(resolver.areaBlocks.size(), 1U);
  EXPECT_FALSE(resolver.SolveBasicElement("+"));
  EXPECT_TRUE(resolver.areaBlocks.empty());
}

TEST(Element, AClosingBracketBehindAForeignOperandCountsTwice) {
  FakeHost host;
  OpenResolver resolver(&host);
  // No operand ends in "[": the "]" joins the operand before it and stands for itself as well.
  EXPECT_EQ(SolveElement(&resolver, "1+2+]"),
            "error: Internal error. Wrong relations between arguments");
  ASSERT_EQ(resolver.areaBlocks.size(), 3U);
  EXPECT_EQ(resolver.areaBlocks.back().AreaText, "]");
}

TEST(Element, AnOperandOfTypeOnlyIsFoldedIntoItsNeighbour) {
  FakeHost host;
  LoadProgram(host);
  const std::vector<Row> rows = {
      // The minus of a negative floating sub-result is taken for the operator behind an operand
      // that has a type and no text, and goes with it.
      {"(-1.5)", "1.5f/8"},
      {"(-1.5)*2", "3f/8"},
      {"2*(-1.5)", "0.5f/8"},
      {"-(-1.5)", "-1.5f/8"},
      {"((-1.5))", "1.5f/8"},
      // Integers travel without a sign, so they are spared.
      {"(-1)*2", "18446744073709551614/8"},
      {"(i)+j", "-2/4"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(Resolve(host, row.expression), row.outcome) << "expression: " << row.expression;
  }
}

TEST(Element, SubscriptsOfSubResultsAreNoSubscripts) {
  FakeHost host;
  LoadProgram(host);
  const std::vector<Row> rows = {
      {"(arr)[1]", "error: Internal error. Wrong relations between arguments"},
      {"arr+[1]", "error: Internal error. Wrong relations between arguments"},
      {"[1]", "error: Address before square brackets isn`t defined"},
      {"(]", "error: Address before square brackets isn`t defined"},
      {"(arr)[]", "error: Quotes are empty"},
      {"(arr)[)", "error: Can`t find ending quote ']'"},
      {"(arr)[)0(]x(][)", "error: Quotes are placed in wrong order"},
      {"arr[)", "error: Can`t find ']' symbol"},
      {"arr]1[2]", "error: Symbols '[' and ']' are placed in wrong order"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(Resolve(host, row.expression), row.outcome) << "expression: " << row.expression;
  }
}

}  // namespace
