#ifndef STRINGRESOLVER_RESOLVER_SUBRESULT_H
#define STRINGRESOLVER_RESOLVER_SUBRESULT_H

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "resolver/CharacterClass.h"
#include "resolver/Markers.h"
#include "resolver/ValueText.h"

namespace resolver {

/// An integer sub-result in the default memory space.
struct SubResult {
  std::uint64_t position = 0;
  std::string_view number;
};

/// Takes the digits that `*text` begins with.
inline std::string_view TakeDigits(std::string_view* text) {
  std::size_t count = 0;
  while (count < text->size() && IsDigit((*text)[count])) ++count;
  const std::string_view digits = text->substr(0, count);
  text->remove_prefix(count);
  return digits;
}

/// Takes a sub-result off the front of `*text`, with the opening of which it begins. False for one
/// that is not an integer, or has been changed.
inline bool TakeSubResult(std::string_view* text, SubResult* subResult) {
  text->remove_prefix(kSubResultStart.size());
  if (!ReadDigits(TakeDigits(text), &subResult->position)) return false;
  if (!text->starts_with(kSubResultClose)) return false;
  text->remove_prefix(1);
  subResult->number = TakeDigits(text);
  if (subResult->number.empty() || !text->starts_with(kSubResultFence)) return false;
  text->remove_prefix(kSubResultFence.size());
  return true;
}

}  // namespace resolver

#endif  // STRINGRESOLVER_RESOLVER_SUBRESULT_H
