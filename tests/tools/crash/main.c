/* A program that stops, and then crashes, with something in each kind of memory. */
#include <stdlib.h>

#include "library.h"
struct node {
  int value;
  struct node* next;
};
struct node* head;
int* on_stack;
int initialized[4] = {10, 11, 12, 13};
int changed = 1;
int untouched[8000];
double ratio = 0.5;
const int constants[3000] = {21, 22, 23};
const char* text = "some text";
int (*function)(int);

static int twice(int number) {
  return 2 * number;
}

void stop_here(void) {}

int main(void) {
  int local = 4711;
  for (int value = 30; value > 0; value -= 10) {
    struct node* node = malloc(sizeof(*node));
    node->value = value;
    node->next = head;
    head = node;
  }
  on_stack = &local;
  changed = -5;
  ratio *= 5;
  function = twice;
  count();
  if (library_state == 0) return 1;
  stop_here();
  abort();
}
