#include <algorithm>
#include <bit>
#include <cstdint>
#include <optional>
#include <string>

#include "resolver/BinaryRow.h"
#include "resolver/Owed.h"
#include "resolver/SizeMask.h"
#include "resolver/StringParametersResolving.h"
#include "resolver/ValueText.h"

namespace {

/// An operand's value as every operator sees it.
struct Operand {
  std::uint64_t integer = 0;
  float single = 0.0F;
  double full = 0.0;
  /// The integer view of a negative number has been replaced by its magnitude.
  bool negative = false;
};

/// What an operator computed; a floating part that it does not compute stays empty.
struct Outcome {
  std::uint64_t integer = 0;
  std::optional<float> single;
  std::optional<double> full;
};

/// Sign-extends a negative number from its highest set bit.
std::uint64_t ExtendSign(std::uint64_t value) {
  const int distance = std::countl_zero(value);
  return static_cast<std::uint64_t>(static_cast<std::int64_t>(value << distance) >> distance);
}

/// Does the operator look at the integer view of a floating operand? What the others make of it is
/// no part of their floating result; only an offset that is added to a pointer may turn out to be
/// no floating value after all.
bool LooksAtIntegers(int relation, const AreaBlock& left, const AreaBlock& right) {
  switch (relation) {
    case kMultiply:
      return false;
    case kAdd:
    case kSubtract:
      return left.Type.IsPointer != right.Type.IsPointer;
    default:
      return true;
  }
}

Operand View(const AreaBlock& block, bool looksAtIntegers) {
  Operand operand;
  // That of a floating operand has to be made from its text.
  if (block.ValueKind == 0 || looksAtIntegers) operand.integer = resolver::IntegerOf(block);
  if (block.ValueKind != 0) {
    operand.single = block.FloatValue;
    operand.full = block.DoubleValue;
  } else if (block.Type.IsSigned &&
             (resolver::FromSignBit(operand.integer, block.Type.Size) & 1) != 0) {
    operand.integer = ExtendSign(operand.integer);
    operand.single = static_cast<float>(static_cast<std::int64_t>(operand.integer));
    operand.full = static_cast<double>(static_cast<std::int64_t>(operand.integer));
  } else {
    operand.single = static_cast<float>(operand.integer);
    operand.full = static_cast<double>(operand.integer);
  }
  return operand;
}

/// Division and the ordering comparisons work on magnitudes.
void TakeMagnitude(Operand* operand, const DataLableType& type) {
  if (!type.IsSigned || resolver::FromSignBit(operand->integer, type.Size) == 0) return;
  operand->negative = true;
  operand->integer = (0 - operand->integer) & resolver::SizeMask(type.Size);
}

template <typename Number>
bool Compare(int relation, Number left, Number right) {
  switch (relation) {
    case kLess:
      return left < right;
    case kLessOrEqual:
      return left <= right;
    case kGreater:
      return left > right;
    case kGreaterOrEqual:
      return left >= right;
    case kEqual:
      return left == right;
    default:
      return left != right;
  }
}

/// The ordering of two integers of which at most one is negative; two negative ones are compared by
/// magnitude.
bool CompareIntegers(int relation, const Operand& left, const Operand& right) {
  if (left.negative == right.negative) return Compare(relation, left.integer, right.integer);
  const bool asksForLess = relation == kLess || relation == kLessOrEqual;
  return left.negative == asksForLess;
}

/// The message of an operator that takes no floating operand; null for the others.
const char* IntegersOnlyMessage(int relation) {
  switch (relation) {
    case kShiftLeft:
      return "Invalid type for << operation";
    case kShiftRight:
      return "Invalid type for >> operation";
    case kBitAnd:
      return "Invalid type for & operation";
    case kBitXor:
      return "Invalid type for ^ operation";
    case kBitOr:
      return "Invalid type for | operation";
    case kLogicalAnd:
      return "Invalid type for && operation";
    case kLogicalOr:
      return "Invalid type for || operation";
    default:
      return nullptr;
  }
}

/// The result is 0 or 1 and of the default type.
bool YieldsTruth(int relation) {
  switch (relation) {
    case kLess:
    case kLessOrEqual:
    case kGreater:
    case kGreaterOrEqual:
    case kEqual:
    case kNotEqual:
    case kLogicalAnd:
    case kLogicalOr:
      return true;
    default:
      return false;
  }
}

Outcome Truth(bool holds) {
  return {.integer = holds ? 1U : 0U, .single = {}, .full = {}};
}

Outcome CompareOperands(int relation, const AreaBlock& left, const AreaBlock& right, Operand l,
                        Operand r) {
  if (left.ValueKind != 0 && right.ValueKind != 0) {
    const bool holds = Compare(relation, l.single, r.single);
    return {.integer = 0, .single = holds ? 1.0F : 0.0F, .full = {}};
  }
  if (relation == kEqual || relation == kNotEqual) {
    return Truth(Compare(relation, l.integer, r.integer));
  }
  TakeMagnitude(&l, left.Type);
  TakeMagnitude(&r, right.Type);
  return Truth(CompareIntegers(relation, l, r));
}

/// Empty: division by zero.
std::optional<Outcome> Divide(const AreaBlock& left, const AreaBlock& right, Operand l, Operand r) {
  TakeMagnitude(&l, left.Type);
  TakeMagnitude(&r, right.Type);
  if (r.integer == 0 && r.full == 0.0) return std::nullopt;
  // A divisor between -1 and 1 has an integer view of 0, but then the result is floating.
  std::uint64_t quotient = r.integer == 0 ? 0 : l.integer / r.integer;
  if (l.negative != r.negative) quotient = 0 - quotient;
  return Outcome{.integer = quotient, .single = l.single / r.single, .full = l.full / r.full};
}

/// Empty: division by zero. Only the integer views count, of floating operands too.
std::optional<Outcome> Remain(const AreaBlock& left, const AreaBlock& right, Operand l, Operand r) {
  TakeMagnitude(&l, left.Type);
  TakeMagnitude(&r, right.Type);
  if (r.integer == 0) return std::nullopt;
  std::uint64_t remainder = l.integer % r.integer;
  if (l.negative || r.negative) remainder = 0 - remainder;
  return Outcome{.integer = remainder, .single = {}, .full = {}};
}

/// Computes one operator. Empty: division by zero, the only way in which computing fails.
std::optional<Outcome> Compute(int relation, const AreaBlock& left, const AreaBlock& right,
                               const Operand& l, const Operand& r) {
  const auto integers = [](std::uint64_t value) {
    return Outcome{.integer = value, .single = {}, .full = {}};
  };
  switch (relation) {
    case kMultiply:
      return Outcome{l.integer * r.integer, l.single * r.single, l.full * r.full};
    case kDivide:
      return Divide(left, right, l, r);
    case kRemainder:
      return Remain(left, right, l, r);
    case kAdd:
      return Outcome{l.integer + r.integer, l.single + r.single, l.full + r.full};
    case kSubtract:
      return Outcome{l.integer - r.integer, l.single - r.single, l.full - r.full};
    case kShiftLeft:
      return integers(l.integer << (r.integer % 64));
    case kShiftRight:
      return integers(l.integer >> (r.integer % 64));
    case kBitAnd:
      return integers(l.integer & r.integer);
    case kBitXor:
      return integers(l.integer ^ r.integer);
    case kBitOr:
      return integers(l.integer | r.integer);
    case kLogicalAnd:
      return Truth(l.integer != 0 && r.integer != 0);
    case kLogicalOr:
      return Truth(l.integer != 0 || r.integer != 0);
    default:
      return CompareOperands(relation, left, right, l, r);
  }
}

/// A structure is no operand of arithmetic, whichever way its host describes it.
bool IsStructure(const DataLableType& type) {
  return !type.NestedTypes.empty() || (!type.Members.empty() && !type.IsPointer);
}

/// The larger type, the left one of two equals; a single-precision one before all others.
void TakeResultType(AreaBlock* left, AreaBlock* right) {
  if (left->Type.IsFloat) return;
  if (right->Type.IsFloat || left->Type.Size < right->Type.Size) left->Type.Swap(right->Type);
}

/// Writes the outcome into the left block, in the wider of the operands' kinds. A floating part
/// that the operator did not compute is made from what it did compute.
void StoreOutcome(const Outcome& outcome, std::uint32_t kind, AreaBlock* left) {
  const std::uint64_t integer = outcome.integer & resolver::SizeMask(left->Type.Size);
  left->ValueKind = kind;
  if (kind == 0) {
    resolver::OweNumber(integer, left);
    return;
  }
  if (kind == 1) {
    left->FloatValue = outcome.single.value_or(static_cast<float>(integer));
    left->DoubleValue = static_cast<double>(left->FloatValue);
  } else {
    const double widened =
        outcome.single ? static_cast<double>(*outcome.single) : static_cast<double>(integer);
    left->DoubleValue = outcome.full.value_or(widened);
    left->FloatValue = static_cast<float>(left->DoubleValue);
  }
  left->Value = resolver::TruncateToUnsigned(left->DoubleValue);
  resolver::OweValue(left, OwedText::kProtectedFloating);
}

}  // namespace

