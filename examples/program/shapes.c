#include "program.h"

int a[5] = {10, 20, 30, 40, 50};
int m[3][4] = {{0, 1, 2, 3}, {10, 11, 12, 13}, {20, 21, 22, 23}};
char word[10] = "lantern";
char* start = word;
double curve[3] = {0.25, -1.5, 1e10};

struct outer s = {{1, 2}, 3, 'S'};
struct pair arr[3] = {{1, -1}, {2, -2}, {3, -3}};
struct pair* ptrs[3] = {&arr[2], &arr[1], &arr[0]};
pair_t spot = {70, 7};
struct flags flags = {1, 5, -3, 0xABCDE, 77};
union word word32 = {0x40490FDBU};
struct packet packet = {8, {0x00020001}, 9};
struct wide wide = {4, 2.5L};
date_t launch = {21, 11, 1889};
struct badge badge = {{'o', 'w', 'l'}, 66, '.'};
struct badge* pin = &badge;
struct {
  int left;
  int right;
} nameless = {-1, 1};

int* p = &a[1];
int** pp = &p;
void* any = &x;
struct sealed* vault = (struct sealed*)&x;
int* none = 0;
int* astray = (int*)16;

/* Two files have a static `turn`, and main's is neither. */
static int turn = 3;

int shapes(void) {
  return turn + a[0];
}
