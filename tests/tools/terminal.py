#!/usr/bin/env python3
"""The prompt, typed at on a terminal of the test's own.

usage: terminal.py RESOLVE PROGRAM DOCUMENT [TEST...]

DOCUMENT holds sessions over the program, in fenced blocks that begin with ```prompt.

Nothing here waits for time to pass: every step waits for what the command writes.
"""
import contextlib
import errno
import os
import pathlib
import re
import select
import shutil
import signal
import subprocess
import sys
import tempfile
import termios
import time

SKIPPED = 77
# Against hanging only; a loaded machine may take its time.
PATIENCE = 120

PROMPT = "resolve> "
TAB = "\t"
CTRL_C = "\x03"
CTRL_D = "\x04"
UP = "\x1b[A"
CONTROL_SEQUENCE = re.compile(r"\x1b\[[0-9;?]*[A-Za-z]|\x1b[=>]|[\x07\x00]|\r")
# What may go on with the next bytes: the text before it stays as it is.
BEGUN = re.compile(rb"(\r|\x1b(\[[0-9;?]*)?|[\xc0-\xff][\x80-\xbf]*)\Z")


class Mismatch(Exception):
    pass


class Terminal:
    """The command on a terminal. `screen` is what it wrote, without steering of the cursor."""

    def __init__(self, command, folder, **environment):
        self.master, slave = os.openpty()
        self.settings = termios.tcgetattr(slave)
        self.raw = b""
        self.seen = 0
        self.ended = False
        variables = {name: value for name, value in os.environ.items()
                     if name not in ("NO_COLOR", "XDG_STATE_HOME")}
        variables.update(TERM="xterm", HOME=str(folder), LC_ALL="C.UTF-8",
                         XDG_STATE_HOME=str(pathlib.Path(folder) / "state"))
        variables.update(environment)
        variables = {name: value for name, value in variables.items() if value is not None}

        def take_terminal():
            os.setsid()
            # A test that runs in the background may have inherited that they are ignored.
            for number in (signal.SIGINT, signal.SIGHUP, signal.SIGQUIT, signal.SIGTERM):
                signal.signal(number, signal.SIG_DFL)
            os.close(os.open(os.ttyname(0), os.O_RDWR))

        self.process = subprocess.Popen(command, stdin=slave, stdout=slave, stderr=slave,
                                        cwd=folder, env=variables, preexec_fn=take_terminal)
        os.close(slave)

    @property
    def screen(self):
        text = BEGUN.sub(b"", self.raw).decode(errors="replace")
        return CONTROL_SEQUENCE.sub("", text)

    def read(self):
        """Takes what was written; False at the end."""
        readable, _, _ = select.select([self.master], [], [], 1)
        if not readable:
            return True
        try:
            part = os.read(self.master, 65536)
        except OSError as error:
            if error.errno != errno.EIO:
                raise
            part = b""
        self.raw += part
        self.ended = not part
        return bool(part)

    def expect(self, text):
        """Waits for `text`, a string or a compiled expression, behind what was expected before."""
        wanted = text if isinstance(text, re.Pattern) else re.compile(re.escape(text))
        limit = time.monotonic() + PATIENCE
        while True:
            found = wanted.search(self.screen, self.seen)
            if found:
                before = self.screen[self.seen:found.start()]
                self.seen = found.end()
                return before
            if self.ended or time.monotonic() > limit:
                raise Mismatch(f"expected {wanted.pattern!r}, but there is only "
                               f"{self.screen[self.seen:]!r}")
            self.read()

    def type(self, text):
        data = text.encode()
        while data:
            # A terminal takes only so much before it is read.
            _, writable, _ = select.select([], [self.master], [], 0.2)
            if writable:
                data = data[os.write(self.master, data[:256]):]
            readable, _, _ = select.select([self.master], [], [], 0)
            if readable:
                self.read()

    def ask(self, line):
        """Types a line, and returns what comes between it and the next prompt."""
        self.type(line + "\r")
        self.expect("\n")
        return self.expect(PROMPT).rstrip("\n")

    def wait(self):
        """The exit status, once everything is read."""
        limit = time.monotonic() + PATIENCE
        while not self.ended and time.monotonic() < limit:
            self.read()
        return self.process.wait(timeout=PATIENCE)

    def close(self):
        if self.process.poll() is None:
            self.process.kill()
        self.process.wait()
        os.close(self.master)


