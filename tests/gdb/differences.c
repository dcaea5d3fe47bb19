/* What the notes on differences from C are shown on. Every value is set where it is defined, so
 * that a tool that only reads the file sees them. */

struct pair {
  int x;
  int y;
};

/* Its size is one that pointers to it round up. */
struct odd {
  char tag;
  char letters[2];
};

struct flags {
  unsigned int ready : 1;
  unsigned int level : 3;
  int bias : 4;
};

struct holder {
  int before;
  short halves[3];
};

int a[5] = {10, -20, 30, 40, 50};
int m[3][4] = {{0, 1, 2, 3}, {10, 11, 12, 13}, {20, 21, 22, 23}};
char word[10] = "lantern";
signed char grid[4][2] = {{1, 2}, {3, 4}, {5, 6}, {7, 8}};
double curve[3] = {0.25, -1.5, 4.0};
struct pair pairs[3] = {{1, -1}, {2, -2}, {3, -3}};
struct odd odds[3] = {{'a', "xy"}, {'b', "zw"}, {'c', "uv"}};
struct flags flags = {1, 5, -3};
struct holder holder = {7, {70, -71, 72}};

int* p = &a[1];
int* q = &a[3];
char* text = word;
int* ptrs[3] = {&a[2], &a[1], &a[0]};
int* none = 0;
struct pair* pp = &pairs[0];
struct pair* pairptrs[2] = {&pairs[2], &pairs[1]};
struct odd* po = &odds[0];

char c = -1;
signed char tiny = -5;
unsigned char uc = 200;
short low = -300;
unsigned short port = 60000;
int i = -5;
int j = 3;
int n = -7;
int one = 1;
int zero = 0;
unsigned int u = 7;
unsigned int top = 0xFFFFFFFFU;
long depth = -70000L;
float f = 1.5F;
double d = 2.25;

int main(void) {
  return 0;
}
