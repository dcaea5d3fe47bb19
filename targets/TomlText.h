#ifndef STRINGRESOLVER_TARGETS_TOMLTEXT_H
#define STRINGRESOLVER_TARGETS_TOMLTEXT_H

#include <cstddef>
#include <optional>
#include <string_view>

namespace targets {

/// Where the first character beyond ASCII stands that is not in a comment of the TOML text: its
/// offset in bytes. Nothing when there is none, or something wrong stands before it.
///
/// Keys and strings can have such characters as `\u00e4` all the same. toml++ 3.3 takes a step that
/// is undefined when it asks whether one is a blank, which it does in more places than a string can
/// be told from, once something is wrong.
std::optional<std::size_t> FindStrayCharacter(std::string_view toml);

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_TOMLTEXT_H
