// Times expressions over a program: nanoseconds for a resolution, and the allocations of one.
//
//   expression_times PROGRAM [EXPRESSION...]
//
// One line an expression: median nanoseconds and allocations with a fresh resolver for each
// resolution, the same with one kept, over a host in memory and over the ELF host, tab-separated.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <string>
#include <vector>

#include "bench/MemoryHost.h"
#include "resolver/StringParametersResolving.h"
#include "targets/ElfProgram.h"
#include "targets/ProgramHost.h"

namespace {

std::size_t allocationCount = 0;

}  // namespace

void* operator new(std::size_t size) {
  ++allocationCount;
  if (void* const block = std::malloc(size)) return block;
  throw std::bad_alloc();
}
void operator delete(void* block) noexcept {
  std::free(block);
}
void operator delete(void* block, std::size_t /*size*/) noexcept {
  std::free(block);
}

namespace {

struct Figures {
  double nanoseconds = 0;
  std::size_t allocations = 0;
};

template <typename Work>
Figures Measure(Work work) {
  using Clock = std::chrono::steady_clock;
  constexpr int kRounds = 15;
  constexpr int kTimes = 2000;
  for (int i = 0; i < kTimes; ++i) work();
  std::vector<double> rounds;
  for (int round = 0; round < kRounds; ++round) {
    const auto start = Clock::now();
    for (int i = 0; i < kTimes; ++i) work();
    rounds.push_back(std::chrono::duration<double, std::nano>(Clock::now() - start).count() /
                     kTimes);
  }
  std::sort(rounds.begin(), rounds.end());
  const std::size_t before = allocationCount;
  work();
  return {rounds[kRounds / 2], allocationCount - before};
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
  std::printf("\t%.0f\t%zu\t%.0f\t%zu", fresh.nanoseconds, fresh.allocations, again.nanoseconds,
              again.allocations);
}

}  // namespace

int main(int count, char** arguments) {
  if (count < 3) {
    std::fputs("usage: expression_times PROGRAM EXPRESSION...\n", stderr);
    return 2;
  }
  targets::ElfProgram program(arguments[1]);
  bench::MemoryHost memory(program, program.Memory(),
                           {"x", "a", "s", "head", "first", "second", "third", "p", "ring", "arr",
                            "m", "f", "d", "wide"});
  targets::ProgramHost elf(program, program.Memory());
  for (int i = 2; i < count; ++i) {
    const std::string expression = arguments[i];
    std::printf("%s", expression.c_str());
    Report(&memory, expression, [] {});
    Report(&elf, expression, [&elf] { elf.StartResolution(); });
    std::printf("\n");
  }
  return 0;
}
