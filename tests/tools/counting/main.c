/* Counts the lines that it reads, and says so: what is watched changes when a test wants it to. */
#include <stdio.h>

int count = 0;
int steady = 7;

int main(void) {
  char line[16];
  while (fgets(line, sizeof line, stdin) != NULL) {
    ++count;
    printf("%d\n", count);
    fflush(stdout);
  }
  return 0;
}
