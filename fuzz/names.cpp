// The numeral reader and the type-name reader of the hosts for real programs. The first byte and
// the second say which type names are known; the rest is the text.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "fuzz/ByteSource.h"
#include "fuzz/Require.h"
#include "targets/NumeralReader.h"
#include "targets/TypeNames.h"

namespace {

using fuzzing::Require;

void CheckNumeral(std::string_view text) {
  const std::optional<std::uint64_t> value = targets::ReadNumeral(text);
  if (!value) return;
  const char first = text.front();
  Require((first >= '0' && first <= '9') || first == '\'',
          "a numeral begins with a digit or quote");
  if (first == '\'') {
    Require(*value <= 255, "a character constant is one byte");
    return;
  }
  const std::string again = std::to_string(*value);
  Require(targets::ReadNumeral(again) == value, "a value reads back as itself");
  Require(!targets::ReadNumeral(std::string(text) + ' '), "nothing may stand behind a numeral");
}

/// What is known is a set of names, and looks arbitrary; no type is called like a number.
bool IsKnown(std::string_view base, unsigned choice) {
  if (base.front() >= '0' && base.front() <= '9') return false;
  unsigned hash = choice >> 8U;
  for (const char c : base) hash = hash * 31 + static_cast<unsigned char>(c);
  return (choice & 0xffU) >= hash % 256;
}

void CheckTypeName(std::string_view text, unsigned choice) {
  // Every name can be cut in a few ways, at most: more for longer texts would cost a square.
  constexpr std::size_t kMostQuestions = 200;
  std::size_t questions = 0;
  const auto isKnown = [&](std::string_view base) {
    ++questions;
    Require(!base.empty(), "nothing is no name");
    return IsKnown(base, choice);
  };
  const std::optional<targets::TypeName> name = targets::CanonicalTypeName(text, isKnown);
  Require(questions <= kMostQuestions, "few readings are tried");
  if (!name) return;
  Require(!name->base.empty() && IsKnown(name->base, choice), "the type is a known one");
  Require(name->base.find('*') == std::string::npos, "stars are no part of a name");
  Require(name->stars == static_cast<std::size_t>(std::count(text.begin(), text.end(), '*')),
          "every star is a pointer");
  const std::string spelled = name->base + std::string(name->stars, '*');
  const auto again = targets::CanonicalTypeName(spelled, isKnown);
  Require(again && again->stars == name->stars, "a type's own spelling is a type");
  if (!targets::CanonicalBasicType(name->base).empty()) return;
  Require(again->base == name->base, "a type's own spelling is that type");
}

void CheckBasicType(std::string_view text) {
  const std::string name = targets::CanonicalBasicType(text);
  Require(name.empty() || targets::CanonicalBasicType(name) == name,
          "the one spelling of a basic type stands for itself");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string_view text = fuzzing::AsText(data, size);
  fuzzing::ByteSource header(text);
  const unsigned known = header.Byte();
  const unsigned choice = known | static_cast<unsigned>(header.Byte()) << 8U;
  text.remove_prefix(std::min<std::size_t>(2, text.size()));
  CheckNumeral(text);
  CheckTypeName(text, choice);
  CheckBasicType(text);
  return 0;
}
