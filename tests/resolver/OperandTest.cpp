// "Wrong floating point number" has no row: it needs a text stream in its bad state, which reading
// a text, however malformed, never sets.
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

TEST(BracketGroups, AreMovedOutOutermostAndInOrder) {
  struct Case {
    std::string source;
    std::string collected;
    std::string error;
    std::string sourceAfter;
    std::string collectedAfter;
  };
  const std::string noClose = "Can`t find ']' symbol";
  const std::string wrongOrder = "Symbols '[' and ']' are placed in wrong order";
  const std::vector<Case> rows = {
      {"", "", "", "", ""},
      {"a", "+", "", "a", "+"},
      {"a]", "", "", "a]", ""},
      {"table[2][i]", "", "", "table", "[2][i]"},
      {"table[2][i]", "+", "", "table", "[2][i]+"},
      {"a[b[1]]", "", "", "a", "[b[1]]"},
      {"a[b[1]+c[2]]", "", "", "a", "[b[1]+c[2]]"},
      {"a[[[1]]]", "", "", "a", "[[[1]]]"},
      {"a[1]x[2]y", "", "", "axy", "[1][2]"},
      {"a[]", "", "", "a", "[]"},
      {"[1]", "", "", "", "[1]"},
      // The search for the close starts at position 1: what stands before it does not close.
      {"]a[1]", "", "", "]a", "[1]"},
      {"a[1", "", noClose, "a[1", ""},
      {"a[", "", noClose, "a[", ""},
      {"a[1]b[2", "+", noClose, "ab[2", "+"},
      {"a[b[1]", "", noClose, "a[b[1]", ""},
      {"]a[", "", noClose, "]a[", ""},
      {"a]1[", "", wrongOrder, "a]1[", ""},
      {"a]1[2]", "", wrongOrder, "a]1[2]", ""},
  };
  for (const Case& row : rows) {
    SCOPED_TRACE("source: " + row.source);
    FakeHost host;
    OpenResolver resolver(&host);
    std::string source = row.source;
    std::string collected = row.collected;
    EXPECT_EQ(resolver.FindStringParameter(&source, &collected, "[", "]"), row.error.empty());
    EXPECT_EQ(source, row.sourceAfter);
    EXPECT_EQ(collected, row.collectedAfter);
    EXPECT_EQ(resolver.errorMessage, row.error);
  }
}

TEST(BracketGroups, OpenAndCloseAreSetsOfCharacters) {
  FakeHost host;
  OpenResolver resolver(&host);
  std::string source = "a<1]b{2)";
  std::string collected;
  EXPECT_TRUE(resolver.FindStringParameter(&source, &collected, "<{", ")]"));
  EXPECT_EQ(source, "ab");
  EXPECT_EQ(collected, "<1]{2)");
  source = "a{1";
  EXPECT_FALSE(resolver.FindStringParameter(&source, &collected, "{", "}"));
  EXPECT_EQ(resolver.errorMessage, "Can`t find ']' symbol");
}

struct OperandRow {
  std::string text;
  /// What `FindLabel` is asked, or "" when the resolver reads the operand itself.
  std::string asked;
  std::string area;
  std::uint32_t kind;
  std::uint64_t value;
};

void CheckOperands(const std::string& file, const std::vector<OperandRow>& rows) {
  for (const OperandRow& row : rows) {
    SCOPED_TRACE("operand: " + row.text);
    FakeHost host(file);
    host.AddLabel("a.b", 1);
    host.AddLabel(".5", 2);
    host.AddLabel("s.5", 3);
    host.AddLabel("label", 5);
    OpenResolver resolver(&host);
    host.ClearCalls();
    AreaBlock block;
    block.AreaText = row.text;
    block.CastType = resolver.defaultType;
    EXPECT_TRUE(resolver.ZeroRaw(&block));
    EXPECT_EQ(block.AreaText, row.area);
    EXPECT_EQ(block.ValueKind, row.kind);
    EXPECT_EQ(block.Value, row.value);
    EXPECT_TRUE(block.HasCastType);
    EXPECT_TRUE(block.Type == resolver.defaultType);
    EXPECT_EQ(block.ReferenceLevel, -1);
    EXPECT_EQ(block.MemorySpace, 0);
    const std::string call = "FindLabel(\"" + row.asked + "\") accessSize=8";
    EXPECT_EQ(host.calls,
              row.asked.empty() ? std::vector<std::string>{} : std::vector<std::string>{call});
  }
}

