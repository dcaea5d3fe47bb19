#ifndef STRINGRESOLVER_TOOLS_RESOLVE_QUOTEDTEXT_H
#define STRINGRESOLVER_TOOLS_RESOLVE_QUOTEDTEXT_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "targets/LabelSource.h"

namespace tool {

/// A character of `width` bits (at most 32) in quotes: `'A'`, `'\n'`, `'\0'`, `'\xc8'`.
std::string QuotedCharacter(std::uint32_t code, std::uint32_t width);

/// The text of an array of characters of `size` bytes each (1, 2 or 4), in quotes. Zeros at the end
/// are left out; that there is none is said. Of more than `most` bytes, only the first are shown,
/// and how many there are more is said.
std::string QuotedArray(std::span<const std::byte> bytes, std::size_t size,
                        targets::ByteOrder order, std::size_t most);

/// The characters up to the first zero in quotes, with `...` behind them when there is none.
std::string QuotedString(std::span<const std::byte> bytes, std::size_t size,
                         targets::ByteOrder order);

/// Bytes before the first character that is 0; all when there is none.
std::size_t TextBytes(std::span<const std::byte> bytes, std::size_t size);

}  // namespace tool

#endif  // STRINGRESOLVER_TOOLS_RESOLVE_QUOTEDTEXT_H