int TStringResolver::FoldBinary(AreaBlock* left, AreaBlock* right, int relation, int row) {
  FetchOperands(left, right);
  const int ownRow = resolver::RowOf(static_cast<std::uint32_t>(relation));
  if (ownRow == 0) {
    Fail("Undefined relations between arguments");
    return kPairFailed;
  }
  if (ownRow != row) return kPairNotMine;

  const bool looksAtIntegers = LooksAtIntegers(relation, *left, *right);
  Operand l = View(*left, looksAtIntegers);
  Operand r = View(*right, looksAtIntegers);
  const char* integersOnly = IntegersOnlyMessage(relation);
  if (integersOnly != nullptr && (left->ValueKind != 0 || right->ValueKind != 0)) {
    Fail(integersOnly);
    return kPairFailed;
  }
  if ((relation == kAdd || relation == kSubtract) &&
      !ScalePointerOffset(left, right, &l.integer, &r.integer)) {
    return kPairFailed;
  }
  const std::optional<Outcome> outcome = Compute(relation, *left, *right, l, r);
  if (!outcome) {
    Fail("Division by zero");
    return kPairFailed;
  }
  if (YieldsTruth(relation)) {
    left->Type.Assign(defaultType);
    right->Type.Assign(defaultType);
  }
  if (IsStructure(left->Type) || IsStructure(right->Type)) {
    Fail("Can`t convert one type to another");
    return kPairFailed;
  }
  TakeResultType(left, right);
  StoreOutcome(*outcome, std::max(left->ValueKind, right->ValueKind), left);
  left->MemorySpace |= right->MemorySpace;
  right->IsConsumed = true;
  return kPairFolded;
}

