#ifndef STRINGRESOLVER_TOOLS_RESOLVE_LAYOUT_H
#define STRINGRESOLVER_TOOLS_RESOLVE_LAYOUT_H

#include <optional>
#include <string>
#include <string_view>

#include "targets/LabelSource.h"

namespace tool {

/// Offsets, sizes and holes of a type, one line each, for people to read:
///
///     struct badge, 5 bytes
///        0  3  letters  char [3]
///        3  1  b        unsigned char
///
/// Bit-fields have their offset as `byte:bit`, and their size as `n bits`. Members of structures
/// inside stand below them, indented. Every line ends with a line feed. Throws `targets::Error`.
std::string LayoutText(targets::LabelSource& labels, targets::TypeNumber type);

/// The type that `name` names in C's spelling (`struct  node`, `node_t`, `unsigned`, `char*`); 0
/// when there is none, and for pointers, which have no layout. Throws `targets::Error`.
targets::TypeNumber TypeNamed(targets::LabelSource& labels, std::string_view name);

}  // namespace tool

#endif  // STRINGRESOLVER_TOOLS_RESOLVE_LAYOUT_H
