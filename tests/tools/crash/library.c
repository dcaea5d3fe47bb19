/* A shared library of a program that crashes. */
#include "library.h"
struct state {
  char tag[5];
  int level;
  struct state* next;
};
static struct state last = {"last", 3, 0};
static struct state first = {"one", 2, &last};
static int hidden = 40;
struct state* library_state = &first;
int library_count = 76;
void count(void) {
  ++library_count;
  hidden += 2;
}
