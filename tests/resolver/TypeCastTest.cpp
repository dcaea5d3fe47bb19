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

TEST(RegisterType, ReplacesTheTextByTheEncodedCast) {
  struct Case {
    std::string text;
    std::size_t savedBefore;
    std::string encoded;
    std::string asked;
    int stars;
  };
  const std::vector<Case> rows = {
      {"int", 0, R"(\x18\x18)", "int", 0},
      {"int", 1, R"(\x18\x19\x18)", "int", 0},
      {"int", 3, R"(\x18\x19\x19\x19\x18)", "int", 0},
      {"unsigned:@:int\x0f\x0f", 0, R"(\x18\x18)", "unsigned:@:int", 2},
      {"int\x0f", 2, R"(\x18\x19\x19\x18)", "int", 1},
      // Only trailing marks are stars; a real star is part of the name.
      {"int\x0fzz", 0, R"(\x18\x18)", R"(int\x0fzz)", 0},
      {"int*zz", 0, R"(\x18\x18)", "int*zz", 0},
      {"int*", 0, R"(\x18\x18)", "int*", 0},
      {"\x0f", 0, R"(\x18\x18)", "", 1},
      {"", 0, R"(\x18\x18)", "", 0},
  };
  for (const Case& row : rows) {
    SCOPED_TRACE("text: " + Visible(row.text));
    FakeHost host;
    LoadProgram(host);
    DataLableType described = host.types.Unsigned(2);
    described.IsAddress = true;
    for (const char* name : {"int", "unsigned int", "int\x0fzz", "int*zz", "int*", ""}) {
      host.AddType(name, described);
    }
    OpenResolver resolver(&host);
    resolver.savedTypes.resize(row.savedBefore);
    host.ClearCalls();
    std::string text = row.text;
    EXPECT_FALSE(resolver.RegisterType(&text));
    EXPECT_EQ(Visible(text), row.encoded);
    EXPECT_EQ(host.calls,
              (std::vector<std::string>{"GetTypeDescription(\"" + row.asked + "\") accessSize=8"}));
    ASSERT_EQ(resolver.savedTypes.size(), row.savedBefore + 1);
    const DataLableType* type = &resolver.savedTypes.back();
    for (int star = 0; star < row.stars; ++star) {
      EXPECT_TRUE(type->IsPointer);
      EXPECT_EQ(type->Size, 8U);
      ASSERT_EQ(type->Members.size(), 1U);
      EXPECT_FALSE(type->IsAddress);
      type = &type->Members.front();
    }
    EXPECT_TRUE(*type == described);
  }
}

TEST(RegisterType, AnUnknownTypeIsSavedAndEncodedAllTheSame) {
  FakeHost host;
  OpenResolver resolver(&host);
  resolver.errorMessage = "before";
  std::string text = "nothing\x0f";
  EXPECT_TRUE(resolver.RegisterType(&text));
  EXPECT_EQ(text, "\x18\x18");
  ASSERT_EQ(resolver.savedTypes.size(), 1U);
  EXPECT_TRUE(resolver.savedTypes.front().IsPointer);
  EXPECT_EQ(resolver.errorMessage, "before");
}

TEST(ProcessAreaAsType, TakesTheSavedTypeAtAPosition) {
  struct Case {
    std::string text;
    std::size_t saved;
    int position;  ///< the saved type expected, or -1 for the failure
  };
  const std::vector<Case> rows = {
      {"@0", 3, 0},
      {"@1", 3, 1},
      {"@2", 3, 2},
      {"@2", 2, -1},
      {"@3", 3, -1},
      {"@0", 1, 0},
      {"@0", 0, -1},
      {"@1", 0, -1},
      {"@", 2, 0},
      {"", 2, 0},
      {"", 0, -1},
      {"@int", 3, 0},
      {"int", 3, 0},
      {"@1x", 3, 1},
      {"x1", 3, 1},
      {"@01", 3, 1},
      {"12", 3, 2},
      {"@ 2", 3, 2},
      {"@-1", 3, -1},
      {"@99999999999999999999", 3, -1},
      {"@1.9", 3, 1},
      {"@0x2", 3, 0},
      {"@18446744073709551615", 3, -1},
  };
  for (const Case& row : rows) {
    SCOPED_TRACE("text: " + row.text + " with " + std::to_string(row.saved) + " saved");
    FakeHost host;
    OpenResolver resolver(&host);
    for (std::size_t n = 0; n < row.saved; ++n) {
      resolver.savedTypes.push_back(host.types.Unsigned(static_cast<std::uint32_t>(n + 1)));
    }
    AreaBlock block;
    block.Type.Size = 77;
    block.HasCastType = false;
    const bool expected = row.position >= 0;
    EXPECT_EQ(resolver.ProcessAreaAsType(&block, row.text), expected);
    EXPECT_EQ(block.HasCastType, expected);
    EXPECT_EQ(block.Type.Size, expected ? static_cast<std::uint32_t>(row.position + 1) : 77U);
    EXPECT_EQ(resolver.errorMessage, expected ? "" : "Reference to unexisting type");
  }
}

