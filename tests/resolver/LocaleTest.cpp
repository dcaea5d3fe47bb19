// Numbers come out the same whatever locale the process has.
#include <gtest/gtest.h>

#include <locale>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/FakeHost.h"
#include "tests/support/Outcome.h"
#include "tests/support/Program.h"

namespace {

using testsupport::FakeHost;
using testsupport::LoadProgram;
using testsupport::OpenResolver;
using testsupport::ResolveWithAddress;

/// A comma for the point, points between groups of three digits, words for truth.
class Continental : public std::numpunct<char> {
 protected:
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
  std::string do_truename() const override { return "ja"; }
};

class GlobalLocale {
 public:
  GlobalLocale()
      : before_(std::locale::global(std::locale(std::locale::classic(), new Continental))) {}
  ~GlobalLocale() { std::locale::global(before_); }
  GlobalLocale(const GlobalLocale&) = delete;
  GlobalLocale& operator=(const GlobalLocale&) = delete;

 private:
  std::locale before_;
};

TEST(Locale, DoesNotTouchNumbers) {
  const std::vector<std::string> expressions = {
      "1234567",
      "1000000*1000",
      "(1000000)+(1)",
      "1.5",
      "1.5+2.25",
      "(1.5+1)/2",
      "1234567.0*10",
      "1.0e10*1.0e10",
      "2.5e-3",
      "1,5",
      "-1.5",
      "f",
      "d*1000",
      "ull",
      "-i",
      "~1000",
      "&arr[1]",
      "arr[(1000+2)-1000]",
      "arr[1000]",
      "s.b*10000",
      "ps->b",
      "sizeof i",
      "(int)1234567.5",
      "(float)1065353216==1.0",
      "((((1000000))))",
      "p+1000",
      "#0x100",
      "0x1234567890",
  };
  FakeHost host;
  LoadProgram(host);
  std::vector<std::string> classic;
  for (const std::string& expression : expressions) {
    classic.push_back(ResolveWithAddress(host, expression));
  }
  const GlobalLocale locale;
  std::ostringstream proof;
  proof << 1234567 << ' ' << 1.5;
  ASSERT_EQ(proof.str(), "1.234.567 1,5");
  for (std::size_t n = 0; n < expressions.size(); ++n) {
    EXPECT_EQ(ResolveWithAddress(host, expressions[n]), classic[n])
        << "expression: " << expressions[n];
  }
}

TEST(Locale, DoesNotTouchTheTextsInBetween) {
  FakeHost host;
  LoadProgram(host);
  const GlobalLocale locale;
  OpenResolver resolver(&host);
  host.ClearCalls();
  ASSERT_TRUE(resolver.SolveStringOfElements("((1000000*1000)+0.5)"));
  EXPECT_EQ(host.calls, (std::vector<std::string>{
                            "IsTypeName(\"1000000*1000\") accessSize=8",
                            "FindLabel(\"1000000\") accessSize=8",
                            "FindLabel(\"1000\") accessSize=8",
                            "IsTypeName(\"^*^*^^\\r@0\\x0e1000000000^*^*^^+0,5\") accessSize=8",
                            "FindLabel(\"1000000000\") accessSize=8",
                        }));
  EXPECT_EQ(resolver.resultFloat, 1e9F);

  resolver.savedTypes.resize(1200);
  AreaBlock block;
  EXPECT_TRUE(resolver.ProcessAreaAsType(&block, "@1100"));
  ASSERT_FALSE(resolver.SolveStringOfElements("((1)+nolabel)"));
  EXPECT_EQ(host.calls.back(), "FindLabel(\"nolabel\") accessSize=8");
  EXPECT_NE(host.calls[host.calls.size() - 3].find("@1200"), std::string::npos);
}

TEST(Locale, DoesNotTouchReadsOfMemory) {
  FakeHost host;
  host.Answer(0x1000, "1234567");
  host.Answer(0x1008, "1.5");
  const GlobalLocale locale;
  OpenResolver resolver(&host);
  AreaBlock block;
  block.Value = 0x1000;
  block.Type = host.types.Pointer(host.types.Unsigned(4));
  bool space = false;
  EXPECT_TRUE(resolver.MoveFromPointerToObject(&block, &space));
  EXPECT_EQ(block.AreaText, "1234567");
  block = AreaBlock();
  block.Value = 0x1008;
  block.Type = host.types.Pointer(host.types.Double());
  EXPECT_TRUE(resolver.MoveFromPointerToObject(&block, &space));
  EXPECT_EQ(block.DoubleValue, 1.5);
  EXPECT_EQ(block.AreaText, "1,5");
}

}  // namespace
