// What check.py counts under callgrind. Each measurement ends with a dump of the instructions since
// it began, under a title that check.py reads:
//
//   guard figures   resolutions, allocations of all of them, resolver, expression
//   guard growth    repetitions, shape
//   guard about     measures nothing; prints what figures depend on: architecture, compiler and its
//                   major version
//
// Exit status 1 when a resolution does not end as it must: then it is not what was meant to be
// measured.

#include <valgrind/callgrind.h>

#include <cstddef>
#include <cstdio>
#include <cstring>
#include <string>

#include "bench/Allocations.h"
#include "bench/Measured.h"
#include "bench/Shapes.h"
#include "bench/SmallHost.h"

namespace {

#if defined(__x86_64__)
constexpr const char* kArchitecture = "x86_64";
#elif defined(__aarch64__)
constexpr const char* kArchitecture = "aarch64";
#else
constexpr const char* kArchitecture = "other";
#endif
#if defined(__clang__)
constexpr const char* kCompiler = "clang++";
constexpr int kCompilerVersion = __clang_major__;
#else
constexpr const char* kCompiler = "g++";
constexpr int kCompilerVersion = __GNUC__;
#endif

struct Expression {
  std::string name;
  std::string text;
  bool resolves;
};

/// Resolutions of one measurement: the state of the heap makes one of them differ from the next a
/// little.
constexpr std::size_t kTimes = 20;
/// Resolutions before it, which find the blocks and buffers that later ones use again, and use up
/// the saved types that earlier resolvers have left.
constexpr std::size_t kWarmUp = 20;

/// True when all went as meant.
bool MeasureFigures(const std::string& resolver, const Expression& expression, auto resolve) {
  resolve(kWarmUp);
  const bench::Allocations before = bench::AllocationsSoFar();
  CALLGRIND_ZERO_STATS;
  const std::size_t resolved = resolve(kTimes);
  // The title is not known before, and making it must not count.
  CALLGRIND_TOGGLE_COLLECT;
  const bench::Allocations made = bench::AllocationsSoFar() - before;
  const std::string title = std::to_string(kTimes) + ' ' + std::to_string(made.count) + ' ' +
                            resolver + ' ' + expression.name;
  CALLGRIND_DUMP_STATS_AT(title.c_str());
  CALLGRIND_TOGGLE_COLLECT;
  return resolved == (expression.resolves ? kTimes : 0);
}

bool Figures() {
  const Expression expressions[] = {
      {"x", "x", true},
      {"x+1", "x+1", true},
      {"a[3]", "a[3]", true},
      {"s.in.y", "s.in.y", true},
      {"head->next->v", "head->next->v", true},
      {"(x+1)*(x-2)/3 + a[2]", "(x+1)*(x-2)/3 + a[2]", true},
      {"sizeof(s)", "sizeof(s)", true},
      {"f+0.5", "f+0.5", true},
      {"nosuch", "nosuch", false},
      {"sum of 1000 terms", bench::FindShape("sum")->Text(999), true},
  };
  bench::SmallHost host;
  bool asMeant = true;
  for (const Expression& expression : expressions) {
    asMeant &= MeasureFigures("fresh", expression, [&](std::size_t times) {
      return bench::MeasuredFresh(&host, expression.text, times);
    });
    TStringResolver kept(&host);
    asMeant &= MeasureFigures("kept", expression, [&](std::size_t times) {
      return bench::MeasuredKept(&kept, expression.text, times);
    });
  }
  return asMeant;
}

bool Growth() {
  bench::SmallHost host;
  bool asMeant = true;
  for (const char* name : {"sum", "operators", "labels", "nested", "groups", "prefixes",
                           "subscripts", "nested_subscripts", "pointers", "floating", "keywords"}) {
    const bench::Shape& shape = *bench::FindShape(name);
    for (const std::size_t n : {std::size_t{1'000}, std::size_t{10'000}}) {
      const std::string text = shape.Text(n);
      const std::string title = std::to_string(n) + ' ' + name;
      CALLGRIND_ZERO_STATS;
      const std::size_t resolved = bench::MeasuredFresh(&host, text, 1);
      CALLGRIND_DUMP_STATS_AT(title.c_str());
      // A run of keywords names no label; everything else has a value.
      asMeant &= resolved == (shape.name == "keywords" ? 0 : 1);
    }
  }
  return asMeant;
}

}  // namespace

int main(int count, char** arguments) {
  const char* const task = count == 2 ? arguments[1] : "";
  if (std::strcmp(task, "figures") == 0) return Figures() ? 0 : 1;
  if (std::strcmp(task, "growth") == 0) return Growth() ? 0 : 1;
  if (std::strcmp(task, "about") == 0) {
    std::printf("%s %s %d\n", kArchitecture, kCompiler, kCompilerVersion);
    return 0;
  }
  std::fputs("usage: guard figures | growth | about\n", stderr);
  return 2;
}
