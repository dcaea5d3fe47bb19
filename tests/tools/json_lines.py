#!/usr/bin/env python3
"""What --json writes: every line is valid against the schema, and says what the plain output says.

usage: json_lines.py RESOLVE PROGRAM SCHEMA
"""
import json
import pathlib
import subprocess
import sys
import tempfile

import jsonschema

# Arguments, in which @ stands for the program; the exit status; for each line what it must hold.
ROWS = [
    (["@", "x"], 0, [{"expression": "x", "prepared": "x", "status": "resolved", "message": None,
                      "value": 42, "text": "42", "size": 4, "signed": True, "floating": False,
                      "space": 0, "confirmed": True, "notes": []}]),
    (["@", "-5 + 7", "nowhere", "n"], 1,
     [{"value": 2, "address": None, "reads": [], "prepared": "-5+7"},
      {"status": "failed", "message": "Undefined label nowhere", "confirmed": False},
      {"value": -7}]),
    # what double precision cannot hold is text
    (["@", "9007199254740992", "9007199254740993", "far", "huge"], 0,
     [{"value": 9007199254740992}, {"value": "9007199254740993"}, {"value": -5000000000},
      {"value": "18446744073709551615"}]),
    (["@", "half", "-half"], 0, [{"value": 0.5, "floating": True, "size": 4, "signed": False},
                                 {"value": -0.5, "text": "-0.5"}]),
    (["@", "a[i]"], 0, [{"prepared": "a[(i)+0]", "value": 30}]),
    (["--explain", "@", "a[i]", "*none", "(char)x", "head->v", "sizeof(struct node)", "1 2"], 1,
     [{"value": 30}, {"status": "failed"}, {"value": 42}, {"value": 11}, {"value": 16},
      {"status": "failed", "prepared": None, "log": []}]),
    (["@", "#0"], 1, [{"status": "failed"}]),
    (["@", "", "(", "a\nb", "x\x1b", "\u00e9", b"n\xff\xfe", '"', "\\"], 1,
     [{"status": "failed"}] * 8),
    (["@", "s", "a", "flags.bias"], 0,
     [{"value": None, "type": "struct outer", "text": "{in = {x = 1, y = 2}, x = 3, mark = 83 'S'}"},
      {"value": None, "type": "int [5]", "size": 20}, {"value": -3, "bits": 4, "signed": True}]),
    (["--plain", "@", "s"], 1, [{"status": "failed"}]),
    (["@", "n + 1"], 0, [{"notes": [{"name": "sign-lost", "text": "a numeral has 8 bytes and no sign, "
                                     "and so has a result computed with it; in C it is -6: write "
                                     "`(int)(n + 1)`"}]}]),
    (["--no-notes", "@", "n + 1"], 0, [{"notes": []}]),
    (["--notes=error", "@", "n + 1"], 1, [{"status": "failed"}]),
    (["--labels", "h*", "@"], 0, [{"name": "half"}, {"name": "head"}, {"name": "huge"}]),
    (["--types", "struct node", "@"], 0, [{"name": "struct node"}]),
    (["--labels", "nothing*", "@"], 1, []),
    # the command itself
    (["missing", "x"], 2, [{"status": "unusable", "message": "there is no file 'missing'"}]),
    ([], 2, [{"status": "unusable", "message": "no program is named"}]),
    (["--bogus", "@", "x"], 2, [{"status": "unusable", "message": "there is no option --bogus"}]),
    (["--file", "nowhere.c", "@", "x"], 2, [{"status": "unusable"}]),
]


def run(resolve, arguments, folder):
    return subprocess.run([resolve, *arguments], capture_output=True, cwd=folder, timeout=300,
                          stdin=subprocess.DEVNULL)


def complaints(row, resolve, program, validator, folder):
    arguments, status, expected = row
    arguments = [program if argument == "@" else argument for argument in arguments]
    done = run(resolve, ["--json", *arguments], folder)
    lines = done.stdout.decode("utf-8").split("\n")
    if lines.pop() != "":
        yield "the last line does not end"
    if done.returncode != status:
        yield f"status {done.returncode}"
    if status != 2 and not arguments[0].startswith("--labels") and done.stderr:
        yield f"standard error: {done.stderr!r}"
    if len(lines) != len(expected):
        yield f"{len(lines)} lines: {lines}"
    for line, wanted in zip(lines, expected):
        found = json.loads(line)
        for fault in validator.iter_errors(found):
            yield f"{line}\n  against the schema: {fault.message}"
        for key, value in wanted.items():
            if key not in found or found[key] != value:
                yield f"{key} is {found.get(key, 'missing')!r}, not {value!r}"
        if "--explain" in arguments and "log" not in found:
            yield f"no log: {line}"


def differs_from_plain(resolve, program, folder):
    """The text of an object is the line of the plain output, and a message the one on standard
    error."""
    expressions = ["x", "n", "huge", "half", "pi", "a[3]", "word[0]", "head", "p", "&x", "paint",
                   "letter", "on", "main", "GREEN", "flags.plain"]
    plain = run(resolve, [program, *expressions], folder).stdout.decode().splitlines()
    lines = run(resolve, ["--json", program, *expressions], folder).stdout.decode().splitlines()
    texts = [json.loads(line)["text"] for line in lines]
    return "" if texts == plain else f"{texts} {plain}"


def main():
    resolve, program, schema = (str(pathlib.Path(path).resolve()) for path in sys.argv[1:])
    schema = json.loads(pathlib.Path(schema).read_text())
    jsonschema.Draft7Validator.check_schema(schema)
    validator = jsonschema.Draft7Validator(schema)
    failures = 0
    with tempfile.TemporaryDirectory() as folder:
        for row in ROWS:
            for complaint in complaints(row, resolve, program, validator, folder):
                failures += 1
                print(f"{row[0]}: {complaint}")
        wrong = differs_from_plain(resolve, program, folder)
        if wrong:
            failures += 1
            print(wrong)
    # The schema must be able to say no.
    for wrong in ({}, {"status": "resolved"}, {"status": "unusable"}, {"name": "x"}):
        if validator.is_valid(wrong):
            failures += 1
            print(f"the schema accepts {wrong}")
    print(f"{len(ROWS)} command lines, {failures} failures")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
