"""Runs `resolve` as a user does, and checks a table of what comes out.

Every table is a script of its own: TABLE.py RESOLVE PROGRAM, where PROGRAM is the example program.
"""
import dataclasses
import pathlib
import re
import shlex
import subprocess
import sys
import tempfile


@dataclasses.dataclass
class Row:
    """Arguments, in which @ alone stands for the program, and what is expected of the run.

    stdout and stderr are compared whole; a compiled regular expression must match the whole text.
    """

    arguments: list
    stdout: object = ""
    stderr: object = ""
    status: int = 0
    stdin: bytes = b""

    def name(self):
        name = "resolve " + shlex.join(self.arguments)
        return name + (f" <<< {self.stdin[:60]!r}" if self.stdin else "")


def pattern(text):
    """A regular expression in which only <address>, <number> and <rest> are special."""
    text = re.escape(text).replace("<address>", "0x[0-9a-f]+")
    return re.compile(text.replace("<number>", "-?[0-9]+").replace("<rest>", ".+"))


def value(expression, text, *options):
    """The expression has this number, and nothing is said about it."""
    return Row(["--plain", *options, "@", expression], stdout=text + "\n")


def shown(expression, text, *options):
    """The expression is shown like this, by its type; <address> may stand in it."""
    return Row([*options, "@", expression], stdout=pattern(text + "\n"))


def error(expression, message, *options):
    """The expression fails with this message, in which <address> may stand."""
    return Row([*options, "@", expression],
               stderr=pattern(f"resolve: {expression}: {message}\n"), status=1)


def unusable(arguments, message, **more):
    """The command line or the program cannot be used."""
    return Row(arguments, stderr=pattern(f"resolve: {message}\n"), status=2, **more)


def agrees(actual, expected):
    if isinstance(expected, re.Pattern):
        return expected.fullmatch(actual) is not None
    return actual == expected


def complaint(row, resolve, program, folder):
    """What is wrong with the run of a row, or nothing."""
    arguments = [program if argument == "@" else argument for argument in row.arguments]
    done = subprocess.run([resolve, *arguments], input=row.stdin, capture_output=True, cwd=folder)
    got = {"stdout": done.stdout.decode(errors="backslashreplace"),
           "stderr": done.stderr.decode(errors="backslashreplace").replace(program, "PROGRAM"),
           "status": done.returncode}
    wrong = []
    for what, actual in got.items():
        expected = getattr(row, what)
        if not agrees(actual, expected):
            shown = expected.pattern if isinstance(expected, re.Pattern) else expected
            wrong.append(f"  {what}:   {actual!r}\n  expected: {shown!r}")
    return "\n".join(wrong)


def run_table(rows, files=None, checks=()):
    """Runs every row in a folder that holds `files` (name -> bytes), and every check: a function of
    RESOLVE and PROGRAM that returns what is wrong, or nothing. Exits with the verdict."""
    resolve, program = (str(pathlib.Path(path).resolve()) for path in sys.argv[1:3])
    failures = 0
    with tempfile.TemporaryDirectory() as folder:
        for name, content in (files or {}).items():
            (pathlib.Path(folder) / name).write_bytes(content)
        for row in rows:
            wrong = complaint(row, resolve, program, folder)
            if wrong:
                failures += 1
                print(f"{row.name()}\n{wrong}")
    for check in checks:
        wrong = check(resolve, program)
        if wrong:
            failures += 1
            print(f"{check.__doc__}\n  {wrong}")
    print(f"{len(rows) + len(checks) - failures} passed, {failures} failed")
    sys.exit(1 if failures else 0)
