"""Stubs, and what runs behind them, for the tests of `resolve --remote`. Whatever is started ends
with its block."""
import contextlib
import os
import pathlib
import re
import select
import socket
import subprocess
import sys
import tempfile
import threading
import time

# Only against what hangs: nothing is measured.
PATIENCE = 120
SKIPPED = 77


def skip(reason):
    print(f"SKIPPED: {reason}", flush=True)
    sys.exit(SKIPPED)


@contextlib.contextmanager
def process(*words, **more):
    child = subprocess.Popen([str(word) for word in words], **more)
    try:
        yield child
    finally:
        child.kill()
        child.wait(PATIENCE)
        for stream in (child.stdin, child.stdout, child.stderr):
            if stream:
                with contextlib.suppress(BrokenPipeError):
                    stream.close()


def resolve(command, *arguments, **more):
    """What a run of the command gives, with plain numbers: its output, its errors, its status."""
    done = subprocess.run([str(command), "--plain", *map(str, arguments)], capture_output=True,
                          text=True, timeout=PATIENCE, **{"stdin": subprocess.DEVNULL, **more})
    return done.stdout, done.stderr, done.returncode


def line_of(stream):
    """The next line of a pipe that is not buffered; what there is of it when it ends."""
    line = b""
    end = time.monotonic() + PATIENCE
    while not line.endswith(b"\n"):
        ready, _, _ = select.select([stream], [], [], max(0, end - time.monotonic()))
        assert ready, f"waited in vain for the rest of {line!r}"
        byte = os.read(stream.fileno(), 1)
        if not byte:
            break
        line += byte
    return line.decode(errors="replace")


def wait_until(condition, what):
    end = time.monotonic() + PATIENCE
    while not condition():
        assert time.monotonic() < end, f"waited in vain: {what}"
        time.sleep(0.01)


def state(pid):
    """The letter for the state of a process."""
    status = pathlib.Path(f"/proc/{pid}/status").read_text()
    return re.search(r"^State:\s+(\S)", status, re.MULTILINE)[1]


@contextlib.contextmanager
def target(program):
    """A process of target.c that is ready."""
    with process(program, stdin=subprocess.PIPE, stdout=subprocess.PIPE, bufsize=0) as child:
        assert line_of(child.stdout) == "ready\n"
        yield child


def is_alive(child):
    child.stdin.write(b"\n")
    return line_of(child.stdout) == "alive\n"


def read_away(stream):
    while stream.read(4096):
        pass


class Refused(Exception):
    """What the system said when a process was to be traced."""


@contextlib.contextmanager
def gdbserver(*words):
    """gdbserver on a port of its own choice; the address."""
    words = [word if word != "PORT" else "127.0.0.1:0" for word in words]
    with process("gdbserver", *words, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                 stderr=subprocess.PIPE, bufsize=0) as server:
        said = ""
        while True:
            line = line_of(server.stderr)
            said += line
            if not line:
                raise Refused(said.strip())
            port = re.search(r"Listening on port (\d+)", line)
            if port:
                break
        # What it says later must not fill the pipe.
        drain = threading.Thread(target=read_away, args=[server.stderr], daemon=True)
        drain.start()
        yield f"127.0.0.1:{port[1]}"
        server.kill()
        drain.join(PATIENCE)


@contextlib.contextmanager
def folder():
    with tempfile.TemporaryDirectory(prefix="stub-") as name:
        yield pathlib.Path(name)


@contextlib.contextmanager
def listening(serve):
    """A Unix socket; `serve` is called in a thread with the first connection. Its path."""
    with folder() as place, socket.socket(socket.AF_UNIX, socket.SOCK_STREAM) as listener:
        path = place / "socket"
        listener.bind(str(path))
        listener.listen(1)
        listener.settimeout(PATIENCE)

        def run():
            with contextlib.suppress(OSError):
                connection, _ = listener.accept()
                with connection:
                    connection.settimeout(PATIENCE)
                    serve(connection)

        thread = threading.Thread(target=run, daemon=True)
        thread.start()
        yield path
        thread.join(PATIENCE)


def frame(payload):
    return b"$" + payload + b"#%02x" % (sum(payload) % 256)


def packets(connection):
    """The payloads that arrive, until the connection ends."""
    data = b""
    while True:
        found = re.search(rb"\$([^$#]*)#..", data)
        if found:
            data = data[found.end():]
            yield found[1]
            continue
        more = connection.recv(4096)
        if not more:
            return
        data += more


def expect(actual, wanted, what=""):
    assert actual == wanted, f"{what}\n  got      {actual!r}\n  expected {wanted!r}"


def run_checks(checks, *arguments):
    """Runs each check; exits with the verdict. One that cannot be made here says so."""
    failures = 0
    refusals = []
    for check in checks:
        try:
            check(*arguments)
        except Refused as refusal:
            refusals.append(f"{check.__name__}: {refusal}")
            print("SKIPPED", refusals[-1], flush=True)
        except (AssertionError, subprocess.TimeoutExpired, OSError) as error:
            failures += 1
            print(f"FAILED {check.__name__}: {check.__doc__}\n  {error}", flush=True)
    held = len(checks) - failures - len(refusals)
    print(f"{held} of {len(checks)} held, {len(refusals)} skipped")
    if failures == 0 and held == 0:
        skip("nothing could be checked here: " + "; ".join(refusals))
    sys.exit(1 if failures else 0)