/// Makes the reads that the operands still owe. What cannot be read counts as 0.
void TStringResolver::FetchOperands(AreaBlock* left, AreaBlock* right) {
  for (AreaBlock* block : {left, right}) {
    if (!resolver::IsAddress(*block)) continue;
    ReadThroughAddress(block);
    block->ReferenceLevel += 1;
  }
  for (AreaBlock* block : {left, right}) {
    while (block->Type.IsArray && ReadThroughAddress(block)) {
    }
  }
  for (AreaBlock* block : {left, right}) {
    if (block->Owed == OwedText::kProtectedFloating) {
      block->Owed = OwedText::kFloating;
    } else if (block->Owed == OwedText::kNone) {
      RestoreFloatingPointStr(&block->AreaText);
    }
  }
}

/// Counts an offset that is added to a pointer in elements. False: the sum fails.
bool TStringResolver::ScalePointerOffset(AreaBlock* left, AreaBlock* right,
                                         std::uint64_t* leftValue, std::uint64_t* rightValue) {
  if (left->Type.IsPointer == right->Type.IsPointer) return true;
  const bool pointerFirst = left->Type.IsPointer;
  AreaBlock* const pointer = pointerFirst ? left : right;
  AreaBlock* const offset = pointerFirst ? right : left;
  // Offset and pointer are settled in opposite senses: `p + 1` goes on when the offset settles, `1
  // + p` ends there, without a message.
  if (ApplyPrefixes(offset) != pointerFirst) return false;
  // Subscripts of its own make the offset a pointer.
  resolver::WriteOwedPointer(offset);
  if (offset->Type.IsPointer) return true;
  const DataLableType* element = &FirstMember(pointer->Type);
  if (element->IsArray) element = &FirstMember(*element);
  *(pointerFirst ? rightValue : leftValue) *= element->Size;
  offset->Type.Assign(pointer->Type);
  return true;
}
