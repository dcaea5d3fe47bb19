/* What the benchmarks evaluate expressions on. */
struct inner {
  int x, y;
};
struct outer {
  int a;
  struct inner in;
};
struct node {
  int v;
  struct node* next;
};
struct record {
  char c;
  int x;
  double d;
};

#define TEN(n) \
  int f##n##0, f##n##1, f##n##2, f##n##3, f##n##4, f##n##5, f##n##6, f##n##7, f##n##8, f##n##9;
#define HUNDRED(n) \
  TEN(n##0)        \
  TEN(n##1) TEN(n##2) TEN(n##3) TEN(n##4) TEN(n##5) TEN(n##6) TEN(n##7) TEN(n##8) TEN(n##9)
/* 500 fields, f000 to f499. */
struct wide {
  HUNDRED(0) HUNDRED(1) HUNDRED(2) HUNDRED(3) HUNDRED(4)
};

int x = 42;
int a[8] = {1, 2, 3, 4, 5, 6, 7, 8};
struct outer s = {1, {2, 3}};
struct node third = {3, 0}, second = {2, &third}, first = {1, &second};
struct node* head = &first;
struct node ring = {7, &ring};
struct node* p = &ring;
struct record arr[4] = {{'a', 1, 1.0}, {'b', 2, 2.0}, {'c', 3, 3.0}};
int m[4][4] = {{1, 2, 3, 4}, {5, 6, 7, 8}, {9, 10, 11, 12}};
float f = 1.5f;
double d = 2.25;
struct wide wide = {.f000 = 5, .f499 = 6};

int main(void) {
  return x;
}
