#ifndef STRINGRESOLVER_TOOLS_RESOLVE_CTREE_H
#define STRINGRESOLVER_TOOLS_RESOLVE_CTREE_H

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tool {

/// An expression as C groups it, which need not be how the resolver groups the same text.
struct CNode {
  enum class Kind {
    kInteger,      ///< an integer literal or a character constant
    kFloating,     ///< a floating literal
    kString,       ///< a string literal
    kName,         ///< a label or enumerator
    kGroup,        ///< parentheses: one part
    kUnary,        ///< `op` is one of + - ~ ! & * and, of no use here, ++ --
    kPostfix,      ///< `op` is ++ or --
    kCast,         ///< `op` is the type's name
    kSizeof,       ///< of one part
    kSizeofType,   ///< `op` is the type's name
    kBinary,       ///< two parts
    kIndex,        ///< two parts: what is indexed, and the subscript
    kMember,       ///< `op` is the member's name, behind a point
    kArrow,        ///< likewise behind an arrow
    kConditional,  ///< three parts
    kAssignment,   ///< two parts, `op` with its `=`
    kComma,        ///< two parts
  };
  Kind kind = Kind::kName;
  std::string op;  ///< operator, name or literal
  std::vector<std::unique_ptr<CNode>> parts;
  std::size_t begin = 0;  ///< where its text begins and ends, in bytes
  std::size_t end = 0;

  [[nodiscard]] CNode& Part(std::size_t i) const { return *parts[i]; }
};

/// Expressions longer than this, in bytes, are not read: a tree of every text would be too deep.
inline constexpr std::size_t kLongestTreeText = 2000;

/// Reads `text` as C does; `isType` says whether a text names a type. Null when it is no C, or
/// something that no debugger's expression has (a call).
std::unique_ptr<CNode> ReadCExpression(std::string_view text,
                                       const std::function<bool(std::string_view)>& isType);

}  // namespace tool

#endif  // STRINGRESOLVER_TOOLS_RESOLVE_CTREE_H
