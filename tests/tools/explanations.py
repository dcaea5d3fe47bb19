#!/usr/bin/env python3
"""What --explain writes before each answer."""
from command import Row, pattern, run_table


def explained(expression, *lines, status=0, stderr="", options=()):
    text = "".join(line + "\n" for line in lines)
    return Row(["--explain", *options, "@", expression], stdout=pattern(text), stderr=stderr,
               status=status)


C = "file      main.c, so the dialect of C: `.` selects a member"

ROWS = [
    explained("1 + 2", "given     1 + 2", "prepared  1+2", C, "number    1", "number    2",
              "result    computed: 8 bytes, unsigned, no address, memory space 0", "3"),
    explained("x", "given     x", "prepared  x", C, "label     x at <address>, int, 4 bytes",
              "read      4 bytes at <address>: 42",
              "result    the object that was read last: 4 bytes, signed, at <address>, "
              "memory space 0", "42"),
    explained("a[i]", "given     a[i]", "prepared  a[(i)+0]", C, "type?     (i) is no type, so a group",
              "label     i at <address>, int, 4 bytes",
              "type?     (<<number>>+0) is no type, so a group", "number    <number>", "number    0",
              "read      4 bytes at <address>: 2", "label     a at <address>, <rest>",
              "number    2", "read      4 bytes at <address>: 30", "result    <rest>", "30"),
    explained("(unsigned char)n", "given     (unsigned char)n", "prepared  (unsigned char)n", C,
              "type?     (unsigned char) is a type", "type      unsigned char: 1 byte",
              "label     n at <address>, int, 4 bytes", "read      4 bytes at <address>: <number>",
              "result    computed: 1 byte, unsigned, no address, memory space 0", "249"),
    explained("*none", "given     *none", "prepared  *none", C,
              "label     none at <address>, int *, <rest>", "read      <number> bytes at <address>: 0",
              "refused   4 bytes at 0x0: cannot read memory at 0x0",
              "failed    cannot read memory at 0x0", status=1,
              stderr="resolve: *none: cannot read memory at 0x0\n"),
    explained("1 2", "given     1 2", "failed    no operator stands between `1` and `2`", status=1,
              stderr="resolve: 1 2: no operator stands between `1` and `2`\n"),
    explained("main + 1", "given     main + 1", "prepared  main+1", C,
              "label     main is <address>, without a type", "number    1", "result    <rest>",
              "<number>"),
    explained("nowhere", "given     nowhere", "prepared  nowhere", C, "label     nowhere: none",
              "failed    Undefined label nowhere", status=1,
              stderr="resolve: nowhere: Undefined label nowhere\n"),
    explained("table.first", "given     table.first", "prepared  table.first",
              "file      table.s, so the dialect of assembly: `.` belongs to names",
              "label     table.first <rest>", "result    <rest>", "<rest>",
              options=("--file", "table.s")),
]

run_table(ROWS)
