#include "tools/resolve/LineReader.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "tools/resolve/StreamError.h"

namespace tool {
namespace {

constexpr std::size_t kMostKept = 100'000;

std::vector<std::string> LinesOf(const std::string& text) {
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::tmpfile(), std::fclose);
  std::fwrite(text.data(), 1, text.size(), file.get());
  std::rewind(file.get());
  LineReader reader(fileno(file.get()), "the file", kMostKept);
  std::vector<std::string> lines;
  std::string line;
  while (reader.Read(&line)) lines.push_back(line);
  return lines;
}

TEST(LineReader, DeliversEveryLineAndEveryByte) {
  const std::vector<std::pair<std::string, std::vector<std::string>>> rows = {
      {"", {}},
      {"\n", {""}},
      {"a", {"a"}},
      {"a\n", {"a"}},
      {"a\nb", {"a", "b"}},
      {"a\n\nb\n", {"a", "", "b"}},
      {std::string("a\0b\n\xFF", 5), {std::string("a\0b", 3), "\xFF"}},
      {"a\r\nb", {"a\r", "b"}},
  };
  for (const auto& [text, lines] : rows) EXPECT_EQ(LinesOf(text), lines);
}

TEST(LineReader, JoinsWhatArrivesInPieces) {
  const std::string line(kMostKept - 1, 'x');
  EXPECT_EQ(LinesOf(line + "\n" + line + "\nend"), (std::vector<std::string>{line, line, "end"}));
}

TEST(LineReader, DropsWhatALineHasTooMuch) {
  const std::string most(kMostKept, 'x');
  EXPECT_EQ(LinesOf(most + "\n"), std::vector<std::string>{most});
  EXPECT_EQ(LinesOf(most + "yyy\nnext"), (std::vector<std::string>{most, "next"}));
}

TEST(LineReader, NamesWhatCannotBeRead) {
  LineReader reader(-1, "the stream", kMostKept);
  std::string line;
  try {
    reader.Read(&line);
    ADD_FAILURE() << "read from no file";
  } catch (const StreamError& error) {
    EXPECT_STREQ(error.what(), "cannot read the stream: Bad file descriptor");
  }
}

}  // namespace
}  // namespace tool
