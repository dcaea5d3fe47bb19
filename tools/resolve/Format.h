#ifndef STRINGRESOLVER_TOOLS_RESOLVE_FORMAT_H
#define STRINGRESOLVER_TOOLS_RESOLVE_FORMAT_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tool {

/// How values are written. Of a structure or an array: how the scalars in it are.
enum class Format {
  kNatural,      ///< as its type asks for
  kHexadecimal,  ///< `x`
  kDecimal,      ///< `d`: signed, whatever the type says
  kUnsigned,     ///< `u`
  kOctal,        ///< `o`
  kBinary,       ///< `t`
  kCharacter,    ///< `c`
  kString,       ///< `s`: arrays of bytes, and what pointers to bytes point to, as text
  kAddress,      ///< `a`: with the label that it lies in
  kFloating,     ///< `f`: the bits of 2, 4, 8 or 16 bytes as a floating number
  kRaw,          ///< `r`: the bytes as they lie in memory
};

/// The format of that letter or long name (`x`, `hexadecimal`); nothing when there is none.
std::optional<Format> FormatNamed(std::string_view name);

/// `x hexadecimal, d decimal, ...`: for help and messages.
std::string FormatNames();

/// What a suffix such as `/x`, `/8` or `/8x` asks for.
struct FormatSuffix {
  Format format = Format::kNatural;
  /// How many elements are wanted, at least 1.
  std::optional<std::uint64_t> count;
};

/// Reads a suffix, from its slash on. Nothing when it is none.
std::optional<FormatSuffix> ParseFormatSuffix(std::string_view text);

}  // namespace tool

#endif  // STRINGRESOLVER_TOOLS_RESOLVE_FORMAT_H
