// What one object carries from a resolution to the next, and what it survives.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/FakeHost.h"
#include "tests/support/Outcome.h"
#include "tests/support/Program.h"

namespace {

using testsupport::FakeHost;
using testsupport::HostFailure;
using testsupport::LoadProgram;
using testsupport::OpenResolver;
using testsupport::Outcome;
using testsupport::Resolve;

/// Expressions that among them make every call in every role.
const std::vector<std::string>& Expressions() {
  static const std::vector<std::string> expressions = {
      "(1+2)*3",   "i+u*j",     "-i+~u",          "*p+**pp",       "arr[j+0]+m[1][2]",
      "p[1]",      "s.in.y",    "ps->h[1]",       "head->next->v", "sizeof(int)+sizeof i",
      "(char)i",   "(int*)p+1", "#0x100+1",       "f*d",           "(float)u==1.5",
      "ss[1].b",   "arr+arr",   "*(p+2)",         "&s.b",          "s==s",
      "((i)+(u))", "ptrs[1]",   "(short)(i+1)*2", "arr[)arr[1](]", "chars[1]==101",
  };
  return expressions;
}

TEST(State, ResultsSurviveAFailure) {
  FakeHost host;
  LoadProgram(host);
  TStringResolver resolver(&host);
  ASSERT_EQ(Resolve(resolver, "i"), "-5/4");
  for (const char* expression :
       {"nolabel", "1=2", "(1", "", "1/0", "*5", "-bad", "s.zz", "arr[]", "1+p"}) {
    EXPECT_FALSE(resolver.SolveStringOfElements(expression)) << expression;
    EXPECT_EQ(Outcome(resolver, true), "-5/4") << expression;
    EXPECT_EQ(resolver.resultAddress, 0x1020U) << expression;
  }
}

TEST(State, TheMessageStaysUntilTheNextFailureSetsOne) {
  FakeHost host;
  LoadProgram(host);
  TStringResolver resolver(&host);
  EXPECT_EQ(Resolve(resolver, "nolabel"), "error: Undefined label nolabel");
  EXPECT_EQ(Resolve(resolver, "5"), "5/8");
  EXPECT_EQ(resolver.errorMessage, "Undefined label nolabel");
  EXPECT_EQ(Resolve(resolver, "1+p"), "error: Undefined label nolabel");
  EXPECT_EQ(Resolve(resolver, "arr[)other(]"), "error: Undefined label nolabel");
  EXPECT_EQ(Resolve(resolver, ""), "error: Undefined label nolabel");
  EXPECT_EQ(Resolve(resolver, "1/0"), "error: Division by zero");
  EXPECT_EQ(Resolve(resolver, "bad+1"), "1/8");
  EXPECT_EQ(resolver.errorMessage, "Invalid address");
}

TEST(State, SavedTypesOnlyGrow) {
  FakeHost host;
  LoadProgram(host);
  OpenResolver resolver(&host);
  struct Step {
    std::string expression;
    std::size_t saved;
  };
  const std::vector<Step> steps = {
      {"5", 0},       {"(5)", 1},         {"(int)5", 2},         {"((1)+(2))", 5},
      {"i+1", 5},     {"sizeof(int)", 5}, {"sizeof(i)", 6},      {"arr[1]", 7},
      {"m[1][2]", 9}, {"()", 9},          {"(nolabel)", 9},      {"(1)+nolabel", 10},
      {"#0x100", 11}, {"(#0x100)", 14},   {"(int*)(char)1", 16},
  };
  for (const Step& step : steps) {
    Resolve(resolver, step.expression);
    EXPECT_EQ(resolver.savedTypes.size(), step.saved) << "expression: " << step.expression;
  }
  // A reference written by hand reaches what an earlier resolution saved.
  EXPECT_EQ(Resolve(resolver,
                    "\r@1\x0e"
                    "4294967295"),
            "-1/4");
}

TEST(State, TheLastElementsBlocksStay) {
  FakeHost host;
  LoadProgram(host);
  OpenResolver resolver(&host);
  Resolve(resolver, "1+2");
  ASSERT_EQ(resolver.areaBlocks.size(), 1U);
  EXPECT_EQ(resolver.areaBlocks.front().AreaText, "3");
  Resolve(resolver, "()");
  EXPECT_EQ(resolver.areaBlocks.size(), 1U);
}

TEST(State, ANumbersBlockStaysWhereTheTextFailsBehindIt) {
  for (const char* expression : {"(1+(2)", "(gone)(2)", "arr[gone][2]"}) {
    FakeHost host;
    LoadProgram(host);
    host.AddVanishingType("gone");
    OpenResolver resolver(&host);
    EXPECT_FALSE(resolver.SolveStringOfElements(expression)) << expression;
    ASSERT_EQ(resolver.areaBlocks.size(), 1U) << expression;
    EXPECT_EQ(resolver.areaBlocks.front().AreaText, "2") << expression;
    EXPECT_EQ(resolver.areaBlocks.front().Value, 2U) << expression;
    EXPECT_TRUE(resolver.areaBlocks.front().HasCastType) << expression;
  }
}

TEST(State, AUsedResolverAnswersLikeAFreshOne) {
  FakeHost host;
  LoadProgram(host);
  TStringResolver used(&host);
  for (int round = 0; round < 2; ++round) {
    for (const std::string& expression : Expressions()) {
      Resolve(used, "nolabel");
      EXPECT_EQ(Resolve(used, expression), Resolve(host, expression))
          << "expression: " << expression;
    }
  }
  EXPECT_TRUE(host.violations.empty());
}

TEST(State, ObjectsOnDifferentHostsAreIndependent) {
  FakeHost wide;
  FakeHost narrow("main.s", 2);
  LoadProgram(wide);
  LoadProgram(narrow);
  TStringResolver onWide(&wide);
  TStringResolver onNarrow(&narrow);
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(Resolve(onWide, "sizeof(int*)"), "8/8");
    EXPECT_EQ(Resolve(onNarrow, "sizeof(int*)"), "2/8");
    EXPECT_EQ(Resolve(onWide, "&i"), "4128/8");
    EXPECT_EQ(Resolve(onNarrow, "&i"), "4128/2");
    EXPECT_EQ(Resolve(onWide, "s.b"), "101/4");
    EXPECT_EQ(Resolve(onNarrow, "s.b"), "error: Undefined label s.b");
  }
}

