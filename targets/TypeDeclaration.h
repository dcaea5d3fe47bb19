#ifndef STRINGRESOLVER_TARGETS_TYPEDECLARATION_H
#define STRINGRESOLVER_TARGETS_TYPEDECLARATION_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace targets {

/// More pointers and dimensions than this in one declaration are refused.
constexpr std::size_t kMostSteps = 64;

/// One step from a type to the one that it is made of.
struct TypeStep {
  enum class Kind { kPointer, kArray, kFunction };
  Kind kind = Kind::kPointer;
  /// Elements of an array; nothing for `[]`.
  std::optional<std::uint64_t> count;
};

/// A type as C writes it without the name, taken apart.
struct TypeDeclaration {
  std::string base;             ///< `unsigned int`, `struct node`: as written
  std::vector<TypeStep> steps;  ///< from the type inwards: of `int *[3]` the array, the pointer
  /// Width of a bit-field, which stands behind a colon: `unsigned int : 3`.
  std::optional<std::uint64_t> bits;
};

/// Takes `int [3]`, `struct node *`, `unsigned char[2][3]`, `int (*)(char, ...)` apart. What stands
/// between the parentheses of a function is skipped. Throws `std::invalid_argument` that says what
/// is wrong with it.
TypeDeclaration ReadTypeDeclaration(std::string_view text);

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_TYPEDECLARATION_H
