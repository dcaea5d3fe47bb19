#ifndef STRINGRESOLVER_TOOLS_RESOLVE_TARGETOPTIONS_H
#define STRINGRESOLVER_TOOLS_RESOLVE_TARGETOPTIONS_H

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "targets/RegionRequest.h"

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
  std::optional<std::string> remote;    ///< where a stub listens, as `ReadRemoteAddress` reads it
  double timeout = 5.0;                 ///< seconds for each answer of the stub, above 0
  bool leaveStopped = false;            ///< do not tell the stub to let its target go on
  std::optional<std::string> description;      ///< takes the place of the program
  std::vector<targets::RegionRequest> memory;  ///< laid over the target's own
  std::optional<std::uint32_t> wordSize;       ///< of the second memory space, 1 to 8 bytes

  /// Is there no PROGRAM among the words? Then all of them are expressions.
  [[nodiscard]] bool NamesNoProgram() const { return process || description; }
  /// May PROGRAM be left out?
  [[nodiscard]] bool MayNameProgram() const { return core.has_value(); }
};

/// The process that `text`, the argument of `--pid`, names. Throws `UsageError`.
std::int64_t ReadProcessNumber(const std::string& text);

}  // namespace tool

#endif  // STRINGRESOLVER_TOOLS_RESOLVE_TARGETOPTIONS_H
