#!/usr/bin/env python3
"""What answers look like: every kind of type, format and view, on the example program."""
from command import Row, error, pattern, run_table, shown

DISK = ('{label = <address> "disk", rights = READ|WRITE (3), '
        'status = {busy = true, hue = GREEN (5), code = 2, stamp = -1}, '
        'calls = {0x0, <address> <twice>}, grid = {{5, 6}, {7, 8}}, parent = <address> <bus>}')


def note(expression, text):
    return f"note: {expression}: {text}\n"


ROWS = [
    # numbers
    shown("n", "-7"),
    shown("far", "-5000000000"),
    shown("huge", "18446744073709551615 (0xffffffffffffffff)"),
    shown("span", "4000000000"),
    shown("least", "-170141183460469231731687303715884105728"),
    shown("most", "340282366920938463463374607431768211455"),
    shown("n * 1u", "18446744073709551609 (0xfffffffffffffff9)", "--no-notes"),
    shown("n + (int)1", "-6"),
    shown("sizeof x", "4"),
    shown("x == 42", "1"),
    # floating numbers, with all their digits
    shown("half", "0.5"),
    shown("pi", "3.141592653589793"),
    shown("pi * half", "1.5707963267948966"),
    shown("vast", "1e+300"),
    shown("endless", "inf"),
    shown("exact", "1.5"),
    shown("wide.exact", "2.5"),
    error("exact + 1", "'exact' is a long double of 16 bytes, which is no integer, float or double "
          "of up to 8 bytes"),
    # truth values, characters, enumerators
    shown("on", "true"),
    shown("letter", "65 'A'"),
    shown("tiny", "-5"),
    shown("byte", "200"),
    shown("word[7]", "0 '\\0'"),
    shown("(char)x", "42 '*'"),
    shown("paint", "GREEN (5)"),
    shown("(enum color)6", "BLUE (6)"),
    shown("(enum color)7", "7"),
    shown("NIGHT", "NIGHT (-1)"),
    shown("rights", "READ|EXECUTE (5)"),
    shown("odd", "WRITE|0x10 (18)"),
    # pointers, functions, labels
    shown("p", "<address> <a+4>"),
    shown("&a[3]", "<address> <a+12>"),
    shown("p + 1", "<address> <a+8>"),
    shown("pp", "<address> <p>"),
    shown("none", "0x0"),
    shown("astray", "0x10"),
    shown("step", "<address> <twice>"),
    shown("main", "<address> <main>"),
    shown("&s.x", "<address> <s+8>"),
    shown("(struct node*)any", "<address> <x>"),
    shown("table.last", "<address> <table.last>", "--file", "table.s"),
    # text
    shown("word", '"lantern"'),
    shown("start", '<address> <word> "lantern"'),
    shown("text", '<address> "ten green bottles"'),
    shown("cafe", '<address> "caf\u00e9"'),
    shown("lost", "0x10 <cannot read memory at 0x10>"),
    shown("tabs", '"a\\tb\\"c\\\\\\n"'),
    shown("binary", '"a\\000b"'),
    shown("badge.letters", '"owl" (no zero at its end)'),
    # structures, unions and arrays
    shown("s", "{in = {x = 1, y = 2}, x = 3, mark = 83 'S'}"),
    shown("s.in", "{x = 1, y = 2}"),
    shown("*head", "{next = <address> <second>, v = 11}"),
    shown("word32", "{whole = 1078530011, bytes = {219, 15, 73, 64}, real = 3.1415927}"),
    shown("packet", "{kind = 8, {both = 131073, {low = 1, high = 2}}, tail = 9}"),
    shown("nameless", "{left = -1, right = 1}"),
    shown("wide", "{id = 4, exact = 2.5}"),
    shown("disk", DISK),
    shown("a", "{10, 20, 30, 40, 50}"),
    shown("m", "{{0, 1, 2, 3}, {10, 11, 12, 13}, {20, 21, 22, 23}}"),
    shown("m[1]", "{10, 11, 12, 13}"),
    shown("m[1][2]", "12"),
    shown("*m", "{0, 1, 2, 3}"),
    shown("arr", "{{x = 1, y = -1}, {x = 2, y = -2}, {x = 3, y = -3}}"),
    shown("arr[1]", "{x = 2, y = -2}"),
    shown("(arr[1])", "{x = 2, y = -2}"),
    shown("*arr", "{x = 1, y = -1}"),
    shown("ptrs", "{<address> <arr+16>, <address> <arr+8>, <address> <arr>}"),
    shown("zeros", "{0 <repeats 299 times>, 1}"),
    shown("bytes", "{1, 2, 65, 255}"),
    error("*vault", "is a struct sealed at <address>, which has no members here"),
    error("*(struct pair*)astray", "cannot read memory at 0x10"),
    # bit-fields
    shown("flags", "{ready = 1, level = 5, bias = -3, rest = 703710, plain = 77}"),
    shown("flags.level", "5"),
    shown("flags.bias", "-3"),
    shown("status.hue", "BLUE (6)"),
    shown("status.busy", "true"),
    shown("status.stamp", "-5"),
    shown("disk.status.code", "2"),
    Row(["-v", "@", "flags.level"],
        stdout=pattern("5  3 bits, unsigned, at <address>, memory space 0\n"),
        stderr="note: reading the initial memory of PROGRAM\n"),
    Row(["@", "flags.level + 0"], stdout=pattern("<number>\n"),
        stderr=note("flags.level + 0", "as an operand a bit-field is the whole unit that holds its "
                    "bits; in C it is 5: write `(flags.level>>1&7) + 0`")),
    # details of what is no number
    Row(["-v", "@", "a"], stdout=pattern("{10, 20, 30, 40, 50}  20 bytes, int [5], at <address>, "
                                         "memory space 0\n"),
        stderr="note: reading the initial memory of PROGRAM\n"),
    # formats
    shown("x", "0x2a", "--format", "x"),
    shown("x", "0x2a", "--format", "hexadecimal"),
    shown("n", "4294967289", "--format", "u"),
    shown("mask", "-252645136", "--format", "d"),
    shown("x", "052", "--format", "o"),
    shown("x", "0b101010", "--format", "t"),
    shown("x", "42 '*'", "--format", "c"),
    shown("word32.whole", "3.1415927", "--format", "f"),
    shown("&x + 0", "<address> <x>", "--format", "a"),
    shown("x", "2a 00 00 00", "--format", "r"),
    shown("a", "{0xa, 0x14, 0x1e, 0x28, 0x32}", "--format", "x"),
    shown("flags", "{ready = 0x1, level = 0x5, bias = 0xd, rest = 0xabcde, plain = 0x4d}",
          "--format", "x"),
    shown("bytes", '"\\001\\002A\\377" (no zero at its end)', "--format", "s"),
    shown("spot", "46 00 00 00 07 00 00 00", "--format", "r"),
    # elements
    shown("p", "{20, 30, 40}", "--count", "3"),
    shown("a", "{10, 20}", "--count", "2"),
    shown("x", "{42}", "--count", "1"),
    shown("pin", """{{letters = "owl" (no zero at its end), b = 66 'B', end = 46 '.'}}""",
          "--count", "1"),
    error("astray", "cannot read memory at 0x10", "--count", "2"),
    error("1", "is no pointer, and lies nowhere in memory: it has no elements", "--count", "2"),
    error("any", "has elements of unknown size (void)", "--count", "2"),
    error("flags.level", "is a bit-field, which has no elements", "--count", "2"),
    # layouts
    Row(["--layout", "struct badge", "@"], stdout=(
        "struct badge, 5 bytes\n"
        "  0  3  letters  char [3]\n"
        "  3  1  b        unsigned char\n"
        "  4  1  end      char\n")),
    Row(["--layout", "struct flags", "@"], stdout=(
        "struct flags, 8 bytes\n"
        "    0    1 bit  ready  unsigned int\n"
        "  0:1   3 bits  level  unsigned int\n"
        "  0:4   4 bits  bias   int\n"
        "    1  24 bits  rest   unsigned int\n"
        "    4        4  plain  int\n")),
    Row(["--layout", "enum color", "@"], stdout=(
        "enum color, 4 bytes\n  RED = 0\n  GREEN = 5\n  BLUE = 6\n  NIGHT = -1\n")),
    Row(["--layout", "pair_t", "@"], stdout=(
        "pair_t, 8 bytes\n  0  4  x  int\n  4  2  y  short int\n  6  2     <hole>\n")),
    Row(["--layout", "struct sealed", "@"], stdout="struct sealed, declared, but not defined\n"),
    Row(["--layout", "struct none", "@"], status=1,
        stderr="resolve: no type of PROGRAM is called struct none\n"),
    # the command line
    Row(["--format", "q", "@", "x"], status=2, stderr=pattern(
        "resolve: there is no format q; there are x hexadecimal, <rest>; see resolve --help\n")),
    Row(["--count", "0", "@", "x"], status=2, stderr=pattern(
        "resolve: --count: at least 1 element is to be shown; see resolve --help\n")),
    Row(["--layout", "int", "@", "x"], status=2,
        stderr="resolve: a layout takes no expressions; see resolve --help\n"),
    Row(["--plain", "--format", "x", "@", "x"], status=2, stderr=pattern("resolve: <rest>\n")),
]

run_table(ROWS)
