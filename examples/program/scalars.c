#include "program.h"

#include <math.h>

/* One variable of every basic type. */
_Bool on = 1;
char letter = 'A';
signed char tiny = -5;
unsigned char byte = 200;
short low = -300;
unsigned short port = 60000;
int n = -7;
unsigned int mask = 0xF0F0F0F0U;
long depth = -70000L;
unsigned long span = 4000000000UL;
long long far = -5000000000LL;
unsigned long long huge = 18446744073709551615ULL;
float half = 0.5F;
double pi = 3.141592653589793;
double vast = 1e300;
float endless = INFINITY;
long double exact = 1.5L;
enum color paint = GREEN;

/* Operands for arithmetic; two of the names hold the word of a type. */
int i = 2;
int x = 42;
int charge = 100;
int interval = 25;

const volatile int fixed = 9;
octet pixel = 0x7F;
int blank;
_Thread_local int own = 3;
