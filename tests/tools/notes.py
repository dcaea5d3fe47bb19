#!/usr/bin/env python3
"""The options for notes, and where there must be none. What the notes say is in tests/gdb."""
from command import Row, error, pattern, run_table, value

SIGN = ("a numeral has 8 bytes and no sign, and so has a result computed with it; in C it is -6: "
        "write `(int)(n+1)`")

ROWS = [
    Row(["--plain", "@", "n+1"], stdout="18446744073709551610\n", stderr=f"note: n+1: {SIGN}\n"),
    Row(["--plain", "--notes=show", "@", "n+1"], stdout="18446744073709551610\n",
        stderr=f"note: n+1: {SIGN}\n"),
    value("n+1", "18446744073709551610", "--no-notes"),
    value("n+1", "18446744073709551610", "--notes", "none"),
    Row(["--notes=error", "@", "n+1", "x"], stdout="42\n", stderr=f"resolve: n+1: {SIGN}\n", status=1),
    Row(["--notes=other", "@", "x"], stderr=pattern("resolve: --notes: <rest>\n"), status=2),
    # the suggestion is the whole expression, with its other parts as they were
    Row(["--plain", "@", "start[1] + x  *  2"], stdout=pattern("<number>\n"),
        stderr="note: start[1] + x  *  2: a subscript on a pointer steps by, and reads, the size of "
               "the pointer; in C it is 181: write `*(start+1) + x  *  2`\n"),
    # two differences, one text
    Row(["--plain", "@", "(start[1] > 30 + n) * (n + 1) / 2"], stdout=pattern("<number>\n"),
        stderr=pattern("note: <rest>: a numeral has 8 bytes <rest>\n"
                       "note: <rest>: a subscript on a pointer <rest>\n")),
    # a name that is not there is what is wrong, whatever else there is
    error("n + nowhere", "Undefined label nowhere"),
    error("++nowhere", "Undefined label nowhere"),
    error("nowhere ? 1 : 2", "Undefined label nowhere<rest>"),
    # the notes are those of texts that are prepared, in C
    value("n+1", "18446744073709551610", "--exact"),
    # no difference in the answer
    value("x+1", "43"), value("n*n", "49"), value("-n", "7"), value("!n", "0"), value("n<0", "1"),
    value("x/5%3", "2"), value("-(x-2)+x", "2"), value("none==0||n", "1"), Row(["@", "flags.level"], stdout="5\n"),
    value("flags.level&&1", "1"), value("a[1]*2", "40"), value("(x+1)*2", "86"),
    value("half*2.0", "1"), value("sizeof(int)", "4"), value("(char)x+1", "43"),
]

run_table(ROWS)
