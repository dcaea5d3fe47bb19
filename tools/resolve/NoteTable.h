#ifndef STRINGRESOLVER_TOOLS_RESOLVE_NOTETABLE_H
#define STRINGRESOLVER_TOOLS_RESOLVE_NOTETABLE_H

#include <span>
#include <string_view>

namespace tool {

/// The differences from C that are noted, in the order of their table.
enum class Difference {
  kUnaryBeforeSubscript,
  kPointerSubscript,
  kArrowOnValue,
  kPointerOnTheRight,
  kPointerDifference,
  kArrayName,
  kCutRow,
  kRoundedPointee,
  kSizeofExpression,
  kSignLost,
  kNumeralWidth,
  kNoPromotion,
  kMixedSigns,
  kNegativeComparison,
  kComparisonOrder,
  kRemainderSign,
  kRightShift,
  kNarrowingCast,
  kWideningCast,
  kFloatingCast,
  kFloatingComparison,
  kFloatingGroup,
  kFloatingLogic,
  kFloatingNumeral,
  kBothSides,
  kBitField,
  kIncrement,
  kAssignment,
  kConditional,
  kComma,
  kStringLiteral,
  kFunctionAddress,
};

/// An expression that meets a difference, over the program of tests/gdb/differences.c. The tests
/// ask gdb and the resolver for each.
struct DifferenceExample {
  std::string_view expression;
  std::string_view inC;   ///< C's answer: a number, or words in parentheses where there is none
  std::string_view here;  ///< the resolver's number, or the sentence of its failure
  /// Gives C's answer here; empty when nothing does.
  std::string_view write;
};

struct DifferenceRow {
  Difference difference;
  std::string_view name;     ///< of the note: lower-case words with hyphens
  std::string_view meets;    ///< which expressions meet it
  std::string_view does;     ///< what the resolver does: a clause, in the note as it is
  std::string_view instead;  ///< what to write: a clause, in the note when nothing better is known
  std::span<const DifferenceExample> examples;
};

/// One row for each difference, in their order.
std::span<const DifferenceRow> DifferenceTable();

const DifferenceRow& RowOf(Difference difference);

}  // namespace tool

#endif  // STRINGRESOLVER_TOOLS_RESOLVE_NOTETABLE_H
