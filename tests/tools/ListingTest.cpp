#include "tools/resolve/Listing.h"

#include <gtest/gtest.h>

#include <string>

namespace tool {
namespace {

struct Row {
  std::string name;
  std::string pattern;
  bool matches;
};

TEST(MatchesPattern, ComparesWholeNames) {
  const Row rows[] = {
      {"", "", true},
      {"a", "", false},
      {"a", "a", true},
      {"a", "A", false},
      {"ab", "a", false},
      {"ab", "b", false},
      {"", "*", true},
      {"ab", "*", true},
      {"ab", "a*", true},
      {"ab", "*b", true},
      {"ab", "*a", false},
      {"ab", "a*b*", true},
      {"ab", "ab**", true},
      {"ab", "??", true},
      {"ab", "?", false},
      {"", "?", false},
      {"table.first", "table.*", true},
      {"table.first", "*.f*t", true},
      {"tablefirst", "table.*", false},
      {"aab", "*ab", true},
      {"abcabd", "*abd", true},
      {"abcabc", "*abd*", false},
      {"mississippi", "*iss*ip*", true},
      {"a*b", "a*b", true},
      {"a[b", "a[b", true},
      {"struct node", "struct ?ode", true},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(MatchesPattern(row.name, row.pattern), row.matches)
        << row.name << " against " << row.pattern;
  }
}

TEST(MatchesPattern, TakesManyStars) {
  const std::string name(20'000, 'a');
  std::string pattern;
  for (int i = 0; i < 1'000; ++i) pattern += "a*";
  EXPECT_TRUE(MatchesPattern(name, pattern));
  EXPECT_FALSE(MatchesPattern(name, pattern + "b"));
}

}  // namespace
}  // namespace tool
