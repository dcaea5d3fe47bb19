#ifndef STRINGRESOLVER_TOOLS_RESOLVE_TARGETOPTIONS_H
#define STRINGRESOLVER_TOOLS_RESOLVE_TARGETOPTIONS_H

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>

namespace tool {

/// A command line that makes no sense. `what()` is one sentence.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// What the command line says about the target.
struct TargetOptions {
  std::string program;              ///< empty where the target itself is to name it
  std::optional<std::string> file;  ///< the current source file, if chosen
  std::string debugFolder = "/usr/lib/debug";
  std::optional<std::string> core;      ///< the core dump to take memory from
  std::optional<std::int64_t> process;  ///< number of a running process
  bool stop = false;                    ///< hold the process

  /// Is there no PROGRAM among the words? Then all of them are expressions.
  [[nodiscard]] bool NamesNoProgram() const { return process.has_value(); }
  /// May PROGRAM be left out?
  [[nodiscard]] bool MayNameProgram() const { return core.has_value(); }
};

/// The process that `text`, the argument of `--pid`, names. Throws `UsageError`.
std::int64_t ReadProcessNumber(const std::string& text);

}  // namespace tool

#endif  // STRINGRESOLVER_TOOLS_RESOLVE_TARGETOPTIONS_H
