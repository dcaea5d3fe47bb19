#ifndef STRINGRESOLVER_TOOLS_RESOLVE_ANSWER_H
#define STRINGRESOLVER_TOOLS_RESOLVE_ANSWER_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tools/resolve/Denoted.h"
#include "tools/resolve/NamedNote.h"
namespace tool {

/// What an expression denotes, and the resolver's number for it.
struct Answer {
  /// Nothing when only numbers were asked for.
  std::optional<Denoted> denoted;
  /// The resolver has a number for it, which the next members are. A structure has none, nor has
  /// what does not fit into 8 bytes.
  bool isNumber = true;
  bool floating = false;
  float number = 0.0F;          ///< when `floating`
  bool negative = false;        ///< when not `floating`
  std::uint64_t magnitude = 0;  ///< when not `floating`: of a negative value as well
  std::uint64_t size = 8;       ///< in bytes, also of what is no number
  std::uint32_t bits = 0;       ///< of a bit-field that is denoted; 0: it is none
  bool isSigned = false;        ///< type of the value; never set when `floating`
  /// Run-time address that the value was read from; empty when it was computed.
  std::optional<std::uint64_t> address;
  std::uint8_t space = 0;
  /// Of what is no number: its type, as a person would write it.
  std::string typeName;
  /// What the value does not say.
  std::vector<NamedNote> notes;
};

/// The value alone: `-5`, `18446744073709551615`, `0.1`, `1e+10`. Floating values are in the
/// shortest form that reads back as the same 32-bit number.
std::string FormatValue(const Answer& answer);

/// Size, signedness, address and memory space: `4 bytes, signed, at 0x404010, memory space 0`. What
/// is no number has its type in place of the signedness: `20 bytes, int [5], at 0x404060, ...`. A
/// bit-field has its size in bits.
std::string FormatDetails(const Answer& answer);

/// `0x` and lower-case digits without leading zeros.
std::string FormatAddress(std::uint64_t address);

/// `1 byte`, `2 bytes`.
std::string FormatBytes(std::uint64_t count);

}  // namespace tool

#endif  // STRINGRESOLVER_TOOLS_RESOLVE_ANSWER_H
