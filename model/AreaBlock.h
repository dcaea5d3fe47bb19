#ifndef STRINGRESOLVER_MODEL_AREABLOCK_H
#define STRINGRESOLVER_MODEL_AREABLOCK_H

#include <cstdint>
#include <string>

#include "host/DataLableType.h"
#include "model/RelationCode.h"

/// What an `AreaText` that has not been written yet is to read.
enum class OwedText : std::uint8_t {
  kNone,
  /// `OwedNumber` in decimal.
  kInteger,
  /// `OwedFloating` with six significant digits, and the same with its point and sign protected.
  kFloating,
  kProtectedFloating,
};

/// One operand of an element with the operator text around it, its value in three representations
/// and its two types. The rows edit blocks in place and fold neighbours until one is left.
///
/// Copies are deep; `MemberBlock` alone refers to another block of the same list, which it does not
/// own, and only while a member access runs.
struct AreaBlock {
  /// Operators before the operand: the binary one that links it to the left neighbour (removed once
  /// recognised), then prefix operators and cast marks.
  std::string BeforeText;
  /// The operand: a label, number, member name or marker sequence; once evaluated, its value.
  std::string AreaText;
  /// Operators after the operand; later the square-bracket part of the operand.
  std::string AfterText;
  /// Reads through the block's address still owed: -1 for a plain value, n for n reads.
  std::int32_t ReferenceLevel = -1;
  /// Space of the address in `Value`: 0 the default one, 1 the one that "#" selects.
  std::uint8_t MemorySpace = 0;
  /// The block is the name after "." or "->" and is not looked up as a label.
  bool IsMemberName = false;
  /// Integer value of the block, or the address that it denotes.
  std::uint64_t Value = 0;
  /// A `RelationCode`: the operator between this block and its left neighbour.
  std::uint32_t Relation = kFirstBlock;
  /// The block that names the member to select from this one, or null.
  AreaBlock* MemberBlock = nullptr;
  /// The block has been folded into its left neighbour and is about to be erased.
  bool IsConsumed = false;
  /// Type of the value.
  DataLableType Type;
  /// Type that the latest cast converted the value to.
  DataLableType CastType;
  /// `Type` is explicit: known from a label, a sub-result or the operand row.
  bool HasCastType = false;
  /// Which value is live: 0 `Value`, 1 `FloatValue`, 2 `DoubleValue`.
  std::uint32_t ValueKind = 0;
  float FloatValue = 0.0F;
  double DoubleValue = 0.0;

  // Most texts and pointer types of operands are replaced before anybody looks at them. Between the
  // steps of a resolution they are owed; blocks that the resolver hands out owe nothing, and
  // whoever makes blocks leaves these fields alone.

  OwedText Owed = OwedText::kNone;
  /// `Type` stands for a pointer to itself that is marked as an address.
  bool OwesPointer = false;
  /// Of that pointer: its `TypeNumber`.
  std::uint32_t OwedTypeNumber = 0;
  std::uint64_t OwedNumber = 0;
  double OwedFloating = 0.0;

  AreaBlock() = default;
  AreaBlock(const AreaBlock&) = default;
  AreaBlock(AreaBlock&&) = default;
  ~AreaBlock() = default;

  AreaBlock& operator=(const AreaBlock& other) {
    if (this == &other) return *this;
    AreaBlock copy(other);
    return *this = std::move(copy);
  }

  // Written out because assigning a type record returns a copy of it, which nobody here wants.
  AreaBlock& operator=(AreaBlock&& other) noexcept {
    BeforeText.swap(other.BeforeText);
    AreaText.swap(other.AreaText);
    AfterText.swap(other.AfterText);
    ReferenceLevel = other.ReferenceLevel;
    MemorySpace = other.MemorySpace;
    IsMemberName = other.IsMemberName;
    Value = other.Value;
    Relation = other.Relation;
    MemberBlock = other.MemberBlock;
    IsConsumed = other.IsConsumed;
    Type.Swap(other.Type);
    CastType.Swap(other.CastType);
    HasCastType = other.HasCastType;
    ValueKind = other.ValueKind;
    FloatValue = other.FloatValue;
    DoubleValue = other.DoubleValue;
    Owed = other.Owed;
    OwesPointer = other.OwesPointer;
    OwedTypeNumber = other.OwedTypeNumber;
    OwedNumber = other.OwedNumber;
    OwedFloating = other.OwedFloating;
    return *this;
  }
};

#endif  // STRINGRESOLVER_MODEL_AREABLOCK_H
