#!/usr/bin/env python3
"""The command over core dumps: which program is read, what is said about it, and bad ones."""
import pathlib
import subprocess
import sys
import tempfile

from command import Row, pattern, run_table, unusable
from core_files import AT_PHDR, READ, WRITE, X64, X86, core, load

PROGRAM = str(pathlib.Path(sys.argv[2]).resolve())
SEGMENTS, MAPPINGS = load(PROGRAM)
HEADERS = [(AT_PHDR, SEGMENTS[0][0] + 64)]
STACK = (0x7FFFFFF00000, (1234).to_bytes(8, "little"), 4096, READ | WRITE)
WHOLE = core(X64, [*SEGMENTS, STACK], MAPPINGS, HEADERS)


def elsewhere(path):
    return [(start, end, offset, path) for start, end, offset, _ in MAPPINGS]


def other_build():
    """A dump of a program whose build-id has another first byte."""
    mark = b"\4\0\0\0\x14\0\0\0\3\0\0\0GNU\0"
    page = bytearray(SEGMENTS[0][1])
    assert mark in page, "the example program has no build-id"
    page[page.find(mark) + len(mark)] ^= 1
    return core(X64, [(SEGMENTS[0][0], bytes(page), *SEGMENTS[0][2:]), *SEGMENTS[1:], STACK],
                MAPPINGS, HEADERS)


FILES = {
    "core": WHOLE,
    "moved": core(X64, [*SEGMENTS, STACK], elsewhere("/nowhere/prog"), HEADERS),
    "other": other_build(),
    "nameless": core(X64, SEGMENTS),
    "cut": WHOLE[:-8],
    "headless": WHOLE[:100],
    "no-notes": core(X64, SEGMENTS, process=False),
    "x86": core(X86, [(0x1000, b"abcd", 4, READ)], [(0x1000, 0x2000, 0, "/nowhere/prog")]),
    "text": b"hello\n",
    "empty": b"",
}


def value(text, *arguments):
    return Row(["--core", *arguments], stdout=text + "\n")


CUT = (f"warning: the core dump 'cut' is cut off: it has {len(FILES['cut'])} of {len(WHOLE)} bytes, "
       "and the rest counts as not saved\n"
       "resolve: *(int*)0x7FFFFFF00000: cannot read memory at 0x7ffffff00000: it was not saved\n")
INTERVAL = pattern("interval  int, <rest>scalars.c\n")

ROWS = [
    # which of the words is the program
    value("42", "core", "@", "x"),
    value("42", "core", "x"),
    value("42\n-7", "core", "x", "n"),
    value("42\n-7", "core", "@", "x", "n"),
    value("42", "core", "@", "--", "x"),
    value("-42", "core", "--", "-x"),
    value("-42", "core", "@", "-x"),
    value("42", "moved", "@", "x"),
    Row(["--core", "core", "-"], stdin=b"x\nn\n", stdout="42\n-7\n"),
    Row(["--core", "core", "@", "-"], stdin=b"x\n", stdout="42\n"),
    Row(["--core=core", "-v", "x"], stdout=pattern(
        "42  4 bytes, signed, at <address>, memory space 0\n"),
        stderr="note: reading the core dump core of PROGRAM\n"),
    # memory
    value("1234", "core", "*(long*)0x7FFFFFF00000"),
    value("9", "core", "fixed"),
    Row(["--core", "core", "*(int*)0x7FFFFFF00100"], status=1,
        stderr="resolve: *(int*)0x7FFFFFF00100: cannot read memory at 0x7ffffff00100: "
               "it was not saved\n"),
    Row(["--core", "core", "*(int*)16"], status=1,
        stderr="resolve: *(int*)16: cannot read memory at 0x10\n"),
    # source files and listings
    value("42", "core", "--file", "scalars.c", "x"),
    Row(["--core", "core", "--labels", "interval"], stdout=INTERVAL),
    Row(["--core", "core", "--labels", "interval", "@"], stdout=INTERVAL),
    Row(["--core", "core", "--labels", "interval*zz"], status=1,
        stderr="resolve: no label of PROGRAM matches interval*zz\n"),
    # what is said about a dump that can be used
    Row(["--core", "other", "x"], stdout="42\n", stderr=pattern(
        "warning: the program 'PROGRAM' is not the one that the core dump 'other' is of: "
        "its build-id is <rest>, not <rest>\n")),
    Row(["--core", "cut", "x", "*(int*)0x7FFFFFF00000"], stdout="42\n", status=1, stderr=CUT),
    # what cannot be used
    unusable(["--core", "missing", "x"], "there is no file 'missing'"),
    unusable(["--core", ".", "x"], "'.' is a directory, not a program"),
    unusable(["--core", "@", "x"], "'PROGRAM' is not a core dump"),
    unusable(["--core", "core", "core", "x"], "'core' is a core dump, not a program"),
    unusable(["core", "x"], "'core' is a core dump, not a program"),
    unusable(["--core", "text", "x"], "'text' is not an ELF file"),
    unusable(["--core", "empty", "x"], "'empty' is not an ELF file"),
    unusable(["--core", "headless", "@", "x"],
             "the core dump 'headless' is cut off: its table of segments is not complete"),
    unusable(["--core", "no-notes", "@", "x"],
             "the core dump 'no-notes' has no notes about its process"),
    unusable(["--core", "nameless", "x"],
             "the core dump 'nameless' does not say which program it is of: name the program"),
    unusable(["--core", "moved", "x"],
             "there is no file '/nowhere/prog', the program of the core dump 'moved': "
             "name the program"),
    unusable(["--core", "x86", "@", "x"],
             "the program 'PROGRAM' is for 64-bit x86-64, and the core dump 'x86' is of "
             "32-bit x86"),
    unusable(["--watch", "1", "--core", "core"],
             "no expression is given to --watch; see resolve --help"),
    unusable(["--core"], "--core: 1 required CORE missing; see resolve --help"),
]



def the_example_reads_a_dump(_resolve, _program):
    """examples/core evaluates an expression over a core dump."""
    with tempfile.TemporaryDirectory() as folder:
        path = pathlib.Path(folder) / "core"
        path.write_bytes(WHOLE)
        for expression, expected in (("x", "42\n"), ("n", "-7\n"), ("pi", "3.14159\n"),
                                     ("nowhere", "Undefined label nowhere\n"),
                                     ("*(int*)16", "cannot read memory at 0x10\n")):
            done = subprocess.run([sys.argv[3], path, expression], capture_output=True, text=True)
            if done.stdout + done.stderr != expected:
                return f"{expression}: {done.stdout + done.stderr!r}, not {expected!r}"
    return ""


run_table(ROWS, files=FILES, checks=[the_example_reads_a_dump])
