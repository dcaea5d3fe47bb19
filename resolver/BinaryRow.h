#ifndef STRINGRESOLVER_RESOLVER_BINARYROW_H
#define STRINGRESOLVER_RESOLVER_BINARYROW_H

#include <array>
#include <cstddef>
#include <cstdint>

#include "model/RelationCode.h"

namespace resolver {

inline constexpr int kBinaryRows = 11;

/// The row in which each relation code is evaluated; 0 where the code is no binary operator. "<"
/// and "<=" come before ">" and ">=".
inline constexpr std::array<int, 25> kRowOfRelation = [] {
  std::array<int, 25> rows{};
  rows[kMultiply] = rows[kDivide] = rows[kRemainder] = 1;
  rows[kAdd] = rows[kSubtract] = 2;
  rows[kShiftLeft] = rows[kShiftRight] = 3;
  rows[kLess] = rows[kLessOrEqual] = 4;
  rows[kGreater] = rows[kGreaterOrEqual] = 5;
  rows[kEqual] = rows[kNotEqual] = 6;
  rows[kBitAnd] = 7;
  rows[kBitXor] = 8;
  rows[kBitOr] = 9;
  rows[kLogicalAnd] = 10;
  rows[kLogicalOr] = kBinaryRows;
  return rows;
}();

/// The row of a relation code, or 0.
constexpr int RowOf(std::uint32_t relation) {
  return relation < kRowOfRelation.size() ? kRowOfRelation[relation] : 0;
}

}  // namespace resolver

#endif  // STRINGRESOLVER_RESOLVER_BINARYROW_H