def check(actual, expected, what):
    if isinstance(expected, re.Pattern):
        agrees = expected.fullmatch(actual) is not None
    else:
        agrees = actual == expected
    if not agrees:
        raise Mismatch(f"{what}: {actual!r}, expected {expected!r}")


class Session:
    """What the tests share."""

    def __init__(self, resolve, program, folder):
        self.resolve = resolve
        self.program = program
        self.folder = folder

    @contextlib.contextmanager
    def terminal(self, *arguments, **environment):
        terminal = Terminal([self.resolve, *arguments, self.program], self.folder, **environment)
        try:
            yield terminal
        finally:
            terminal.close()

    @contextlib.contextmanager
    def prompt(self, *arguments, **environment):
        with self.terminal(*arguments, **environment) as terminal:
            terminal.expect(PROMPT)
            yield terminal

    @property
    def history(self):
        return pathlib.Path(self.folder) / "state/resolve/history"


def expressions(session):
    """Expressions are evaluated, and failures end nothing."""
    with session.prompt() as terminal:
        check(terminal.ask("head->next->v"), "22", "an expression")
        check(terminal.ask("nowhere"), "error: Undefined label nowhere", "a wrong expression")
        check(terminal.ask("a[3] + 2"), "42", "the next expression")
        check(terminal.ask("   "), "", "blanks")
        terminal.type(CTRL_D)
        check(str(terminal.wait()), "0", "the status after Ctrl-D")


def last_value(session):
    """`$` is the last value."""
    with session.prompt() as terminal:
        check(terminal.ask("$ + 1"), "error: there is no last value for `$` yet", "no value yet")
        for line, answer in (
                ("head", re.compile("0x[0-9a-f]+ <first>")),
                ("$->next", re.compile("0x[0-9a-f]+ <second>")),
                ("$->v", "22"),
                ("$ + 1", "23"),
                ("$ * $", "529"),
                ("nowhere", "error: Undefined label nowhere"),
                ("$", "529"),
                ("arr[1].x", "2"),
                ("&$ == &arr[1]", "1"),
                ("*head", re.compile("{next = .* v = 11}")),
                ("$.v", "11"),
                ("s", re.compile("{in = {x = 1, y = 2}, .*}")),
                ("$.in.y", "2"),
                ("a", "{10, 20, 30, 40, 50}"),
                ("$[3]", "40"),
                ("spot", "{x = 70, y = 7}"),
                ("$.x", "70"),
                ("nameless", "{left = -1, right = 1}"),
                ("$.left", "-1"),
                ("&arr[2]", re.compile("0x[0-9a-f]+ <arr[+]16>")),
                ("$->x", "3"),
                ("letter == '$'", "0")):
            check(terminal.ask(line), answer, line)


def formats(session):
    """A suffix or :format chooses how values are written."""
    with session.prompt("--format", "o") as terminal:
        for line, answer in (
                ("x", "052"),
                ("/d x", "42"),
                ("/x x", "0x2a"),
                ("/t", "0b101010"),
                ("/2d p", "{20, 30}"),
                (":format", "octal"),
                (":format x", "hexadecimal"),
                ("x + 1", "0x2b"),
                ("/3 arr[0].x", re.compile("{0x1, 0xffffffff, 0x2}|{0x1, .*}")),
                (":format natural", "natural"),
                ("x", "42"),
                (":format yes", re.compile("error: there is no format yes; there are x hexa.*")),
                ("/y x", re.compile("error: there is no format `/y`; there are x hexadecimal.*")),
                ("/0 x", re.compile("error: there is no format `/0`; .*"))):
            check(terminal.ask(line), answer, line)


