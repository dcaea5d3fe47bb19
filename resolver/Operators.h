#ifndef STRINGRESOLVER_RESOLVER_OPERATORS_H
#define STRINGRESOLVER_RESOLVER_OPERATORS_H

#include <cstddef>
#include <string_view>

#include "model/RelationCode.h"

namespace resolver {

/// The operator that `text` begins with; two characters win over the first of them.
inline RelationCode OperatorOf(std::string_view text) {
  const char first = text.empty() ? '\0' : text[0];
  const char second = text.size() > 1 ? text[1] : '\0';
  switch (first) {
    case '.':
      return kMember;
    case '+':
      return kAdd;
    case '-':
      return second == '>' ? kPointerMember : kSubtract;
    case '*':
      return kMultiply;
    case '/':
      return kDivide;
    case '%':
      return kRemainder;
    case '<':
      return second == '<' ? kShiftLeft : second == '=' ? kLessOrEqual : kLess;
    case '>':
      return second == '>' ? kShiftRight : second == '=' ? kGreaterOrEqual : kGreater;
    case '=':
      return second == '=' ? kEqual : kNoOperator;
    case '!':
      return second == '=' ? kNotEqual : kNoOperator;
    case '&':
      return second == '&' ? kLogicalAnd : kBitAnd;
    case '|':
      return second == '|' ? kLogicalOr : kBitOr;
    case '^':
      return kBitXor;
    default:
      return kNoOperator;
  }
}

/// How many characters an operator between two operands has.
inline std::size_t LengthOfOperator(int relation) {
  switch (relation) {
    case kPointerMember:
    case kShiftLeft:
    case kShiftRight:
    case kLessOrEqual:
    case kGreaterOrEqual:
    case kEqual:
    case kNotEqual:
    case kLogicalAnd:
    case kLogicalOr:
      return 2;
    default:
      return 1;
  }
}

}  // namespace resolver

#endif  // STRINGRESOLVER_RESOLVER_OPERATORS_H
