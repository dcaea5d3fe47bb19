#ifndef STRINGRESOLVER_TOOLS_RESOLVE_DISPLAY_H
#define STRINGRESOLVER_TOOLS_RESOLVE_DISPLAY_H

#include <cstddef>
#include <string>

#include "targets/LabelSource.h"
#include "targets/MemorySource.h"
#include "tools/resolve/Denoted.h"
#include "tools/resolve/Format.h"

namespace tool {

/// How much of a value is shown. What is left out is said in its place.
struct DisplayLimits {
  std::size_t depth = 20;        ///< structures and arrays inside of each other, at most 64
  std::size_t elements = 200;    ///< elements of arrays, all together; equal ones in a row are one
  std::size_t members = 1000;    ///< members of structures, all together
  std::size_t characters = 200;  ///< bytes of each text
  std::size_t rawBytes = 256;    ///< bytes in the format `kRaw`
};

/// The value of what is denoted, as its type asks for, in one line: `-7`, `65 'A'`, `GREEN (5)`,
/// `0x404028 <a+8>`, `"lantern"`, `{x = 1, y = -1}`. Memory is read as far as it is shown. A part
/// that cannot be read says so in its place. Throws `targets::Error` (`kUnreadable`) when nothing
/// of it can be read, and what the sources throw.
///
/// The texts of a program may hold any bytes: all but printable UTF-8 are escaped.
std::string Display(const Denoted& denoted, targets::LabelSource& labels,
                    targets::MemorySource& memory, const DisplayLimits& limits,
                    Format format = Format::kNatural);

}  // namespace tool

#endif  // STRINGRESOLVER_TOOLS_RESOLVE_DISPLAY_H
