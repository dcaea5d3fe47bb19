// Times of completion at the prompt over a program, in milliseconds: the first one, which gathers
// the names, and those after it.
//
//   completion_times PROGRAM [TEXT...]
//
// Without a TEXT, texts for a program of `generate_program` are completed.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

#include "tools/resolve/Completion.h"
#include "tools/resolve/FileTarget.h"

namespace {

using Clock = std::chrono::steady_clock;

double MillisecondsSince(Clock::time_point start) {
  return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

}  // namespace

int main(int count, char** arguments) {
  if (count < 2) {
    std::fputs("usage: completion_times PROGRAM [TEXT...]\n", stderr);
    return 2;
  }
  std::vector<std::string> texts(arguments + 2, arguments + count);
  if (texts.empty()) {
    texts = {"v1999",          "",           "s0.",     "s0.at.", "s0.next->ne",
             "(struct item19", "sizeof(uns", ":types s"};
  }
  const auto opening = Clock::now();
  tool::FileTarget target(arguments[1], "/usr/lib/debug");
  std::printf("%10.3f  opening the program\n", MillisecondsSince(opening));
  const tool::LastValue last;
  tool::Completer completer(target, last);
  for (const std::string& text : texts) {
    const auto first = Clock::now();
    const std::size_t found = completer.Complete(text).count;
    const double firstTime = MillisecondsSince(first);
    constexpr int kRounds = 20;
    std::vector<double> times;
    for (int round = 0; round < kRounds; ++round) {
      const auto start = Clock::now();
      completer.Complete(text);
      times.push_back(MillisecondsSince(start));
    }
    std::sort(times.begin(), times.end());
    std::printf("%10.3f  then %8.3f  `%s`: %zu candidates\n", firstTime, times[kRounds / 2],
                text.c_str(), found);
  }
  return 0;
}
