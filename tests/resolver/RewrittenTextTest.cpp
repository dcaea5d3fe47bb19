// The text between the steps of a resolution, as the host sees it: `IsTypeName` is asked about
// every parenthesised group, sub-results and casts included.
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
using testsupport::Visible;

/// The groups that `expression` has, innermost and last first.
std::vector<std::string> Groups(const std::string& expression, FakeHost* host,
                                OpenResolver* resolver) {
  host->ClearCalls();
  Resolve(*resolver, expression);
  const std::string start = "IsTypeName(\"";
  std::vector<std::string> groups;
  for (const std::string& call : host->calls) {
    if (call.starts_with(start)) {
      groups.push_back(call.substr(start.size(), call.rfind("\")") - start.size()));
    }
  }
  return groups;
}

struct GroupRow {
  std::string expression;
  std::vector<std::string> groups;
};

TEST(RewrittenText, GroupsArriveInnermostAndLastFirst) {
  const std::vector<GroupRow> rows = {
      {"1+2", {}},
      {"(1+2)*3", {"1+2"}},
      {"( 1 +  2 )", {"1+2"}},
      {"((1))", {"1", R"(^*^*^^\r@0\x0e1^*^*^^)"}},
      {"((1+2)*3)", {"1+2", R"(^*^*^^\r@0\x0e3^*^*^^*3)"}},
      {"(1)+(2)", {"2", "1"}},
      // No "#" unless the sub-result lies in the second memory space.
      {"((7))", {"7", R"(^*^*^^\r@0\x0e7^*^*^^)"}},
      {"((#0x100))", {"#0x100", R"(^*^*^^\r@1\x0e#256^*^*^^)"}},
      // Value texts are protected from the lexer.
      {"((12.5*1))", {"12,5*1", R"(^*^*^^\r@0\x0e12,5^*^*^^)"}},
      {"((10000000000.0))", {"10000000000,0", R"(^*^*^^\r@0\x0e1e,10^*^*^^)"}},
      {"((0.00001))", {"0,00001", R"(^*^*^^\r@0\x0e1@,05^*^*^^)"}},
      {"((-1.5))", {"-1,5", R"(^*^*^^\r@0\x0e-1,5^*^*^^)"}},
      {"((-1))", {"-1", R"(^*^*^^\r@0\x0e18446744073709551615^*^*^^)"}},
      // An empty group leaves nothing behind.
      {"(1+()2)", {"1+2"}},
      {"((()))", {}},
      // Casts: one mark for each saved type before theirs.
      {"((int)5)", {"int", R"(\x18\x185)"}},
      {"((1)+(2)+(int)3)",
       {"int", "2", "1", R"(^*^*^^\r@2\x0e1^*^*^^+^*^*^^\r@1\x0e2^*^*^^+\x18\x183)"}},
      {"((int)3+(1)+(2))",
       {"2", "1", "int", R"(\x18\x19\x19\x183+^*^*^^\r@1\x0e1^*^*^^+^*^*^^\r@0\x0e2^*^*^^)"}},
      // Subscripts are groups.
      {"(arr[1])", {"1", R"(arr[^*^*^^\r@0\x0e1^*^*^^])"}},
      {"(m[1][2])", {"2", "1", R"(m[^*^*^^\r@1\x0e1^*^*^^][^*^*^^\r@0\x0e2^*^*^^])"}},
      // Words of types, and what is left of sizeof.
      {"(unsigned int)1", {"unsigned:@:int"}},
      {"(int * *)0", {"int**"}},
      {"(sizeof u)", {R"(\x08u)"}},
      {"(sizeof(u))", {"u", "u", R"(\x08^*^*^^\r@0\x0e4136^*^*^^)"}},
      {"(sizeof(int)+1)", {"int", "4+1"}},
      {"(sizeof (int))", {"int", R"(\x08\x18\x18)"}},
  };
  for (const GroupRow& row : rows) {
    FakeHost host;
    LoadProgram(host);
    OpenResolver resolver(&host);
    EXPECT_EQ(Groups(row.expression, &host, &resolver), row.groups)
        << "expression: " << row.expression;
  }
}

TEST(RewrittenText, AStarInsideATypeIsNoOperator) {
  FakeHost host;
  LoadProgram(host);
  host.AddType("int*const", host.types.Unsigned(2));
  host.AddType(
      "int\x0f"
      "const",
      host.types.Unsigned(2));
  EXPECT_EQ(Resolve(host, "(int*const)65537"), "1/2");
  EXPECT_EQ(host.calls, (std::vector<std::string>{
                            "GetFileName() accessSize=8",
                            "IsTypeName(\"int*const\") accessSize=8",
                            "GetTypeDescription(\"int\\x0fconst\") accessSize=8",
                            "FindLabel(\"65537\") accessSize=8",
                        }));
}

TEST(RewrittenText, PositionsKeepGrowingAcrossExpressionsOfOneObject) {
  FakeHost host;
  LoadProgram(host);
  OpenResolver resolver(&host);
  EXPECT_EQ(Groups("((1)+(2))", &host, &resolver).back(),
            R"(^*^*^^\r@1\x0e1^*^*^^+^*^*^^\r@0\x0e2^*^*^^)");
  ASSERT_EQ(resolver.savedTypes.size(), 3U);
  EXPECT_EQ(Groups("((1)+(2))", &host, &resolver).back(),
            R"(^*^*^^\r@4\x0e1^*^*^^+^*^*^^\r@3\x0e2^*^*^^)");
  EXPECT_EQ(Groups("((int)1)", &host, &resolver).back(), R"(\x18\x19\x19\x19\x19\x19\x19\x181)");
  ASSERT_EQ(resolver.savedTypes.size(), 8U);
}

TEST(RewrittenText, PositionsFromTenUpAreDecimal) {
  FakeHost host;
  OpenResolver resolver(&host);
  std::string sum = "(1)";
  for (int n = 0; n < 10; ++n) sum += "+(1)";
  const std::vector<std::string> groups = Groups("(" + sum + ")", &host, &resolver);
  ASSERT_EQ(groups.size(), 12U);
  EXPECT_TRUE(groups.back().starts_with(R"(^*^*^^\r@10\x0e1^*^*^^+^*^*^^\r@9\x0e1^*^*^^)"))
      << groups.back();
  EXPECT_EQ(Resolve(resolver, sum), "11/8");
}

TEST(RewrittenText, MarkersInTheInputAreReadAsMarkers) {
  FakeHost host;
  LoadProgram(host);
  const std::vector<testsupport::Row> rows = {
      {"^*^*^^5", "5/8"},
      {"5^*^*^^", "5/8"},
      {"\x08u", "4/8"},
      {"\x18\x18"
       "65537*(unsigned short)1",
       "1/2"},
      {"\x18"
       "5",
       "error: Internal error is occurred during the type conversion"},
      {"\x18\x18"
       "5",
       "error: Reference to unexisting type"},
      {"\x19"
       "5",
       "error: Unknown operation: \\x19"},
      {"\r@0", "error: Can`t find the ending curly bracket"},
      {"\r@0\x0e"
       "5",
       "error: Unknown type"},
      {"(int)(\r@0\x0e"
       "5)",
       "error: Unknown type"},
      {"\x0f", "error: Undefined label \\x0f"},
      {"#0x100", "777/4 #"},
  };
  for (const testsupport::Row& row : rows) {
    EXPECT_EQ(Resolve(host, row.expression), row.outcome)
        << "expression: " << Visible(row.expression);
  }
}

}  // namespace
