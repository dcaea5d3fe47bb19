#!/usr/bin/env python3
"""Standard input, and standard streams that do not do what they should."""
import os
import signal
import subprocess

from command import Row, pattern, run_table

LONGEST = 1024 * 1024


def lines(text, **more):
    return Row(["@", "-"], stdin=text, **more)


ROWS = [
    lines(b"x\nn\n", stdout="42\n-7\n"),
    lines(b"x\nn", stdout="42\n-7\n"),
    lines(b""),
    lines(b"\n\n  \n\t\n\r\n"),
    lines(b"x\r\n\r\nn\r\n", stdout="42\n-7\n"),
    lines(b"-x + 50\n", stdout="8\n"),
    lines(b"x\nnowhere\nn\n", stdout="42\n-7\n",
          stderr="resolve: nowhere: Undefined label nowhere\n", status=1),
    lines(b"x\0y\nn\n", stdout="-7\n", status=1,
          stderr="resolve: x\\x00y: an expression cannot hold the control character \\x00\n"),
    Row(["--exact", "@", "-"], stdin=b"x\0y\nn\n", stdout="-7\n", status=1,
        stderr="resolve: x\\x00y: an expression cannot hold the control character \\x00\n"),
    lines(b"\xff\xfe\nx\n", stdout="42\n", status=1,
          stderr="resolve: \\xff\\xfe: Undefined label \\xff\\xfe\n"),
    lines("h\u00f6he\n".encode(), status=1,
          stderr="resolve: h\u00f6he: Undefined label h\u00f6he\n"),
    # the longest expression, and longer ones
    lines(b"x".rjust(LONGEST) + b"\nx\n", stdout="42\n42\n"),
    lines(b" " * LONGEST + b"x\nx\n", stdout="42\n", status=1,
          stderr=f"resolve: {' ' * 250} ...({LONGEST + 1 - 500} bytes)... {' ' * 249}x: "
                 f"the expression is longer than {LONGEST} bytes\n"),
    lines(b"y" * 3_000_000 + b"\nx\n", stdout="42\n", status=1,
          stderr=f"resolve: {'y' * 250} ...({LONGEST + 1 - 500} bytes)... {'y' * 250}: "
                 f"the expression is longer than {LONGEST} bytes\n"),
    lines(b"(" * LONGEST + b"\n", status=1,
          stderr=f"resolve: {'(' * 250} ...({LONGEST - 500} bytes)... {'(' * 250}: "
                 "Can`t find the end quote.\n"),
    # long ones that are read to the end
    lines(b"+1" * (LONGEST // 2) + b"\n", stdout=f"{LONGEST // 2}\n"),
    lines(b"(" * (LONGEST // 2 - 1) + b"x" + b")" * (LONGEST // 2 - 1) + b"\n", stdout="42\n"),
    lines(bytes(range(1, 256)) + b"\nx\n", stdout="42\n", status=1, stderr=pattern(
        "resolve: <rest>: an expression cannot hold the control character \\x01\nresolve: <rest>\n")),
    # "-" reads only when it is alone
    Row(["@", "-", "x"], stdin=b"n\n", stdout="42\n", status=1,
        stderr="resolve: -: Missing an address in the string\n"),
]



def verdict(done, stderr, status, stdout=b""):
    got = (done.stdout or b"", done.stderr, done.returncode)
    wanted = (stdout, stderr, status)
    return "" if got == wanted else f"got {got}, not {wanted}"


def with_descriptor(path, flags, run):
    """What `run` returns for an open file."""
    descriptor = os.open(path, flags)
    try:
        return run(descriptor)
    finally:
        os.close(descriptor)


def full_disk(resolve, program):
    """Answers to a full disk end the command."""
    done = with_descriptor("/dev/full", os.O_WRONLY, lambda full: subprocess.run(
        [resolve, program, "x", "nowhere"], stdout=full, stderr=subprocess.PIPE))
    return verdict(done, b"resolve: cannot write to standard output: No space left on device\n", 2)


def full_disk_for_listing(resolve, program):
    """So do listings."""
    done = with_descriptor("/dev/full", os.O_WRONLY, lambda full: subprocess.run(
        [resolve, "--labels", program], stdout=full, stderr=subprocess.PIPE))
    return verdict(done, b"resolve: cannot write to standard output: No space left on device\n", 2)


def full_disk_for_help(resolve, program):
    """So does the help."""
    done = with_descriptor("/dev/full", os.O_WRONLY, lambda full: subprocess.run(
        [resolve, "--help"], stdout=full, stderr=subprocess.PIPE))
    return verdict(done, b"resolve: cannot write to standard output: No space left on device\n", 2)


def reader_went_away(resolve, program):
    """A pipe that nobody reads ends the command."""
    reading, writing = os.pipe()
    os.close(reading)
    try:
        done = subprocess.run([resolve, program, "x", "nowhere"], stdout=writing,
                              stderr=subprocess.PIPE)
    finally:
        os.close(writing)
    return verdict(done, b"resolve: cannot write to standard output: Broken pipe\n", 2)


def closed(descriptor):
    return lambda: os.close(descriptor)


def closed_output(resolve, program):
    """A closed standard output is not the program's file."""
    done = subprocess.run([resolve, program, "x"], stderr=subprocess.PIPE, preexec_fn=closed(1))
    return verdict(done, b"resolve: cannot write to standard output: Bad file descriptor\n", 2)


def closed_input(resolve, program):
    """Nor is a closed standard input."""
    done = subprocess.run([resolve, program, "-"], capture_output=True, preexec_fn=closed(0))
    return verdict(done, b"resolve: cannot read standard input: Bad file descriptor\n", 2)


def closed_errors(resolve, program):
    """Nobody hears the errors, but the answers and the status stay."""
    done = subprocess.run([resolve, program, "nowhere", "x"], stdout=subprocess.PIPE,
                          preexec_fn=closed(2))
    return verdict(done, None, 1, stdout=b"42\n")


def interrupted(resolve, program):
    """Ctrl-C ends the command at once; what was answered before is whole."""
    # A test that runs in the background inherits the order to ignore the signal.
    heed = lambda: signal.signal(signal.SIGINT, signal.SIG_DFL)
    with subprocess.Popen([resolve, program, "-"], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE, bufsize=0, preexec_fn=heed) as session:
        session.stdin.write(b"x\nn")
        answer = session.stdout.readline()
        session.send_signal(signal.SIGINT)
        rest = (session.stdout.read(), session.stderr.read(), session.wait())
    expected = (b"", b"", -signal.SIGINT)
    return "" if (answer, rest) == (b"42\n", expected) else f"got {answer}, then {rest}"


def folder_as_input(resolve, program):
    """A folder is no list of expressions."""
    done = with_descriptor("/", os.O_RDONLY, lambda folder: subprocess.run(
        [resolve, program, "-"], stdin=folder, capture_output=True))
    return verdict(done, b"resolve: cannot read standard input: Is a directory\n", 2)


def answers_at_once(resolve, program):
    """Every line has its answer before the next one is asked."""
    with subprocess.Popen([resolve, program, "-"], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                          bufsize=0) as session:
        for question, answer in ((b"x\n", b"42\n"), (b"n\n", b"-7\n")):
            session.stdin.write(question)
            got = session.stdout.readline()
            if got != answer:
                session.kill()
                return f"{question!r} was answered by {got!r}"
        session.stdin.close()
        return "" if session.wait() == 0 else f"status {session.returncode}"


run_table(ROWS, checks=(full_disk, full_disk_for_listing, full_disk_for_help, reader_went_away,
                        closed_output, closed_input, closed_errors, folder_as_input,
                        answers_at_once, interrupted))
