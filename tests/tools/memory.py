#!/usr/bin/env python3
"""Memory from files, laid over a program or under a description: answers, and every error."""
import struct

from command import Row, run_table, unusable

HEADER = b'[target]\npointer-size = 4\nbyte-order = "little"\n'
BOARD = HEADER + b"""
file = "main.c"
word-size = 2

[typedef]
node_t = "struct node"

[struct.node]
fields = [{ name = "v", type = "int" }, { name = "next", type = "node_t *" }]

[struct.flags]
fields = [{ name = "low", type = "unsigned int : 3" }, { name = "high", type = "unsigned int : 7" }]

[enum.colour]
values = { RED = 0, GREEN = 5 }

[labels]
head = { address = 0x20000000, type = "node_t *" }
table = { address = 0x20000010, type = "unsigned short [4]" }
flags = { address = 0x20000018, type = "struct flags" }
reset = { address = 0x100, type = "void (void)" }
stack = 0x20001000

[constants]
LIMIT = 10

[[memory]]
address = 0x20000000
file = "ram.bin"

[[memory]]
space = 1
address = 0
bytes = "11 22 33 44"
"""

RAM = struct.pack("<IiIxxxxHHHHI", 0x20000004, 42, 0x20000000, 1, 2, 3, 4, 0x1d)
FILES = {
    "board.toml": BOARD,
    "ram.bin": RAM,
    "patch": struct.pack("<HH", 700, 800),
    "fw.hex": b":020000042000DA\n:04001200BC02200309\n:00000001FF\n",
    "words": bytes(range(1, 9)),
    "empty": b"",
    "bad.hex": b":020000042000DA\n:0100000055AB\n:00000001FF\n",
    "cut.s19": b"S104000055A6\n",
    "wrong.toml": HEADER + b'[labels]\nx = { address = 1, type = "struct nothing" }\n',
    "broken.toml": HEADER + b"[labels\n",
    "latin.toml": HEADER + b'[labels]\n"\xe9" = 1\n',
}

BOARD_ROWS = [
    (["head->v"], "42\n"),
    (["head->next->v"], "536870916\n"),
    (["table[2]", "*&table[1]", "LIMIT", "GREEN", "sizeof(node_t)"], "3\n2\n10\n5\n8\n"),
    (["stack", "reset"], "536875008\n256\n"),
    (["#0", "#2"], "8721\n17459\n"),
    (["-"], "42\n"),
]


def described(*arguments, **more):
    return Row(["--plain", "--describe", "board.toml", *arguments], **more)


