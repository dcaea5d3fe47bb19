#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <string>
#include <vector>

#include "tools/resolve/Command.h"

namespace {

/// A standard stream that the caller closed would give its number to the next file opened, and the
/// program would be read as expressions. It gets an end that fails instead.
void OccupyStandardStreams() {
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(descriptor, F_GETFD) != -1) continue;
    // The lowest free number is this one, since those below it are in use.
    open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
  }
}

}  // namespace

int main(int argc, char** argv) {
  OccupyStandardStreams();
  // A reader that went away is an error of the next write, which says so.
  std::signal(SIGPIPE, SIG_IGN);
  return tool::RunCommand(std::vector<std::string>(argv + (argc > 0 ? 1 : 0), argv + argc));
}
