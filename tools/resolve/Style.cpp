#include "tools/resolve/Style.h"

#include <unistd.h>

#include <cstdlib>

namespace tool {
namespace {

/// The value of a variable of the environment; empty when it is not set.
std::string_view Variable(const char* name) {
  const char* const value = std::getenv(name);
  return value == nullptr ? std::string_view() : std::string_view(value);
}

std::string_view Code(Style::Role role) {
  switch (role) {
    case Style::Role::kError:
      return "31";
    case Style::Role::kWarning:
      return "33";
    case Style::Role::kNote:
      return "2";
    case Style::Role::kChanged:
      return "1;33";
  }
  return "0";
}

}  // namespace

Style Style::For(int descriptor) {
  Style style;
  const std::string_view terminal = Variable("TERM");
  const bool able = !terminal.empty() && terminal != "dumb";
  style.colours_ = able && Variable("NO_COLOR").empty() && isatty(descriptor) != 0;
  return style;
}

std::string Style::Paint(Role role, std::string_view text) const {
  if (!colours_) return std::string(text);
  return std::string("\x1b[").append(Code(role)).append("m").append(text).append("\x1b[0m");
}

}  // namespace tool
