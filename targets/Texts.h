#ifndef STRINGRESOLVER_TARGETS_TEXTS_H
#define STRINGRESOLVER_TARGETS_TEXTS_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace targets {

/// `0x` and lower-case digits, as addresses and offsets are written in messages and listings.
std::string Hexadecimal(std::uint64_t value);

/// The part of a path after its last slash.
std::string_view BaseName(std::string_view path);

/// Length of the folder that all paths begin with, its last slash included; 0 when there is none.
std::size_t CommonFolder(const std::vector<std::string_view>& paths);

/// `a`, `a and b`, `a, b and c`; beyond ten items the rest is counted.
std::string Enumerated(const std::vector<std::string>& items);

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_TEXTS_H
