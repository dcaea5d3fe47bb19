#ifndef STRINGRESOLVER_TOOLS_RESOLVE_OPTIONS_H
#define STRINGRESOLVER_TOOLS_RESOLVE_OPTIONS_H

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <variant>
#include <vector>

#include "targets/RegionRequest.h"

namespace tool {

/// What the command line asks for.
struct Options {
  enum class Task { kEvaluate, kListLabels, kListTypes };
  Task task = Task::kEvaluate;
  std::string program;                   ///< empty with a description, or where the core dump is to name it
  std::vector<std::string> expressions;  ///< of `kEvaluate`: at least one
  std::string pattern;                   ///< of a listing: all names when empty
  std::optional<std::string> file;       ///< the current source file, if chosen
  std::string debugFolder = "/usr/lib/debug";
  std::optional<std::string> description;      ///< takes the place of the program
  std::vector<targets::RegionRequest> memory;  ///< laid over the target's own
  std::optional<std::uint32_t> wordSize;       ///< of the second memory space, 1 to 8 bytes
  std::optional<std::string> core;  ///< the core dump to take memory from
  bool exact = false;
  bool verbose = false;
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
/// expression may begin with "-"; a "--" before or right behind PROGRAM may say so as well. Throws
/// `UsageError`.
std::variant<Options, Information> ReadOptions(const std::vector<std::string>& arguments);

/// Does `text` look like one of the options? For a word of advice when it stands behind PROGRAM.
bool LooksLikeOption(const std::string& text);

}  // namespace tool

#endif  // STRINGRESOLVER_TOOLS_RESOLVE_OPTIONS_H
