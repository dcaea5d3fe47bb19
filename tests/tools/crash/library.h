/* What the program knows of its library. */
struct state;
extern int library_count;
extern struct state* library_state;
void count(void);
