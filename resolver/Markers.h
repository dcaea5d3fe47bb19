#ifndef STRINGRESOLVER_RESOLVER_MARKERS_H
#define STRINGRESOLVER_RESOLVER_MARKERS_H

#include <string>
#include <string_view>

namespace resolver {

// The rewritten expression text. While an expression is reduced, innermost parentheses first, casts
// and sub-results travel inside the text in this encoding; both directions use these names only.
//
// A sub-result: fence, "\r", "@", its type's position in the saved types in decimal, "\x0e", "#" if
// it lies in the second memory space, its value text, fence. A cast: "\x18", one "\x19" for each
// unit of the type's position in the saved types, "\x18".

/// Stands before and after every sub-result. Made of operator characters, so that it separates the
/// sub-result from its neighbours; the lexer deletes it whole.
inline constexpr std::string_view kSubResultFence = "^*^*^^";
/// What a sub-result begins with: fence, opening mark, mark of the position.
inline constexpr std::string_view kSubResultStart = "^*^*^^\r@";
inline constexpr char kSubResultOpen = '\r';
inline constexpr char kSubResultClose = '\x0e';
inline constexpr char kMemorySpaceMark = '#';
/// A star inside the text of a type, which must not be read as an operator.
inline constexpr char kTypeStarMark = '\x0f';
/// A unary operator: what is left of `sizeof` before an expression.
inline constexpr char kSizeofMark = '\x08';
inline constexpr char kCastMark = '\x18';
inline constexpr char kCastIndexMark = '\x19';

/// Replaces the blank before a basic type keyword, so that it survives the removal of blanks.
inline constexpr std::string_view kKeywordBlank = ":@:";

// A floating literal in its protected form has no character that the lexer would split it at.
inline constexpr char kProtectedPoint = ',';
inline constexpr std::string_view kExponentPlus = "e+";
inline constexpr std::string_view kProtectedExponentPlus = "e,";
inline constexpr std::string_view kExponentMinus = "e-";
inline constexpr std::string_view kProtectedExponentMinus = "@,";

/// Hides the stars in the text of a type.
inline void MarkStars(std::string* typeText) {
  for (char& c : *typeText) {
    if (c == '*') c = kTypeStarMark;
  }
}

}  // namespace resolver

#endif  // STRINGRESOLVER_RESOLVER_MARKERS_H
