#!/usr/bin/env python3
"""Asks `resolve` and gdb the same expressions about the example program.

usage: compare_with_gdb.py RESOLVE PROGRAM

SAME holds expressions on which both must give the same number. DIFFERENT holds those where the
language answers otherwise than C does: each row pins the language's answer (or its message) and says
why, and must indeed differ from gdb's.
"""
import json
import os
import pathlib
import struct
import subprocess
import sys
import tempfile

SAME = [
    # scalars
    "on", "letter", "tiny", "byte", "low", "port", "n", "mask", "depth", "span", "far", "huge",
    "half", "pi", "paint", "pixel", "fixed", "blank", "i", "x", "charge + interval",
    # arrays
    "a[3]", "a[i]", "a[-1]", "a[i + 1]", "a[a[0] / 10]", "a[4] - a[0]", "*a", "m[2][3]", "m[i][i]",
    "m[0][0]", "word[3]", "word[9]", "curve[0]", "curve[1]", "arr[1].x + 2", "arr[2].y",
    # structures
    "s.in.x", "s.in.y", "s.x", "s.mark", "spot.x", "packet.both", "packet.low", "packet.high",
    "packet.tail", "word32.whole", "word32.bytes[2]", "badge.b", "badge.letters[1]", "flags.plain",
    "wide.id",
    # pointers
    "head->v", "head->next->v", "head->next->next->v", "(*head).v", "(*head->next).v",
    "ptrs[2]->x", "ptrs[0]->y", "pin->b", "pin->end", "*p", "*(p+1)", "**pp", "p", "pp", "head",
    "none", "p + 1", "*(p - 1)", "any", "*&x", "&x", "&a[2]", "&s.x", "&head->v",
    # types
    "sizeof(struct node)", "sizeof(struct badge)", "sizeof(int)", "sizeof(long)", "sizeof(char*)",
    "sizeof(unsigned short)", "sizeof x", "sizeof(x)", "sizeof(pair_t)", "sizeof(union word)",
    "sizeof(double)", "sizeof(long double)", "sizeof(struct size7)", "sizeof (struct node *)",
    # casts
    "(char)mask", "(unsigned char)tiny", "(unsigned short)n", "(short)port", "(int)byte",
    "(long long)n", "(unsigned int)n", "*(int*)&mask", "*(unsigned char*)&mask",
    "(struct node*)any == 0", "(*(struct node*)head).v", "*((unsigned char*)&mask + 1)",
    "*(short*)(char*)&n",
    # enumerators, functions
    "RED", "GREEN", "BLUE", "paint == GREEN", "twice", "main", "step",
    # operators
    "x / 5", "x % 5", "x << 3", "x >> 1", "x & 6", "x | 1", "x ^ 3", "x && 0", "x || 0", "x == 42",
    "x != 42", "x < 43", "x >= 42", "n < 0", "tiny < 3", "-x", "~x", "!x", "!0", "-(x - 2) + x",
    "(x + 1) * (x - 2) / 3 + a[2]", "x - 50 + 60", "'A'", "'\\n'", "0x1F + 010", "n * n", "n / i",
    "half + 1", "half * half", "pi > 3.0", "pi < 3.0",
] + [f"to{n}->b" for n in range(1, 25)] + [f"sized{n}.b" for n in range(1, 25)]

# Expression, the language's answer or message, why. Two answers: on 64 and on 32 bits.
DIFFERENT = [
    ("n + 1", "18446744073709551610", "a numeral makes the sum 8 bytes and unsigned"),
    ("NIGHT", "18446744073709551615", "an enumerator is a number without a type"),
    ("a", "10", "an array stands for its first element"),
    ("word", "108", "an array stands for its first element"),
    ("start[0]", ("31088027508826476", "1953390956"),
     "a subscript on a pointer steps by, and reads, the pointer's own size"),
    ("!a[3]", "cannot read memory at 0x0",
     "an operator right before a subscripted operand acts on its address"),
    ("(*ptrs[1]).x", "Can`t do the dereference operation with this type",
     "an operator right before a subscripted operand acts on its address"),
    ("((struct node*)head)->v", "22", "-> reads a pointer value once more"),
    ("&main", "The pointer doesn`t exist", "a function is an address without a type"),
    ("1 + p", "a pointer must stand on the left of + and -, as in `p + 1`",
     "only a pointer on the left is counted in elements"),
    ("3 > 2 < 1", "1", "`<` binds more tightly than `>`"),
    ("n < tiny", "0", "two negative numbers are compared by magnitude"),
    ("fixed % n", "-2", "a remainder is negative when either operand is"),
    ("ptrs[2] - ptrs[0]", ("18446744073709551600", "4294967280"),
     "the difference of two pointers is in bytes"),
    ("vast", "is 1e+300, outside the range of single precision, in which results are given",
     "floating results are single precision"),
    ("sizeof(word)", ("14", "12"), "an array's size is rounded up to one that cuts no address"),
    ("x + half == 42", "1", "an integer and a floating number are compared as integers"),
]


def same_number(ours, theirs):
    if theirs["kind"] == "integer":
        return ours == str(theirs["value"])
    if theirs["kind"] != "float":
        return False
    try:
        ours = float(ours)
    except ValueError:
        return False
    expected = float.fromhex(theirs["value"])
    if theirs["size"] == 4:
        return struct.pack("f", ours) == struct.pack("f", expected)
    return f"{ours:.6g}" == f"{expected:.6g}"


def ask_gdb(program, expressions):
    with tempfile.TemporaryDirectory() as scratch:
        folder = pathlib.Path(scratch)
        (folder / "expressions").write_text(json.dumps(expressions))
        environment = dict(os.environ, EXPRESSIONS=str(folder / "expressions"),
                           ANSWERS=str(folder / "answers"))
        script = pathlib.Path(__file__).with_name("ask_gdb.py")
        subprocess.run(["gdb", "-batch", "-nx", "-iex", "set debuginfod enabled off",
                        "-x", str(script), str(program)],
                       check=True, env=environment, capture_output=True)
        return json.loads((folder / "answers").read_text())


def is_64_bit(program):
    return pathlib.Path(program).read_bytes()[4] == 2


def ask_resolve(resolve, program, expression):
    done = subprocess.run([resolve, "--plain", program, expression], capture_output=True,
                          text=True)
    if done.returncode == 0:
        return done.stdout.strip()
    return done.stderr.split("\n")[0].removeprefix(f"resolve: {expression}: ")


def main():
    resolve, program = sys.argv[1:]
    expressions = SAME + [row[0] for row in DIFFERENT]
    gdb = ask_gdb(program, expressions)
    ours = {expression: ask_resolve(resolve, program, expression) for expression in expressions}
    failures = 0

    def fail(expression, text):
        nonlocal failures
        failures += 1
        print(f"{expression}: {text}")

    for expression in SAME:
        if not same_number(ours[expression], gdb[expression]):
            fail(expression, f"resolve says {ours[expression]!r}, gdb {gdb[expression]}")
    for expression, pinned, why in DIFFERENT:
        if isinstance(pinned, tuple):
            pinned = pinned[0 if is_64_bit(program) else 1]
        if ours[expression] != pinned:
            fail(expression, f"resolve says {ours[expression]!r}, not {pinned!r} ({why})")
        if same_number(ours[expression], gdb[expression]):
            fail(expression, f"gdb says {gdb[expression]} as well: the row belongs among the same")
    print(f"{len(expressions) - failures} passed, {failures} failed")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
