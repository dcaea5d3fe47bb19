#ifndef STRINGRESOLVER_TOOLS_RESOLVE_CHARACTERCONSTANT_H
#define STRINGRESOLVER_TOOLS_RESOLVE_CHARACTERCONSTANT_H

#include <cstddef>
#include <optional>
#include <string_view>

namespace tool {

struct CharacterConstant {
  unsigned code = 0;       ///< the byte's code, 0 to 255
  std::size_t length = 0;  ///< bytes of text, quotes included
};

/// Reads the C character constant at the start of `text`: one byte or one escape sequence between
/// apostrophes. Empty when it is none, has more than one character, or a code above 255.
std::optional<CharacterConstant> ReadCharacterConstant(std::string_view text);

}  // namespace tool

#endif  // STRINGRESOLVER_TOOLS_RESOLVE_CHARACTERCONSTANT_H
