// How the cost of a resolution grows with its text.
//
//   growth             a table: processor time of each shape of expression at three lengths, the
//                      ratio of the second to the first and of the third to the second, the outcome
//   growth SHAPE...    these rows of it
//   growth SHAPE N     resolves that shape once, with N repetitions, and prints the outcome; for
//                      valgrind --tool=callgrind --toggle-collect='bench::Measured*'
//
// A fresh resolver for each resolution, over a host in memory.

#include <malloc.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdio>
#include <ctime>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "bench/Measured.h"
#include "bench/Shapes.h"
#include "bench/SmallHost.h"

namespace {

struct Length {
  std::size_t n;
  int rounds;
};
using Lengths = std::array<Length, 3>;

constexpr Lengths kLengths = {{{10'000, 7}, {100'000, 5}, {1'000'000, 3}}};
/// Of shapes whose work grows with the square: the longest makes texts of 50 MB.
constexpr Lengths kShortLengths = {{{100, 7}, {1'000, 5}, {10'000, 3}}};

/// Time that this process, and no other, had a processor.
double Milliseconds() {
  return static_cast<double>(std::clock()) * 1000.0 / CLOCKS_PER_SEC;
}

/// Runs `print` in a process of its own: a row must not depend on the heap that others left behind.
void PrintAlone(auto print) {
  std::fflush(stdout);
  const pid_t child = fork();
  if (child <= 0) print();
  if (child == 0) {
    std::fflush(stdout);
    _exit(0);
  }
  if (child > 0) waitpid(child, nullptr, 0);
}

std::string Outcome(const std::string& text) {
  constexpr std::size_t kLongest = 60;
  bench::SmallHost host;
  TStringResolver resolver(&host);
  if (!resolver.SolveStringOfElements(text)) {
    const std::string& message = resolver.errorMessage;
    if (message.empty()) return "error";
    return "error: " + message.substr(0, kLongest) + (message.size() > kLongest ? "..." : "");
  }
  if (resolver.resultFloating) return std::to_string(resolver.resultFloat);
  return (resolver.resultNegative ? "-" : "") + std::to_string(resolver.resultValue);
}

/// The fastest of the rounds: what disturbs a round only ever makes it slower.
double Fastest(const std::string& text, int rounds) {
  bench::SmallHost host;
  double fastest = std::numeric_limits<double>::max();
  for (int round = 0; round < rounds; ++round) {
    const double start = Milliseconds();
    bench::MeasuredFresh(&host, text, 1);
    fastest = std::min(fastest, Milliseconds() - start);
  }
  return fastest;
}

void PrintHeader(const Lengths& lengths) {
  std::printf("%-20s", "shape");
  for (const Length& length : lengths) std::printf(" %10zu", length.n);
  std::printf("   ratios       outcome of the first\n");
}

void PrintRow(const bench::Shape& shape, const Lengths& lengths) {
  std::array<double, kLengths.size()> times{};
  std::printf("%-20s", shape.name.c_str());
  for (std::size_t i = 0; i < lengths.size(); ++i) {
    times[i] = Fastest(shape.Text(lengths[i].n), lengths[i].rounds);
    std::printf(" %10.3f", times[i]);
    std::fflush(stdout);
  }
  std::printf(" %6.1f %6.1f   %s\n", times[1] / times[0], times[2] / times[1],
              Outcome(shape.Text(lengths[0].n)).c_str());
}

void PrintTable(const std::vector<const bench::Shape*>& shapes) {
  struct Group {
    const char* title;
    bool growsWithSquare;
    const Lengths& lengths;
  };
  const std::array<Group, 2> groups = {{
      {"Milliseconds by number of repetitions", false, kLengths},
      {"Of casts, whose encoded text grows with the square of their number", true, kShortLengths},
  }};
  for (const Group& group : groups) {
    bool titled = false;
    for (const bench::Shape* shape : shapes) {
      if (shape->growsWithSquare != group.growsWithSquare) continue;
      if (!titled) {
        std::printf("%s\n\n", group.title);
        PrintHeader(group.lengths);
        titled = true;
      }
      PrintAlone([&] { PrintRow(*shape, group.lengths); });
    }
    if (titled) std::printf("\n");
  }
}

/// What saved types, which a resolver keeps for its life, make of its later resolutions.
void PrintKept(std::string_view expression, std::size_t times) {
  constexpr std::size_t kCounted = 1000;
  constexpr double kNanosecondsEach = 1e6 / kCounted;
  bench::SmallHost host;
  TStringResolver resolver(&host);
  const auto measure = [&](std::size_t count) {
    const double start = Milliseconds();
    bench::MeasuredKept(&resolver, expression, count);
    return (Milliseconds() - start) * kNanosecondsEach;
  };
  const double first = measure(kCounted);
  bench::MeasuredKept(&resolver, expression, times - 2 * kCounted);
  const double last = measure(kCounted);
  std::printf("%-20.*s %10zu %10.0f %10.0f %6.1f\n", static_cast<int>(expression.size()),
              expression.data(), times, first, last, last / first);
}

void PrintAllKept() {
  std::printf("One resolver kept: nanoseconds of each of its first and its last 1000\n\n");
  std::printf("%-20s %10s %10s %10s   ratio\n", "expression", "times", "first", "last");
  for (const char* expression : {"1+2", "(1)+2", "a[1]"}) {
    PrintAlone([&] { PrintKept(expression, 1'000'000); });
  }
  // The encoded cast has as many bytes as there are types saved before it.
  PrintAlone([] { PrintKept("(int)1", 100'000); });
}

int Usage() {
  std::fputs("usage: growth [SHAPE N | SHAPE...]\n\nshapes:\n", stderr);
  for (const bench::Shape& shape : bench::Shapes()) {
    std::fprintf(stderr, "  %-20s %s\n", shape.name.c_str(), shape.Text(3).c_str());
  }
  return 2;
}

bool ReadCount(std::string_view text, std::size_t* count) {
  const char* const end = text.data() + text.size();
  return std::from_chars(text.data(), end, *count).ptr == end;
}

}  // namespace

int main(int count, char** arguments) {
  // Memory that is freed stays for the next round: only the first one pays the system for it.
  mallopt(M_TRIM_THRESHOLD, std::numeric_limits<int>::max());
  mallopt(M_MMAP_THRESHOLD, std::numeric_limits<int>::max());
  std::size_t n = 0;
  if (count == 3 && ReadCount(arguments[2], &n)) {
    const bench::Shape* const shape = bench::FindShape(arguments[1]);
    if (shape == nullptr) return Usage();
    const std::string text = shape->Text(n);
    bench::SmallHost host;
    bench::MeasuredFresh(&host, text, 1);
    std::printf("%s\n", Outcome(text).c_str());
    return 0;
  }
  std::vector<const bench::Shape*> shapes;
  for (int i = 1; i < count; ++i) {
    shapes.push_back(bench::FindShape(arguments[i]));
    if (shapes.back() == nullptr) return Usage();
  }
  const bool all = shapes.empty();
  if (all) {
    for (const bench::Shape& shape : bench::Shapes()) shapes.push_back(&shape);
  }
  PrintTable(shapes);
  if (all) PrintAllKept();
  return 0;
}
