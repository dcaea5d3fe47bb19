#!/usr/bin/env python3
"""--watch over a process that changes when the test tells it to.

usage: watching.py RESOLVE PROGRAM COUNTING
"""
import contextlib
import pathlib
import re
import signal
import subprocess
import sys
import tempfile

from terminal import PATIENCE, SKIPPED, Mismatch, Terminal, check

INTERVAL = "0.05"


class Counting:
    """A process that holds `count` and `steady`."""

    def __init__(self, program):
        self.process = subprocess.Popen([program], stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        self.count = 0

    def step(self):
        """Has it count on, and waits until it has."""
        self.count += 1
        self.process.stdin.write(b"\n")
        self.process.stdin.flush()
        check(self.process.stdout.readline().decode(), f"{self.count}\n", "the process")

    def end(self):
        self.process.stdin.close()
        self.process.wait(timeout=PATIENCE)

    @property
    def number(self):
        return str(self.process.pid)


@contextlib.contextmanager
def counting(program):
    process = Counting(program)
    try:
        process.step()
        yield process
    finally:
        process.process.kill()
        process.process.wait()
        process.process.stdout.close()


class Piped:
    """The command with its output in a pipe."""

    def __init__(self, command):
        self.process = subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE)

    def line(self):
        return self.process.stdout.readline().decode()

    def end(self, number=None):
        if number is not None:
            self.process.send_signal(number)
        rest, errors = self.process.communicate(timeout=PATIENCE)
        return self.process.returncode, rest.decode(), errors.decode()

    def close(self):
        if self.process.poll() is None:
            self.process.kill()
            self.process.communicate()


def line_of(text):
    return re.compile(r" *[0-9]+\.[0-9]{3}  " + re.escape(text) + "\n")


def lines(resolve, program, folder):
    """Into a pipe goes a line for each change, and Ctrl-C is no failure."""
    with counting(program) as process:
        watch = Piped([resolve, "--pid", process.number, "--watch", INTERVAL, "count", "steady",
                       "nowhere"])
        with contextlib.closing(watch):
            check(watch.line(), line_of("count = 1"), "the first round")
            check(watch.line(), line_of("steady = 7"), "the first round")
            check(watch.line(), line_of("nowhere: Undefined label nowhere"), "the first round")
            for _ in range(3):
                process.step()
                check(watch.line(), line_of(f"count = {process.count}"), "a change")
            check(str(watch.end(signal.SIGINT)), str((0, "", "")), "the end")


def target_ends(resolve, program, folder):
    """A process that ends takes the watch with it."""
    with counting(program) as process:
        watch = Piped([resolve, "--pid", process.number, "--watch", INTERVAL, "count"])
        with contextlib.closing(watch):
            check(watch.line(), line_of("count = 1"), "the first round")
            process.end()
            status, rest, errors = watch.end()
            check(str((status, rest)), str((2, "")), "the end")
            check(errors, re.compile(f"resolve: .*{process.number}.*\n"), "the message")


def reader_ends(resolve, program, folder):
    """So does a reader that goes away."""
    with counting(program) as process:
        watch = Piped([resolve, "--pid", process.number, "--watch", INTERVAL, "count"])
        with contextlib.closing(watch):
            check(watch.line(), line_of("count = 1"), "the first round")
            watch.process.stdout.close()
            process.step()
            watch.process.wait(timeout=PATIENCE)
            check(str(watch.process.returncode), "2", "the status")
            errors = watch.process.stderr.read().decode()
            check(errors, "resolve: cannot write to standard output: Broken pipe\n", "the message")
            watch.process.stderr.close()


def in_place(resolve, program, folder):
    """On a terminal the values stand in place, and what changed is marked."""
    with counting(program) as process:
        terminal = Terminal([resolve, "--pid", process.number, "--watch", INTERVAL, "steady",
                             "count"], folder)
        with contextlib.closing(terminal):
            terminal.expect("  steady = 7\n  count = 1\n")
            for _ in range(3):
                process.step()
                terminal.expect(f"  steady = 7\n* count = {process.count}\n")
                terminal.expect(f"  steady = 7\n  count = {process.count}\n")
            if b"\x1b[2A\r" not in terminal.raw or b"\x1b[1;33m* count" not in terminal.raw:
                raise Mismatch(f"nothing is drawn over: {terminal.raw!r}")
            terminal.type("\x03")
            check(str(terminal.wait()), "0", "the status after Ctrl-C")
            process.step()


def dumb_terminal(resolve, program, folder):
    """A terminal that cannot move its cursor gets lines."""
    with counting(program) as process:
        terminal = Terminal([resolve, "--pid", process.number, "--watch", INTERVAL, "count"],
                            folder, TERM="dumb")
        with contextlib.closing(terminal):
            terminal.expect(line_of("count = 1"))
            process.step()
            terminal.expect(line_of("count = 2"))
            if b"\x1b" in terminal.raw:
                raise Mismatch(f"it is steered: {terminal.raw!r}")


def prompt_over_a_process(resolve, program, folder):
    """The prompt reads a process anew for each line, and outlives it."""
    with counting(program) as process:
        terminal = Terminal([resolve, "--pid", process.number], folder)
        with contextlib.closing(terminal):
            terminal.expect("resolve> ")
            check(terminal.ask("count"), "1", "before")
            process.step()
            check(terminal.ask("$"), "2", "after: the object is read anew")
            process.end()
            check(terminal.ask("count"), re.compile("error: .*"), "when it is gone")
            check(terminal.ask("1 + 1"), re.compile(".+"), "and the prompt goes on")
            terminal.type("\x04")
            check(str(terminal.wait()), "0", "the status")


def file_target(resolve, program, folder):
    """A file does not change, so it is not watched."""
    done = subprocess.run([resolve, "--watch", "1", program, "count"], capture_output=True,
                          timeout=PATIENCE)
    check(str((done.returncode, done.stdout)), str((2, b"")), "the status")
    check(done.stderr.decode(), f"resolve: nothing changes in the initial memory of {program}: "
          "--watch is for targets that run; see resolve --help\n", "the message")


TESTS = [lines, target_ends, reader_ends, in_place, dumb_terminal, prompt_over_a_process,
         file_target]


def main():
    resolve, _, program = (str(pathlib.Path(path).resolve()) for path in sys.argv[1:4])
    with counting(program) as process:
        probe = subprocess.run([resolve, "--pid", process.number, "count"], capture_output=True,
                               timeout=PATIENCE)
    if probe.returncode != 0 and re.search(b"permi|allow|refuse", probe.stderr):
        print(f"SKIPPED: a process cannot be read here: {probe.stderr.decode()}")
        sys.exit(SKIPPED)
    failures = 0
    for test in TESTS:
        with tempfile.TemporaryDirectory() as folder:
            try:
                test(resolve, program, folder)
            except Mismatch as mismatch:
                failures += 1
                print(f"{test.__name__}: {test.__doc__}\n  {mismatch}")
            except OSError as error:
                if test not in (in_place, dumb_terminal, prompt_over_a_process):
                    raise
                print(f"SKIPPED {test.__name__}: no pseudo-terminal: {error}")
    print(f"{len(TESTS) - failures} passed, {failures} failed")
    sys.exit(1 if failures else 0)


if __name__ == "__main__":
    main()