TEST(Operand, IsAFloatingLiteralOrTheHostsAffair) {
  const std::vector<OperandRow> rows = {
      {"label", "label", "5", 0, 5},
      {"12", "12", "12", 0, 12},
      {"0x1F", "0x1F", "31", 0, 31},
      {"0b101", "0b101", "5", 0, 5},
      {"'A'", "'A'", "65", 0, 65},
      {"18446744073709551615", "18446744073709551615", "18446744073709551615", 0, ~0ULL},
      {"a,b", "a.b", "1", 0, 1},
      {".5", ".5", "2", 0, 2},
      {",5", ".5", "2", 0, 2},
      {"s,5", "s.5", "3", 0, 3},
      {"1.5", "", "1.5", 1, 1},
      {"1,5", "", "1.5", 1, 1},
      {"0,5", "", "0.5", 1, 0},
      {"3.14159265", "", "3.14159", 1, 3},
      {"1,5e,3", "", "1500", 1, 1500},
      {"2,5@,3", "", "0.0025", 1, 0},
      {"1e,5", "", "100000", 1, 100000},
      {"1e,10", "", "1e+10", 1, 10000000000},
      {"1@,5", "", "1e-05", 1, 0},
      {"10000000000000000000,0", "", "1e+19", 1, 9999999980506447872U},
      {"20000000000000000000,0", "", "2e+19", 1, ~0ULL},
      // Read as far as it goes.
      {"0x1e,5", "", "0", 1, 0},
      {"1,5x", "", "1.5", 1, 1},
      {"1,5,2", "", "1.5", 1, 1},
      {"1,", "", "1", 1, 1},
      {"1,5e", "", "0", 1, 0},
      {"/,", "", "0", 1, 0},
      {":1,5", "", "0", 1, 0},
      // Too large for a double: the largest one, and infinite in single precision.
      {"1,0e400", "", "inf", 1, ~0ULL},
      {"1,0e,400", "", "inf", 1, ~0ULL},
      {"1,0e39", "", "inf", 1, ~0ULL},
      {"1,0@,400", "", "0", 1, 0},
  };
  CheckOperands("main.c", rows);
  CheckOperands("main.asm", rows);
}

TEST(Operand, TheFloatingLiteralKeepsItsDoubleAndItsSingle) {
  FakeHost host;
  OpenResolver resolver(&host);
  AreaBlock block;
  block.AreaText = "0,1";
  EXPECT_TRUE(resolver.ZeroRaw(&block));
  EXPECT_EQ(block.DoubleValue, 0.1);
  EXPECT_EQ(block.FloatValue, 0.1F);
  EXPECT_EQ(block.ValueKind, 1U);
}

TEST(Operand, AMemberNameIsLeftAlone) {
  FakeHost host;
  OpenResolver resolver(&host);
  host.ClearCalls();
  AreaBlock block;
  block.AreaText = "field[3]";
  block.AfterText = "+";
  block.IsMemberName = true;
  block.Value = 99;
  block.Type.Size = 3;
  block.ReferenceLevel = 7;
  block.MemorySpace = 1;
  block.MemberBlock = &block;
  EXPECT_TRUE(resolver.ZeroRaw(&block));
  EXPECT_EQ(block.AreaText, "field");
  EXPECT_EQ(block.AfterText, "[3]+");
  EXPECT_EQ(block.Value, 99U);
  EXPECT_EQ(block.Type.Size, 3U);
  EXPECT_FALSE(block.HasCastType);
  EXPECT_EQ(block.ReferenceLevel, -1);
  EXPECT_EQ(block.MemorySpace, 0);
  EXPECT_EQ(block.MemberBlock, nullptr);
  EXPECT_TRUE(host.calls.empty());

  block.BeforeText = "-~";
  EXPECT_FALSE(resolver.ZeroRaw(&block));
  EXPECT_EQ(resolver.errorMessage, "Internal error. Unknown command -~");
}

