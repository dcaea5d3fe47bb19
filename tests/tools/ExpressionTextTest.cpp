#include "tools/resolve/ExpressionText.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace tool {
namespace {

struct Rewrite {
  std::string text;
  std::string prepared;
};

void CheckRewrites(const std::vector<Rewrite>& rows) {
  for (const Rewrite& row : rows) {
    EXPECT_EQ(PrepareExpression(row.text), row.prepared) << "text: " << row.text;
  }
}

TEST(PrepareExpression, KeepsBlanksBetweenNamesOnly) {
  CheckRewrites({
      {"", ""},
      {" \t\r\n\v\f", ""},
      {"x", "x"},
      {" x ", "x"},
      {"a + interval", "a+interval"},
      {"(unsigned int) x", "(unsigned int)x"},
      {"(unsigned  \t int *) x", "(unsigned int*)x"},
      {"(struct node *)p", "(struct node*)p"},
      {"(const char * const) p", "(const char*const)p"},
      {"s . in . x", "s.in.x"},
      {"head -> next\n-> v", "head->next->v"},
      {"return x", "return x"},
      {"a b", "a b"},
      {"1 2", "1 2"},
      {"_a $b", "_a $b"},
      {"x 1", "x 1"},
      {"\xC3\xA9 x", "\xC3\xA9 x"},
      {"table.first", "table.first"},
      {"a > = b", "a>=b"},
      {"1.5e+3 * .5", "1.5e+3*.5"},
      {"\"a b\"", "\"a b\""},
  });
}

TEST(PrepareExpression, SetsSizeofOffFromItsOperand) {
  CheckRewrites({
      {"sizeof x", "sizeof x"},
      {"sizeof  x", "sizeof x"},
      {"sizeof(x)", "sizeof(x)"},
      {"sizeof (struct node)", "sizeof(struct node)"},
      {"sizeof *p", "sizeof *p"},
      {"sizeof*p", "sizeof *p"},
      {"sizeof'a'", "sizeof 97"},
      {"sizeof sizeof x", "sizeof sizeof x"},
      {"1+sizeof -x", "1+sizeof -x"},
      {"sizeof", "sizeof"},
      {"sizeof ", "sizeof"},
      {"sizeofx", "sizeofx"},
      {"mysizeof *p", "mysizeof*p"},
  });
}

TEST(PrepareExpression, MakesSubscriptsCountByValue) {
  CheckRewrites({
      {"a[i]", "a[(i)+0]"},
      {"a [ i ] ", "a[(i)+0]"},
      {"a[i + 1]", "a[(i+1)+0]"},
      {"m[2][3]", "m[(2)+0][(3)+0]"},
      {"a[b[1]]", "a[(b[(1)+0])+0]"},
      {"a[b[c[1]+1]]", "a[(b[(c[(1)+0]+1)+0])+0]"},
      {"a[-1]", "a[(-1)+0]"},
      {"s.a[2].b[i]", "s.a[(2)+0].b[(i)+0]"},
      {"[1]", "[(1)+0]"},
      {"a[]", "a[]"},
      {"a[ ]", "a[]"},
      {"a[b[]]", "a[(b[])+0]"},
      // Brackets without a partner are the resolver's to report.
      {"a[1", "a[1"},
      {"a1]", "a1]"},
      {"]1[", "]1["},
      {"a[b[1]", "a[b[(1)+0]"},
      {"a[1]]", "a[(1)+0]]"},
      {"[", "["},
      {"]", "]"},
      {"[][", "[]["},
  });
}

TEST(PrepareExpression, GivesCharacterConstantsTheirCode) {
  CheckRewrites({
      {"'A'", "65"},
      {"' '", "32"},
      {"' ' + 1", "32+1"},
      {"'+'", "43"},
      {"'['", "91"},
      {"']'", "93"},
      {"a['[']", "a[(91)+0]"},
      {"'('", "40"},
      {R"('\'')", "39"},
      {R"('\n')", "10"},
      {R"('\x41')", "65"},
      {R"('\0')", "0"},
      {R"('\177')", "127"},
      {"x=='A'", "x==65"},
      {"'A'-'B'", "65-66"},
      // What would grow together is kept apart.
      {"'A''B'", "65 66"},
      {"'A' 'B'", "65 66"},
      {"1'A'", "1 65"},
      {"'A'x", "65 x"},
      {"L'A'", "L 65"},
      // The codes of these differ between targets.
      {R"('\xff')", R"('\xff')"},
      {R"('\200')", R"('\200')"},
      {"'\xE9'", "'\xE9'"},
      // These are no character constants.
      {"'AB'", "'AB'"},
      {"'", "'"},
      {"''", "''"},
      {"'A", "'A"},
      {"' x", "'x"},
      {"'[1]", "'[(1)+0]"},
  });
}

TEST(PrepareExpression, WritesExponentLettersUnmistakably) {
  CheckRewrites({
      {"0x1e+5", "0x1E+5"},
      {"0x1e + 5", "0x1E+5"},
      {"0X1e -5", "0X1E-5"},
      {"0x1e*5", "0x1e*5"},
      {"0x1e", "0x1e"},
      {"0xe", "0xe"},
      {"1.5E+3", "1.5e+3"},
      {"1.5E-3", "1.5e-3"},
      {"1.5e-3", "1.5e-3"},
      {"1.5E3", "1.5E3"},
      {"1.5E +3", "1.5E+3"},
      {"E+1", "E+1"},
      {"xE+1", "xE+1"},
      {"0x1eu+1", "0x1eu+1"},
  });
}

TEST(PrepareExpression, TakesLongAndDeepTexts) {
  constexpr std::size_t kDepth = 1'000'000;
  const std::string nested =
      PrepareExpression(std::string(kDepth, '[') + "1" + std::string(kDepth, ']'));
  EXPECT_EQ(nested.size(), kDepth * (std::string("[(").size() + std::string(")+0]").size()) + 1);
  EXPECT_EQ(PrepareExpression(std::string(kDepth, '[')), std::string(kDepth, '['));
  EXPECT_EQ(PrepareExpression(std::string(kDepth, ' ')), "");
  EXPECT_EQ(PrepareExpression(std::string(kDepth, '\'')), std::string(kDepth, '\''));
}

struct Missing {
  std::string prepared;
  std::string sentence;
};

TEST(FindMissingOperator, NamesBothOperands) {
  const std::vector<Missing> rows = {
      {"a b", "no operator stands between `a` and `b`"},
      {"1 2", "no operator stands between `1` and `2`"},
      {"x+a 65", "no operator stands between `a` and `65`"},
      {"(struct node x)", "no operator stands between `node` and `x`"},
      {"a[(1)+0]b", "no operator stands between `]` and `b`"},
      {"2(3)", "no operator stands between `2` and `(`"},
      {"twice(3)", "no operator stands between `twice` and `(`; functions cannot be called"},
  };
  for (const Missing& row : rows) {
    EXPECT_EQ(FindMissingOperator(row.prepared).value_or("none"), row.sentence) << row.prepared;
  }
}

TEST(FindMissingOperator, AcceptsTypesAndSizeof) {
  for (const std::string prepared :
       {"", "x", "a+b", "(unsigned int)x", "(struct node*)x", "(node_t const*)x", "sizeof x",
        "sizeof sizeof x", "sizeof(x)", "sizeof *p", "(int)x", "(x)+(y)", "a[(i)+0][(j)+0]",
        "a[(i)+0].b", "(long long unsigned)(x)", "(const volatile node_t)x", "1.5e+3"}) {
    EXPECT_EQ(FindMissingOperator(prepared), std::nullopt) << prepared;
  }
}

TEST(MemberNames, StandBehindPointsAndArrows) {
  const std::vector<std::pair<std::string, std::vector<std::string>>> rows = {
      {"", {}},
      {"x", {}},
      {"s.x", {"x"}},
      {"s.in.x", {"in", "x"}},
      {"head->next->v", {"next", "v"}},
      {"a[(s.i)+0].b", {"i", "b"}},
      {"a>b", {}},
      {"1.5+x", {}},
      {"s.", {}},
      {"p->", {}},
      {"->v", {"v"}},
  };
  for (const auto& [prepared, names] : rows) EXPECT_EQ(MemberNames(prepared), names) << prepared;
}

TEST(DottedName, GoesOnOverPoints) {
  struct DottedRow {
    std::string prepared;
    std::string first;
    std::string name;
  };
  const std::vector<DottedRow> rows = {
      {"table.first", "table", "table.first"},
      {"1+table.first-x", "table", "table.first"},
      {"table.a.b", "table", "table.a.b"},
      {"mytable.a+table.b", "table", "table.b"},
      {"s.table.b", "table", ""},
      {"table", "table", ""},
      {"x", "table", ""},
  };
  for (const DottedRow& row : rows) {
    EXPECT_EQ(DottedName(row.prepared, row.first), row.name) << row.prepared;
  }
}

TEST(ControlCharacters, AreFound) {
  EXPECT_EQ(FindControlCharacter("a+b \xC3\xA9~"), std::nullopt);
  for (const char c : {'\0', '\x01', '\t', '\r', '\x0E', '\x1F', '\x7F'}) {
    EXPECT_EQ(FindControlCharacter(std::string("ab") + c + "d"), c);
  }
}

TEST(BlankText, HoldsNothingElse) {
  EXPECT_TRUE(IsBlankText(""));
  EXPECT_TRUE(IsBlankText(" \t\r\n\v\f"));
  EXPECT_FALSE(IsBlankText(" x "));
  EXPECT_FALSE(IsBlankText(std::string(1, '\0')));
}

}  // namespace
}  // namespace tool
