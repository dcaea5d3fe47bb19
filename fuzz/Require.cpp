#include "fuzz/Require.h"

#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <limits>

namespace fuzzing {

void Require(bool holds, std::string_view property) {
  if (holds) return;
  std::cerr << "Broken property: " << property << std::endl;
  std::abort();
}

void RequireSaneResult(const TStringResolver& resolver, bool succeeded) {
  constexpr std::uint64_t kLow32Bits = std::numeric_limits<std::uint32_t>::max();
  Require(resolver.resultAddress <= kLow32Bits, "the result's address has 32 bits");
  if (!succeeded) return;
  Require(resolver.resultSize >= 1, "a result has at least one byte");
  Require(resolver.resultSize <= kLow32Bits, "a result's size is that of a type");
  Require(!resolver.resultNegative || !resolver.resultFloating,
          "a floating result carries its sign itself");
  Require(!resolver.resultNegative || resolver.resultValue != 0, "no result is minus zero");
  Require(resolver.resultFloating || resolver.resultSize >= 8 ||
              resolver.resultValue >> (8 * resolver.resultSize) == 0,
          "an integer result fits its size");
}

}  // namespace fuzzing
