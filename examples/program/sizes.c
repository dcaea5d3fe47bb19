#include "program.h"

/* Structures of every size from 1 to 24 bytes, an object of each, and a pointer to it. */
#define SIZED(n)                              \
  struct size##n {                            \
    unsigned char head[(n)-1];                \
    unsigned char b;                          \
  };                                          \
  struct size##n sized##n = {.b = 100 + (n)}; \
  struct size##n* to##n = &sized##n;

struct size1 {
  unsigned char b;
};
struct size1 sized1 = {101};
struct size1* to1 = &sized1;
SIZED(2)
SIZED(3)
SIZED(4)
SIZED(5)
SIZED(6)
SIZED(7)
SIZED(8)
SIZED(9)
SIZED(10)
SIZED(11)
SIZED(12)
SIZED(13)
SIZED(14)
SIZED(15)
SIZED(16)
SIZED(17)
SIZED(18)
SIZED(19)
SIZED(20)
SIZED(21)
SIZED(22)
SIZED(23)
SIZED(24)
