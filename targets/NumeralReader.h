#ifndef STRINGRESOLVER_TARGETS_NUMERALREADER_H
#define STRINGRESOLVER_TARGETS_NUMERALREADER_H

#include <cstdint>
#include <optional>
#include <string_view>

namespace targets {

/// The value of an integer literal or a character constant as C writes them: decimal, `0x`, `0b`,
/// octal after a leading zero, each with `u`, `l`, `ll` suffixes; one character in single quotes,
/// escaped or not, as the byte 0 to 255. Empty when `text` as a whole is neither, or is a number
/// above 2^64-1.
std::optional<std::uint64_t> ReadNumeral(std::string_view text);

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_NUMERALREADER_H