ROWS = [
    # descriptions: no word is a program
    *(described(*expressions, stdout=output, stdin=b"head->v\n" if expressions == ["-"] else b"")
      for expressions, output in BOARD_ROWS),
    described("--", "-LIMIT + 11", stdout="1\n"),
    Row(["-v", "--describe", "board.toml", "table[3]"],
        stdout="4  2 bytes, unsigned, at 0x20000016, memory space 0\n",
        stderr="note: reading the memory that board.toml describes\n"),
    described("flags.high", stdout="29\n", stderr="note: flags.high: as an operand a bit-field is the "
              "whole unit that holds its bits; in C it is 3: write `(flags.high>>3&127)`\n"),
    Row(["--describe", "board.toml", "flags.high"], stdout="3\n"),
    described("*(int*)0x30000000", status=1,
              stderr="resolve: *(int*)0x30000000: cannot read memory at 0x30000000\n"),
    described("nowhere", status=1, stderr="resolve: nowhere: Undefined label nowhere\n"),
    described("#4", status=1, stderr="resolve: #4: cannot read memory at 0x4 in space 1\n"),
    Row(["--labels", "t*", "--describe", "board.toml"],
        stdout="table  unsigned short [4], 0x20000010\n"),
    Row(["--describe", "board.toml", "--types"],
        stdout="enum colour   4 bytes\nnode_t        struct node\nstruct flags  4 bytes\n"
               "struct node   8 bytes\n"),
    Row(["--describe", "board.toml", "--labels", "no*"], status=1,
        stderr="resolve: no label of board.toml matches no*\n"),
    Row(["--describe", "board.toml", "--file", "boot.s", "stack"], stdout="0x20001000 <stack>\n"),
    unusable(["--watch", "1", "--describe", "board.toml"],
             "no expression is given to --watch; see resolve --help"),
    unusable(["--describe", "nowhere.toml", "x"], "there is no file 'nowhere.toml'"),
    unusable(["--describe", ".", "x"], "'.' is a directory, not a file"),
    unusable(["--describe", "/dev/zero", "x"], "'/dev/zero' is not a regular file"),
    unusable(["--describe", "empty", "x"], "the file 'empty' is empty"),
    unusable(["--describe", "wrong.toml", "x"], "wrong.toml:5:27: there is no type `struct nothing`"),
    unusable(["--describe", "broken.toml", "x"], "broken.toml:4:<number>: <rest>"),
    unusable(["--describe", "latin.toml", "x"], "latin.toml:5:<number>: <rest>"),
    unusable(["--describe", "board.toml", "--core", "c", "x"],
             "--core excludes --describe; see resolve --help"),
    unusable(["--describe", "board.toml", "--pid", "1", "x"],
             "--pid excludes --describe; see resolve --help"),
    # memory over it
    described("--memory", "0x20000010=patch", "table[0]", "table[1]", "table[2]",
              stdout="700\n800\n3\n"),
    described("--memory", "0x20000010=patch@2", "table[0]", "table[1]", stdout="800\n2\n"),
    described("--memory", "0x20000011=patch@1:1", "table[0]", stdout="513\n"),
    described("--memory", "0=fw.hex", "table[0]", "table[1]", "table[2]", stdout="1\n700\n800\n"),
    described("--memory", "1:0=words", "--word-size", "8", "#0", stdout="578437695752307201\n"),
    described("--memory", "1:2=words", "#0", "#2", stdout="8721\n513\n"),
    described("--word-size", "1", "#0", stdout="17\n"),
    described("--word-size", "3", "#0", stdout="3351057\n"),
    Row(["--plain", "-v", "--memory", "1=patch", "--describe", "board.toml", "LIMIT"],
        stdout="10  8 bytes, unsigned, no address, memory space 0\n",
        stderr="note: reading the memory that board.toml describes under patch\n"),
    # memory over a program
    Row(["@", "x"], stdout="42\n"),
    Row(["--memory", "1:0x10=words", "@", "#0x10", "x"], stdout="578437695752307201\n42\n"),
    Row(["--memory", "0x10=words", "@", "*(short*)0x11", "x"], stdout="770\n42\n"),
    Row(["--memory", "0xffff800000000000=words", "@", "*(short*)0xffff800000000002", "x"],
        stdout="1027\n42\n"),
    Row(["--memory", "1:0=words", "--word-size", "2", "@", "#6"], stdout="2055\n"),
    # what is wrong
    unusable(["--word-size", "0", "@", "x"],
             "--word-size takes a number of bytes from 1 to 8; see resolve --help"),
    unusable(["--word-size", "9", "@", "x"],
             "--word-size takes a number of bytes from 1 to 8; see resolve --help"),
    unusable(["--word-size", "many", "@", "x"], "<rest>; see resolve --help"),
    unusable(["--memory", "words", "@", "x"],
             "'words' is no region of memory: [SPACE:]ADDRESS=FILE[@OFFSET[:LENGTH]] is"),
    unusable(["--memory", "2:0=words", "@", "x"],
             "'2' in '2:0=words' is no memory space: 0 and 1 are"),
    unusable(["--memory", "x=words", "@", "x"], "'x' in 'x=words' is no address: <rest>"),
    unusable(["--memory", "0=nowhere", "@", "x"], "there is no file 'nowhere'"),
    unusable(["--memory", "0=.", "@", "x"], "'.' is a directory, not a file"),
    unusable(["--memory", "0=empty", "@", "x"], "the file 'empty' is empty"),
    unusable(["--memory", "0=/dev/zero", "@", "x"], "'/dev/zero' is not a regular file"),
    unusable(["--memory", "0=words@8", "@", "x"],
             "the offset 0x8 lies behind the end of 'words', which has 8 bytes"),
    unusable(["--memory", "0=words@4:5", "@", "x"],
             "'words' has no 5 bytes behind offset 0x4, but 4"),
    unusable(["--memory", "0=bad.hex", "@", "x"], "'bad.hex', line 2: the checksum is 0xab, but the "
             "record's bytes make it 0xaa"),
    unusable(["--memory", "0=cut.s19", "@", "x"],
             "'cut.s19', line 1: the file ends without an end record"),
    unusable(["--memory", "0=fw.hex@4", "@", "x"],
             "'fw.hex' holds Intel HEX: an offset and a length count the bytes of raw files"),
    unusable(["--memory", "0x100=words", "--memory", "0x107=patch", "@", "x"],
             "two regions of memory overlap: 0x100 to 0x107 from 'words', and 0x107 to 0x10a from "
             "'patch'"),
    unusable(["--memory", "0xfffffffffffffffc=words", "@", "x"],
             "8 bytes at 0xfffffffffffffffc from 'words' go past the end of the address space, "
             "0xffffffffffffffff"),
    unusable(["--describe", "board.toml", "--memory", "0xfffffffc=words", "x"],
             "8 bytes at 0xfffffffc from 'words' go past the end of the address space, 0xffffffff"),
]

run_table(ROWS, files=FILES)
