#ifndef STRINGRESOLVER_TOOLS_RESOLVE_STYLE_H
#define STRINGRESOLVER_TOOLS_RESOLVE_STYLE_H

#include <string>
#include <string_view>

namespace tool {

/// Colours for one output: few, and none unless it is a terminal that wants them. Values have none.
class Style {
 public:
  /// Without colours.
  Style() = default;
  /// For an open file: with colours when it is a terminal, its kind is not "dumb" or unknown, and
  /// the environment does not set NO_COLOR to anything.
  static Style For(int descriptor);

  enum class Role {
    kError,
    kWarning,
    kNote,
    kChanged,  ///< a value that is not what it was
  };

  /// `text`, which must be printable, as it is to be written.
  [[nodiscard]] std::string Paint(Role role, std::string_view text) const;

 private:
  bool colours_ = false;
};

}  // namespace tool

#endif  // STRINGRESOLVER_TOOLS_RESOLVE_STYLE_H
