#!/usr/bin/env python3
"""The command over core dumps of real processes: real_cores.py RESOLVE PROGRAM...

Each program is stopped by gdb, which writes a dump, and then crashes, where the kernel writes one.
What the machine does not allow is said and left out. Exit status 77 when there was nothing left.
"""
import pathlib
import resource
import subprocess
import sys
import tempfile

SECONDS = 120
SKIPPED = 77

# Expressions and their values.
VALUES = [
    ("changed", "-5"),
    ("initialized[2]", "12"),
    ("untouched[7000]", "0"),
    ("constants[1]", "22"),
    ("ratio", "2.5"),
    ("head->value", "10"),
    ("head->next->next->value", "30"),
    ("head->next->next->next", "0"),
    ("*on_stack", "4711"),
    ("*(text+5)", "116"),
    ("library_count", "77"),
    ("hidden", "42"),
    ("library_state->level", "2"),
    ("library_state->next->level", "3"),
    ("library_state->tag[0]", "111"),
    ("last.level", "3"),
]
# What gdb is asked as well: equal addresses mean that everything was placed alike.
ADDRESSES = ["head", "on_stack", "library_state", "library_state->next", "function", "text"]


def run(*command, **more):
    return subprocess.run(command, capture_output=True, text=True, timeout=SECONDS,
                          stdin=subprocess.DEVNULL, **more)


def gdb(*commands):
    """What gdb writes for these commands and file names."""
    try:
        return run("gdb", "-nx", "-q", "-batch", "-iex", "set debuginfod enabled off", *commands)
    except (OSError, subprocess.TimeoutExpired) as error:
        print(f"SKIPPED: gdb: {error}")
        return None


def dump_of_gdb(program, folder):
    """A dump of `program` stopped, or nothing."""
    path = folder / "by-gdb"
    done = gdb("-ex", "break stop_here", "-ex", "run", "-ex", f"generate-core-file {path}",
               "-ex", "kill", program)
    if path.exists():
        return path
    if done:
        print(f"SKIPPED: gdb wrote no dump of {program}: {done.stdout[-300:]}{done.stderr[-300:]}")
    return None


def dump_of_kernel(program, folder):
    """A dump of `program` crashed, or nothing."""
    pattern = pathlib.Path("/proc/sys/kernel/core_pattern").read_text().strip()
    if pattern.startswith("|") or "/" in pattern:
        print(f"SKIPPED: the kernel sends its dumps elsewhere: {pattern}")
        return None

    def allow():
        resource.setrlimit(resource.RLIMIT_CORE, (resource.RLIM_INFINITY, resource.RLIM_INFINITY))

    crash = folder / "crash"
    crash.mkdir()
    try:
        run(program, cwd=crash, preexec_fn=allow)
    except (OSError, subprocess.SubprocessError) as error:
        print(f"SKIPPED: {program} could not be run: {error}")
    dumps = list(crash.iterdir())
    if dumps and dumps[0].stat().st_size > 0:
        return dumps[0]
    print(f"SKIPPED: the kernel wrote no dump of {program}")
    return None


def answers(*arguments):
    command, *rest = arguments
    done = run(command, "--plain", *rest)
    return done.stdout.splitlines(), done.stderr


def check(resolve, program, dump):
    """What is wrong, line by line."""
    expressions = [expression for expression, _ in VALUES]
    expected = [value for _, value in VALUES]
    for words in ([program, *expressions], expressions):
        got, said = answers(resolve, "--core", dump, *words)
        if said:
            yield f"on standard error: {said}"
        for expression, value, actual in zip(expressions, expected, got):
            if value != actual:
                yield f"{expression} is {actual}, not {value}"
        if len(got) != len(expected):
            yield f"{len(got)} answers to {len(expected)} expressions"
    asked = [part for name in ADDRESSES for part in ("-ex", f"printf \"%lu\\n\", (unsigned long){name}")]
    done = gdb(*asked, program, dump)
    numbers = [line for line in done.stdout.splitlines() if line.isdigit()] if done else []
    if len(numbers) != len(ADDRESSES):
        print(f"SKIPPED: gdb does not say where things are in {dump}")
        return
    got, _ = answers(resolve, "--core", dump, program, *ADDRESSES)
    for name, number, actual in zip(ADDRESSES, numbers, got):
        if number != actual:
            yield f"{name} is {actual}; to gdb it is {number}"


def main():
    resolve, *programs = sys.argv[1:]
    checked = 0
    failures = 0
    for program in programs:
        for make in (dump_of_gdb, dump_of_kernel):
            with tempfile.TemporaryDirectory() as folder:
                dump = make(program, pathlib.Path(folder))
                if not dump:
                    continue
                checked += 1
                for wrong in check(resolve, program, str(dump)):
                    failures += 1
                    print(f"{pathlib.Path(program).name}, {make.__name__}: {wrong}")
    print(f"{checked} dumps, {failures} failures")
    sys.exit(1 if failures else 0 if checked else SKIPPED)


main()
