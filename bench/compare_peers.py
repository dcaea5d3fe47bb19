#!/usr/bin/env python3
"""Prints one of the tables of bench/peers.

usage: compare_peers.py {expressions,startup} BUILD [--rounds 7]

All sides run in turn, round after round, so that whatever else the machine does meets them alike.
Printed are medians over the rounds, and medians of the rounds' ratios. In every round all sides
must give the same numbers.
"""
import argparse
import json
import os
import pathlib
import re
import statistics
import subprocess
import sys

HERE = pathlib.Path(__file__).resolve().parent
# How many times as long gdb is to take.
GOAL = 10

# An expression, and its text for the sides where it is not C; None where a side cannot say it.
# drgn's expressions are Python. Without a process, lldb does not calculate with floating values.
# muParser knows numbers and the names bound to them.
EXPRESSIONS = [
    ("1+2*3", {}),
    ("x", {}),
    ("x+1", {}),
    ("a[3]", {"muParser": None}),
    ("s.in.y", {"drgn": 's.member_("in").y', "muParser": None}),
    ("head->next->v", {"drgn": "head.next.v", "muParser": None}),
    ("arr[1].x + 2", {"muParser": None}),
    ("m[2][3]", {"muParser": None}),
    ("(char)x", {"drgn": 'cast("char", x)', "muParser": None}),
    ("sizeof(s)", {"muParser": None}),
    ("(x+1)*(x-2)/3 + a[2]", {"muParser": None}),
    ("f+0.5", {"lldb": None}),
    ("d*2.0", {"lldb": None}),
    ("nosuch", {}),
    ("&wide", {"drgn": "wide.address_", "muParser": None}),
    ("wide.f499", {"muParser": None}),
]

# What a program is called, where it lies, and an expression as above.
STARTS = [
    ("bench/program.c", "bin/bench_program", "x", {}),
    ("examples/program", "bin/example_program", "x", {}),
    ("generated", "generated/1MB/large", "v10001", {}),
    ("generated", "generated/10MB/large", "v10001", {}),
    ("generated", "generated/10MB/large", "s19800.at.x", {}),
    ("generated", "generated/10MB/large", "sizeof(struct item1999)",
     {"drgn": 'sizeof(type("struct item1999"))'}),
]


class Failure(Exception):
    pass


def run(command, **environment):
    """What a command printed."""
    command = [str(part) for part in command]
    try:
        done = subprocess.run(command, env={**os.environ, **environment}, capture_output=True,
                              text=True)
    except OSError as error:
        raise Failure(f"{command[0]}: {error.strerror}") from error
    if done.returncode != 0:
        reason = (done.stderr.strip().splitlines() or [f"status {done.returncode}"])[-1]
        raise Failure(f"{' '.join(command)} failed: {reason}")
    return done.stdout


def without_missing(peers, probe):
    """The peers for which `probe` works. gdb is what the figures are compared with: it has to."""
    there = []
    for peer in peers:
        try:
            probe(peer)
            there.append(peer)
        except Failure as failure:
            if peer == "gdb":
                raise
            print(f"{peer} is left out: {failure}\n")
    return there


def number(answer):
    return answer if answer == "error" else float(answer)


def compare(expression, answers):
    for side, answer in answers.items():
        if number(answer) != number(answers["ours"]):
            raise Failure(f"{expression}: ours is {answers['ours']}, {side} answers {answer}")


def progress(text):
    print(text, file=sys.stderr, flush=True)


def figure(value):
    if value is None:
        return "-"
    if isinstance(value, int):
        return str(value)
    return f"{value:.{2 if value < 10 else 1 if value < 100 else 0}f}"


def print_table(head, rows):
    """As Markdown that can be read as it is. Text comes first in a row, then numbers."""
    texts = sum(isinstance(cell, str) for cell in rows[0])
    cells = [head] + [[*row[:texts], *map(figure, row[texts:])] for row in rows]
    widths = [max(len(row[i]) for row in cells) for i in range(len(head))]
    rule = ["-" * width if i < texts else "-" * (width - 1) + ":" for i, width in enumerate(widths)]
    for row in [cells[0], rule, *cells[1:]]:
        aligned = (f"{cell:<{width}}" if i < texts else f"{cell:>{width}}"
                   for i, (cell, width) in enumerate(zip(row, widths)))
        print("| " + " | ".join(aligned) + " |")


def our_times(build):
    """Expression -> microseconds and allocations over the host in memory, microseconds over the
    ELF host, answer."""
    texts = [text for text, _ in EXPRESSIONS]
    times = {}
    for line in run([build / "bin/expression_times", build / "bin/bench_program",
                     *texts]).splitlines():
        text, *memory, memory_answer, elf_answer = line.split("\t")
        compare(text, {"ours": memory_answer, "ours over the ELF host": elf_answer})
        times[text] = float(memory[0]) / 1e3, int(memory[1]), float(memory[4]) / 1e3, memory_answer
    return times


