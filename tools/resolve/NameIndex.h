#ifndef STRINGRESOLVER_TOOLS_RESOLVE_NAMEINDEX_H
#define STRINGRESOLVER_TOOLS_RESOLVE_NAMEINDEX_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tool {

/// Names by their beginning: sorted, each once.
class NameIndex {
 public:
  void Add(std::string_view name) { names_.emplace_back(name); }
  /// To be called between the last `Add` and the first look-up.
  void Sort();

  /// Numbers `first` to `last`, the latter excluded, of the names that begin with `prefix`.
  struct Range {
    std::size_t first = 0;
    std::size_t last = 0;
  };
  [[nodiscard]] Range BeginningWith(std::string_view prefix) const;
  [[nodiscard]] const std::string& operator[](std::size_t number) const { return names_[number]; }

 private:
  std::vector<std::string> names_;
};

}  // namespace tool

#endif  // STRINGRESOLVER_TOOLS_RESOLVE_NAMEINDEX_H
