#!/usr/bin/env python3
"""Gives check_examples.py documents with one wrong example each; it must name the line.

Arguments: a folder to write to, and the arguments of check_examples.py without the document.
"""

import pathlib
import subprocess
import sys

TABLE = "| Expression | Result |\n|---|---|\n"

# What is wrong, the document, and how the complaint begins.
WRONG = [
    ("value", TABLE + "| `1+1` | `3` (8) |", "wrong.md:3: expression: 1+1"),
    ("size", TABLE + "| `1+1` | `2` (4) |", "wrong.md:3: expression: 1+1"),
    ("message", TABLE + "| `1/0` | error `Division` |", "wrong.md:3: expression: 1/0"),
    ("success", TABLE + "| `1` | error, no message |", "wrong.md:3: expression: 1"),
    ("dialect", "\n| In assembly | Result |\n|---|---|\n| `s.a` | `100` (4) |",
     "wrong.md:4: expression: s.a"),
    ("second result", "| Expression | Result | Write | Result |\n|---|---|---|---|\n"
     "| `1` | `1` (8) | `2` | `1` (8) |", "wrong.md:3: expression: 2"),
    ("listed message", "| Message | Example |\n|---|---|\n| `Division by zero` | `1/1` |",
     "wrong.md:3: expression: 1/1"),
    ("address", "| Label | Address |\n|---|---|\n| `i` | 0x1 |", "wrong.md:3: i lies at"),
    ("cells", TABLE + "| `1` |", "wrong.md:3: the row has 1 cells"),
    ("two expressions", TABLE + "| `1` `2` | `1` (8) |", "wrong.md:3: not one expression"),
    ("no result", "| Expression |\n|---|\n| `1` |", "wrong.md:3: no column Result"),
    ("output", "```console\n$ echo two\none\n```", "wrong.md:2: $ echo two"),
    ("missing output", "```console\n$ echo; echo two\n\n```", "wrong.md:2: $ echo; echo two"),
    ("status", "```console\n$ false\n```", "wrong.md:2: $ false"),
    ("other status", "```console\n$ false\n$ echo $?\n2\n```", "wrong.md:2: $ false"),
    ("no command", "```console\none\n```", "wrong.md:2: output without a command"),
    ("open block", "```console\n$ true", "wrong.md:1: the fenced block does not end"),
    ("code", "```cpp\nint main() { return nothing; }\n```", "wrong.md:2: no stretch"),
    ("target", "```cmake\ntarget_link_libraries(a PRIVATE StringResolver::other)\n```",
     "wrong.md:2: not in examples/embedding/CMakeLists.txt: StringResolver::other"),
    ("package", "```cmake\nfind_package(Resolver)\n```",
     "wrong.md:2: not in examples/embedding/CMakeLists.txt: Resolver"),
    ("nothing", "`1+1` is `3`", "wrong.md: no examples found: expressions"),
]

RIGHT = [
    TABLE + "| `5\\|3` | `7` (8) |",
    TABLE + "| `(1` | error ``Can`t find the end quote.`` |",
    "```console\n$ echo one; echo two >&2\none\ntwo\n\n$ false\n$ echo $?\n1\n```",
    "```cpp\nint main() {}\n```",
    "```cmake\nfind_package(StringResolver 0.1)\n```",
]


def main():
    folder = pathlib.Path(sys.argv[1])
    folder.mkdir(parents=True, exist_ok=True)
    checker = pathlib.Path(__file__).with_name("check_examples.py")
    document = folder / "wrong.md"
    failures = []

    def check(text):
        document.write_text(text + "\n")
        kind = "code" if "```c" in text else "expressions"
        kind = "commands" if "```console" in text else kind
        return subprocess.run([sys.executable, "-B", checker, document, "--expect", kind,
                               *sys.argv[2:]],
                              text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)

    for what, text, complaint in WRONG:
        run = check(text)
        if run.returncode == 0 or complaint not in run.stdout:
            failures.append(f"wrong {what}: status {run.returncode}, said:\n{run.stdout}")
    for text in RIGHT:
        run = check(text)
        if run.returncode != 0:
            failures.append(f"right, but refused: {text}\n{run.stdout}")
    print("\n".join(failures) or f"{len(WRONG)} wrong and {len(RIGHT)} right documents told apart")
    sys.exit(1 if failures else 0)


if __name__ == "__main__":
    main()
