#include "tools/resolve/Listing.h"

#include <algorithm>
#include <cstddef>
#include <exception>
#include <vector>

#include "targets/Error.h"
#include "tools/resolve/Printable.h"

namespace tool {
namespace {

// A longer name pushes its own details aside, not everyone's.
constexpr std::size_t kWidestColumn = 32;

}  // namespace

bool MatchesPattern(std::string_view name, std::string_view pattern) {
  std::size_t n = 0;
  std::size_t p = 0;
  // Only the last star can usefully take one more byte, so there is nothing older to go back to.
  std::size_t star = std::string_view::npos;
  std::size_t behindStar = 0;
  while (n < name.size()) {
    if (p < pattern.size() && pattern[p] == '*') {
      star = p++;
      behindStar = n;
    } else if (p < pattern.size() && (pattern[p] == '?' || pattern[p] == name[n])) {
      ++p;
      ++n;
    } else if (star != std::string_view::npos) {
      p = star + 1;
      n = ++behindStar;
    } else {
      return false;
    }
  }
  return pattern.find_first_not_of('*', p) == std::string_view::npos;
}

bool WriteListing(const Lister& lister, std::string_view pattern, Output* output,
                  const std::function<bool()>& stop) {
  std::vector<targets::Listing> entries;
  std::exception_ptr failure;
  try {
    lister([&](const targets::Listing& entry) {
      if (pattern.empty() || MatchesPattern(entry.name, pattern)) entries.push_back(entry);
    });
  } catch (const targets::Error&) {
    failure = std::current_exception();
  }
  std::size_t column = 0;
  for (const targets::Listing& entry : entries) {
    if (entry.name.size() <= kWidestColumn) column = std::max(column, entry.name.size());
  }
  for (const targets::Listing& entry : entries) {
    if (stop && stop()) break;
    std::string line = Printable(entry.name);
    if (!entry.detail.empty()) {
      line.append(line.size() < column ? column - line.size() : 0, ' ');
      line += "  " + Printable(entry.detail);
    }
    output->WriteLine(line);
  }
  output->Flush();
  if (failure) std::rethrow_exception(failure);
  return !entries.empty();
}

}  // namespace tool
