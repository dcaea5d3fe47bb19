#include "tools/resolve/CharacterConstant.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace tool {
namespace {

struct Row {
  std::string text;
  unsigned code;
  std::size_t length;
};

TEST(CharacterConstant, HasACodeAndALength) {
  const std::vector<Row> rows = {
      {"'A'", 65, 3},
      {"' '", 32, 3},
      {"'['", 91, 3},
      {"'\"'", 34, 3},
      {"'A'+1", 65, 3},
      {"'A''B'", 65, 3},
      {R"('\'')", 39, 4},
      {R"('\\')", 92, 4},
      {R"('\"')", 34, 4},
      {R"('\?')", 63, 4},
      {R"('\a')", 7, 4},
      {R"('\b')", 8, 4},
      {R"('\t')", 9, 4},
      {R"('\n')", 10, 4},
      {R"('\v')", 11, 4},
      {R"('\f')", 12, 4},
      {R"('\r')", 13, 4},
      {R"('\e')", 27, 4},
      {R"('\0')", 0, 4},
      {R"('\7')", 7, 4},
      {R"('\101')", 65, 6},
      {R"('\377')", 255, 6},
      {R"('\x0')", 0, 5},
      {R"('\x41')", 65, 6},
      {R"('\xfF')", 255, 6},
      {R"('\x00000041')", 65, 12},
      {"'\t'", 9, 3},
      {"'\xE9'", 233, 3},
      {std::string("'\0'", 3), 0, 3},
  };
  for (const Row& row : rows) {
    const auto constant = ReadCharacterConstant(row.text);
    ASSERT_TRUE(constant.has_value()) << row.text;
    EXPECT_EQ(constant->code, row.code) << row.text;
    EXPECT_EQ(constant->length, row.length) << row.text;
  }
}

TEST(CharacterConstant, IsNone) {
  const std::vector<std::string> rows = {"",
                                         "A",
                                         "'",
                                         "''",
                                         "'''",
                                         "'A",
                                         "'AB'",
                                         R"('\')",
                                         R"('\)",
                                         R"('\q')",
                                         R"('\x')",
                                         R"('\xg')",
                                         R"('\x100')",
                                         R"('\400')",
                                         R"('\8')",
                                         R"('\1011')",
                                         "'\n'",
                                         "\xE2\x80\x98"
                                         "A'",
                                         R"('\xffffffffffffffffffffff')"};
  for (const std::string& row : rows) {
    EXPECT_FALSE(ReadCharacterConstant(row).has_value()) << row;
  }
}

}  // namespace
}  // namespace tool
