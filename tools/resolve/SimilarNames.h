#ifndef STRINGRESOLVER_TOOLS_RESOLVE_SIMILARNAMES_H
#define STRINGRESOLVER_TOOLS_RESOLVE_SIMILARNAMES_H

#include <string>
#include <string_view>
#include <vector>

namespace tool {

/// Those of `names` that someone who typed `typed` may have meant: that begin with it, or become it
/// by up to two letters added, dropped, changed or swapped, but never by as many as it has. The
/// closest first; at most three.
std::vector<std::string> SimilarNames(std::string_view typed,
                                      const std::vector<std::string>& names);

/// `; did you mean A or B?` without the question mark's sentence end: empty when `names` is.
std::string DidYouMean(const std::vector<std::string>& names);

}  // namespace tool

#endif  // STRINGRESOLVER_TOOLS_RESOLVE_SIMILARNAMES_H
