#ifndef STRINGRESOLVER_TOOLS_RESOLVE_EXPRESSIONTEXT_H
#define STRINGRESOLVER_TOOLS_RESOLVE_EXPRESSIONTEXT_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tool {

/// The longest expression that is evaluated, in bytes as it was given. Time and memory grow in
/// proportion to it, and memory by up to 500 bytes for each of these.
inline constexpr std::size_t kLongestExpression = 1024 * 1024;

/// Rewrites C text so that the resolver gives it C's meaning. In linear time, for any bytes:
/// - Blanks go, but for one between two names (`struct node`) and one behind a `sizeof` without
///   parentheses. Tabs, line ends and form feeds are blanks.
/// - `a[i]` becomes `a[(i)+0]`: a subscript counts by the value of `i`, not by its address. Empty
///   brackets and brackets without a partner stay as they are.
/// - A character constant becomes its decimal code: as text, one that holds an operator, a blank or
///   a bracket would be cut there. Codes above 127 differ between targets and stay text.
/// - The exponent letter of a numeral is written so that a sign behind it is taken for what it is:
///   `0x1e+5` is a sum, `1.5E+3` is not.
std::string PrepareExpression(std::string_view text);

/// Two operands of a prepared text with no operator between them, or a call. The resolver would
/// join `a b` to one name, and the digits `1 2` to 12. The answer is a sentence that names both;
/// empty when there are none.
std::optional<std::string> FindMissingOperator(std::string_view prepared);

/// The names that stand behind a "." or "->" of a prepared text, in order.
std::vector<std::string> MemberNames(std::string_view prepared);

/// The name that begins with `first` and a point, as a dialect reads it in which points belong to
/// names: of `1+table.first-x` and `table`, `table.first`. Empty when there is none.
std::string DottedName(std::string_view prepared, std::string_view first);

/// Can `c` be part of a label, a number or a keyword? Bytes above 127 are letters of some encoding.
bool IsNameCharacter(char c);

/// True when there is nothing in `text` but blanks.
bool IsBlankText(std::string_view text);

/// The first byte of `text` that no expression can hold: the resolver's markers and the end of a
/// name are control characters.
std::optional<char> FindControlCharacter(std::string_view text);

}  // namespace tool

#endif  // STRINGRESOLVER_TOOLS_RESOLVE_EXPRESSIONTEXT_H
