#ifndef STRINGRESOLVER_TOOLS_RESOLVE_NAMEDNOTE_H
#define STRINGRESOLVER_TOOLS_RESOLVE_NAMEDNOTE_H

#include <string>

namespace tool {

/// Something worth knowing about an answer.
struct NamedNote {
  std::string name;  ///< the same for all notes of a kind: `pointer-subscript`
  std::string text;  ///< a sentence without a full stop; may quote the expression, any bytes
};

/// The note on an operand that is a bit-field.
inline constexpr const char* kBitFieldNote = "bit-field";
/// The note on a label of which only the address is known.
inline constexpr const char* kUntypedNote = "untyped";

}  // namespace tool

#endif  // STRINGRESOLVER_TOOLS_RESOLVE_NAMEDNOTE_H
