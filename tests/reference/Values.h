#ifndef STRINGRESOLVER_TESTS_REFERENCE_VALUES_H
#define STRINGRESOLVER_TESTS_REFERENCE_VALUES_H

#include <cmath>
#include <cstdint>
#include <cstring>
#include <ios>
#include <locale>
#include <sstream>
#include <string>

// Numbers to text and back, and the few conversions whose corners the language fixes: each through
// the standard library, so that the rule is the library's and not ours.
namespace reference {

template <typename Number>
std::string WriteNumber(Number number) {
  std::stringstream stream;
  stream.imbue(std::locale::classic());
  stream.setf(std::ios::right, std::ios::adjustfield);
  stream.setf(std::ios::dec, std::ios::basefield);
  stream << number;
  std::string word;
  stream >> word;
  return word;
}

/// What cannot be read is 0; what is too large is the largest number of its kind.
template <typename Number>
Number ReadNumber(const std::string& text) {
  std::stringstream stream;
  stream.imbue(std::locale::classic());
  stream.setf(std::ios::right, std::ios::adjustfield);
  stream.setf(std::ios::dec, std::ios::basefield);
  stream << text;
  Number number = 0;
  stream >> number;
  return number;
}

/// All ones over `size` bytes; over all eight for a size of 0, or of 8 and more.
inline std::uint64_t MaskOfSize(std::uint64_t size) {
  if (size == 0 || size >= 8) return ~std::uint64_t{0};
  std::uint64_t mask = 0xFF;
  for (std::uint64_t done = 1; done < size; ++done) mask = (mask << 8) | 0xFF;
  return mask;
}

/// Number of the sign bit of a value of `size` bytes, counted modulo 64.
inline unsigned SignBit(std::uint64_t size) {
  return static_cast<unsigned>((size * 8 - 1) % 64);
}

/// Toward zero; a negative number as its two's complement.
template <typename Floating>
std::uint64_t Truncate(Floating number) {
  const Floating twoTo63 = static_cast<Floating>(9223372036854775808.0);
  if (std::isnan(number)) return 0;
  if (number <= -twoTo63) return std::uint64_t{1} << 63;
  if (number < 0) return static_cast<std::uint64_t>(static_cast<std::int64_t>(number));
  if (number < twoTo63) return static_cast<std::uint64_t>(number);
  if (number >= 2 * twoTo63) return ~std::uint64_t{0};
  return static_cast<std::uint64_t>(number - twoTo63) | (std::uint64_t{1} << 63);
}

inline float FloatOfBits(std::uint64_t value) {
  const std::uint32_t bits = static_cast<std::uint32_t>(value);
  float number = 0;
  std::memcpy(&number, &bits, sizeof number);
  return number;
}

inline double DoubleOfBits(std::uint64_t bits) {
  double number = 0;
  std::memcpy(&number, &bits, sizeof number);
  return number;
}

inline std::uint64_t ArithmeticShiftRight(std::uint64_t value, unsigned count) {
  return static_cast<std::uint64_t>(static_cast<std::int64_t>(value) >> count);
}

}  // namespace reference

#endif  // STRINGRESOLVER_TESTS_REFERENCE_VALUES_H
