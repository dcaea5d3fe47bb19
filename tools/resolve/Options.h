#ifndef STRINGRESOLVER_TOOLS_RESOLVE_OPTIONS_H
#define STRINGRESOLVER_TOOLS_RESOLVE_OPTIONS_H

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <variant>
#include <vector>

namespace tool {

/// What the command line asks for.
struct Options {
  enum class Task { kEvaluate, kListLabels, kListTypes };
  Task task = Task::kEvaluate;
  std::string program;                   ///< with `process`: empty, unless chosen
  std::optional<std::int64_t> process;   ///< number of a running process
  bool stop = false;                     ///< hold the process
  std::vector<std::string> expressions;  ///< of `kEvaluate`: none asks for the prompt
  std::string pattern;                   ///< of a listing: all names when empty
  std::optional<std::string> file;       ///< the current source file, if chosen
  std::string debugFolder = "/usr/lib/debug";
  /// Evaluate again and again, with so many seconds between; at least one expression is given then.
  std::optional<double> watch;
  bool exact = false;
  bool verbose = false;
  bool explain = false;  ///< show each step of a resolution
  bool json = false;     ///< one JSON object a line
};

/// Text that the command line asks for instead: the help, the version.
struct Information {
  std::string text;
};

/// A command line that makes no sense. `what()` is one sentence.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Reads the arguments that follow the command's name. Options end at PROGRAM, so that an
/// expression may begin with "-"; a "--" before or right behind PROGRAM may say so as well. With
/// `--pid` there is no PROGRAM, and they end at the first expression. Throws `UsageError`.
std::variant<Options, Information> ReadOptions(const std::vector<std::string>& arguments);

/// Does `text` look like one of the options? For a word of advice when it stands behind PROGRAM.
bool LooksLikeOption(const std::string& text);

}  // namespace tool

#endif  // STRINGRESOLVER_TOOLS_RESOLVE_OPTIONS_H
