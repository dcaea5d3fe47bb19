#ifndef STRINGRESOLVER_TOOLS_RESOLVE_TYPEDRESULT_H
#define STRINGRESOLVER_TOOLS_RESOLVE_TYPEDRESULT_H

#include <optional>
#include <string>

#include "targets/LabelSource.h"
#include "tools/resolve/Denoted.h"
#include "tools/resolve/ResolverView.h"
#include "tools/resolve/WatchingHost.h"

namespace tool {

/// What a resolution denotes, and how far it goes beyond the resolver's number.
struct TypedResult {
  /// Nothing when the resolution failed, and there is nothing to be shown instead.
  std::optional<Denoted> denoted;
  /// It is an object that the resolver has no number for: a structure, an array, a number of more
  /// than 8 bytes, one that is infinite. Its value is read when it is shown.
  bool isWhole = false;
  bool isBitField = false;
  /// A floating number with all its digits, where the resolver gives single precision.
  bool isExactFloating = false;
};

/// What the resolution of `text` that has just ended denotes; `solved` is what it returned. Throws
/// `targets::Error`.
TypedResult ReadType(const std::string& text, bool solved, const ResolverView& resolver,
                     const WatchingHost& host, targets::LabelSource& labels);

}  // namespace tool

#endif  // STRINGRESOLVER_TOOLS_RESOLVE_TYPEDRESULT_H
