#ifndef STRINGRESOLVER_RESOLVER_CHARACTERCLASS_H
#define STRINGRESOLVER_RESOLVER_CHARACTERCLASS_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "resolver/Markers.h"

namespace resolver {

// The operator characters and markers of each dialect, with the parentheses in front. The minus
// sign stands twice; debugging aids show the sets as they are.
inline constexpr std::string_view kAssemblyDelimiters = "()%!~&*-><=^|+-/\x08\x18\x19";
inline constexpr std::string_view kCDelimiters = "()%!~&*.-><=^|+-/\x08\x18\x19";
inline constexpr std::size_t kParentheses = 2;

/// What a text may hold that calls for a step of its own. One look at every character says which
/// steps have nothing to do; most texts need few.
enum CharacterClass : std::uint16_t {
  kAssemblyDelimiter = 1,
  kCDelimiter = 2,
  kBlank = 4,
  kParenthesis = 8,
  kBracket = 16,
  /// Of every floating literal with a point, and of the protected form of any.
  kPoint = 32,
  /// Of `sizeof`; no basic type has it.
  kLetterOfSizeof = 64,
  /// Of what is written in place of sub-results, and the mark of the second memory space.
  kSubResultOrSpace = 128,
  kSign = 256,
  kExponent = 512,
};

inline constexpr std::array<std::uint16_t, 256> kClassesOfCharacter = [] {
  std::array<std::uint16_t, 256> classes{};
  const auto add = [&classes](std::string_view characters, unsigned added) {
    for (const char c : characters) {
      std::uint16_t& entry = classes[static_cast<unsigned char>(c)];
      entry = static_cast<std::uint16_t>(entry | added);
    }
  };
  add(kAssemblyDelimiters.substr(kParentheses), kAssemblyDelimiter);
  add(kCDelimiters.substr(kParentheses), kCDelimiter);
  add(" ", kBlank);
  add("()", kParenthesis);
  add("[]", kBracket);
  add(".", kPoint);
  add({&kProtectedPoint, 1}, kPoint);
  add("+-", kSign);
  add(kExponentPlus.substr(0, 1), kExponent);
  add("z", kLetterOfSizeof);
  add({&kSubResultOpen, 1}, kSubResultOrSpace);
  add({&kMemorySpaceMark, 1}, kSubResultOrSpace);
  return classes;
}();

constexpr bool IsOf(char c, unsigned classes) {
  return (kClassesOfCharacter[static_cast<unsigned char>(c)] & classes) != 0;
}

constexpr bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

/// Where the first character at or behind `from` is that is (`wanted`) or is not of the classes.
constexpr std::size_t FindClass(std::string_view text, std::size_t from, unsigned classes,
                                bool wanted = true) {
  for (std::size_t at = from; at < text.size(); ++at) {
    if (IsOf(text[at], classes) == wanted) return at;
  }
  return std::string_view::npos;
}

/// What makes an operand, or a text of one, more than a name or a number.
inline constexpr unsigned kNotPlain = kAssemblyDelimiter | kCDelimiter | kBlank | kParenthesis |
                                      kBracket | kPoint | kSubResultOrSpace;

/// Is the text one operand without operators, a name or a number?
constexpr bool IsPlainOperand(std::string_view text) {
  for (const char c : text) {
    if (IsOf(c, kNotPlain)) return false;
  }
  return !text.empty();
}

/// May a text of these classes hold a floating literal with a sign in it?
constexpr bool MayHoldSignedExponent(unsigned classes) {
  constexpr unsigned kSignedExponent = kSign | kExponent;
  return (classes & kSignedExponent) == kSignedExponent;
}

/// The classes of all of the text's characters together.
constexpr unsigned ClassesOf(std::string_view text) {
  unsigned classes = 0;
  for (const char c : text) classes |= kClassesOfCharacter[static_cast<unsigned char>(c)];
  return classes;
}

}  // namespace resolver

#endif  // STRINGRESOLVER_RESOLVER_CHARACTERCLASS_H
