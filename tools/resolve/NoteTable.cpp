#include "tools/resolve/NoteTable.h"

#include <array>
#include <cstddef>

namespace tool {
namespace {

using Example = DifferenceExample;

constexpr Example kUnaryBeforeSubscriptExamples[] = {
    {"-a[3]", "-40", "cannot read memory at <address>", "-(int)(a[3]+0)"},
    {"!a[1]", "0", "cannot read memory at 0x0", "!(a[1]+0)"},
    {"~a[1]", "19", "cannot read memory at <address>", "~(int)(a[1]+0)"},
    {"(char)a[1]", "-20", "<number>", "(char)(a[1]+0)"},
    {"-curve[1]", "1.5", "<rest>", "0-curve[1]"},
    {"*ptrs[1]", "-20", "Can`t do the dereference operation with this type", "*(ptrs[1]+0)"},
    {"sizeof(a[1])", "4", "22", "sizeof(int)"},
    {"&holder.halves[1]", "(an address)", "<number>", "&(holder.halves[1])"},
    {"-holder.halves[1]", "71", "cannot read memory at <address>", "-(int)(holder.halves[1]+0)"},
};
constexpr Example kPointerSubscriptExamples[] = {
    {"p[1]", "30", "214748364840", "*(p+1)"},
    {"text[1]", "97", "0", "*(text+1)"},
    {"ptrs[1][0]", "-20", "<number>", "*(ptrs[1]+0)"},
};
constexpr Example kArrowOnValueExamples[] = {
    {"(pp+1)->x", "2", "cannot read memory at <address>", "(*(pp+1)).x"},
    {"((struct pair*)pp)->y", "-1", "cannot read memory at <address>", "(*((struct pair*)pp)).y"},
};
constexpr Example kPointerOnTheRightExamples[] = {
    {"1+p", "(an address)", "a pointer must stand on the left of + and -, as in `p + 1`", "p+1"},
    {"*(2+p)", "40", "a pointer must stand on the left of + and -, as in `p + 1`", "*(p+2)"},
};
constexpr Example kPointerDifferenceExamples[] = {
    {"q-p", "2", "8", "(long)(q-p)/(long)sizeof(int)"},
    {"p-q", "-2", "18446744073709551608", "(long)(p-q)/(long)sizeof(int)"},
};
constexpr Example kArrayNameExamples[] = {
    {"a+1", "(an address)", "11", "&a[0]+1"},
    {"*(a+1)", "-20", "Can`t do the dereference operation with this type", "a[1]"},
    {"a==p-1", "1", "0", "&a[0]==p-1"},
    {"*(*(m+1)+2)", "12", "Can`t do the dereference operation with this type", "m[1][2]"},
};
constexpr Example kCutRowExamples[] = {
    {"grid[2][1]", "6", "<rest>", "*((signed char*)&grid+2*2+1)"},
};
constexpr Example kRoundedPointeeExamples[] = {
    {"po+1", "(an address)", "<number>", "(struct odd*)po+1"},
    {"(po+1)->tag", "98", "cannot read memory at <address>", "(*((struct odd*)po+1)).tag"},
};
constexpr Example kSizeofExpressionExamples[] = {
    {"sizeof(word)", "10", "14", "sizeof(char)*10"},
    {"sizeof(5)", "4", "8", "sizeof(int)"},
    {"sizeof(c+c)", "4", "1", "sizeof(int)"},
};
constexpr Example kSignLostExamples[] = {
    {"n+1", "-6", "18446744073709551610", "(int)(n+1)"},
    {"n/2", "-3", "18446744073709551613", "(int)(n/2)"},
    {"-5", "-5", "18446744073709551611", "(int)(-5)"},
    {"-7/2", "-3", "9223372036854775804", "(int)((int)(-7)/2)"},
    {"n>>1", "-4", "9223372036854775804", "(int)(n>>1)"},
    {"i<-6", "0", "1", "i-(int)(-6)<0"},
};
constexpr Example kNumeralWidthExamples[] = {
    {"top+1", "0", "4294967296", "(top+1)&0xffffffff"},
    {"u-8", "4294967295", "18446744073709551615", "(u-8)&0xffffffff"},
};
constexpr Example kNoPromotionExamples[] = {
    {"uc+uc", "400", "144", "uc+(int)0+uc"},
    {"c+uc", "199", "-57", "c+(int)0+uc"},
    {"-uc", "-200", "56", "-(uc+(int)0)"},
    {"low*low", "90000", "24464", "(low+(int)0)*low"},
};
constexpr Example kMixedSignsExamples[] = {
    {"n-u", "4294967282", "-14", "(unsigned int)(n-u)"},
    {"n<u", "0", "1", "(unsigned int)n<u"},
};
constexpr Example kNegativeComparisonExamples[] = {
    {"i<n", "0", "1", "i-n<0"},
    {"i>n", "1", "0", "i-n>0"},
    {"tiny>=n", "1", "0", "tiny-n>=0"},
};
constexpr Example kComparisonOrderExamples[] = {
    {"2>1<1", "0", "1", "(2>1)<1"},
    {"j>one<=zero", "0", "1", "(j>one)<=zero"},
};
constexpr Example kRemainderSignExamples[] = {
    {"j%i", "3", "-3", "j%-i"},
};
constexpr Example kRightShiftExamples[] = {
    {"depth>>one", "-35000", "9223372036854740808", "~(~depth>>one)"},
};
constexpr Example kNarrowingCastExamples[] = {
    {"(char)300+1", "45", "301", "(int)((300&255^128)-128)+1"},
    {"(unsigned char)n+1", "250", "<number>", "(n&255)+1"},
};
constexpr Example kWideningCastExamples[] = {
    {"(int)c", "-1", "255", "c+(int)0"},
    {"(short)tiny", "-5", "251", "tiny+(short)0"},
};
constexpr Example kFloatingCastExamples[] = {
    {"(float)i", "-5", "<rest>", "i*1.0"},
    {"(double)f", "1.5", "<rest>", "f"},
    {"(double)n/2", "-3.5", "<rest>", "n*1.0/2"},
};
constexpr Example kFloatingComparisonExamples[] = {
    {"f>1", "1", "0", "f>1.0"},
    {"f==1", "0", "1", "f==1.0"},
    {"f==one", "0", "1", "f==one+0.0"},
};
constexpr Example kFloatingGroupExamples[] = {
    {"(1.0/3)*3", "1", "0.999999", "1.0/3*3"},
    {"(f+0.5)/4", "0.5", "0", "(f+0.5)/4.0"},
    {"2*(-1.5)", "-3", "0.5", "-1.5*2"},
};
constexpr Example kFloatingLogicExamples[] = {
    {"!f", "0", "Invalid type for ! operation", "f==0.0"},
    {"f&&1", "1", "Invalid type for && operation", "f!=0.0"},
};
constexpr Example kFloatingNumeralExamples[] = {
    {"1e3", "1000", "Undefined label 1e3", "1.0e3"},
    {".5", "0.5", "Unknown operation: .", "0.5"},
};
constexpr Example kBothSidesExamples[] = {
    {"none&&*none", "0", "cannot read memory at 0x0", "none"},
    {"none==0||*none", "1", "cannot read memory at 0x0", "none==0"},
};
constexpr Example kBitFieldExamples[] = {
    {"flags.level*2", "10", "438", "(flags.level>>1&7)*2"},
    {"flags.bias+1", "-2", "220", "(int)((int)((flags.bias>>4&15^8)-8)+1)"},
};
constexpr Example kIncrementExamples[] = {
    {"++i", "(writes)", "-5", "i+(int)1"},
    {"i--", "(writes)", "Invalid operation --", "i"},
};
constexpr Example kAssignmentExamples[] = {
    {"i=3", "(writes)", "Internal error. Wrong relations between arguments", ""},
};
constexpr Example kConditionalExamples[] = {
    {"j?n:i", "-7", "Undefined label j?n:i", "n"},
};
constexpr Example kCommaExamples[] = {
    {"i,j", "3", "there is no operator `,`", "j"},
};
constexpr Example kStringLiteralExamples[] = {
    {"\"abc\"[0]", "97", "Undefined label \"abc\"", ""},
};
constexpr Example kFunctionAddressExamples[] = {
    {"&main", "(an address)", "The pointer doesn`t exist", "main"},
};

constexpr std::array kRows = {
    DifferenceRow{Difference::kUnaryBeforeSubscript, "unary-before-subscript",
                  "a unary operator, a cast or `sizeof` straight before a subscript of an array",
                  "the operator before the subscript acts on the address of the element",
                  "put the operand into parentheses with `+0`", kUnaryBeforeSubscriptExamples},
    DifferenceRow{Difference::kPointerSubscript, "pointer-subscript", "a subscript on a pointer",
                  "a subscript on a pointer steps by, and reads, the size of the pointer",
                  "write `*(p+i)` for `p[i]`", kPointerSubscriptExamples},
    DifferenceRow{Difference::kArrowOnValue, "arrow-on-value",
                  "`->` behind a computed pointer: a sum or a cast",
                  "`->` behind a computed pointer reads through it once too often",
                  "write `(*p).x` for `p->x`", kArrowOnValueExamples},
    DifferenceRow{Difference::kPointerOnTheRight, "pointer-on-the-right", "a number plus a pointer",
                  "only a pointer on the left is counted in elements", "put the pointer first",
                  kPointerOnTheRightExamples},
    DifferenceRow{Difference::kPointerDifference, "pointer-difference",
                  "the difference of two pointers",
                  "the difference of two pointers is in bytes, and has no sign",
                  "divide it by the size of an element", kPointerDifferenceExamples},
    DifferenceRow{Difference::kArrayName, "array-name", "the name of an array as an operand",
                  "an array as an operand is its first element",
                  "write `&a[0]` for the address of the first element, `a[i]` for `*(a+i)`",
                  kArrayNameExamples},
    DifferenceRow{Difference::kCutRow, "cut-row",
                  "an element of a row whose size is no multiple of 8, above the addresses that as "
                  "many bytes as the remainder can hold",
                  "the address of the row is cut to as many bytes as its size leaves over 8",
                  "count the elements from the first one of the whole array", kCutRowExamples},
    DifferenceRow{Difference::kRoundedPointee, "rounded-structure",
                  "arithmetic with a pointer to a structure whose size would cut addresses",
                  "a pointer to this structure steps by a size that is rounded up",
                  "cast the pointer: a cast has the exact size", kRoundedPointeeExamples},
    DifferenceRow{Difference::kSizeofExpression, "sizeof",
                  "`sizeof` of an array whose size is rounded up, or of a computed value",
                  "the size is the resolver's: array records may be rounded up, numbers have 8 "
                  "bytes, and small operands are not promoted",
                  "name the type", kSizeofExpressionExamples},
    DifferenceRow{Difference::kSignLost, "sign-lost",
                  "a negative result beside a numeral or an enumerator",
                  "a numeral has 8 bytes and no sign, and so has a result computed with it",
                  "cast the numeral, or the result, to `int`", kSignLostExamples},
    DifferenceRow{Difference::kNumeralWidth, "numeral-width",
                  "an unsigned result that does not fit the 4 bytes that C gives it",
                  "a numeral has 8 bytes, so the result does not wrap at 4",
                  "cut it: `&0xffffffff`", kNumeralWidthExamples},
    DifferenceRow{Difference::kNoPromotion, "no-promotion",
                  "a result of operands below `int` that does not fit their size",
                  "operands smaller than `int` are not promoted: the result is cut to their size",
                  "add `(int)0` to the first operand", kNoPromotionExamples},
    DifferenceRow{Difference::kMixedSigns, "mixed-signs",
                  "a negative number beside an unsigned one of the same size",
                  "of two operands of one size the left one decides about the sign, and "
                  "comparisons go by value",
                  "cast the signed operand", kMixedSignsExamples},
    DifferenceRow{Difference::kNegativeComparison, "negative-comparison",
                  "`<` `<=` `>` `>=` of two negative numbers",
                  "two negative numbers are compared by magnitude",
                  "compare their difference with 0", kNegativeComparisonExamples},
    DifferenceRow{Difference::kComparisonOrder, "comparison-order",
                  "`<` or `<=` behind `>` or `>=`",
                  "`<` and `<=` bind more tightly than `>` and `>=`", "use parentheses",
                  kComparisonOrderExamples},
    DifferenceRow{Difference::kRemainderSign, "remainder-sign",
                  "`%` with a negative divisor and a dividend that is not",
                  "a remainder is negative when either operand is", "negate the divisor",
                  kRemainderSignExamples},
    DifferenceRow{Difference::kRightShift, "right-shift", "`>>` of a negative number of 8 bytes",
                  "zeros are shifted in", "shift the complement", kRightShiftExamples},
    DifferenceRow{Difference::kNarrowingCast, "narrowing-cast",
                  "a cast that drops bits, inside an expression",
                  "inside an expression a cast does not cut the value", "mask the value",
                  kNarrowingCastExamples},
    DifferenceRow{Difference::kWideningCast, "widening-cast",
                  "a cast of a negative number to a larger type of less than 8 bytes",
                  "a cast extends the sign to 8 bytes only", "add a zero of that type",
                  kWideningCastExamples},
    DifferenceRow{Difference::kFloatingCast, "floating-cast", "a cast to `float` or `double`",
                  "a cast to a floating type takes the value for the bits of a floating number",
                  "multiply by 1.0", kFloatingCastExamples},
    DifferenceRow{Difference::kFloatingComparison, "floating-comparison",
                  "a floating number compared with an integer",
                  "a floating number is compared with an integer as an integer",
                  "write the integer with a point, or add `0.0` to it",
                  kFloatingComparisonExamples},
    DifferenceRow{
        Difference::kFloatingGroup, "floating-group", "a floating sub-result in parentheses",
        "a floating sub-result in parentheses keeps six digits, and becomes an integer when it is "
        "a whole number",
        "leave the parentheses out, or give the other operand a point", kFloatingGroupExamples},
    DifferenceRow{Difference::kFloatingLogic, "floating-logic",
                  "`!`, `&&` or `||` of a floating number", "logic takes integers only",
                  "compare with 0.0", kFloatingLogicExamples},
    DifferenceRow{
        Difference::kFloatingNumeral, "floating-numeral",
        "a floating numeral without a digit on either side of its point, or without a point",
        "a floating numeral needs a digit on either side of its point",
        "write `0.5` for `.5`, `1.0e3` for `1e3`", kFloatingNumeralExamples},
    DifferenceRow{Difference::kBothSides, "both-sides",
                  "`&&` or `||` whose right side fails and would not be evaluated in C",
                  "both sides of `&&` and `||` are evaluated", "evaluate the left side first",
                  kBothSidesExamples},
    DifferenceRow{Difference::kBitField, "bit-field", "a bit-field as an operand",
                  "as an operand a bit-field is the whole unit that holds its bits",
                  "shift and mask the unit", kBitFieldExamples},
    DifferenceRow{Difference::kIncrement, "increment", "`++` or `--`",
                  "nothing is ever written: `++x` and `--x` are two signs, and nothing may stand "
                  "behind an operand",
                  "write `x+(int)1`", kIncrementExamples},
    DifferenceRow{Difference::kAssignment, "assignment", "an assignment",
                  "nothing is ever written, and there is no assignment", "compare with `==`",
                  kAssignmentExamples},
    DifferenceRow{Difference::kConditional, "conditional", "`?:`", "there is no operator `?:`",
                  "evaluate the condition, then the part that it chooses", kConditionalExamples},
    DifferenceRow{Difference::kComma, "comma", "the comma operator", "there is no comma operator",
                  "write the right operand", kCommaExamples},
    DifferenceRow{Difference::kStringLiteral, "string-literal", "a string literal",
                  "there are no string literals", "name the array that holds the text",
                  kStringLiteralExamples},
    DifferenceRow{Difference::kFunctionAddress, "function-address",
                  "`&` before the name of a function",
                  "the name of a function is its address already", "leave out the `&`",
                  kFunctionAddressExamples},
};

}  // namespace

std::span<const DifferenceRow> DifferenceTable() {
  return kRows;
}

const DifferenceRow& RowOf(Difference difference) {
  return kRows[static_cast<std::size_t>(difference)];
}

}  // namespace tool