def completion(session):
    """Tab completes labels, members, types and commands."""
    with session.prompt() as terminal:
        check(terminal.ask("inter" + TAB + " + 1"), "26", "a label")
        check(terminal.ask("head->ne" + TAB + "->v"), "22", "a member behind ->")
        check(terminal.ask("arr[1]." + "x" + TAB), "2", "a member behind .")
        check(terminal.ask("launch.ye" + TAB), "1889", "of a structure without a name")
        check(terminal.ask("sizeof(struct nod" + TAB + ")"), "16", "a type in sizeof")
        check(terminal.ask("(*(struct node*)head).ne" + TAB + "->v"), "22", "behind a cast")
        terminal.type("sized1" + TAB)
        listed = terminal.expect(PROMPT + "sized1")
        for name in ("sized1", "sized10", "sized19"):
            if name not in listed.split():
                raise Mismatch(f"{name} is not offered: {listed!r}")
        terminal.type("2.b\r")
        terminal.expect("\n")
        check(terminal.expect(PROMPT), "112 'p'\n", "what was chosen from the list")
        check(terminal.ask(":qu" + TAB + "x"), "error: there is no command :quitx; did you mean "
              ":quit?", "a command")
        terminal.type("sp" + TAB)
        terminal.expect(re.compile("span +spot\n" + PROMPT + "sp"))
        terminal.type("\x15x\r")
        terminal.expect("\n")
        check(terminal.expect(PROMPT), "42\n", "a line that was cleared")


def interrupted_line(session):
    """Ctrl-C drops the line, and nothing else."""
    with session.prompt() as terminal:
        terminal.type("head->")
        terminal.expect("head->")
        terminal.type(CTRL_C)
        terminal.expect(PROMPT)
        check(terminal.ask("x"), "42", "the next line")
        terminal.process.send_signal(signal.SIGINT)
        terminal.expect(PROMPT)
        check(terminal.ask("$"), "42", "the line after a signal")
    if session.history.read_text().splitlines()[-2:] != ["x", "$"]:
        raise Mismatch(f"the history is {session.history.read_text()!r}")


def pasted_lines(session):
    """Lines that arrive at once are all evaluated."""
    with session.prompt() as terminal:
        terminal.type("x\rn\ra[1]\r")
        for answer in ("42", "-7", "20"):
            terminal.expect(f"\n{answer}\n")
            terminal.expect(PROMPT)
        count = 300
        terminal.type("".join(f"{n} + 1000\r" for n in range(count)))
        for n in range(count):
            terminal.expect(f"\n{n + 1000}\n")
        terminal.expect(PROMPT)
        terminal.type("\x1b[200~x\n\tx + 1\x02\n1 + \x1b[201~1\r")
        for answer in ("42", "43", "2"):
            terminal.expect(f"\n{answer}\n")
            terminal.expect(PROMPT)


def history(session):
    """Lines are there again in the next session, for their user alone."""
    shutil.rmtree(session.history.parent, ignore_errors=True)
    with session.prompt() as terminal:
        terminal.ask("x + 8")
        terminal.ask(":file")
        terminal.type(CTRL_D)
        terminal.wait()
    check(session.history.read_text(), "x + 8\n:file\n", "the file")
    check(oct(session.history.stat().st_mode & 0o777), "0o600", "its mode")
    check(oct(session.history.parent.stat().st_mode & 0o777), "0o700", "its folder's mode")
    with session.prompt() as terminal:
        terminal.type(UP)
        terminal.expect(":file")
        terminal.type(UP)
        terminal.expect("x + 8")
        terminal.type("\r")
        terminal.expect("\n")
        check(terminal.expect(PROMPT), "50\n", "a line that was brought back")


def two_sessions(session):
    """Two sessions at once lose no line of each other."""
    shutil.rmtree(session.history.parent, ignore_errors=True)
    with session.prompt() as one, session.prompt() as other:
        for n in range(20):
            check(one.ask(f"{n} + 100"), str(n + 100), "one session")
            check(other.ask(f"{n} + 200"), str(n + 200), "the other")
    kept = session.history.read_text().splitlines()
    check(str(kept), str([f"{n} + {base}" for n in range(20) for base in (100, 200)]),
          "the history")


