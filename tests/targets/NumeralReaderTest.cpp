#include "targets/NumeralReader.h"

#include <gtest/gtest.h>

#include <string>

namespace targets {
namespace {

struct Row {
  std::string text;
  std::uint64_t value;
};

TEST(NumeralReader, ReadsEveryFormOfInteger) {
  const Row rows[] = {
      {"0", 0},
      {"7", 7},
      {"00", 0},
      {"10", 10},
      {"18446744073709551615", 18446744073709551615U},
      {"9999999999999999999", 9999999999999999999U},
      {"0x0", 0},
      {"0x1F", 31},
      {"0XfF", 255},
      {"0xffffffffffffffff", 18446744073709551615U},
      {"0x0000000000000000000000001", 1},
      {"0b101", 5},
      {"0B11", 3},
      {"0b1111111111111111111111111111111111111111111111111111111111111111", 18446744073709551615U},
      {"017", 15},
      {"01777777777777777777777", 18446744073709551615U},
      {"5u", 5},
      {"5U", 5},
      {"5l", 5},
      {"5L", 5},
      {"5ll", 5},
      {"5LL", 5},
      {"5ul", 5},
      {"5LU", 5},
      {"5uLL", 5},
      {"5llU", 5},
      {"0x1Ful", 31},
      {"0b1u", 1},
      {"017L", 15},
      {"0u", 0},
  };
  for (const Row& row : rows) EXPECT_EQ(ReadNumeral(row.text), row.value) << row.text;
}

TEST(NumeralReader, ReadsEveryFormOfCharacter) {
  const Row rows[] = {
      {"'A'", 65},       {"'0'", 48},        {"'\"'", 34},       {"' '", 32},
      {R"('\n')", 10},   {R"('\t')", 9},     {R"('\r')", 13},    {R"('\a')", 7},
      {R"('\b')", 8},    {R"('\f')", 12},    {R"('\v')", 11},    {R"('\e')", 27},
      {R"('\\')", 92},   {R"('\'')", 39},    {R"('\"')", 34},    {R"('\?')", 63},
      {R"('\0')", 0},    {R"('\x41')", 65},  {R"('\xfF')", 255}, {R"('\x0041')", 65},
      {R"('\101')", 65}, {R"('\377')", 255}, {R"('\7')", 7},     {"'\x80'", 128},
  };
  for (const Row& row : rows) EXPECT_EQ(ReadNumeral(row.text), row.value) << row.text;
}

TEST(NumeralReader, RejectsWhatIsNoNumeral) {
  const std::string texts[] = {
      "",
      "a",
      "_1",
      "-1",
      "+1",
      " 1",
      "1 ",
      "1.5",
      "1e3",
      "08",
      "09u",
      "018",
      "0x",
      "0X",
      "0xg",
      "0b",
      "0b2",
      "0b12",
      "1x",
      "12a",
      "5uu",
      "5lL",
      "5Ll",
      "5lll",
      "5lul",
      "5ulu",
      "5ulL",
      "5k",
      "18446744073709551616",
      "18446744073709551620",
      "99999999999999999999",
      "0x10000000000000000",
      "02000000000000000000000",
      "0b10000000000000000000000000000000000000000000000000000000000000000",
      "'",
      "''",
      "'A",
      "A'",
      "'AB'",
      "'''",
      R"('\')",
      R"('\q')",
      R"('\x')",
      R"('\x100')",
      R"('\400')",
      R"('\1234')",
      R"('\8')",
      R"('\nn')",
      "'\n'",
      "L'A'",
      std::string("1\0", 2),
  };
  for (const std::string& text : texts) EXPECT_EQ(ReadNumeral(text), std::nullopt) << text;
}

TEST(NumeralReader, CopesWithLongTexts) {
  EXPECT_EQ(ReadNumeral(std::string(1000000, '0')), 0U);
  EXPECT_EQ(ReadNumeral(std::string(1000000, '9')), std::nullopt);
  EXPECT_EQ(ReadNumeral("0x" + std::string(1000000, '0') + "7"), 7U);
  EXPECT_EQ(ReadNumeral("'\\x" + std::string(1000000, '0') + "7'"), 7U);
}

}  // namespace
}  // namespace targets
