#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/FakeHost.h"
#include "tests/support/OpenResolver.h"

namespace {

using testsupport::FakeHost;
using testsupport::OpenResolver;
using testsupport::Visible;

struct Rewrite {
  std::string before;
  std::string after;
};

TEST(TypeKeywords, BlankBeforeALaterKeywordIsKept) {
  const std::vector<Rewrite> rows = {
      {"", ""},
      {"a+b", "a+b"},
      {"int", "int"},
      {"unsigned int", "unsigned:@:int"},
      {"(unsigned int)x", "(unsigned:@:int)x"},
      {"signed char", "signed:@:char"},
      {"char double", "char:@:double"},
      {"double float", "double:@:float"},
      {"long long unsigned int", "long:@:long:@:unsigned:@:int"},
      {"short int", "short:@:int"},
      {"sizeof(unsigned int)", "sizeof(unsigned:@:int)"},
      // The blank before the first keyword is not between two of its words.
      {" int", " int"},
      {"x + int", "x + int"},
      {" long int", " long:@:int"},
      {"x int double", "x int:@:double"},
      // Only one blank, and only a blank.
      {"unsigned  int", "unsigned :@:int"},
      {"unsigned\tint", "unsigned\tint"},
      {"unsignedint", "unsignedint"},
      // Keywords are found inside names as well.
      {" print x", " print x"},
      {"a print b int", "a print b:@:int"},
      {"charge + interval", "charge +:@:interval"},
      {"long intlong int", "long:@:intlong:@:int"},
      {"int x, unsigned char y", "int x,:@:unsigned:@:char y"},
  };
  FakeHost host;
  OpenResolver resolver(&host);
  for (const Rewrite& row : rows) {
    std::string text = row.before;
    resolver.ProcessBasickTypes(&text);
    EXPECT_EQ(text, row.after) << "text: " << row.before;
  }
}

void CheckProtection(const std::string& file, const std::vector<Rewrite>& rows) {
  FakeHost host(file);
  OpenResolver resolver(&host);
  for (const Rewrite& row : rows) {
    std::string text = row.before;
    EXPECT_FALSE(resolver.CheckFloatingPointStr(&text)) << "text: " << row.before;
    EXPECT_EQ(text, row.after) << "text: " << Visible(row.before) << " in " << file;
  }
}

const std::vector<Rewrite>& ProtectionRows() {
  static const std::vector<Rewrite> rows = {
      {"", ""},
      {"15", "15"},
      {"1.5", "1,5"},
      {"0.5", "0,5"},
      {"1.5.2", "1,5,2"},
      {"a+1.5", "a+1,5"},
      {"a.5", "a,5"},
      {"+.5", "+,5"},
      {"1..5", "1.,5"},
      // The very first byte is never looked at, and a point needs a digit behind it.
      {".5", ".5"},
      {"1.", "1."},
      {"x.y", "x.y"},
      {"1.x", "1.x"},
      // Exponents of tokens that begin with a digit.
      {"1e+5", "1e,5"},
      {"1e-5", "1@,5"},
      {"1.5e+3", "1,5e,3"},
      {"2.5e-3", "2,5@,3"},
      {"a*2e+3", "a*2e,3"},
      {"(2e-3)", "(2@,3)"},
      {"2e+3e+4", "2e,3e,4"},
      {"2e-3e+4", "2@,3e,4"},
      {"3ee+1", "3ee,1"},
      {"0x1e+5", "0x1e,5"},
      {"0x1e-5", "0x1@,5"},
      {"a+1e+b", "a+1e,b"},
      {"\x18\x18"
       "1e+2",
       "\x18\x18"
       "1e,2"},
      // Names and empty tokens keep theirs.
      {"Ve+1", "Ve+1"},
      {"abe+1", "abe+1"},
      {"abe-1", "abe-1"},
      {"e+1", "e+1"},
      {"-e+1", "-e+1"},
      {"2E+3", "2E+3"},
      {"[1e+2", "[1e+2"},
  };
  return rows;
}

TEST(FloatingLiterals, PointAndExponentSignAreProtectedInBothDialects) {
  CheckProtection("main.c", ProtectionRows());
  CheckProtection("main.asm", ProtectionRows());
}

TEST(FloatingLiterals, APointEndsATokenOnlyInC) {
  CheckProtection("main.c", {{".5e+3", ".5e,3"}, {".5e-3", ".5@,3"}});
  CheckProtection("main.asm", {{".5e+3", ".5e+3"}, {".5e-3", ".5e-3"}});
}

TEST(FloatingLiterals, ProtectionIsUndone) {
  const std::vector<Rewrite> rows = {
      {"", ""},
      {"15", "15"},
      {"1,5", "1.5"},
      {"1,5e,3", "1.5e+3"},
      {"2,5@,3", "2.5e-3"},
      {"a,b", "a.b"},
      {",", "."},
      {"1,2,3", "1.2.3"},
      {"e,,", "e+."},
      {"@,,", "e-."},
      {"@@,,", "@e-."},
      {"1.5", "1.5"},
      {"x@y", "x@y"},
  };
  FakeHost host;
  OpenResolver resolver(&host);
  for (const Rewrite& row : rows) {
    std::string text = row.before;
    EXPECT_FALSE(resolver.RestoreFloatingPointStr(&text)) << "text: " << row.before;
    EXPECT_EQ(text, row.after) << "text: " << row.before;
  }
}

TEST(FloatingLiterals, ProtectionAndItsUndoingAreInverse) {
  FakeHost host;
  OpenResolver resolver(&host);
  for (const char* literal : {"0.333333", "1e+10", "1.5e+10", "2.5e-07", "1e-05", "12", "0"}) {
    std::string text = literal;
    resolver.CheckFloatingPointStr(&text);
    EXPECT_EQ(text.find_first_of(".+-"), std::string::npos) << "literal: " << literal;
    resolver.RestoreFloatingPointStr(&text);
    EXPECT_EQ(text, literal);
  }
}

}  // namespace