def no_history(session):
    """Without a folder for the history there is one note, and everything else works."""
    blocked = pathlib.Path(session.folder) / "blocked"
    blocked.write_text("a file\n")
    with session.terminal(XDG_STATE_HOME=str(blocked)) as terminal:
        check(terminal.expect(PROMPT), re.compile("Reading .*\nnote: .*blocked.*: Not a directory; "
                                                  "there is no history\n"), "the beginning")
        check(terminal.ask("x"), "42", "the first line")
        check(terminal.ask("n"), "-7", "the second")
    with session.terminal(XDG_STATE_HOME=None, HOME=None) as terminal:
        check(terminal.expect(PROMPT), re.compile("(?s).*note: neither XDG_STATE_HOME nor HOME "
                                                  "names a folder; there is no history\n"),
              "without a home")


def commands(session):
    """Each command does what it says, and says what it misses."""
    with session.prompt() as terminal:
        helped = terminal.ask(":help")
        for name in ("help", "labels", "types", "layout", "format", "explain", "file", "reload",
                     "quit"):
            if f"  :{name} " not in helped + " ":
                raise Mismatch(f":help does not tell of :{name}: {helped!r}")
        check(terminal.ask(":help reload"), re.compile("  :reload +Open .*"), ":help of one")
        check(terminal.ask(":help lables"), "error: there is no command :lables; did you mean "
              ":labels?", ":help of none")
        check(terminal.ask(":labels f?x*d"), re.compile("fixed .*"), ":labels PATTERN")
        check(terminal.ask(":labels nothing*"),
              f"error: no label of {session.program} matches nothing*", ":labels of none")
        check(terminal.ask(":types *node"), re.compile("struct node .*"), ":types PATTERN")
        check(terminal.ask(":layout struct node"), re.compile(
            r"struct node, 16 bytes\n +0 +8 +next .*\n +8 +4 +v +int\n +12 +4 +<hole>"), ":layout")
        check(terminal.ask(":layout struct lost"),
              f"error: no type of {session.program} is called struct lost", ":layout of none")
        check(terminal.ask(":layout"), "error: :layout needs an argument: :layout TYPE",
              ":layout alone")
        check(terminal.ask(":explain a[1] + 1"), re.compile("(?s)given +a\\[1\\] \\+ 1\nprepared .*"
              "read +4 bytes at .*: 20\n.*"), ":explain")
        check(terminal.ask(":file"), re.compile(".*main.c"), ":file")
        check(terminal.ask("count"), "1", "of main.c")
        check(terminal.ask(":file list.c"), re.compile(".*list.c"), ":file NAME")
        check(terminal.ask("count"), "2", "of list.c")
        check(terminal.ask(":file lost.c"), re.compile("error: .*list.c.*"), ":file of none")
        check(terminal.ask(":reload"), re.compile("Reading .*"), ":reload")
        check(terminal.ask("count"), "2", "which keeps the current file")
        check(terminal.ask("$"), "2", "and begins anew with the values")
        check(terminal.ask(":reload now"), "error: :reload takes no argument, but here is `now`",
              "an argument too much")
        check(terminal.ask(":"), re.compile("error: a command's name .*"), "a lone colon")
        terminal.type(":quit\r")
        check(str(terminal.wait()), "0", "the status after :quit")


def rebuilt(session):
    """:reload sees a program that was built anew."""
    copy = pathlib.Path(session.folder) / "copy"
    content = pathlib.Path(session.program).read_bytes()
    copy.write_bytes(content.replace(b"lantern\0", b"lintern\0"))
    other = Session(session.resolve, str(copy), session.folder)
    with other.prompt() as terminal:
        check(terminal.ask("word[1] == 'i'"), "1", "before")
        copy.unlink()
        copy.write_bytes(content)
        check(terminal.ask(":reload"), re.compile("Reading .*"), ":reload")
        check(terminal.ask("word[1] == 'a'"), "1", "after")
        copy.unlink()
        copy.write_bytes(b"no program")
        check(terminal.ask(":reload"), re.compile("error: .*copy.*"), "a broken one")
        check(terminal.ask("word[1] == 'a'"), "1", "the one before stays")


