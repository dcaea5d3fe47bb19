#ifndef STRINGRESOLVER_TESTS_RESOLVER_OPERANDKINDS_H
#define STRINGRESOLVER_TESTS_RESOLVER_OPERANDKINDS_H

#include <array>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "tests/support/FakeHost.h"

// One label of every kind and value, and what an operator gets to see of it. Independent of the
// resolver: numbers are written and read by the C library, whose locale the tests leave alone.

namespace operandkinds {

enum class Kind { kInteger, kSingle, kDouble, kPointer, kArray, kStructure };

/// An operand once it has been read: what the rules of the operators are about.
struct Operand {
  std::string label;
  std::uint64_t address = 0;
  Kind kind = Kind::kInteger;
  /// The type's size and sign; of an array, its element's.
  std::uint32_t size = 8;
  bool isSigned = false;
  /// 0 integer, 1 single, 2 double precision.
  int valueKind = 0;
  /// The integer as read, or the digits at the start of a floating value's text.
  std::uint64_t view = 0;
  float single = 0;
  double twice = 0;
};

inline std::string SixDigits(double value) {
  char text[64];
  std::snprintf(text, sizeof text, "%g", value);
  return text;
}

/// What stands at the start of `text` as a decimal number, a minus counting modulo 2^64.
inline std::uint64_t LeadingDigits(const std::string& text) {
  return std::strtoull(text.c_str(), nullptr, 10);
}

inline std::uint64_t MaskOf(std::uint32_t size) {
  return size >= 8 || size == 0 ? ~std::uint64_t{0} : (std::uint64_t{1} << (8 * size)) - 1;
}

/// `value` as a signed number of `size` bytes.
inline std::int64_t SignedValue(std::uint64_t value, std::uint32_t size) {
  const std::uint64_t sign = std::uint64_t{1} << (8 * size - 1);
  return static_cast<std::int64_t>(((value & MaskOf(size)) ^ sign) - sign);
}

inline std::uint64_t Truncate(double value) {
  if (value != value) return 0;
  if (value <= -9223372036854775808.0) return std::uint64_t{1} << 63U;
  if (value < 0) return static_cast<std::uint64_t>(static_cast<std::int64_t>(value));
  if (value >= 18446744073709551616.0) return ~std::uint64_t{0};
  return static_cast<std::uint64_t>(value);
}

/// A result as `testsupport::Outcome` writes it.
inline std::string IntegerOutcome(std::uint64_t value, std::uint32_t size, bool isSigned) {
  value &= MaskOf(size);
  const bool negative = isSigned && SignedValue(value, size) < 0;
  if (negative) value = (0 - value) & MaskOf(size);
  return (negative ? "-" : "") + std::to_string(value) + "/" + std::to_string(size);
}

inline std::string FloatingOutcome(float value, std::uint32_t size) {
  std::array<char, 64> text{};
  const auto [end, error] = std::to_chars(text.begin(), text.end(), value);
  return std::string(text.begin(), end) + "f/" + std::to_string(size);
}

/// A floating result that travelled as text of six digits.
inline std::string FloatingOutcome(const std::string& text, std::uint32_t size) {
  return FloatingOutcome(std::strtof(text.c_str(), nullptr), size);
}

/// Adds a label for each kind of operand, with each of several values, to `host`.
inline std::vector<Operand> AddOperands(testsupport::FakeHost* host) {
  const testsupport::TypeKit& t = host->types;
  std::vector<Operand> operands;
  std::uint64_t address = 0x10000;
  const auto add = [&](const std::string& name, const Operand& seen, const DataLableType& type) {
    Operand operand = seen;
    operand.label = name + "_" + std::to_string(operands.size());
    operand.address = address;
    host->AddLabel(operand.label, address, type);
    operands.push_back(operand);
    address += 0x20;
  };
  for (std::uint32_t size = 1; size <= 8; ++size) {
    for (const bool isSigned : {false, true}) {
      const std::uint64_t top = std::uint64_t{1} << (8 * size - 1);
      for (const std::uint64_t value :
           {std::uint64_t{0}, std::uint64_t{3}, top - 1, top, MaskOf(size) - 6}) {
        host->Poke(address, value, size);
        add(isSigned ? "s" : "u", {"", 0, Kind::kInteger, size, isSigned, 0, value, 0, 0},
            isSigned ? t.Signed(size) : t.Unsigned(size));
      }
    }
  }
  for (const double value : {0.0, 0.5, 2.75, -3.25, 1e10}) {
    const auto single = static_cast<float>(value);
    host->PokeFloat(address, single);
    add("f", {"", 0, Kind::kSingle, 4, false, 1, LeadingDigits(SixDigits(single)), single, single},
        t.Single());
    const double twice = value * 1.1;
    host->PokeDouble(address, twice);
    add("d",
        {"", 0, Kind::kDouble, 8, false, 2, LeadingDigits(SixDigits(twice)),
         static_cast<float>(twice), twice},
        t.Double());
  }
  for (const std::uint64_t value : {0x2000ULL, 0ULL}) {
    host->Poke(address, value, 8);
    add("p", {"", 0, Kind::kPointer, 8, false, 0, value, 0, 0}, t.Pointer(t.Signed(4)));
  }
  for (const std::uint64_t value : {7ULL, 0xfff9ULL}) {
    host->Poke(address, value, 2);
    add("a", {"", 0, Kind::kArray, 2, true, 0, value, 0, 0}, t.Array(t.Signed(2), 4));
  }
  host->Poke(address, 9, 8);
  add("t", {"", 0, Kind::kStructure, 8, false, 0, 9, 0, 0}, t.Stub("record", 8));
  return operands;
}

}  // namespace operandkinds

#endif  // STRINGRESOLVER_TESTS_RESOLVER_OPERANDKINDS_H
