// Runs a command, and writes below its output the nanoseconds it took and its peak memory in KiB.
//
//   process_cost COMMAND [ARGUMENT...]
//
// A process's peak begins with the memory of the one that it was split off from, so that one has to
// be small: smaller than the script that compares the figures.

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>

int main(int count, char** arguments) {
  if (count < 2) {
    std::fputs("usage: process_cost COMMAND [ARGUMENT...]\n", stderr);
    return 2;
  }
  const auto start = std::chrono::steady_clock::now();
  const pid_t child = fork();
  if (child == 0) {
    execvp(arguments[1], arguments + 1);
    std::perror(arguments[1]);
    _exit(127);
  }
  int status = 0;
  rusage usage{};
  if (child < 0 || wait4(child, &status, 0, &usage) < 0) {
    std::perror("process_cost");
    return 1;
  }
  const std::chrono::nanoseconds time = std::chrono::steady_clock::now() - start;
  std::printf("%lld %ld\n", static_cast<long long>(time.count()), usage.ru_maxrss);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 1;
}
