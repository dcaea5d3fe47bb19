#!/usr/bin/env python3
"""Gives check.py counts that were made up; it must complain of those that have grown, no others."""

import sys

import check

# What is compared, committed and seen figures, and how the complaint begins; "" for none.
FIGURES = [
    ("same", {("fresh", "x"): (1000, 10)}, {("fresh", "x"): (1000, 10)}, ""),
    ("a tenth more", {("fresh", "x"): (1000, 10)}, {("fresh", "x"): (1100, 11)}, ""),
    ("less", {("fresh", "x"): (1000, 10)}, {("fresh", "x"): (500, 0)}, ""),
    ("instructions", {("fresh", "x"): (1000, 10)}, {("fresh", "x"): (1101, 10)},
     "x (fresh resolver): 1101 instructions, committed are 1000"),
    ("allocations", {("kept", "x+1"): (1000, 10)}, {("kept", "x+1"): (1000, 12)},
     "x+1 (kept resolver): 12 allocations, committed are 10"),
    ("first allocation", {("kept", "x"): (1000, 0)}, {("kept", "x"): (1000, 0.05)},
     "x (kept resolver): 0.05 allocations, committed are 0"),
    ("lost row", {("kept", "x"): (1, 0), ("kept", "y"): (1, 0)}, {("kept", "x"): (1, 0)},
     "y (kept resolver): only in the committed figures"),
    ("new row", {("kept", "x"): (1, 0)}, {("kept", "x"): (1, 0), ("kept", "y"): (1, 0)},
     "y (kept resolver): only in the program"),
]

GROWTH = [
    ("tenfold", [(100, "1000 sum"), (1000, "10000 sum")], ""),
    ("twelvefold", [(100, "1000 sum"), (1200, "10000 sum")], ""),
    ("more", [(100, "1000 sum"), (1201, "10000 sum")], "sum: 100 instructions for 1000"),
    ("second shape", [(1, "1 a"), (1, "10 a"), (1, "1 b"), (100, "10 b")], "b: 1 instructions"),
]

PROFILE = """part: 1
desc: Trigger: Client Request: 20 60 fresh a [1]
fn=(1)
+3 7
summary: 123
totals: 123
part: 2
desc: Trigger: Client Request: 1000 sum
summary: 45
totals: 45
part: 3
desc: Trigger: Program termination
summary: 6
totals: 6
"""


def main():
    failures = []

    def expect(name, seen, expected):
        if seen != expected:
            failures.append(f"{name}: {seen!r}, expected {expected!r}")

    def expect_complaint(name, complaints, beginning):
        if len(complaints) != bool(beginning) or not "".join(complaints).startswith(beginning):
            failures.append(f"{name}: {complaints!r}, expected {beginning!r}")

    for name, committed, seen, beginning in FIGURES:
        expect_complaint(name, check.compare_figures(seen, committed), beginning)
        expect(name + " written", check.read_figures(check.write_figures("a b 1", seen)),
               ("a b 1", seen))
    for name, counted, beginning in GROWTH:
        expect_complaint(name, check.compare_growth(counted), beginning)
    expect("profile", check.measurements(PROFILE), [(123, "20 60 fresh a [1]"), (45, "1000 sum")])
    expect("figures", check.measure_figures([(2000, "20 60 fresh a [1]")]),
           {("fresh", "a [1]"): (100, 3)})
    if failures:
        sys.exit("\n".join(failures))


if __name__ == "__main__":
    main()
