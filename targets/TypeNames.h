#ifndef STRINGRESOLVER_TARGETS_TYPENAMES_H
#define STRINGRESOLVER_TARGETS_TYPENAMES_H

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace targets {

/// A type name taken apart.
struct TypeName {
  /// The type without its stars: a basic type (`unsigned int`), a tag with its keyword
  /// (`struct node`), or a name as written (`node_t`). `const` and the like are gone.
  std::string base;
  /// How many pointers stand around it.
  std::size_t stars = 0;
};

/// Reads a type name, with or without the blanks between its words, and with ":@:" for any of
/// them: `structnode*`, `unsigned:@:int`, `const char *`. Without blanks, `constant_t` could also
/// be a constant `ant_t`, so the readings are tried in order, whole words first, and the first
/// whose base `isKnown` accepts is the answer. Empty when there is none, above all for expressions,
/// which are told apart without asking. The cost is linear in the length of `text`.
std::optional<TypeName> CanonicalTypeName(
    std::string_view text, const std::function<bool(std::string_view base)>& isKnown);

/// The one spelling of a basic type whose keywords stand in `text` in any order, with or without
/// blanks between them: `longunsignedint` is `unsigned long`. Empty when it is none.
std::string CanonicalBasicType(std::string_view text);

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_TYPENAMES_H