def interrupted_listing(session):
    """Ctrl-C ends a long listing."""
    with session.prompt() as terminal:
        terminal.type(":labels\r")
        terminal.expect("\n")
        terminal.type(CTRL_C)
        terminal.expect(PROMPT)
        terminal.type("x\r")
        terminal.expect("\n42\n")


def colours(session):
    """Colours are for terminals that want them."""
    red = b"\x1b[31m"
    for wanted, environment in ((True, {}), (False, {"NO_COLOR": "1"}), (True, {"NO_COLOR": ""}),
                                (False, {"TERM": "dumb"}), (False, {"TERM": None})):
        with session.prompt(**environment) as terminal:
            terminal.ask("nowhere")
            check(str(red in terminal.raw), str(wanted), f"red with {environment}")
            check(terminal.ask("x"), "42", f"an answer with {environment}")


def settings_come_back(session):
    """The terminal's settings are the former ones after every end."""
    for end in (CTRL_D, ":quit\r", signal.SIGTERM, signal.SIGHUP):
        with session.terminal() as terminal:
            terminal.expect(PROMPT)
            if isinstance(end, str):
                terminal.type(end)
            else:
                terminal.process.send_signal(end)
            terminal.wait()
            check(str(termios.tcgetattr(terminal.master)[:4]), str(terminal.settings[:4]), f"after {end!r}")


def without_a_terminal(session):
    """Input that is no terminal is read as for `-`."""
    for stdin, expected in ((b"x\nn\n", ("42\n-7\n", 0)), (b"", ("", 0)),
                            (b"nowhere\nx", ("42\n", 1))):
        done = subprocess.run([session.resolve, session.program], input=stdin,
                              capture_output=True, timeout=PATIENCE)
        check(str((done.stdout.decode(), done.returncode)), str(expected), f"with {stdin!r}")


def documented(session):
    """The document shows what the prompt does, but for addresses and the folders of sources."""
    text = pathlib.Path(sys.argv[3]).read_text()
    blocks = re.findall(r"^```prompt\n(.*?)^```$", text, re.M | re.S)
    if not blocks:
        raise Mismatch("the document shows no session")
    place = re.compile(r"0x[0-9a-f]{5,16}|(?<!\S)[./]\S*/(?=\w)")
    for block in blocks:
        with session.prompt() as terminal:
            for step in block.split(PROMPT)[1:]:
                line, _, answer = step.partition("\n")
                if line == ":quit":
                    terminal.type(line + "\r")
                    check(str(terminal.wait()), "0", line)
                    break
                check(place.sub("", terminal.ask(line)),
                      place.sub("", answer.rstrip("\n")), line)


TESTS = [documented, expressions, last_value, formats, completion, interrupted_line, pasted_lines, history,
         two_sessions, no_history, commands, rebuilt, interrupted_listing, colours,
         settings_come_back, without_a_terminal]


def main():
    resolve, program = (str(pathlib.Path(path).resolve()) for path in sys.argv[1:3])
    try:
        for descriptor in os.openpty():
            os.close(descriptor)
    except OSError as error:
        print(f"SKIPPED: this machine gives no pseudo-terminal: {error}")
        sys.exit(SKIPPED)
    failures = 0
    chosen = [test for test in TESTS if test.__name__ in sys.argv[4:] or len(sys.argv) == 4]
    for test in chosen:
        with tempfile.TemporaryDirectory() as folder:
            try:
                test(Session(resolve, program, folder))
            except Mismatch as mismatch:
                failures += 1
                print(f"{test.__name__}: {test.__doc__}\n  {mismatch}")
    print(f"{len(chosen) - failures} passed, {failures} failed")
    sys.exit(1 if failures else 0)


if __name__ == "__main__":
    main()
