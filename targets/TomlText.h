#ifndef STRINGRESOLVER_TARGETS_TOMLTEXT_H
#define STRINGRESOLVER_TARGETS_TOMLTEXT_H

#include <cstddef>
#include <optional>
#include <string_view>

namespace targets {

/// Where the first character beyond ASCII stands that is neither in a comment nor in a string of
/// the TOML text, or that follows a backslash in a string, with or without blanks and line ends
/// between them: its offset in bytes. Nothing when there is none, or something wrong stands before
/// it.
///
/// TOML has no use for such a character, and toml++ 3.3 takes a step that is undefined when it asks
/// whether it is a blank.
std::optional<std::size_t> FindStrayCharacter(std::string_view toml);

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_TOMLTEXT_H
