#include "program.h"

/* What is more than a number, for debuggers to show. */
enum access rights = READ | EXECUTE;
enum access odd = (enum access)(WRITE | 16);
struct status status = {1, BLUE, 1001, -5};

char tabs[16] = "a\tb\"c\\\n";
char binary[6] = {'a', 0, 'b'};
const char* text = "ten green bottles";
const char* cafe = "caf\xc3\xa9";
const char* lost = (const char*)16;
octet bytes[4] = {1, 2, 65, 255};
int zeros[300] = {[299] = 1};

struct device bus = {"bus", READ, {0, RED, 1, 1}, {twice, 0}, {{1, 2}, {3, 4}}, 0};
struct device disk = {"disk", READ | WRITE, {1, GREEN, 2, -1}, {0, twice}, {{5, 6}, {7, 8}}, &bus};
struct device* devices[2] = {&bus, &disk};

#ifdef __SIZEOF_INT128__
__int128 least = (__int128)1 << 127;
unsigned __int128 most = ~(unsigned __int128)0;
#endif
