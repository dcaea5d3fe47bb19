// The object after a failure: whatever failed, and wherever it failed, the next text resolves as on
// a new object, and nothing that the failed resolution built is left.

#include <gtest/gtest.h>

#include <new>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "tests/reliability/Allocations.h"
#include "tests/support/FakeHost.h"
#include "tests/support/OpenResolver.h"
#include "tests/support/Outcome.h"
#include "tests/support/Program.h"

namespace {

using testsupport::FakeHost;
using testsupport::HostFailure;
using testsupport::LoadProgram;
using testsupport::OpenResolver;
using testsupport::Resolve;

/// Long enough to have every kind of step in the middle of every other.
const std::vector<std::string> kExpressions = {
    "arr[arr[0]-8]+s.in.y*(2+ss[1].b)-(char)i",
    "(unsigned char)(i+1)+sizeof(struct S)*sizeof i+ps->h[1]",
    "head->next->v+*p+**pp+(1.5+f)*d",
    "#0x100+-~!(i+1)",
    "m[1][2]+m[arr[0]/10][(1)]+chars[0]+ptrs[1]",
    "((((i)+j)*u)-ll)+(int*)p+&s",
    "bad+bad*arr[bad]+1",
    "*(int*)(p+1)+(long long)c+(unsigned int)sh-(short)us",
};

/// Asked of the object after each failure.
const std::vector<std::string> kNextTexts = {"(i+2)*arr[1]", "s.in.y",  "(char)u",
                                             "1/0",          "nothing", "m[1][2]"};

std::vector<std::string> OutcomesOfNextTexts(OpenResolver* kept) {
  std::vector<std::string> outcomes;
  for (const std::string& text : kNextTexts) {
    if (kept != nullptr) {
      outcomes.push_back(Resolve(*kept, text));
    } else {
      FakeHost host;
      LoadProgram(host);
      outcomes.push_back(Resolve(host, text));
    }
  }
  return outcomes;
}

std::size_t CallsOf(const std::string& expression) {
  FakeHost host;
  LoadProgram(host);
  OpenResolver resolver(&host);
  const std::size_t before = host.callCount;
  resolver.SolveStringOfElements(expression);
  return host.callCount - before;
}

TEST(AfterFailure, NextTextsResolveWhicheverCallOfTheHostFails) {
  const std::vector<std::string> expected = OutcomesOfNextTexts(nullptr);
  for (const std::string& expression : kExpressions) {
    const std::size_t calls = CallsOf(expression);
    ASSERT_GT(calls, 0U) << expression;
    for (std::size_t n = 0; n < calls; ++n) {
      FakeHost host;
      LoadProgram(host);
      OpenResolver resolver(&host);
      host.FailAtCall(n);
      resolver.SolveStringOfElements(expression);
      EXPECT_EQ(OutcomesOfNextTexts(&resolver), expected) << expression << ", call " << n;
    }
  }
}

TEST(AfterFailure, WhatTheHostThrowsPassesThrough) {
  const std::vector<std::string> expected = OutcomesOfNextTexts(nullptr);
  for (const std::string& expression : kExpressions) {
    const std::size_t calls = CallsOf(expression);
    for (std::size_t n = 0; n < calls; ++n) {
      FakeHost host;
      LoadProgram(host);
      OpenResolver resolver(&host);
      host.ThrowAtCall(n);
      EXPECT_THROW(resolver.SolveStringOfElements(expression), HostFailure)
          << expression << ", call " << n;
      EXPECT_EQ(OutcomesOfNextTexts(&resolver), expected) << expression << ", call " << n;
    }
  }
}

TEST(AfterFailure, AHostThatThrowsItsFileNameMakesNoObject) {
  FakeHost host;
  const std::size_t before = allocations::Live();
  host.onCall = [](std::size_t, const std::string&) { throw HostFailure("no file"); };
  host.quiet = true;
  EXPECT_THROW(OpenResolver resolver(&host), HostFailure);
  host.onCall = nullptr;
  EXPECT_EQ(allocations::Live(), before);
}

/// Resolves on an object of its own while the n-th allocation is refused. Empty: there were fewer.
std::optional<bool> ResolveOnNewObject(const std::string& expression, std::size_t n,
                                       const std::vector<std::string>& expected) {
  FakeHost host;
  LoadProgram(host);
  host.quiet = true;
  OpenResolver resolver(&host);
  bool threw = false;
  {
    const allocations::RefuseOne refusal(n);
    try {
      resolver.SolveStringOfElements(expression);
    } catch (const std::bad_alloc&) {
      threw = true;
    }
    if (!refusal.Refused()) return std::nullopt;
  }
  EXPECT_EQ(OutcomesOfNextTexts(&resolver), expected) << expression << ", allocation " << n;
  return threw;
}

/// The same on a thread of its own: one that has no blocks left from earlier objects, and takes
/// those of this one with it.
std::optional<bool> ResolveShortOfMemory(const std::string& expression, std::size_t n,
                                         const std::vector<std::string>& expected) {
  std::optional<bool> threw;
  std::thread([&] { threw = ResolveOnNewObject(expression, n, expected); }).join();
  return threw;
}

TEST(AfterFailure, AnExhaustedMemoryReachesTheHostAndNothingIsLost) {
  const std::vector<std::string> expected = OutcomesOfNextTexts(nullptr);
  for (const std::string& expression : kExpressions) {
    std::size_t n = 0;
    for (;; ++n) {
      const std::size_t before = allocations::Live();
      const std::optional<bool> threw = ResolveShortOfMemory(expression, n, expected);
      if (!threw) break;
      EXPECT_TRUE(*threw) << expression << ", allocation " << n;
      EXPECT_EQ(allocations::Live(), before) << expression << ", allocation " << n;
    }
    EXPECT_GT(n, 5U) << expression;
  }
}

TEST(AfterFailure, AnExhaustedMemoryDuringConstructionLosesNothing) {
  FakeHost host;
  host.quiet = true;
  host.ClearCalls();
  for (std::size_t n = 0;; ++n) {
    const std::size_t before = allocations::Live();
    bool refused = false;
    try {
      const allocations::RefuseOne refusal(n);
      OpenResolver resolver(&host);
      if (!refusal.Refused()) break;
    } catch (const std::bad_alloc&) {
      refused = true;
    }
    EXPECT_TRUE(refused) << "allocation " << n;
    EXPECT_EQ(allocations::Live(), before) << "allocation " << n;
  }
}

}  // namespace
