#ifndef STRINGRESOLVER_TOOLS_RESOLVE_OPTIONS_H
#define STRINGRESOLVER_TOOLS_RESOLVE_OPTIONS_H

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "tools/resolve/Format.h"
#include "tools/resolve/TargetOptions.h"

namespace tool {

/// What the command line asks for.
struct Options : TargetOptions {
  enum class Task { kEvaluate, kListLabels, kListTypes, kLayout };
  Task task = Task::kEvaluate;
  std::vector<std::string> expressions;  ///< of `kEvaluate`: none asks for the prompt
  std::string pattern;                   ///< of a listing: all names when empty
  std::string type;                      ///< of `kLayout`
  /// Evaluate again and again, with so many seconds between; at least one expression is given then.
  std::optional<double> watch;
  bool exact = false;
  bool verbose = false;
  enum class Notes { kNone, kShow, kError };
  Notes notes = Notes::kShow;  ///< what to do about notes on an expression
  bool explain = false;        ///< show each step of a resolution
  bool json = false;           ///< one JSON object a line
  bool plain = false;          ///< numbers only
  Format format = Format::kNatural;
  std::optional<std::uint64_t> count;  ///< elements to see, at least 1
};

/// Text that the command line asks for instead: the help, the version.
struct Information {
  std::string text;
};

/// Reads the arguments that follow the command's name. Options end at PROGRAM, so that an
/// expression may begin with "-"; a "--" before or right behind PROGRAM may say so as well. With
/// `--pid` there is no PROGRAM, and they end at the first expression. Throws `UsageError`.
std::variant<Options, Information> ReadOptions(const std::vector<std::string>& arguments);

/// Does `text` look like one of the options? For a word of advice when it stands behind PROGRAM.
bool LooksLikeOption(const std::string& text);

}  // namespace tool

#endif  // STRINGRESOLVER_TOOLS_RESOLVE_OPTIONS_H
