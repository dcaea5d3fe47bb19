#include "tools/resolve/Style.h"

#include <unistd.h>

#include <cstdlib>

namespace tool {
namespace {

bool IsSet(const char* variable) {
  const char* const value = std::getenv(variable);
  return value != nullptr && *value != '\0';
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
  const bool able = IsSet("TERM") && std::string_view(std::getenv("TERM")) != "dumb";
  style.colours_ = able && !IsSet("NO_COLOR") && isatty(descriptor) != 0;
  return style;
}

std::string Style::Paint(Role role, std::string_view text) const {
  if (!colours_) return std::string(text);
  return std::string("\x1b[").append(Code(role)).append("m").append(text).append("\x1b[0m");
}

}  // namespace tool
