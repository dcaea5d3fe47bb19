/* The example program, but one that stays: it says so, and ends when its input does. */
#include <stdlib.h>
#include <unistd.h>

#include "program.h"

int main(int argc, char** argv) {
  static const char ready[] = "ready\n";
  char byte;
  (void)argv;
  if (write(STDOUT_FILENO, ready, sizeof ready - 1) < 0) return 1;
  while (read(STDIN_FILENO, &byte, 1) > 0) {
    /* Any input but the end of it asks for a core dump. */
    abort();
  }
  return twice(argc) == 2 ? 0 : 1;
}
