#ifndef EXAMPLE_PROGRAM_H
#define EXAMPLE_PROGRAM_H

/* A small program whose every value is set where it is defined, so that a debugger, or a tool that
 * only reads the file, sees them without running it. */

enum color { RED, GREEN = 5, BLUE, NIGHT = -1 };

/* Flags, which are combined. */
enum access { READ = 1, WRITE = 2, EXECUTE = 4 };

struct inner {
  int x;
  int y;
};

/* The inner structure has an x of its own, before the outer one. */
struct outer {
  struct inner in;
  int x;
  char mark;
};

struct node {
  struct node* next;
  int v;
};

struct pair {
  int x;
  short y;
};

struct flags {
  unsigned int ready : 1;
  unsigned int level : 3;
  int bias : 4;
  unsigned int rest : 24;
  int plain;
};

union word {
  unsigned int whole;
  unsigned char bytes[4];
  float real;
};

/* Members without a name: theirs are reached as if they stood in the structure itself. */
struct packet {
  int kind;
  union {
    int both;
    struct {
      short low;
      short high;
    };
  };
  int tail;
};

struct wide {
  int id;
  long double exact;
};

/* A structure whose size is no multiple of its members' usual alignment. */
struct badge {
  char letters[3];
  unsigned char b;
  char end;
};

/* A structure without a name of its own. */
typedef struct {
  unsigned int day : 5;
  unsigned int month : 4;
  int year;
} date_t;

/* Bit-fields of several types. */
struct status {
  _Bool busy : 1;
  enum color hue : 4;
  unsigned short code : 11;
  long long stamp : 40;
};

typedef int (*step_t)(int);

/* One that the others are made of. */
struct device {
  const char* label;
  enum access rights;
  struct status status;
  step_t calls[2];
  short grid[2][2];
  struct device* parent;
};

/* A structure that only another program knows the inside of. */
struct sealed;

typedef unsigned char octet;
typedef struct pair pair_t;

/* scalars.c */
extern _Bool on;
extern char letter;
extern signed char tiny;
extern unsigned char byte;
extern short low;
extern unsigned short port;
extern int n;
extern unsigned int mask;
extern long depth;
extern unsigned long span;
extern long long far;
extern unsigned long long huge;
extern float half;
extern double pi;
extern double vast;
extern float endless;
extern long double exact;
extern enum color paint;
extern int i;
extern int x;
extern int charge;
extern int interval;
extern const volatile int fixed;
extern octet pixel;
extern int blank;
extern _Thread_local int own;

/* shapes.c */
extern int a[5];
extern int m[3][4];
extern char word[10];
extern char* start;
extern double curve[3];
extern struct outer s;
extern struct pair arr[3];
extern struct pair* ptrs[3];
extern pair_t spot;
extern struct flags flags;
extern union word word32;
extern struct packet packet;
extern struct wide wide;
extern date_t launch;
extern struct badge badge;
extern struct badge* pin;
extern int* p;
extern int** pp;
extern void* any;
extern struct sealed* vault;
extern int* none;
extern int* astray;
extern int shapes(void);

/* views.c */
extern enum access rights;
extern enum access odd;
extern struct status status;
extern char tabs[16];
extern char binary[6];
extern const char* text;
extern const char* cafe;
extern const char* lost;
extern octet bytes[4];
extern int zeros[300];
extern struct device bus;
extern struct device disk;
extern struct device* devices[2];
#ifdef __SIZEOF_INT128__
extern __int128 least;
extern unsigned __int128 most;
#endif

/* list.c */
extern struct node third;
extern struct node second;
extern struct node* head;
extern step_t step;
extern int twice(int value);
extern int list(void);

/* table.s */
extern int table_pick(void);

#endif
