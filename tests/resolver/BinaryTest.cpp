#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/FakeHost.h"
#include "tests/support/Outcome.h"
#include "tests/support/Program.h"

namespace {

using testsupport::FakeHost;
using testsupport::LoadProgram;
using testsupport::Resolve;
using testsupport::Row;

void CheckRows(const std::vector<Row>& rows) {
  FakeHost host;
  LoadProgram(host);
  for (const Row& row : rows) {
    EXPECT_EQ(Resolve(host, row.expression), row.outcome) << "expression: " << row.expression;
  }
  EXPECT_TRUE(host.violations.empty());
}

TEST(Binary, DivisionAndRemainder) {
  CheckRows({
      {"7/2", "3/8"},
      {"7%2", "1/8"},
      {"(int)-7/(int)2", "-3/4"},
      {"(int)7/(int)-2", "-3/4"},
      {"(int)-7/(int)-2", "3/4"},
      {"-7/2", "9223372036854775804/8"},
      // The remainder turns negative when either side is.
      {"(int)7%(int)-2", "-1/4"},
      {"(int)-7%(int)2", "-1/4"},
      {"(int)-7%(int)-2", "-1/4"},
      {"(int)8%(int)-2", "0/4"},
      {"i/j", "-1/4"},
      {"i%j", "-2/4"},
      {"(char)-128/(char)-1", "-128/1"},
      {"1/0", "error: Division by zero"},
      {"1%0", "error: Division by zero"},
      {"1.0/0", "error: Division by zero"},
      {"1/0.0", "error: Division by zero"},
      {"0.0/0.0", "error: Division by zero"},
      {"1/zero", "error: Division by zero"},
      {"5%0.5", "error: Division by zero"},
      {"5.5%0", "error: Division by zero"},
      // A floating divisor below one is no zero for a division.
      {"5/0.5", "10f/8"},
      {"1.5/0.25", "6f/8"},
      {"d/0.5", "4.5f/8"},
      {"5/-0.5", "-10f/8"},
      // Remainders are taken of the digits before the point.
      {"5.5%2", "1f/8"},
      {"5.5%2.9", "1f/8"},
      {"7%2.5", "1f/8"},
      {"d%2", "0f/8"},
      // A divisor that vanishes when its sign is taken off.
      {"5%(char)256", "error: Division by zero"},
  });
}

TEST(Binary, SizesAndSignsOfResults) {
  CheckRows({
      {"us+(unsigned short)1", "0/2"},
      {"us+1", "65536/8"},
      {"us+u", "65542/4"},
      {"u+us", "65542/4"},
      {"uc*uc", "64/1"},
      {"c+c", "-2/1"},
      // Of equal sizes the left type stays.
      {"i+u", "2/4"},
      {"u-(int)8", "4294967295/4"},
      {"(int)7-u-(int)1", "-1/4"},
      {"j-i", "8/4"},
      {"i*j", "-15/4"},
      {"i+c", "-6/4"},
      {"i+1", "18446744073709551612/8"},
      {"i+(int)1", "-4/4"},
      {"c+us", "65534/2"},
      {"ll+1", "-8/8"},
      {"1+ll", "18446744073709551608/8"},
      {"i&255", "251/8"},
      {"i|0", "18446744073709551611/8"},
      {"i^i", "0/4"},
      {"5-8", "18446744073709551613/8"},
  });
}

TEST(Binary, Comparisons) {
  CheckRows({
      {"i<j", "1/8"},
      {"(int)-5<(int)3", "1/8"},
      {"(int)5>(int)-3", "1/8"},
      {"(int)-5>(int)3", "0/8"},
      {"(int)5<=(int)-3", "0/8"},
      {"(int)-5>=(int)3", "0/8"},
      // Two negative numbers are compared by magnitude.
      {"(int)-5<(int)-3", "0/8"},
      {"(int)-3<(int)-5", "1/8"},
      {"(int)-5>(int)-3", "1/8"},
      {"(int)-5<=(int)-5", "1/8"},
      {"-5<3", "0/8"},
      {"c<uc", "1/8"},
      {"c==i", "0/8"},
      {"c==ll+8", "1/8"},
      {"c==255", "0/8"},
      {"(char)-1==(int)-1", "1/8"},
      {"c!=-1", "0/8"},
      {"uc==200", "1/8"},
      {"uc>100", "1/8"},
      {"p==0x2000", "1/8"},
      {"s==s", "1/8"},
      // Two floating sides give a floating answer.
      {"1.5<2.5", "1f/8"},
      {"2.5<1.5", "0f/8"},
      {"f<=1.5", "1f/8"},
      {"f>d", "0f/8"},
      {"d>=2.25", "1f/8"},
      {"d==2.25", "1f/8"},
      {"f!=1.5", "0f/8"},
      {"0.1==0.1", "1f/8"},
      {"1.0e400-1.0e400==1.0e400-1.0e400", "0f/8"},
      {"1.0e400-1.0e400!=1.0e400-1.0e400", "1f/8"},
      {"1.0e400-1.0e400<1.0", "0f/8"},
      // With one floating side the digits before the point count.
      {"1.5<2", "1f/8"},
      {"1.5<1", "0f/8"},
      {"1.9==1", "1f/8"},
      {"1==1.9", "1f/8"},
      {"d>2", "0f/8"},
      {"-1.5<2", "0f/8"},
  });
}

TEST(Binary, ShiftsBitsAndLogic) {
  CheckRows({
      {"3<<1", "6/8"},
      {"3<<65", "6/8"},
      {"3<<64", "3/8"},
      {"1<<63", "9223372036854775808/8"},
      {"1<<-1", "9223372036854775808/8"},
      {"6>>65", "3/8"},
      {"i>>1", "9223372036854775805/8"},
      {"i>>(int)1", "-3/4"},
      {"u>>(int)1", "3/4"},
      {"c<<(char)4", "-16/1"},
      {"6&3", "2/8"},
      {"6|3", "7/8"},
      {"6^3", "5/8"},
      {"2&&3", "1/8"},
      {"2&&0", "0/8"},
      {"0||0", "0/8"},
      {"0||3", "1/8"},
      {"c&&c", "1/8"},
      {"s&&s", "1/8"},
      {"1.5<<1", "error: Invalid type for << operation"},
      {"1<<1.5", "error: Invalid type for << operation"},
      {"1.5>>1", "error: Invalid type for >> operation"},
      {"1.5&1", "error: Invalid type for & operation"},
      {"1|1.5", "error: Invalid type for | operation"},
      {"1.5^1", "error: Invalid type for ^ operation"},
      {"1.5&&1", "error: Invalid type for && operation"},
      {"1||1.5", "error: Invalid type for || operation"},
      {"f|d", "error: Invalid type for | operation"},
  });
}

TEST(Binary, FloatingArithmetic) {
  CheckRows({
      {"1.5+1", "2.5f/8"},
      {"1+1.5", "2.5f/8"},
      {"f+1", "2.5f/8"},
      {"f+f", "3f/4"},
      {"f+c", "0.5f/4"},
      {"f*i", "-7.5f/4"},
      {"d+f", "3.75f/8"},
      {"d-3", "-0.75f/8"},
      {"d*0.1", "0.225f/8"},
      {"1.0/3.0", "0.333333f/8"},
      {"2.0/3.0", "0.666667f/8"},
      {"1.0e10+1", "1e+10f/8"},
      {"1.0e10*1.0e10", "1e+20f/8"},
      // Inside an element nothing is rounded; a group travels as six digits.
      {"1.0/3*3-1", "0f/8"},
      {"(1.0/3)*3-1", "-1.07288e-06f/8"},
      {"-1.5+1", "-0.5f/8"},
      {"1.0e20*1.0e20", "0f/8"},
      {"ull+0.0", "1.83648e+19f/8"},
      {"ll+0.0", "-9f/8"},
  });
}

TEST(Binary, PointerArithmetic) {
  CheckRows({
      {"p+1", "8196/8"},
      {"p-1", "8188/8"},
      {"p+j", "8204/8"},
      {"p+i", "8172/8"},
      {"pc+1", "8449/8"},
      {"pp+1", "4184/8"},
      {"ps+1", "12312/8"},
      {"*(p+1)", "20/4"},
      {"*(pc+1)", "101/1"},
      {"&i+1", "4132/8"},
      {"*(&arr+1)", "20/4"},
      {"*(arr+1)", "error: Can`t do the dereference operation with this type"},
      {"arr+1", "11/8"},
      {"1+arr", "11/8"},
      {"arr+arr", "20/4"},
      {"p-p", "0/8"},
      {"p+4-p", "16/8"},
      {"p+p", "16384/8"},
      {"p*2", "16384/8"},
      {"p&4095", "0/8"},
      {"p+1.5", "8193.5f/8"},
      {"p+(int*)1", "8193/8"},
      // Only to the right of a pointer is a number scaled; to its left it fails without a word.
      {"1+p", "error: "},
      {"1-p", "error: "},
      {"1+p+1", "error: "},
      {"1.5+p", "error: "},
      {"(1+p)", "error: "},
      {"1*p", "8192/8"},
  });
}

TEST(Binary, StructuresHaveNoArithmetic) {
  CheckRows({
      {"s+1", "error: Can`t convert one type to another"},
      {"1+s", "error: Can`t convert one type to another"},
      {"s*s", "error: Can`t convert one type to another"},
      {"s&1", "error: Can`t convert one type to another"},
      {"s.in+1", "error: Can`t convert one type to another"},
      {"(struct S)1+1", "error: Can`t convert one type to another"},
      {"s/0", "error: Division by zero"},
      {"s|1.5", "error: Invalid type for | operation"},
      // Added to a pointer, the number read from a structure counts elements.
      {"ps+s", "10411000740192/8"},
  });
}

TEST(Binary, WhatCannotBeReadCountsAsZero) {
  CheckRows({
      {"bad+1", "1/8"},
      {"1+bad", "1/8"},
      {"bad", "error: Error occurred"},
      {"1/bad", "error: Division by zero"},
      {"bad==0", "1/8"},
      {"bad||0", "0/8"},
  });
  FakeHost host;
  LoadProgram(host);
  TStringResolver resolver(&host);
  EXPECT_EQ(Resolve(resolver, "bad+1"), "1/8");
  EXPECT_EQ(resolver.errorMessage, "Invalid address");
}

}  // namespace
