#!/usr/bin/env python3
"""Checks the table of docs/DISPLAY.md: what `resolve` and gdb's `print` write for the same objects.

usage: compare_displays.py RESOLVE PROGRAM DOCUMENT [--write]

The rows are `| `expression` | `ours` | `gdb's` |`. Addresses differ from build to build, so any
address of four digits or more stands for all of them. With --write the answers in the document are
replaced by those found, for the reader to look at what changed.
"""
import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile

ROW = re.compile(r"^\| `(?P<expression>.+?)` +\| `(?P<ours>.+?)` +\| `(?P<gdb>.+?)` +\|$")
# What a program of 32 bits does not have, or has with another size or name.
ONLY_64_BIT = ("least", "most")
TIMEOUT = 120


def same_address(text):
    return re.sub(r"0x[0-9a-f]{4,}", "0x...", text)


def in_cell(text):
    return text.replace("|", "\\|")


def from_cell(text):
    return text.replace("\\|", "|")


def ask_gdb(program, expressions):
    with tempfile.TemporaryDirectory() as scratch:
        folder = pathlib.Path(scratch)
        (folder / "expressions").write_text(json.dumps(expressions))
        environment = dict(os.environ, EXPRESSIONS=str(folder / "expressions"),
                           ANSWERS=str(folder / "answers"), LC_ALL="C.UTF-8")
        script = pathlib.Path(__file__).with_name("print_in_gdb.py")
        subprocess.run(["gdb", "-batch", "-nx", "-iex", "set debuginfod enabled off", "-iex",
                        "set width 0", "-x", str(script), str(program)],
                       check=True, env=environment, capture_output=True, timeout=TIMEOUT)
        return json.loads((folder / "answers").read_text())


def ask_resolve(resolve, program, expression):
    done = subprocess.run([resolve, program, expression], capture_output=True, text=True,
                          timeout=TIMEOUT)
    return (done.stdout or done.stderr.removeprefix(f"resolve: {expression}: ")).rstrip("\n")


def main():
    resolve, program, document = sys.argv[1:4]
    write = sys.argv[4:] == ["--write"]
    lines = pathlib.Path(document).read_text().splitlines()
    small = pathlib.Path(program).read_bytes()[4] == 1
    rows = {}
    for number, line in enumerate(lines):
        row = ROW.match(line)
        if row and not (small and row["expression"] in ONLY_64_BIT):
            rows[number] = row
    expressions = [from_cell(row["expression"]) for row in rows.values()]
    gdb = ask_gdb(program, expressions)
    wrong = 0
    for number, row in rows.items():
        expression = from_cell(row["expression"])
        found = {"ours": ask_resolve(resolve, program, expression), "gdb": gdb[expression]}
        if write:
            cells = [row["expression"], in_cell(found["ours"]), in_cell(found["gdb"])]
            lines[number] = "| " + " | ".join(f"`{cell}`" for cell in cells) + " |"
            continue
        for who, text in found.items():
            if same_address(text) != same_address(from_cell(row[who])):
                wrong += 1
                print(f"{expression}, {who}:\n  document: {from_cell(row[who])}\n  found:    {text}")
    if write:
        pathlib.Path(document).write_text("\n".join(lines) + "\n")
    print(f"{len(rows)} rows, {wrong} wrong")
    return 1 if wrong or len(rows) < 10 else 0


if __name__ == "__main__":
    sys.exit(main())
