#!/usr/bin/env python3
"""--labels and --types."""
import re

from command import Row, run_table, unusable


def lines(*each):
    """Whole lines, each a regular expression, blanks standing for any number of them."""
    return re.compile("".join(re.sub(" +", " +", line) + "\n" for line in each))


def holds(*each):
    """Lines that must be there among others, in this order."""
    return re.compile("(.*\n)*" + "".join(re.sub(" +", " +", line) + "\n(.*\n)*" for line in each))


ROWS = [
    Row(["--labels", "he?d", "@"], stdout=lines(r"head .*struct node ?\*.*")),
    Row(["--labels=head", "@"], stdout=lines(r"head .*struct node ?\*.*")),
    Row(["--labels", "table.*", "@"],
        stdout=lines("table.done .*", "table.end .*", "table.first .*", "table.last .*",
                     "table.size .*")),
    Row(["--labels", "[GB]*", "@"], stderr="resolve: no label of PROGRAM matches [GB]*\n", status=1),
    Row(["--labels", "count", "@"], stdout=holds("count .*")),
    Row(["--labels", "@"], stdout=holds("GREEN .*", "a .*", "head .*", "main .*", "table.first .*",
                                        "twice .*", "x .*")),
    Row(["--types", "struct n*", "@"], stdout=lines("struct node .*")),
    Row(["--types", "@"], stdout=holds("enum color .*", "octet .*", "pair_t .*", "struct node .*",
                                       "union word .*")),
    Row(["--types", "zz*", "@"], stderr="resolve: no type of PROGRAM matches zz*\n", status=1),
    Row(["--labels", "\x1b[2J", "@"], stderr="resolve: no label of PROGRAM matches \\x1b[2J\n",
        status=1),
    unusable(["--labels", "a", "@", "x"], "a listing takes no expressions; its pattern stands "
             "before the program; see resolve --help"),
    unusable(["--labels", "--types", "@"], "--labels excludes --types; see resolve --help"),
]

run_table(ROWS)
