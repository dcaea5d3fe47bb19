#ifndef STRINGRESOLVER_TOOLS_RESOLVE_LISTING_H
#define STRINGRESOLVER_TOOLS_RESOLVE_LISTING_H

#include <functional>
#include <string>
#include <string_view>

#include "targets/LabelSource.h"
#include "tools/resolve/Output.h"

namespace tool {

/// Does the whole of `name` match `pattern`? "*" stands for any bytes, none included, "?" for one,
/// everything else for itself.
bool MatchesPattern(std::string_view name, std::string_view pattern);

/// One of `LabelSource`'s listings.
using Lister = std::function<void(const std::function<void(const targets::Listing&)>& visit)>;

/// Writes the entries whose name matches `pattern`, or all when it is empty, one a line with the
/// details in a column of their own. False when there is none. An `Error` of the listing passes
/// through when what came before it is written. `stop` is asked before each line, if given: once it
/// says so, the rest is left out.
bool WriteListing(const Lister& lister, std::string_view pattern, Output* output,
                  const std::function<bool()>& stop = nullptr);

}  // namespace tool

#endif  // STRINGRESOLVER_TOOLS_RESOLVE_LISTING_H
