#ifndef STRINGRESOLVER_TOOLS_RESOLVE_EXPLANATION_H
#define STRINGRESOLVER_TOOLS_RESOLVE_EXPLANATION_H

#include <string>
#include <vector>

#include "targets/LabelSource.h"
#include "tools/resolve/Evaluator.h"
#include "tools/resolve/ResolutionLog.h"

namespace tool {

/// The type of a record, as a person would write it: `int [5]`, `struct node *`.
std::string TypeText(const DataLableType& type, targets::LabelSource& labels);

/// What happened, a line for each step without its line feed, in the order of the steps: the text,
/// what the host was asked, and how the outcome came to be shown as it is. The lines are printable.
std::vector<std::string> ExplainResolution(const ResolutionLog& log, const Outcome& outcome,
                                           targets::LabelSource& labels);

}  // namespace tool

#endif  // STRINGRESOLVER_TOOLS_RESOLVE_EXPLANATION_H
