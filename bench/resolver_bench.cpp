// Time from text to value, and the heap allocations and their bytes on the way, of expressions over
// program.c: over a host in memory, where what is measured is the resolver, and over the ELF host;
// with a fresh resolver for each resolution, and with one kept.

#include <benchmark/benchmark.h>

#include <cstddef>
#include <exception>
#include <functional>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>

#include "bench/Allocations.h"
#include "bench/MemoryHost.h"
#include "bench/ProgramLabels.h"
#include "resolver/StringParametersResolving.h"
#include "targets/ElfProgram.h"
#include "targets/ProgramHost.h"

namespace {

constexpr const char* kExpressions[] = {
    "1+2*3",        "x",
    "x+1",          "a[3]",
    "s.in.y",       "head->next->v",
    "arr[1].x + 2", "m[2][3]",
    "(char)x",      "sizeof(s)",
    "f+0.5",        "d*2.0",
    "nosuch",       "wide",
    "wide.f499",    "(x+1)*(x-2)/3 + a[2]",
};

/// A host, and what to do before each resolution over it.
struct Target {
  TParrentInterface* host;
  std::function<void()> prepare;
};

/// Runs `resolve` for as long as the benchmark lasts; counters tell of one resolution.
template <typename Resolve>
void Measure(benchmark::State& state, const Target& target, Resolve resolve) {
  const bench::Allocations before = bench::AllocationsSoFar();
  for (auto _ : state) {
    target.prepare();
    benchmark::DoNotOptimize(resolve());
  }
  const bench::Allocations made = bench::AllocationsSoFar() - before;
  const auto each = benchmark::Counter::kAvgIterations;
  state.counters["allocs"] = {static_cast<double>(made.count), each};
  state.counters["bytes"] = {static_cast<double>(made.bytes), each};
}

void Fresh(benchmark::State& state, const Target& target, std::string_view expression) {
  Measure(state, target, [&] {
    TStringResolver resolver(target.host);
    return resolver.SolveStringOfElements(expression);
  });
}

void Kept(benchmark::State& state, const Target& target, std::string_view expression) {
  // The types that a resolver saves stay for its life, and the text of a cast grows with their
  // number: without an end, the figures would depend on how long the benchmark runs.
  constexpr std::size_t kResolutionsOfOne = 1000;
  std::optional<TStringResolver> resolver;
  std::size_t left = 0;
  Measure(state, target, [&] {
    if (left == 0) {
      resolver.emplace(target.host);
      left = kResolutionsOfOne;
    }
    --left;
    return resolver->SolveStringOfElements(expression);
  });
}

void Register(const std::string& name, const Target& target) {
  for (const std::string expression : kExpressions) {
    benchmark::RegisterBenchmark((expression + "/" + name + "/fresh").c_str(), Fresh, target,
                                 expression);
    benchmark::RegisterBenchmark((expression + "/" + name + "/kept").c_str(), Kept, target,
                                 expression);
  }
}

}  // namespace

int main(int count, char** arguments) {
  benchmark::Initialize(&count, arguments);
  if (benchmark::ReportUnrecognizedArguments(count, arguments)) return 2;
  try {
    targets::ElfProgram program(BENCH_PROGRAM);
    bench::MemoryHost memory(program, program.Memory(), bench::ProgramLabels());
    targets::ProgramHost elf(program, program.Memory());
    Register("memory", {&memory, [] {}});
    Register("elf", {&elf, [&elf] { elf.StartResolution(); }});
    benchmark::RunSpecifiedBenchmarks();
  } catch (const std::exception& error) {
    std::cerr << BENCH_PROGRAM << ": " << error.what() << '\n';
    return 1;
  }
  benchmark::Shutdown();
  return 0;
}
