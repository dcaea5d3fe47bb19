#ifndef STRINGRESOLVER_TOOLS_RESOLVE_NAMEDNOTE_H
#define STRINGRESOLVER_TOOLS_RESOLVE_NAMEDNOTE_H

#include <string>

namespace tool {

/// Something worth knowing about an answer.
struct NamedNote {
  std::string name;  ///< the same for all notes of a kind: `pointer-subscript`
  std::string text;  ///< a sentence without a full stop; may quote the expression, any bytes
};

}  // namespace tool

#endif  // STRINGRESOLVER_TOOLS_RESOLVE_NAMEDNOTE_H
