#!/usr/bin/env python3
"""Asks `resolve` and gdb about every example of the table of differences from C, and about
expressions that a C programmer would try.

usage: differences.py RESOLVE PRINT_DIFFERENCES PROGRAM

Wherever the two answers differ, a note must say so, and what it says to write must give C's answer
in the resolver. Where they agree there must be no note.
"""
import json
import re
import subprocess
import sys

from compare_with_gdb import ask_gdb, same_number

# What comes to a C programmer's mind. No answers stand here: gdb gives them.
TRIED = [
    "a[2]", "a[i+6]", "p[1]", "*p", "*(p+1)", "p-q", "q-p", "-a[1]", "a[0]+a[1]", "-a[1]*2",
    "pairs[1].x", "pp->y", "(pp+1)->y", "pairptrs[1]->x", "(*pairptrs[0]).x", "*ptrs[2]", "**ptrs",
    "n+1", "n*n", "n/2", "n%3", "-n", "~n", "!n", "n<0", "n<i", "n>-10", "u-n", "uc*2", "uc+uc",
    "c==-1", "(int)c", "(unsigned char)c", "(long)n", "(char)(u+300)", "depth/1000", "n<<2",
    "f*2", "f>1", "(float)n", "(int)f", "(int)-d", "d/2", "curve[1]*2", "-curve[1]", "f==d-0.75",
    "flags.level", "flags.level+1", "flags.bias", "flags.bias*2", "holder.halves[1]",
    "-holder.halves[1]", "word[0]=='l'", "text[2]", "*text", "*word", "word[3]-'a'",
    "sizeof(a)", "sizeof(word)", "sizeof(struct odd)", "sizeof(a)/sizeof(a[0])", "m[1][2]",
    "*m[1]", "grid[3][1]", "n&&p", "none&&*none", "none==0||*none", "p==&a[1]", "a+1==p", "1+p==p+1",
    "&a[1]==p", "(n+1)*(n-1)", "(n+1)/2", "u>n", "top+1", "top>n", "j>one>zero", "one+j<<1",
    "po->letters[1]", "(po+1)->tag", "((struct pair*)pp)->y", "*&n", "j?n:i", "i,j", "low>tiny",
    "port*port>0", "n>>1", "depth>>2", "'a'+1", "0x10+010", "1e3", ".5+f",
]


def ask_resolve(resolve, program, expression, *options):
    run = subprocess.run([resolve, "--json", "--plain", *options, program, expression],
                         capture_output=True, text=True, timeout=300)
    return json.loads(run.stdout)


def text_of(answer):
    return answer["text"] if answer["status"] == "resolved" else answer["message"]


class Check:
    def __init__(self, resolve, program):
        self.resolve = resolve
        self.program = program
        self.failures = 0
        self.noted = 0
        self.is_64_bit = True

    def fail(self, expression, sentence):
        self.failures += 1
        print(f"{expression}: {sentence}")

    def ask(self, expression, *options):
        return ask_resolve(self.resolve, self.program, expression, *options)

    def check_tried(self, expression, inC):
        """The answer is C's, or a note says how to get C's."""
        ours = self.ask(expression)
        agrees = ours["status"] == "resolved" and same_number(ours["text"], inC)
        if agrees:
            if ours["notes"]:
                self.fail(expression, f"the answer is C's, but there are notes: {ours['notes']}")
            return
        self.noted += 1
        if not ours["notes"]:
            self.fail(expression, f"gdb says {inC}, resolve {text_of(ours)!r}, and nothing is noted")
            return
        advice = re.search("write `(.*)`$", ours["notes"][-1]["text"])
        if advice:
            better = self.ask(advice.group(1))
            if not same_number(text_of(better), inC):
                self.fail(expression, f"the note says to write {advice.group(1)!r}, which gives "
                          f"{text_of(better)!r}; gdb says {inC}")
        elif inC["kind"] != "error":
            self.fail(expression, f"no text is offered for {inC}: {ours['notes']}")

    def check_example(self, row, example, inC):
        """The table says what C answers, what the resolver answers, and how to get the first."""
        expression = example["expression"]
        ours = self.ask(expression)
        written = example["inC"]
        if not written.startswith("(") and not same_number(written, inC):
            self.fail(expression, f"the table says that C gives {written}, gdb {inC}")
        if ours["status"] == "resolved" and same_number(ours["text"], inC):
            # So on this target; the others show it.
            if ours["notes"]:
                self.fail(expression, f"the answer is C's, but there are notes: {ours['notes']}")
            return False
        pattern = re.escape(example["here"])
        for placeholder, stands_for in (("<address>", "0x[0-9a-f]+"), ("<number>", "-?[0-9]+"),
                                        ("<rest>", ".*")):
            pattern = pattern.replace(placeholder, stands_for)
        if not re.fullmatch(pattern, text_of(ours)) and self.is_64_bit:
            self.fail(expression, f"the resolver says {text_of(ours)!r}, not {example['here']!r}")
        if row["name"] not in [note["name"] for note in ours["notes"]]:
            self.fail(expression, f"no note {row['name']}: {ours['notes']}")
        if example["write"] and written != "(writes)" and inC["kind"] != "error":
            better = self.ask(example["write"], "--no-notes")
            if not same_number(text_of(better), inC):
                self.fail(expression, f"{example['write']} gives {text_of(better)!r}, C {inC}")
        return True

    def run(self, table):
        with open(self.program, "rb") as file:
            self.is_64_bit = file.read(5)[4] == 2
        examples = [(row, example) for row in table for example in row["examples"]]
        asked = [example["expression"] for _, example in examples]
        gdb = ask_gdb(self.program, asked + TRIED)
        shown = set()
        for row, example in examples:
            if self.check_example(row, example, gdb[example["expression"]]):
                shown.add(row["name"])
        for expression in TRIED:
            self.check_tried(expression, gdb[expression])
        # Positions are low in programs that are loaded at another place than their file says.
        allowed = {"cut-row", "right-shift", "pointer-subscript"}
        missing = {row["name"] for row in table} - shown - allowed
        if missing:
            self.fail("the table", f"not shown: {sorted(missing)}")
        if self.noted < 10:
            self.fail("the list", f"only {self.noted} expressions meet a difference")
        print(f"{len(examples)} examples, {len(TRIED)} expressions of which {self.noted} meet a "
              f"difference; {self.failures} failures")
        return 1 if self.failures else 0


def main():
    resolve, printer, program = sys.argv[1:]
    table = json.loads(subprocess.run([printer, "json"], capture_output=True, check=True,
                                      timeout=300).stdout)
    return Check(resolve, program).run(table)


if __name__ == "__main__":
    sys.exit(main())
