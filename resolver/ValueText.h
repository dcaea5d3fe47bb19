#ifndef STRINGRESOLVER_RESOLVER_VALUETEXT_H
#define STRINGRESOLVER_RESOLVER_VALUETEXT_H

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace resolver {

// Numbers to text and back: what a string stream in the classic locale gives, whatever the
// process's locale is. Reading skips white space, takes the longest start that can belong to a
// number and ignores the rest; what holds no number reads as 0.

/// A decimal number, possibly signed: "-1" is 2^64 - 1. One too large for 64 bits reads as 2^64 -
/// 1.
std::uint64_t ReadUnsigned(std::string_view text);

/// Reads a text that is nothing but a few digits, as nearly every number that is written here;
/// false for any other.
bool ReadDigits(std::string_view text, std::uint64_t* value);

/// A decimal floating number. One too large reads as the largest finite one; "inf", "nan" and an
/// exponent without digits read as 0.
double ReadDouble(std::string_view text);
float ReadFloat(std::string_view text);

/// Writes the number in place of `*text`.
void WriteUnsigned(std::uint64_t value, std::string* text);

/// Room for any number, with a NUL behind it.
using Digits = std::array<char, 21>;

/// Writes the number to the end of `*digits`, where the result lies; a NUL follows it.
std::string_view WriteUnsigned(std::uint64_t value, Digits* digits);

/// Writes six significant digits, as in "0.333333" or "1e+10", in place of `*text`.
void WriteFloating(double value, std::string* text);

/// Truncates toward zero. NaN gives 0; a negative value its two's complement, at or below -2^63 the
/// pattern of -2^63; a value at or above 2^64 gives all ones.
std::uint64_t TruncateToUnsigned(double value);

}  // namespace resolver

#endif  // STRINGRESOLVER_RESOLVER_VALUETEXT_H
