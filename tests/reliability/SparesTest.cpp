// What resolvers leave for the next ones of their thread: nothing of a host, and nothing for good.

#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "tests/reliability/Allocations.h"
#include "tests/support/FakeHost.h"
#include "tests/support/Outcome.h"
#include "tests/support/Program.h"

namespace {

using testsupport::FakeHost;
using testsupport::LoadProgram;
using testsupport::Resolve;

/// Structures, pointers, groups, casts, names too long for a string's own room, and a failure.
const std::vector<std::string> kExpressions = {
    "arr[arr[0]-8]+s.in.y*(2+ss[1].b)-(char)i",
    "head->next->v+*p+**pp+(1.5+f)*d",
    "((((i)+(j))*(u))-(ll))+(int*)p+&s",
    "(unsigned char)(i+1)+sizeof(struct S)*sizeof i",
    "aNameThatIsLongerThanAnyRoom",
    "i+i+i+i+i+i+i+i+i+i+i+i+i+i+i+i+i+i+i+i+i+i+i+i",
};

/// Resolves all expressions on a new host, with a resolver each.
void ResolveAll() {
  FakeHost host;
  LoadProgram(host);
  host.quiet = true;
  for (const std::string& expression : kExpressions) Resolve(host, expression);
}

TEST(Spares, HoldNothingOfTheirHosts) {
  ResolveAll();
  const std::size_t before = allocations::Live();
  ResolveAll();
  EXPECT_EQ(allocations::Live(), before);
}

TEST(Spares, GoWithTheirThread) {
  const std::size_t before = allocations::Live();
  std::thread(ResolveAll).join();
  EXPECT_EQ(allocations::Live(), before);
}

/// A resolver in a thread's variable that is made before the thread's spares, and so destroyed
/// after them.
TEST(Spares, AreNotNeededByTheLastResolverOfAThread) {
  FakeHost host;
  LoadProgram(host);
  host.quiet = true;
  const std::size_t before = allocations::Live();
  std::thread([&host] {
    thread_local std::unique_ptr<TStringResolver> last;
    last = std::make_unique<TStringResolver>(&host);
    for (const std::string& expression : kExpressions) {
      EXPECT_EQ(Resolve(*last, expression), Resolve(host, expression)) << expression;
    }
  }).join();
  EXPECT_EQ(allocations::Live(), before);
}

}  // namespace
