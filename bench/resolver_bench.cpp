// Time from text to value, over an in-memory host, with a fresh resolver for each resolution.

#include <benchmark/benchmark.h>

#include <string>

#include "resolver/StringParametersResolving.h"
#include "tests/support/Program.h"

namespace {

constexpr const char* kExpressions[] = {
    "1+2*3",         "i",
    "i+1",           "arr[3]",
    "s.in.y",        "m[1][3]",
    "head->next->v", "(char)i",
    "sizeof(i)",     "(u+1)*(u-2)/3+arr[2]",
    "f+0.5",         "missing",
};

void Resolve(benchmark::State& state, const std::string& expression) {
  testsupport::FakeHost host;
  testsupport::LoadProgram(host);
  host.quiet = true;
  for (auto _ : state) {
    TStringResolver resolver(&host);
    benchmark::DoNotOptimize(resolver.SolveStringOfElements(expression));
  }
}

const bool kRegistered = [] {
  for (const char* expression : kExpressions) {
    benchmark::RegisterBenchmark(expression, Resolve, expression);
  }
  return true;
}();

}  // namespace