TEST(Operand, ItsTypeIsTheOneItHasElseTheLabelsElseTheDefault) {
  FakeHost host;
  host.AddLabel("typed", 0x1000, host.types.Signed(2));
  OpenResolver resolver(&host);

  AreaBlock block;
  block.AreaText = "typed";
  EXPECT_TRUE(resolver.ZeroRaw(&block));
  EXPECT_TRUE(block.HasCastType);
  EXPECT_TRUE(block.Type.IsPointer);
  EXPECT_TRUE(block.Type.IsAddress);
  EXPECT_EQ(block.Type.Size, 8U);
  ASSERT_EQ(block.Type.Members.size(), 1U);
  EXPECT_TRUE(block.Type.Members.front() == host.types.Signed(2));
  EXPECT_EQ(block.AreaText, "4096");

  AreaBlock cast;
  cast.AreaText = "typed";
  cast.HasCastType = true;
  cast.Type = host.types.Unsigned(1);
  EXPECT_TRUE(resolver.ZeroRaw(&cast));
  EXPECT_EQ(cast.Type.Size, 1U);
  EXPECT_TRUE(cast.Type.IsAddress);

  AreaBlock kept;
  kept.AreaText = "7";
  kept.HasCastType = true;
  kept.Type = host.types.Signed(1);
  EXPECT_TRUE(resolver.ZeroRaw(&kept));
  EXPECT_TRUE(kept.Type == host.types.Signed(1));

  AreaBlock literal;
  literal.AreaText = "7,5";
  literal.HasCastType = true;
  literal.Type = host.types.Signed(1);
  EXPECT_TRUE(resolver.ZeroRaw(&literal));
  EXPECT_TRUE(literal.Type == host.types.Signed(1));

  AreaBlock stale;
  stale.AreaText = "7";
  stale.Type = host.types.Signed(1);
  EXPECT_TRUE(resolver.ZeroRaw(&stale));
  EXPECT_TRUE(stale.Type == resolver.defaultType);
}

TEST(Operand, TheHostsLabelStateIsResetBeforeEveryOperand) {
  FakeHost host;
  LoadProgram(host);
  OpenResolver resolver(&host);
  host.LabelTyped = true;
  host.LabelType.Size = 3;
  EXPECT_EQ(Resolve(resolver, "plain"), "5/8");
  host.LabelTyped = true;
  EXPECT_EQ(Resolve(resolver, "1.5"), "1.5f/8");
  EXPECT_FALSE(host.LabelTyped);
  EXPECT_EQ(Resolve(resolver, "i+plain+i"), "18446744073709551611/8");
  EXPECT_TRUE(host.violations.empty());
}

TEST(Operand, TheSecondMemorySpace) {
  FakeHost host;
  LoadProgram(host);
  host.Poke(0x200, 0x123456789abcdef0, 8, 1);
  host.AddLabel("port", 0x100);
  const std::vector<Row> rows = {
      {"#0x100", "777/4 #"},
      {"#port", "777/4 #"},
      {"#0x200", "2596069104/4 #"},
      {"#port+1", "778/8"},
      {"1+#port", "778/8"},
      {"(#port)", "777/4 #"},
      {"(#port)+1", "778/8"},
      {"-#port", "0/4 #"},
      {"#i", "error: Error occurred"},
      {"&#port", "error: The pointer doesn`t exist"},
      {"##port", "error: Can`t do the dereference operation with this type"},
      {"#nolabel", "error: Undefined label *nolabel"},
      {"#1.5", "error: Undefined label *1.5"},
  };
  host.MakeUnreadable(0x1020, 0x1020, 1);
  for (const Row& row : rows) {
    EXPECT_EQ(Resolve(host, row.expression), row.outcome) << "expression: " << row.expression;
  }
}

TEST(Operand, TheSecondMemorySpaceTakesItsTypeAndAStarInFront) {
  FakeHost host;
  LoadProgram(host);
  OpenResolver resolver(&host);
  resolver.savedTypes.push_back(host.types.Signed(1));
  host.ClearCalls();
  AreaBlock block;
  block.BeforeText = "-";
  block.AreaText = "#7";
  block.HasCastType = true;
  block.Type = host.types.Signed(2);
  EXPECT_TRUE(resolver.ZeroRaw(&block));
  EXPECT_EQ(block.BeforeText, "*-");
  EXPECT_EQ(block.AreaText, "7");
  EXPECT_EQ(block.MemorySpace, 1);
  // The type is the one just registered, not the first that was saved.
  ASSERT_EQ(resolver.savedTypes.size(), 2U);
  EXPECT_TRUE(block.Type == resolver.savedTypes.back());
  EXPECT_TRUE(block.Type.IsPointer);
  ASSERT_EQ(block.Type.Members.size(), 1U);
  EXPECT_TRUE(block.Type.Members.front() == host.types.Unsigned(4));
  EXPECT_EQ(host.calls, (std::vector<std::string>{
                            "FindLabel(\"*7\") accessSize=8",
                            "GetTypeDescription(\"ZV_Lorn\") accessSize=8",
                        }));
}

