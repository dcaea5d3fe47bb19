#include "tools/resolve/SimilarNames.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace tool {
namespace {

constexpr std::size_t kMostNames = 3;
constexpr std::size_t kMostChanges = 2;
// No command or file is called anything so long, and the cost is the product of the lengths.
constexpr std::size_t kLongestName = 200;

/// How many letters have to be added, dropped, changed or swapped with their neighbour.
std::size_t Changes(std::string_view a, std::string_view b) {
  std::vector<std::size_t> older(b.size() + 1);
  std::vector<std::size_t> old(b.size() + 1);
  std::vector<std::size_t> row(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) old[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t changed = old[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
      row[j] = std::min({changed, old[j] + 1, row[j - 1] + 1});
      const bool swapped = i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1];
      if (swapped) row[j] = std::min(row[j], older[j - 2] + 1);
    }
    std::swap(older, old);
    std::swap(old, row);
  }
  return old[b.size()];
}

}  // namespace

std::vector<std::string> SimilarNames(std::string_view typed,
                                      const std::vector<std::string>& names) {
  std::vector<std::pair<std::size_t, std::string>> close;
  for (const std::string& name : names) {
    if (typed.empty() || typed.size() > kLongestName || name.size() > kLongestName) continue;
    if (name.starts_with(typed)) {
      close.emplace_back(0, name);
      continue;
    }
    const std::size_t changes = Changes(typed, name);
    if (changes <= kMostChanges && changes < typed.size()) close.emplace_back(changes, name);
  }
  std::sort(close.begin(), close.end());
  std::vector<std::string> chosen;
  for (auto& [changes, name] : close) {
    if (chosen.size() < kMostNames) chosen.push_back(std::move(name));
  }
  return chosen;
}

std::string DidYouMean(const std::vector<std::string>& names) {
  std::string text;
  for (std::size_t n = 0; n < names.size(); ++n) {
    if (n == 0) {
      text = "; did you mean ";
    } else {
      text += n + 1 == names.size() ? " or " : ", ";
    }
    text += names[n];
  }
  return text.empty() ? text : text + "?";
}

}  // namespace tool
