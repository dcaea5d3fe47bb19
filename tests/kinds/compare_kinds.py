#!/usr/bin/env python3
"""Asks `resolve` and gdb the same expressions about one program, looked at as one kind of target.

usage: compare_kinds.py KIND RESOLVE PROGRAM

KIND is one of targets.py's. PROGRAM is the example program with a `main` that waits. Exits with 77
where the environment refuses what the kind needs.
"""
import json
import os
import pathlib
import subprocess
import sys
import tempfile

GDB_FOLDER = pathlib.Path(__file__).resolve().parent.parent / "gdb"
sys.path.insert(0, str(GDB_FOLDER))

from compare_with_gdb import SAME, same_number  # noqa: E402
from targets import KINDS, PATIENCE, Refused, run_gdb  # noqa: E402

SKIPPED = 77


def ask_gdb(arguments, expressions, folder):
    (folder / "expressions").write_text(json.dumps(expressions))
    answers = folder / "answers"
    environment = dict(os.environ, EXPRESSIONS=str(folder / "expressions"), ANSWERS=str(answers))
    said = run_gdb([*arguments, "-x", GDB_FOLDER / "ask_gdb.py"], environment)
    if not answers.exists():
        raise RuntimeError(f"gdb gave no answers:\n{said}")
    return json.loads(answers.read_text())


def ask_resolve(resolve, arguments, expressions):
    """One command for all expressions: each succeeds and has a line, or the command says why not."""
    done = subprocess.run([resolve, "--plain", *map(str, arguments), "-"], capture_output=True,
                          text=True, input="\n".join(expressions) + "\n", timeout=PATIENCE)
    lines = done.stdout.splitlines()
    if done.returncode != 0 or len(lines) != len(expressions):
        raise RuntimeError(f"resolve {arguments} ended with {done.returncode}:\n{done.stderr}")
    return dict(zip(expressions, lines))


def main():
    kind, resolve, program = sys.argv[1:]
    resolve = str(pathlib.Path(resolve).resolve())
    # A description knows no number of more than 8 bytes.
    expressions = [e for e in SAME if kind != "described" or "long double" not in e]
    failures = 0
    with tempfile.TemporaryDirectory() as scratch:
        folder = pathlib.Path(scratch)
        try:
            with KINDS[kind](pathlib.Path(program).resolve(), folder,
                             lambda arguments: ask_gdb(arguments, expressions, folder)) as target:
                theirs, arguments = target
                ours = ask_resolve(resolve, arguments, expressions)
        except Refused as reason:
            print(f"NOT TESTED: {reason}")
            return SKIPPED
    for expression in expressions:
        if not same_number(ours[expression], theirs[expression]):
            failures += 1
            print(f"{expression}: resolve says {ours[expression]!r}, gdb {theirs[expression]}")
    print(f"{len(expressions) - failures} passed, {failures} failed")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
