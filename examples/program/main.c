#include "program.h"

/* list.c has a static `count` as well. */
static int count = 1;

int main(void) {
  return step(count) + shapes() + list() + own + table_pick() > 0 ? 0 : 1;
}
