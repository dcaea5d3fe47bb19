#include "tools/resolve/SimilarNames.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tool {
namespace {

struct SimilarRow {
  std::string typed;
  std::vector<std::string> similar;
};

TEST(SimilarNames, AreThoseThatMayBeMeant) {
  const std::vector<std::string> names = {"help", "labels", "layout", "types", "quit", "lab"};
  const std::vector<SimilarRow> rows = {
      {"help", {"help"}},
      {"hepl", {"help"}},
      {"hel", {"help"}},
      {"la", {"lab", "labels", "layout"}},
      {"lables", {"labels"}},
      {"typ", {"types"}},
      {"type", {"types"}},
      {"tpyes", {"types"}},
      {"quite", {"quit"}},
      {"q", {"quit"}},
      {"x", {}},
      {"", {}},
      {"zz", {}},
      {"nothing", {}},
      {"labelsss", {"labels"}},
      {std::string(10'000, 'x'), {}},
  };
  for (const SimilarRow& row : rows) EXPECT_EQ(SimilarNames(row.typed, names), row.similar);
}

TEST(SimilarNames, MakeAQuestion) {
  EXPECT_EQ(DidYouMean({}), "");
  EXPECT_EQ(DidYouMean({"a"}), "; did you mean a?");
  EXPECT_EQ(DidYouMean({"a", "b"}), "; did you mean a or b?");
  EXPECT_EQ(DidYouMean({"a", "b", "c"}), "; did you mean a, b or c?");
}

}  // namespace
}  // namespace tool