TEST(Operand, EveryMarkOfTheSecondSpaceAddsAStar) {
  FakeHost host;
  LoadProgram(host);
  OpenResolver resolver(&host);
  AreaBlock block;
  block.AreaText = "##7#";
  host.AddLabel("7*", 9);
  EXPECT_TRUE(resolver.ZeroRaw(&block));
  EXPECT_EQ(block.BeforeText, "***");
  EXPECT_EQ(block.Value, 9U);
}

TEST(Operand, AHostWithoutTheWordOfTheSecondSpaceStillGetsAPointer) {
  FakeHost host;
  host.AddLabel("port", 0x100);
  host.Poke(0x100, 777, 4, 1);
  EXPECT_EQ(Resolve(host, "#port"), "777/8 #");
}

TEST(Operand, NamesThatTheHostDoesNotKnow) {
  FakeHost host;
  LoadProgram(host);
  const std::vector<Row> rows = {
      {"nolabel", "error: Undefined label nolabel"},
      {"no.5", "error: Undefined label no.5"},
      {".5", "error: Unknown operation: ."},
      {"18446744073709551616", "error: Undefined label 18446744073709551616"},
      {"08", "error: Undefined label 08"},
      {"no label", "error: Undefined label nolabel"},
      {"1e400", "error: Undefined label 1e400"},
      {"1e+400", "0f/8"},
      {"inf", "error: Undefined label inf"},
      {"1.0e400", "0f/8"},
      {"(1.0e400)", "error: Undefined label inf"},
      {"i+nolabel", "error: Undefined label nolabel"},
      {"arr[nolabel]", "error: Undefined label nolabel"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(Resolve(host, row.expression), row.outcome) << "expression: " << row.expression;
  }
}

TEST(Operand, DottedNamesBelongToAssembly) {
  FakeHost assembly("main.asm");
  assembly.AddLabel("loop.1", 11);
  assembly.AddLabel("loop.end", 12);
  assembly.AddLabel(".local", 13);
  EXPECT_EQ(Resolve(assembly, "loop.1"), "11/8");
  EXPECT_EQ(Resolve(assembly, "loop.end+loop.1"), "23/8");
  EXPECT_EQ(Resolve(assembly, ".local"), "13/8");
  EXPECT_EQ(Resolve(assembly, "1.5+loop.1"), "12.5f/8");

  FakeHost c;
  c.AddLabel("loop.1", 11);
  c.AddLabel("loop.end", 12);
  c.AddLabel("loop", 13);
  EXPECT_EQ(Resolve(c, "loop.1"), "11/8");
  EXPECT_EQ(Resolve(c, "loop.end"), "error: The specified field isn`t found in structure of type");
}

TEST(Operand, FailuresOfBracketsComeBeforeTheLabelIsAskedFor) {
  FakeHost host;
  OpenResolver resolver(&host);
  host.ClearCalls();
  AreaBlock block;
  block.AreaText = "nolabel[1";
  EXPECT_FALSE(resolver.ZeroRaw(&block));
  EXPECT_EQ(resolver.errorMessage, "Can`t find ']' symbol");
  EXPECT_TRUE(host.calls.empty());
  block.AreaText = "nolabel[]";
  EXPECT_FALSE(resolver.ZeroRaw(&block));
  EXPECT_EQ(resolver.errorMessage, "Undefined label nolabel");
  AreaBlock empty;
  empty.AreaText = "7[]";
  EXPECT_FALSE(resolver.ZeroRaw(&empty));
  EXPECT_EQ(resolver.errorMessage, "Quotes are empty");
}

TEST(Operand, ConfirmationsAreAndedOverTheObjectsLife) {
  FakeHost host;
  LoadProgram(host);
  host.Unconfirm("plain");
  TStringResolver resolver(&host);
  EXPECT_TRUE(resolver.allLabelsConfirmed);
  Resolve(resolver, "i+1.5");
  EXPECT_TRUE(resolver.allLabelsConfirmed);
  Resolve(resolver, "1+plain");
  EXPECT_FALSE(resolver.allLabelsConfirmed);
  Resolve(resolver, "i");
  EXPECT_FALSE(resolver.allLabelsConfirmed);

  TStringResolver undefined(&host);
  host.Unconfirm("nolabel");
  Resolve(undefined, "nolabel");
  EXPECT_FALSE(undefined.allLabelsConfirmed);

  // Subscripts travel as text: the label is looked up here, its value in the nested resolver.
  TStringResolver subscript(&host);
  Resolve(subscript, "arr[plain]");
  EXPECT_FALSE(subscript.allLabelsConfirmed);
  TStringResolver direct(&host);
  Resolve(direct, "arr[)plain(]");
  EXPECT_TRUE(direct.allLabelsConfirmed);
}

}  // namespace
