#ifndef STRINGRESOLVER_TESTS_SUPPORT_NUMERAL_H
#define STRINGRESOLVER_TESTS_SUPPORT_NUMERAL_H

#include <cstdint>
#include <optional>
#include <string_view>

namespace testsupport {

/// The value of an integer numeral: decimal, 0x, 0b or leading-zero octal, with u and l suffixes in
/// any case; or of a character constant 'A', '\n', '\0', '\x41'. Empty when `text` is neither or
/// does not fit 64 bits.
std::optional<std::uint64_t> ReadNumeral(std::string_view text);

}  // namespace testsupport

#endif  // STRINGRESOLVER_TESTS_SUPPORT_NUMERAL_H
