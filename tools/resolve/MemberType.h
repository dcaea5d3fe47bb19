#ifndef STRINGRESOLVER_TOOLS_RESOLVE_MEMBERTYPE_H
#define STRINGRESOLVER_TOOLS_RESOLVE_MEMBERTYPE_H

#include <string>
#include <string_view>
#include <vector>

#include "targets/LabelSource.h"

namespace tool {

/// How a member is reached.
enum class MemberAccess { kPoint, kArrow };

/// The names that may stand behind `text` and the operator `access`, in the order of the source:
/// `text` is a line up to that operator, and what matters is the operand that it ends with, such as
/// `list[2].next`, `(*head)` or `((struct node*)any)`. Types are told from the text and the type
/// records alone: no memory is read. Empty when the operand has no members, is not understood, or
/// its type could not be had; `.` behind a pointer and `->` behind a structure have none.
std::vector<std::string> MembersBehind(targets::LabelSource& labels, std::string_view text,
                                       MemberAccess access);

}  // namespace tool

#endif  // STRINGRESOLVER_TOOLS_RESOLVE_MEMBERTYPE_H
