#include "tools/resolve/Watch.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <stdexcept>
#include <string>
#include <vector>

namespace tool {
namespace {

/// A target whose values are another list in each round.
struct Rounds {
  std::vector<std::string> expressions;
  std::vector<std::vector<WatchedValue>> values;
  Watch::Needs::Size size;
};

/// Everything that a watch writes until its rounds are over.
std::string Written(const Rounds& rounds) {
  std::array<int, 2> ends{};
  if (pipe(ends.data()) != 0) throw std::runtime_error("no pipe");
  Output output(ends[1], "the pipe");
  std::size_t round = 0;
  std::size_t place = 0;
  Watch::Needs needs;
  needs.evaluate = [&](const std::string& expression) {
    EXPECT_EQ(expression, rounds.expressions[place]);
    return rounds.values[round][place++];
  };
  needs.pause = [&] {
    place = 0;
    return ++round < rounds.values.size();
  };
  needs.clock = [&] { return 100.0 + 0.25 * static_cast<double>(round); };
  needs.size = [&] { return rounds.size; };
  Watch(rounds.expressions, needs, Style(), &output).Run();
  close(ends[1]);
  std::string text;
  std::array<char, 4096> part{};
  for (ssize_t count = 0; (count = read(ends[0], part.data(), part.size())) > 0;) {
    text.append(part.data(), static_cast<std::size_t>(count));
  }
  close(ends[0]);
  return text;
}

struct WatchRow {
  const char* name;
  Rounds rounds;
  std::string written;
};

TEST(Watch, ShowsWhatChanged) {
  const std::vector<WatchRow> rows = {
      {"one round", {{"x", "y"}, {{{"1"}, {"2"}}}, {}}, "     0.000  x = 1\n     0.000  y = 2\n"},
      {"nothing changes", {{"x"}, {{{"1"}}, {{"1"}}, {{"1"}}}, {}}, "     0.000  x = 1\n"},
      {"one of two changes",
       {{"x", "y"}, {{{"1"}, {"2"}}, {{"1"}, {"3"}}, {{"1"}, {"3"}}, {{"4"}, {"3"}}}, {}},
       "     0.000  x = 1\n     0.000  y = 2\n     0.250  y = 3\n     0.750  x = 4\n"},
      {"a failure is a change",
       {{"x"}, {{{"1"}}, {{"gone", true}}, {{"gone", true}}, {{"1"}}}, {}},
       "     0.000  x = 1\n     0.250  x: gone\n     0.750  x = 1\n"},
      {"an expression that could steer a terminal",
       {{"x\x1b"}, {{{"1"}}}, {}},
       "     0.000  x\\x1b = 1\n"},
      {"in place",
       {{"x", "y"}, {{{"1"}, {"2"}}, {{"1"}, {"3"}}, {{"1"}, {"3"}}}, {80, 24}},
       "\r  x = 1\x1b[K\n  y = 2\x1b[K\n\x1b[J"
       "\x1b[2A\r  x = 1\x1b[K\n* y = 3\x1b[K\n\x1b[J"
       "\x1b[2A\r  x = 1\x1b[K\n  y = 3\x1b[K\n\x1b[J"},
      {"a line that is too long",
       {{"x"}, {{{"123456789"}}}, {10, 24}},
       "\r  x = 123\x1b[K\n\x1b[J"},
      {"a character of several bytes at the edge",
       {{"x"}, {{{"12\u00e94"}}}, {10, 24}},
       "\r  x = 12\u00e9\x1b[K\n\x1b[J"},
      {"more lines than fit",
       {{"a", "b", "c", "d"}, {{{"1"}, {"2"}, {"3"}, {"4"}}}, {80, 4}},
       "\r  a = 1\x1b[K\n  b = 2\x1b[K\n  and 2 more\x1b[K\n\x1b[J"},
      {"as many lines as fit",
       {{"a", "b", "c"}, {{{"1"}, {"2"}, {"3"}}}, {80, 4}},
       "\r  a = 1\x1b[K\n  b = 2\x1b[K\n  c = 3\x1b[K\n\x1b[J"},
  };
  for (const WatchRow& row : rows) EXPECT_EQ(Written(row.rounds), row.written) << row.name;
}

TEST(Watch, EndsWithWhatTheEvaluationThrows) {
  Output output(STDOUT_FILENO, "standard output");
  Watch::Needs needs;
  needs.evaluate = [](const std::string&) -> WatchedValue { throw std::runtime_error("lost"); };
  needs.pause = [] { return true; };
  needs.clock = [] { return 0.0; };
  needs.size = [] { return Watch::Needs::Size{}; };
  EXPECT_THROW(Watch({"x"}, needs, Style(), &output).Run(), std::runtime_error);
}

}  // namespace
}  // namespace tool
