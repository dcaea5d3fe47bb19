#ifndef STRINGRESOLVER_TOOLS_RESOLVE_JSONLINES_H
#define STRINGRESOLVER_TOOLS_RESOLVE_JSONLINES_H

#include <string>
#include <vector>

#include "targets/LabelSource.h"
#include "tools/resolve/Evaluator.h"
#include "tools/resolve/NamedNote.h"
#include "tools/resolve/ResolutionLog.h"

namespace tool {

// Each gives one JSON object on one line, without its line feed. docs/JSON.md describes them, and
// docs/resolve.schema.json formally. Texts may hold any bytes: what is no UTF-8 becomes U+FFFD.

/// One expression and its outcome; `text` is the answer as it is shown without JSON.
std::string JsonOfResolution(const ResolutionLog& log, const Outcome& outcome,
                             const std::string& text, const std::vector<NamedNote>& notes,
                             bool withLog, targets::LabelSource& labels);

/// The command line, the program or a stream could not be used.
std::string JsonOfError(const std::string& message);

/// One entry of a listing.
std::string JsonOfListing(const targets::Listing& entry);

}  // namespace tool

#endif  // STRINGRESOLVER_TOOLS_RESOLVE_JSONLINES_H
