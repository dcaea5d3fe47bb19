#ifndef STRINGRESOLVER_TOOLS_RESOLVE_WIDEFLOAT_H
#define STRINGRESOLVER_TOOLS_RESOLVE_WIDEFLOAT_H

#include <cstddef>
#include <span>
#include <string>

#include "targets/LabelSource.h"

namespace tool {

/// A floating number in the shortest form that reads back as the same one: `0.1`, `1e+300`, `-inf`,
/// `nan`. `bytes` hold a binary format of IEEE 754 of 2, 4, 8 or 16 bytes, or, when `isExtended`,
/// begin with the 10 bytes of the extended format of x86. Any other number of bytes gives an empty
/// text.
std::string FloatText(std::span<const std::byte> bytes, targets::ByteOrder order, bool isExtended);

}  // namespace tool

#endif  // STRINGRESOLVER_TOOLS_RESOLVE_WIDEFLOAT_H
