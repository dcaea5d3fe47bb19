#include "tools/resolve/Answer.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

namespace tool {
namespace {

Answer Integer(bool negative, std::uint64_t magnitude) {
  Answer answer;
  answer.negative = negative;
  answer.magnitude = magnitude;
  return answer;
}

Answer Floating(float number) {
  Answer answer;
  answer.floating = true;
  answer.number = number;
  answer.size = 4;
  return answer;
}

TEST(FormatValue, HasTheSignAndNoMoreDigitsThanNeeded) {
  const std::vector<std::pair<Answer, std::string>> rows = {
      {Integer(false, 0), "0"},
      {Integer(false, 42), "42"},
      {Integer(true, 5), "-5"},
      {Integer(false, UINT64_MAX), "18446744073709551615"},
      {Integer(true, std::uint64_t{1} << 63), "-9223372036854775808"},
      {Floating(0.0F), "0"},
      {Floating(-0.0F), "-0"},
      {Floating(0.5F), "0.5"},
      {Floating(0.1F), "0.1"},
      {Floating(-1.5F), "-1.5"},
      {Floating(3.14159F), "3.14159"},
      {Floating(16777216.0F), "16777216"},
      {Floating(1e10F), "1e+10"},
      {Floating(1.0F / 3), "0.33333334"},
      {Floating(FLT_MAX), "3.4028235e+38"},
      {Floating(FLT_TRUE_MIN), "1e-45"},
  };
  for (const auto& [answer, text] : rows) EXPECT_EQ(FormatValue(answer), text);
}

TEST(FormatDetails, NameSizeSignPlaceAndSpace) {
  Answer answer = Integer(true, 5);
  EXPECT_EQ(FormatDetails(answer), "8 bytes, unsigned, no address, memory space 0");
  answer.size = 1;
  answer.isSigned = true;
  answer.address = 0xFFFFFFFF80004010;
  answer.space = 1;
  EXPECT_EQ(FormatDetails(answer), "1 byte, signed, at 0xffffffff80004010, memory space 1");
  EXPECT_EQ(FormatDetails(Floating(1)), "4 bytes, floating, no address, memory space 0");
}

TEST(FormatAddress, IsHexadecimalWithoutLeadingZeros) {
  EXPECT_EQ(FormatAddress(0), "0x0");
  EXPECT_EQ(FormatAddress(0x404040), "0x404040");
  EXPECT_EQ(FormatAddress(UINT64_MAX), "0xffffffffffffffff");
}

}  // namespace
}  // namespace tool