/// The number of calls that `expression` makes on a resolver that exists already.
std::size_t CountCalls(const std::string& expression) {
  FakeHost host;
  LoadProgram(host);
  TStringResolver resolver(&host);
  host.ClearCalls();
  Resolve(resolver, expression);
  return host.callCount;
}

TEST(State, AnyCallMayThrow) {
  for (const std::string& expression : Expressions()) {
    const std::size_t count = CountCalls(expression);
    ASSERT_GT(count, 0U);
    for (std::size_t n = 0; n < count; ++n) {
      FakeHost host;
      LoadProgram(host);
      TStringResolver resolver(&host);
      host.ThrowAtCall(n);
      EXPECT_THROW(resolver.SolveStringOfElements(expression), HostFailure)
          << "expression: " << expression << ", call " << n;
      EXPECT_EQ(Resolve(resolver, "(1+2)*3"), "9/8")
          << "expression: " << expression << ", call " << n;
    }
  }
  FakeHost host;
  host.ThrowAtCall(0);
  EXPECT_THROW(TStringResolver{&host}, HostFailure);
}

TEST(State, AnyCallMayFail) {
  for (const std::string& expression : Expressions()) {
    const std::size_t count = CountCalls(expression);
    for (std::size_t n = 0; n < count; ++n) {
      FakeHost host;
      LoadProgram(host);
      TStringResolver resolver(&host);
      host.FailAtCall(n);
      Resolve(resolver, expression);
      EXPECT_EQ(Resolve(resolver, "(1+2)*3"), "9/8")
          << "expression: " << expression << ", call " << n;
      EXPECT_TRUE(host.violations.empty()) << "expression: " << expression << ", call " << n;
    }
  }
}

TEST(State, AHostThatReentersIsAnotherResolution) {
  FakeHost host;
  LoadProgram(host);
  TStringResolver other(&host);
  std::string inner;
  host.onCall = [&](std::size_t, const std::string& call) {
    if (inner.empty() && call.starts_with("ReadMemory")) {
      inner = "running";
      inner = Resolve(other, "2*3");
    }
  };
  EXPECT_EQ(Resolve(host, "i"), "-5/4");
  EXPECT_EQ(inner, "6/8");
}

}  // namespace
