// Times expressions over a program: nanoseconds for a resolution, and the allocations of one.
//
//   expression_times PROGRAM [EXPRESSION...]
//
// One line an expression: median nanoseconds and allocations with a fresh resolver for each
// resolution, the same with one kept, over a host in memory and over the ELF host, then the answer
// over either host, a number or "error"; tab-separated.

#include <algorithm>
#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include "bench/Allocations.h"
#include "bench/MemoryHost.h"
#include "bench/ProgramLabels.h"
#include "resolver/StringParametersResolving.h"
#include "targets/ElfProgram.h"
#include "targets/ProgramHost.h"

namespace {

struct Figures {
  double nanoseconds = 0;
  std::uint64_t allocations = 0;
};

template <typename Work>
Figures Measure(Work work) {
  // Processor time: what else runs on the machine is not counted.
  constexpr double kNanosecondsOfTick = 1e9 / CLOCKS_PER_SEC;
  constexpr int kRounds = 15;
  constexpr int kTimes = 2000;
  for (int i = 0; i < kTimes; ++i) work();
  std::vector<double> rounds;
  for (int round = 0; round < kRounds; ++round) {
    const std::clock_t start = std::clock();
    for (int i = 0; i < kTimes; ++i) work();
    rounds.push_back(static_cast<double>(std::clock() - start) * kNanosecondsOfTick / kTimes);
  }
  std::sort(rounds.begin(), rounds.end());
  const bench::Allocations before = bench::AllocationsSoFar();
  work();
  return {rounds[kRounds / 2], (bench::AllocationsSoFar() - before).count};
}

std::string Answer(TParrentInterface* host, const std::string& expression) {
  TStringResolver resolver(host);
  if (!resolver.SolveStringOfElements(expression)) return "error";
  std::ostringstream text;
  text.precision(std::numeric_limits<double>::max_digits10);
  if (resolver.resultFloating) {
    text << resolver.resultFloat;
  } else {
    text << (resolver.resultNegative ? "-" : "") << resolver.resultValue;
  }
  return text.str();
}

void Report(TParrentInterface* host, const std::string& expression, auto prepare) {
  const Figures fresh = Measure([&] {
    prepare();
    TStringResolver resolver(host);
    resolver.SolveStringOfElements(expression);
  });
  TStringResolver kept(host);
  const Figures again = Measure([&] {
    prepare();
    kept.SolveStringOfElements(expression);
  });
  std::printf("\t%.0f\t%" PRIu64 "\t%.0f\t%" PRIu64, fresh.nanoseconds, fresh.allocations,
              again.nanoseconds, again.allocations);
}

}  // namespace

int main(int count, char** arguments) {
  if (count < 3) {
    std::fputs("usage: expression_times PROGRAM EXPRESSION...\n", stderr);
    return 2;
  }
  targets::ElfProgram program(arguments[1]);
  bench::MemoryHost memory(program, program.Memory(), bench::ProgramLabels());
  targets::ProgramHost elf(program, program.Memory());
  for (int i = 2; i < count; ++i) {
    const std::string expression = arguments[i];
    std::printf("%s", expression.c_str());
    Report(&memory, expression, [] {});
    Report(&elf, expression, [&elf] { elf.StartResolution(); });
    elf.StartResolution();
    std::printf("\t%s\t%s\n", Answer(&memory, expression).c_str(),
                Answer(&elf, expression).c_str());
  }
  return 0;
}
