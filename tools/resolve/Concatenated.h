#ifndef STRINGRESOLVER_TOOLS_RESOLVE_CONCATENATED_H
#define STRINGRESOLVER_TOOLS_RESOLVE_CONCATENATED_H

#include <initializer_list>
#include <string>
#include <string_view>

namespace tool {

/// The parts one behind the other. Unlike a chain of `+` that begins with a literal, it makes no
/// compiler warn about copies within one string.
inline std::string Concatenated(std::initializer_list<std::string_view> parts) {
  std::string text;
  for (const std::string_view part : parts) text += part;
  return text;
}

}  // namespace tool

#endif  // STRINGRESOLVER_TOOLS_RESOLVE_CONCATENATED_H