TEST(SizeofType, IsTheSizeThatTheHostGives) {
  const std::vector<Row> rows = {
      {"sizeof(char)", "1/8"},
      {"sizeof(short)", "2/8"},
      {"sizeof(int)", "4/8"},
      {"sizeof(unsigned int)", "4/8"},
      {"sizeof(long long)", "8/8"},
      {"sizeof(unsigned long long)", "8/8"},
      {"sizeof(float)", "4/8"},
      {"sizeof(double)", "8/8"},
      {"sizeof(struct S)", "24/8"},
      {"sizeof(struct S*)", "8/8"},
      {"sizeof(char**)", "8/8"},
      {"sizeof(char * *)", "8/8"},
      {"sizeof( int )", "4/8"},
      {"sizeof(int)*2", "8/8"},
      {"2*sizeof(int)", "8/8"},
      {"sizeof(int)+sizeof(short)", "6/8"},
      {"-sizeof(int)", "18446744073709551612/8"},
      {"(sizeof(int))", "4/8"},
      {"(short)sizeof(int)", "4/2"},
      {"arr[sizeof(int)-2]", "30/4"},
  };
  FakeHost host;
  LoadProgram(host);
  for (const Row& row : rows) {
    EXPECT_EQ(Resolve(host, row.expression), row.outcome) << "expression: " << row.expression;
  }
}

/// The size may be longer than all that it stands for.
TEST(SizeofType, SizesOfTenDigits) {
  FakeHost host;
  LoadProgram(host);
  DataLableType large;
  large.Size = 4'294'967'295U;
  host.AddType("L", large);
  EXPECT_EQ(Resolve(host, "sizeof(L)"), "4294967295/8");
  std::string sum = "i-i+sizeof( i )+sizeof(L)";
  for (int n = 0; n < 40; ++n) sum += "+sizeof(L)-sizeof(L)+sizeof i";
  EXPECT_EQ(Resolve(host, sum + "*(sizeof(L)-4294967294)"), "4294967459/8");
}

TEST(SizeofType, CountsPointersInTheTargetsSize) {
  for (const std::uint32_t pointerSize : {2U, 4U, 8U}) {
    FakeHost host("main.c", pointerSize);
    LoadProgram(host);
    const std::string expected = std::to_string(pointerSize) + "/8";
    EXPECT_EQ(Resolve(host, "sizeof(char*)"), expected);
    EXPECT_EQ(Resolve(host, "sizeof(struct S***)"), expected);
    EXPECT_EQ(Resolve(host, "sizeof(struct S)"), "24/8");
  }
}

TEST(SizeofType, AsksOnlyForTheNameWithoutStarsAndSavesNothing) {
  FakeHost host;
  LoadProgram(host);
  OpenResolver resolver(&host);
  host.ClearCalls();
  EXPECT_EQ(Resolve(resolver, "sizeof(unsigned int * *)"), "8/8");
  EXPECT_EQ(host.calls, (std::vector<std::string>{
                            "IsTypeName(\"unsigned:@:int**\") accessSize=8",
                            "GetTypeDescription(\"unsigned:@:int\") accessSize=8",
                            "FindLabel(\"8\") accessSize=8",
                        }));
  EXPECT_TRUE(resolver.savedTypes.empty());
}

