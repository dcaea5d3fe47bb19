#include "tools/resolve/Printable.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tool {
namespace {

TEST(Printable, IsOneHarmlessLine) {
  const std::vector<std::pair<std::string, std::string>> rows = {
      {"", ""},
      {"a[i] + 'x'", "a[i] + 'x'"},
      {"caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80", "caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80"},
      {"a\nb\r\tc", "a\\nb\\r\\tc"},
      {std::string("a\0b", 3), "a\\x00b"},
      {"\x1b[2J\x7f", "\\x1b[2J\\x7f"},
      // No UTF-8: a lone byte, a cut sequence, one longer than needed, a surrogate, too large.
      {"\xFF", "\\xff"},
      {"\x80", "\\x80"},
      {"\xC3", "\\xc3"},
      {"\xE2\x82", "\\xe2\\x82"},
      {"\xC0\x80", "\\xc0\\x80"},
      {"\xED\xA0\x80", "\\xed\\xa0\\x80"},
      {"\xF4\x90\x80\x80", "\\xf4\\x90\\x80\\x80"},
      // UTF-8, but it steers the terminal: a C1 control, a line separator, a change of direction.
      {"\xC2\x9B", "\\xc2\\x9b"},
      {"\xE2\x80\xA8", "\\xe2\\x80\\xa8"},
      {"\xE2\x80\xAE", "\\xe2\\x80\\xae"},
  };
  for (const auto& [text, shown] : rows) EXPECT_EQ(Printable(text), shown);
}

TEST(Printable, LeavesOutTheMiddleOfALongText) {
  const std::string longest(kLongestEcho, 'x');
  EXPECT_EQ(Printable(longest), longest);
  const std::string half(kLongestEcho / 2, 'x');
  EXPECT_EQ(Printable(longest + "x"), half + " ...(1 bytes)... " + half);
}

TEST(Printable, CutsBetweenCharacters) {
  std::string text = "x";
  for (std::size_t i = 0; i < kLongestEcho; ++i) text += "\xE2\x82\xAC";
  const std::string shown = Printable(text);
  EXPECT_EQ(shown.find("\\x"), std::string::npos) << shown;
  EXPECT_NE(shown.find(" bytes)... "), std::string::npos) << shown;
}

TEST(Printable, CutsBytesThatAreNoTextAsWell) {
  EXPECT_NE(Printable(std::string(2 * kLongestEcho, '\x80')).find(" bytes)... "),
            std::string::npos);
}

}  // namespace
}  // namespace tool
