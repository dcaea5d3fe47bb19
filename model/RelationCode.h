#ifndef STRINGRESOLVER_MODEL_RELATIONCODE_H
#define STRINGRESOLVER_MODEL_RELATIONCODE_H

#include <cstdint>

/// The operator between a block and its left neighbour. The numbers are stored and compared as
/// numbers by debugging aids; 8 and 10 are not produced and stay free.
enum RelationCode : std::uint32_t {
  kNoRelation = 0,
  kFirstBlock = 1,
  kAdd = 2,
  kSubtract = 3,
  kMultiply = 4,
  kDivide = 5,
  kMember = 6,
  kPointerMember = 7,
  kNoOperator = 9,
  kRemainder = 11,
  kShiftLeft = 12,
  kShiftRight = 13,
  kLess = 14,
  kLessOrEqual = 15,
  kGreater = 16,
  kGreaterOrEqual = 17,
  kEqual = 18,
  kNotEqual = 19,
  kBitAnd = 20,
  kBitOr = 21,
  kBitXor = 22,
  kLogicalAnd = 23,
  kLogicalOr = 24,
};

/// Pairs a block with its right neighbour's type instead of an operator. No operator text yields
/// it; code that drives the member row itself may.
inline constexpr std::uint32_t kTypeMerge = 10;

#endif  // STRINGRESOLVER_MODEL_RELATIONCODE_H
