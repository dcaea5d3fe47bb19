#include "tools/resolve/NameIndex.h"

#include <algorithm>

namespace tool {

void NameIndex::Sort() {
  std::sort(names_.begin(), names_.end());
  names_.erase(std::unique(names_.begin(), names_.end()), names_.end());
}

NameIndex::Range NameIndex::BeginningWith(std::string_view prefix) const {
  const auto first = std::lower_bound(names_.begin(), names_.end(), prefix);
  const auto last = std::partition_point(
      first, names_.end(), [&](const std::string& name) { return name.starts_with(prefix); });
  return {static_cast<std::size_t>(first - names_.begin()),
          static_cast<std::size_t>(last - names_.begin())};
}

}  // namespace tool
