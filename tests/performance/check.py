#!/usr/bin/env python3
"""Counts instructions and heap allocations of resolutions, and fails when they have grown.

usage: check.py figures|growth --guard GUARD --scratch FOLDER [--valgrind VALGRIND]
                [--figures FILE] [--write]

figures  compares each expression of guard.cpp with the committed FILE; --write rewrites it instead
growth   compares each shape of guard.cpp at one length with the same at ten times that length

Instructions are counted by valgrind's callgrind, so neither the machine's speed nor what else runs
on it matters. Exit status 1 when something has grown, 77 when the committed figures say nothing
about this machine.
"""

import argparse
import os
import pathlib
import re
import subprocess
import sys

SKIPPED = 77
# How much more than committed passes.
FIGURES_MAY_GROW = 1.1
# Work that is in proportion to the text takes 10 times the instructions for 10 times the text.
GROWTH_OF_TENFOLD = 12

HEADER = """\
# Instructions and heap allocations of one resolution: what tests/performance/check.py allows a tenth
# more of. Written by scripts/refresh-figures; commit it with the change that explains the difference.
# Counted on, and valid for: architecture, compiler, its major version.
{about}
# Instructions, allocations, resolver (fresh for each resolution or kept), expression.
"""

# The C library chooses its string functions by what the processor has, and valgrind shows it the
# real one. Without these the choice is the same everywhere.
SAME_STRING_FUNCTIONS = {
    "GLIBC_TUNABLES":
        "glibc.cpu.hwcaps=-AVX2,-AVX512VL,-AVX_Fast_Unaligned_Load,-ERMS,-SSSE3"}


def count(options):
    """Runs the guard's part of the task: [(instructions, title)] of its measurements."""
    options.scratch.mkdir(parents=True, exist_ok=True)
    profile = options.scratch / f"callgrind.{options.task}"
    profile.unlink(missing_ok=True)
    command = [options.valgrind, "--tool=callgrind", "--combine-dumps=yes",
               f"--callgrind-out-file={profile}", options.guard, options.task]
    done = subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, text=True,
                          env=dict(os.environ, **SAME_STRING_FUNCTIONS), check=False)
    if done.returncode != 0:
        sys.exit(f"exit status {done.returncode} of {' '.join(command)}\n{done.stderr}")
    counted = measurements(profile.read_text())
    if not counted:
        sys.exit(f"nothing was counted: {' '.join(command)}\n{done.stderr}")
    return counted


def measurements(profile):
    """What the dumps of a profile say that the program asked for: [(instructions, title)]."""
    found = []
    for dump in re.split(r"^part: ", profile, flags=re.MULTILINE)[1:]:
        title = re.search(r"^desc: Trigger: Client Request: (.*)$", dump, re.MULTILINE)
        if title:
            found.append((int(re.search(r"^summary: (\d+)", dump, re.MULTILINE)[1]), title[1]))
    return found


def measure_figures(counted):
    """{(resolver, expression): (instructions, allocations)}, of one resolution."""
    figures = {}
    for instructions, title in counted:
        times, allocations, resolver, expression = title.split(" ", 3)
        figures[resolver, expression] = (round(instructions / int(times)),
                                         round(int(allocations) / int(times), 2))
    return figures


def read_figures(text):
    """What the figures were counted on, and the figures as of `measure_figures`."""
    about, *rows = [line for line in text.splitlines() if line and not line.startswith("#")]
    figures = {}
    for row in rows:
        instructions, allocations, resolver, expression = row.split(None, 3)
        figures[resolver, expression] = (int(instructions), float(allocations))
    return about, figures


def write_figures(about, figures):
    rows = [f"{instructions:>9} {allocations:>7g}  {resolver:<5}  {expression}\n"
            for (resolver, expression), (instructions, allocations) in figures.items()]
    return HEADER.format(about=about) + "".join(rows)


def compare_figures(seen, committed):
    """One complaint for each figure that has grown, or stands on one side only."""
    complaints = []
    for key in list(committed) + [key for key in seen if key not in committed]:
        name = f"{key[1]} ({key[0]} resolver)"
        if key not in seen or key not in committed:
            where = "committed figures" if key in committed else "program"
            complaints.append(f"{name}: only in the {where}")
            continue
        for what, now, then in zip(("instructions", "allocations"), seen[key], committed[key]):
            if now > then * FIGURES_MAY_GROW:
                complaints.append(f"{name}: {now:g} {what}, committed are {then:g}")
    return complaints


def compare_growth(counted):
    """One complaint for each shape that ten times the text takes much more than ten times for."""
    complaints = []
    for (short, title), (long, longer_title) in zip(counted[::2], counted[1::2]):
        repetitions, shape = title.split(" ")
        assert longer_title == f"{repetitions}0 {shape}"
        if long > short * GROWTH_OF_TENFOLD:
            complaints.append(f"{shape}: {short} instructions for {repetitions} repetitions, {long} "
                              f"for {repetitions}0, {long / short:.1f} times as many")
    return complaints


def skip(reason):
    print(f"NOT CHECKED: {reason}")
    sys.exit(SKIPPED)


def check_figures(options, about):
    committed_about, committed = read_figures(options.figures.read_text())
    if about != committed_about:
        skip(f"the figures of {options.figures.name} were counted on {committed_about}; this is "
             f"{about}. Instructions cannot be compared.")
    seen = measure_figures(count(options))
    print(write_figures(about, seen))
    complaints = compare_figures(seen, committed)
    if complaints:
        complaints.append("If this is meant: scripts/refresh-figures, and commit the new figures.")
    return complaints


def check_growth(options):
    counted = count(options)
    for instructions, title in counted:
        print(f"{instructions:>11}  {title}")
    return compare_growth(counted)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("task", choices=("figures", "growth"))
    parser.add_argument("--guard", required=True)
    parser.add_argument("--scratch", type=pathlib.Path, required=True)
    parser.add_argument("--valgrind", default="valgrind")
    parser.add_argument("--figures", type=pathlib.Path,
                        default=pathlib.Path(__file__).with_name("figures.txt"))
    parser.add_argument("--write", action="store_true")
    options = parser.parse_args()

    if options.task == "growth":
        complaints = check_growth(options)
    else:
        about = subprocess.run([options.guard, "about"], stdin=subprocess.DEVNULL, text=True,
                               stdout=subprocess.PIPE, check=True).stdout.strip()
        if options.write:
            figures = write_figures(about, measure_figures(count(options)))
            options.figures.write_text(figures)
            return
        complaints = check_figures(options, about)
    if complaints:
        sys.exit("\n".join(complaints))


if __name__ == "__main__":
    main()
