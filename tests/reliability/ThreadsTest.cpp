// Distinct resolvers on distinct hosts share nothing. Run under ThreadSanitizer.

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/FakeHost.h"
#include "tests/support/Outcome.h"
#include "tests/support/Program.h"

namespace {

const std::vector<std::string> kExpressions = {"(i+2)*arr[arr[0]/10]",
                                               "s.in.y+ps->b",
                                               "(unsigned char)(i)",
                                               "1.5*f+d",
                                               "head->next->v",
                                               "sizeof(struct S)",
                                               "nothing",
                                               "1/0",
                                               "#0x100",
                                               "m[1][2]"};

std::vector<std::string> ResolveAll() {
  testsupport::FakeHost host;
  testsupport::LoadProgram(host);
  std::vector<std::string> outcomes;
  for (int round = 0; round < 50; ++round) {
    outcomes.clear();
    for (const std::string& expression : kExpressions) {
      outcomes.push_back(testsupport::Resolve(host, expression));
    }
  }
  return outcomes;
}

TEST(Threads, DistinctResolversRunSideBySide) {
  std::array<std::vector<std::string>, 4> outcomes;
  std::vector<std::thread> threads;
  for (std::vector<std::string>& mine : outcomes) {
    threads.emplace_back([&mine] { mine = ResolveAll(); });
  }
  for (std::thread& thread : threads) thread.join();
  const std::vector<std::string> expected = ResolveAll();
  for (const std::vector<std::string>& mine : outcomes) EXPECT_EQ(mine, expected);
}

using Names = SharedList<std::string>;

std::string Joined(const Names& names) {
  std::string text;
  for (const std::string& name : names) text += name + " ";
  return text;
}

TEST(Threads, ListsOfRecordsMayShareEntries) {
  const Names source{"a", "b", "c"};
  std::vector<std::thread> threads;
  std::vector<std::string> texts(4);
  for (std::size_t i = 0; i < texts.size(); ++i) {
    threads.emplace_back([&source, &text = texts[i], i] {
      for (int round = 0; round < 2000; ++round) {
        Names copy = source;
        const Names second = copy;
        copy.front() = std::to_string(i);
        text = Joined(copy) + Joined(second);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (std::size_t i = 0; i < texts.size(); ++i) {
    EXPECT_EQ(texts[i], std::to_string(i) + " b c a b c ");
  }
  EXPECT_EQ(Joined(source), "a b c ");
}

}  // namespace
