#ifndef STRINGRESOLVER_TOOLS_RESOLVE_CLEVELS_H
#define STRINGRESOLVER_TOOLS_RESOLVE_CLEVELS_H

#include <string_view>

#include "tools/resolve/CTree.h"

namespace tool {

// How tightly C's operators bind, for deciding where parentheses are needed.
inline constexpr int kOrLevel = 1;
inline constexpr int kEqualityLevel = 6;
inline constexpr int kRelationLevel = 7;
inline constexpr int kShiftLevel = 8;
inline constexpr int kSumLevel = 9;
inline constexpr int kProductLevel = 10;
inline constexpr int kUnaryLevel = 20;
inline constexpr int kPrimaryLevel = 21;

/// Of a binary operator; 0 for anything else.
int LevelOf(std::string_view op);

const CNode& WithoutGroups(const CNode& node);

}  // namespace tool

#endif  // STRINGRESOLVER_TOOLS_RESOLVE_CLEVELS_H
