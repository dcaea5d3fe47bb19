#!/usr/bin/env python3
"""Expressions without an answer, and command lines and programs that cannot be used."""
from command import Row, error, run_table, unusable

EIGHT_BYTES = "only values of up to 8 bytes can be used"

ROWS = [
    # names
    error("nowhere", "Undefined label nowhere"),
    error("a[nowhere]", "Undefined label nowhere"),
    error("s.z", "The specified field isn`t found in structure of type"),
    error("08", "Undefined label 08"),
    # memory
    error("*(int*)0", "cannot read memory at 0x0"),
    error("*none", "cannot read memory at 0x0"),
    error("*astray", "cannot read memory at 0x10"),
    error("none == 0 || *none", "cannot read memory at 0x0\nnote: none == 0 || *none: both sides of "
          "`&&` and `||` are evaluated; in C it is 1: write `none == 0`"),
    error("a[*none]", "cannot read memory at 0x0"),
    error("endless + 1", "the number at <address> is infinite, and no result can carry that"),
    error("vast", "is 1e+300, outside the range of single precision, in which results are given",
          "--plain"),
    error("vast * 2",
          "is 2e+300, outside the range of single precision, in which results are given",
          "--plain"),
    # more than a number
    error("s", "is a structure (struct outer, 16 bytes) at <address>: name one of its members",
          "--plain"),
    error("s.in", "is a structure (struct inner, 8 bytes) at <address>: name one of its members",
          "--plain"),
    error("*head", "is a structure (struct node, 16 bytes) at <address>: name one of its members",
          "--plain"),
    error("*pin", "is a structure (struct badge, 5 bytes) at <address>: name one of its members",
          "--plain"),
    error("word32", "is a union (union word, 4 bytes) at <address>: name one of its members",
          "--plain"),
    error("nameless", "is a structure (struct <anonymous>, 8 bytes) at <address>: name one of its members",
          "--plain"),
    error("arr", "is an array of structures (struct pair, 8 bytes each) at <address>: "
          "name an element and one of its members", "--plain"),
    error("(arr[1])", "is a structure (struct pair, 8 bytes) at <address>: name one of its members",
          "--plain"),
    error("arr[1]", "is a structure (struct pair, 8 bytes) at <address>: name one of its members",
          "--plain"),
    error("(struct pair)x", "is a structure (struct pair, 8 bytes): name one of its members"),
    error("*vault", "is a struct sealed at <address>, which has no members here"),
    error("(struct sealed)x", "the type of the result has no size"),
    error("sizeof(struct sealed)", "struct sealed is declared, but not defined: its size is not known"),
    error("sizeof(const struct sealed) + 1",
          "struct sealed is declared, but not defined: its size is not known"),
    error("exact", "'exact' is a long double of 16 bytes, which is no integer, float or double "
          "of up to 8 bytes", "--plain"),
    error("own", "'own' is thread-local: every thread has its own, at an address of its own"),
    error("turn", "'turn' is ambiguous: there is one in list.c and shapes.c"),
    error("wide.exact", f"is a long double (16 bytes) at <address>: {EIGHT_BYTES}", "--plain"),
    error("wide.exact + 1", f"member exact of struct wide is a long double: {EIGHT_BYTES}"),
    error("wide.exact == 2 && 1", f"member exact of struct wide is a long double: {EIGHT_BYTES}"),
    # a name of an assembly source, where a point selects a member
    error("*(int*)table.first", "Undefined label table; `table.first` is one name where the "
          "current file is an assembly source, see --file"),
    error("table.second", "Undefined label table"),
    # text
    error("", "the expression is empty"),
    error("  ", "the expression is empty"),
    error("()", "the parentheses are empty"),
    error("a[]", "Quotes are empty"),
    error("(x", "Can`t find the end quote."),
    error("a[1", "Can`t find the end quote."),
    error("a b", "no operator stands between `a` and `b`"),
    error("1 2", "no operator stands between `1` and `2`"),
    error("1,5", "there is no operator `,`\nnote: 1,5: there is no comma operator; in C it is 5: "
          "write `5`"),
    error("completed,0", "there is no operator `,`", "--no-notes"),
    error("twice(3)",
          "no operator stands between `twice` and `(`; functions cannot be called"),
    error("1 + p", "a pointer must stand on the left of + and -, as in `p + 1`\nnote: 1 + p: only a "
          "pointer on the left is counted in elements; in C it is <address>: write `p+1`"),
    error("x / 0", "Division by zero"),
    error("x % (n - n)", "Division by zero"),
    error("pi & 1", "Invalid type for & operation"),
    error("*x", "Can`t do the dereference operation with this type"),
    error("&5", "The pointer doesn`t exist"),
    error("+", "Missing an address in the string"),
    error("x y", "Undefined label xy", "--exact"),
    error("x[)1]", "a subscript could not be evaluated", "--exact"),
    # a message stays one line that does nothing to the terminal
    Row(["@", "a\nb\x1b[2J"], stderr="resolve: a\\nb\\x1b[2J: an expression cannot hold the "
        "control character \\x1b\n", status=1),
    Row(["@", "x\x7f"], stderr="resolve: x\\x7f: an expression cannot hold the control character "
        "\\x7f\n", status=1),
    # options behind the program are expressions
    Row(["@", "--labels"], status=1, stderr="resolve: --labels: Undefined label labels "
        "(options stand before the program)\n"),
    # the command line
    unusable([], "no program is named; see resolve --help"),
    unusable(["--watch", "1", "@"], "no expression is given to --watch; see resolve --help"),
    unusable(["--bogus", "@", "x"], "there is no option --bogus; see resolve --help"),
    unusable(["--file"], "--file: 1 required NAME missing; see resolve --help"),
    unusable(["--file", "nowhere.c", "@", "x"], "the program 'PROGRAM' has no source file 'nowhere.c'; it has <rest>"),
    # the program
    unusable(["missing", "x"], "there is no file 'missing'"),
    unusable([".", "x"], "'.' is a directory, not a program"),
    unusable(["empty", "x"], "'empty' is not an ELF file"),
    unusable(["text", "x"], "'text' is not an ELF file"),
    unusable(["cut", "x"], "'cut' is not an ELF file"),
    unusable(["", "x"], "there is no file ''"),
]

run_table(ROWS, files={"empty": b"", "text": b"hello\n", "cut": b"\x7fELF\x02\x01\x01" + bytes(9)})
