#ifndef STRINGRESOLVER_TOOLS_RESOLVE_PRINTABLE_H
#define STRINGRESOLVER_TOOLS_RESOLVE_PRINTABLE_H

#include <cstddef>
#include <string>
#include <string_view>

namespace tool {

/// The most bytes of one text that a message shows.
inline constexpr std::size_t kLongestEcho = 500;

/// Length in bytes of the UTF-8 character that a non-empty text begins with; 0 when it is none, or
/// one that is not to be shown.
std::size_t ShownCharacter(std::string_view text);

/// `text` as one line that cannot steer a terminal: control characters and bytes that are no UTF-8
/// become escapes such as `\n` and `\x1b`. A text of more than `kLongestEcho` bytes loses its
/// middle, and says how much.
std::string Printable(std::string_view text);

}  // namespace tool

#endif  // STRINGRESOLVER_TOOLS_RESOLVE_PRINTABLE_H