def peer_times(build, peer, expressions):
    """Expression -> microseconds, answer."""
    texts = {text: others.get(peer, text) for text, others in expressions}
    texts = {text: said for text, said in texts.items() if said is not None}
    program = build / "bin/bench_program"
    command = {
        "gdb": ["gdb", "-batch", "-nx", "-x", HERE / "gdb_times.py", program],
        "drgn": [sys.executable, HERE / "drgn_times.py", program],
        "lldb": [sys.executable, HERE / "lldb_times.py", program],
        "muParser": [build / "bin/formula_times", *texts.values()],
    }[peer]
    # gdb does not look for modules beside its scripts.
    lines = run(command, TEXTS=json.dumps(list(texts.values())), PYTHONPATH=str(HERE)).splitlines()
    times = {}
    for text, line in zip(texts, lines, strict=True):
        nanoseconds, answer = line.split("\t")
        times[text] = float(nanoseconds) / 1e3, answer
    return times


def compare_expressions(build, rounds):
    print("Processor time of an expression in microseconds, the program loaded. Ours: a fresh\n"
          "resolver for each, over a host in memory and over the ELF host. Medians of "
          f"{rounds} rounds.\n")
    peers = without_missing(["gdb", "drgn", "lldb", "muParser"],
                            lambda peer: peer_times(build, peer, []))
    ours, theirs = [], {peer: [] for peer in peers}
    for done in range(rounds):
        progress(f"Expressions: round {done + 1} of {rounds}")
        ours.append(our_times(build))
        for peer in peers:
            theirs[peer].append(peer_times(build, peer, EXPRESSIONS))
            for text, (_, answer) in theirs[peer][-1].items():
                compare(text, {"ours": ours[-1][text][-1], peer: answer})
    rows = []
    for text, _ in EXPRESSIONS:
        memory, elf = (statistics.median(times[text][i] for times in ours) for i in (0, 2))
        # The same in every round, unlike times.
        row = [f"`{text}`", memory, ours[0][text][1], elf]
        for peer in peers:
            times = [times[text][0] for times in theirs[peer] if text in times]
            row.append(statistics.median(times) if times else None)
        row.append(statistics.median(their[text][0] / our[text][0]
                                     for our, their in zip(ours, theirs["gdb"])))
        rows.append(row)
    print_table(["expression", "ours, memory", "allocations", "ours, ELF", *peers,
                 "gdb / ours, memory"], rows)
    met = sum(row[-1] >= GOAL for row in rows)
    print(f"\n{met} of {len(rows)} expressions take at most one tenth of gdb's time.\n")


def debug_kilobytes(program):
    sections = re.findall(r"^\.debug_\S+\s+(\d+)", run(["size", "-A", "-d", program]), re.MULTILINE)
    return round(sum(map(int, sections)) / 1e3)


def start(build, side, program, expression, others):
    """One process from beginning to end: milliseconds, peak MiB, answer."""
    text = others.get(side, expression)
    command = {
        "ours": [build / "bin/resolve", program, text],
        "gdb": ["gdb", "-batch", "-nx", "-ex", f"print {text}", program],
        "drgn": [sys.executable, HERE / "drgn_value.py", program, text],
        # What looks for a variable does not need lldb's compiler.
        "lldb": ["lldb", "-b", "-x", "-o",
                 f"{'print' if '(' in text else 'target variable'} {text}", program],
    }[side]
    *output, cost = run([build / "bin/process_cost", *command]).splitlines()
    nanoseconds, kibibytes = map(int, cost.split())
    return nanoseconds / 1e6, kibibytes / 1024, re.sub(r".* = ", "", output[-1])


def compare_starts(build, rounds):
    print("Whole processes that load a program and print one value: wall time in ms, and peak\n"
          f"memory in MiB. Medians of {rounds} rounds.\n")
    _, first, *expression = STARTS[0]
    sides = ["ours", *without_missing(["gdb", "drgn", "lldb"],
                                      lambda side: start(build, side, build / first, *expression))]
    costs = []
    for name, path, expression, others in STARTS:
        progress(f"Start-up: {expression} of {path}")
        program = build / path
        taken = []
        for _ in range(rounds):
            taken.append({side: start(build, side, program, expression, others) for side in sides})
            compare(expression, {side: answer for side, (*_, answer) in taken[-1].items()})
        costs.append((name, f"`{expression}`", debug_kilobytes(program), taken))
    for place, unit in enumerate(["ms", "MiB"]):
        rows = []
        for *what, taken in costs:
            rows.append([*what, *(statistics.median(each[side][place] for each in taken)
                                  for side in sides),
                         statistics.median(each["gdb"][place] / each["ours"][place]
                                           for each in taken)])
        print_table(["program", "expression", "debug info, kB",
                     *(f"{side}, {unit}" for side in sides), "gdb / ours"], rows)
        print()


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("table", choices=["expressions", "startup"])
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("--rounds", type=int, default=7)
    options = parser.parse_args()
    try:
        {"expressions": compare_expressions,
         "startup": compare_starts}[options.table](options.build, options.rounds)
    except Failure as failure:
        sys.exit(f"{pathlib.Path(__file__).name}: {failure}")


if __name__ == "__main__":
    main()
