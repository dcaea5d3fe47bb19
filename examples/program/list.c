#include "program.h"

struct node third = {0, 33};
struct node second = {&third, 22};
static struct node first = {&second, 11};
struct node* head = &first;

step_t step = twice;

static int count = 2;
static int turn = 4;

int twice(int value) {
  return 2 * value;
}

int list(void) {
  return count + turn;
}