TEST(SizeofType, ATypeThatTheHostDoesNotKnowAfterAllFailsWithoutAMessage) {
  FakeHost host;
  host.AddVanishingType("ghost");
  TStringResolver resolver(&host);
  EXPECT_EQ(Resolve(resolver, "sizeof(ghost)"), "error: ");
  EXPECT_EQ(Resolve(resolver, "nolabel"), "error: Undefined label nolabel");
  EXPECT_EQ(Resolve(resolver, "sizeof(ghost*)"), "error: Undefined label nolabel");
  EXPECT_EQ(Resolve(resolver, "(ghost)1"), "error: Undefined label nolabel");
}

TEST(SizeofExpression, IsTheSizeOfTheOperandsType) {
  const std::vector<Row> rows = {
      {"sizeof c", "1/8"},
      {"sizeof sh", "2/8"},
      {"sizeof i", "4/8"},
      {"sizeof ull", "8/8"},
      {"sizeof f", "4/8"},
      {"sizeof d", "8/8"},
      {"sizeof(i)", "4/8"},
      {"sizeof((i))", "4/8"},
      {"sizeof(c+sh)", "2/8"},
      {"sizeof p", "8/8"},
      {"sizeof *p", "4/8"},
      {"sizeof *pc", "1/8"},
      {"sizeof(*pc)", "1/8"},
      {"sizeof s", "24/8"},
      {"sizeof arr", "16/8"},
      {"sizeof chars", "8/8"},
      {"sizeof s.b", "4/8"},
      {"sizeof(ps->b)", "4/8"},
      {"sizeof 5", "8/8"},
      {"sizeof(5)", "8/8"},
      {"sizeof 1.5", "8/8"},
      {"sizeof plain", "8/8"},
      {"sizeof &i", "8/8"},
      {"sizeof(char)5", "15/8"},
      {"sizeof sizeof c", "8/8"},
      {"sizeof(sizeof(int))", "8/8"},
      {"sizeof c+1", "2/8"},
      {"sizeof(c)+1", "2/8"},
      {"-sizeof c", "18446744073709551615/8"},
      {"~sizeof c", "18446744073709551614/8"},
      // A cast does not make the size's type known again.
      {"(char)sizeof i", "4/8"},
      // On a subscripted operand it still sees the array.
      {"sizeof(arr[3])", "16/8"},
  };
  FakeHost host;
  LoadProgram(host);
  for (const Row& row : rows) {
    EXPECT_EQ(Resolve(host, row.expression), row.outcome) << "expression: " << row.expression;
  }
}

TEST(SizeofExpression, OfAFloatingOperandIsAPlainInteger) {
  FakeHost host;
  LoadProgram(host);
  // 1.5 is floating, and so would everything be that is computed from it.
  EXPECT_EQ(Resolve(host, "sizeof 1.5+1"), "9/8");
  EXPECT_EQ(Resolve(host, "sizeof f|1"), "5/8");
  EXPECT_EQ(Resolve(host, "~sizeof(1.5+1.5)"), "18446744073709551607/8");
}

TEST(Sizeof, WhereTheWordIsNoOperator) {
  FakeHost host;
  LoadProgram(host);
  host.AddLabel("sizeofx", 40);
  host.AddLabel("sizeof", 50);
  host.AddLabel("asizeof", 60);
  host.AddLabel("x4", 70);
  const std::vector<Row> rows = {
      {"sizeofx", "40/8"},
      {"sizeof", "50/8"},
      {"asizeof", "60/8"},
      {"sizeof-10", "40/8"},
      {"1+sizeof", "51/8"},
      // A glued word does not keep the pass from later ones, nor from ending.
      {"sizeofx+sizeof(int)", "44/8"},
      {"sizeof(int)+sizeofx", "44/8"},
      {"sizeofx+sizeofx+sizeof c+sizeof(short)", "83/8"},
      // The word is replaced wherever it ends.
      {"xsizeof(int)", "70/8"},
      // A blank keeps a type in parentheses from being seen.
      {"sizeof (int)", "error: Missing an address in the string"},
      {"sizeof (c)", "1/8"},
      {"sizeof int", "error: Undefined label int"},
      {"sizeof ", "error: Missing an address in the string"},
      {"sizeof()", "error: Missing an address in the string"},
      {"sizeof(c", "error: Can`t find the end quote."},
      {"sizeof(", "error: Can`t find the end quote."},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(Resolve(host, row.expression), row.outcome) << "expression: " << row.expression;
  }
}

}  // namespace
