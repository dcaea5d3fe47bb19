#include "targets/NameTable.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace {

using targets::NameTable;
using Numbers = std::vector<std::uint32_t>;

Numbers NumbersOf(NameTable* table, const std::string& name) {
  Numbers numbers;
  for (std::uint32_t n = table->First(name); n != NameTable::kNone; n = table->Next(n)) {
    numbers.push_back(n);
  }
  return numbers;
}

// The first names are searched for, later ones are found by chains.
TEST(NameTable, FindsNamesInOrderHoweverManyWereLookedUpBefore) {
  NameTable table;
  for (const char* name : {"x", "y", "x", "", "x", "yy", "y"}) table.Add(name);
  for (int round = 0; round < 20; ++round) {
    EXPECT_EQ(NumbersOf(&table, "x"), (Numbers{0, 2, 4})) << round;
    EXPECT_EQ(NumbersOf(&table, "y"), (Numbers{1, 6})) << round;
    EXPECT_EQ(NumbersOf(&table, "yy"), (Numbers{5})) << round;
    EXPECT_EQ(NumbersOf(&table, ""), (Numbers{3})) << round;
    EXPECT_EQ(NumbersOf(&table, "z"), Numbers{}) << round;
  }
}

TEST(NameTable, KnowsWhatIsAddedBetweenLookUps) {
  NameTable table;
  EXPECT_EQ(NumbersOf(&table, "n0"), Numbers{});
  std::vector<std::string> names;
  names.reserve(100);
  for (std::uint32_t n = 0; n < 100; ++n) {
    table.Add(names.emplace_back("n" + std::to_string(n % 50)));
    EXPECT_EQ(table.Size(), n + 1);
    EXPECT_EQ(NumbersOf(&table, names.back()), n < 50 ? Numbers{n} : (Numbers{n - 50, n}));
  }
  EXPECT_EQ(table.NameOf(7), "n7");
}

}  // namespace
