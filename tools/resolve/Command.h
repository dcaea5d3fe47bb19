#ifndef STRINGRESOLVER_TOOLS_RESOLVE_COMMAND_H
#define STRINGRESOLVER_TOOLS_RESOLVE_COMMAND_H

#include <string>
#include <vector>

namespace tool {

/// The exit statuses of the command.
enum Status : int {
  kAllResolved = 0,
  kNotResolved = 1,  ///< an expression failed, or a listing has nothing to show
  kUnusable = 2,     ///< the command line, the program, or a standard stream
};

/// Runs the command with the arguments that follow its name, on the standard streams of the
/// process. Whatever goes wrong becomes a line on standard error and a status.
Status RunCommand(const std::vector<std::string>& arguments);

}  // namespace tool

#endif  // STRINGRESOLVER_TOOLS_RESOLVE_COMMAND_H
