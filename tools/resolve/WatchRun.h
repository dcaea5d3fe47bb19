#ifndef STRINGRESOLVER_TOOLS_RESOLVE_WATCHRUN_H
#define STRINGRESOLVER_TOOLS_RESOLVE_WATCHRUN_H

#include "tools/resolve/Command.h"
#include "tools/resolve/Options.h"
#include "tools/resolve/Output.h"
#include "tools/resolve/Target.h"

namespace tool {

/// Watches the expressions of `options` over a live target until Ctrl-C, which is how a watch is
/// meant to end: all is well then, whatever the expressions came to. Throws `UsageError` for a
/// target whose memory stands still, `targets::Error` (`kTargetLost`) and `StreamError`.
Status RunWatch(Target& target, const Options& options, Output* output);

}  // namespace tool

#endif  // STRINGRESOLVER_TOOLS_RESOLVE_WATCHRUN_H
