"""Processes for the tests to look at, and what the system allows here."""
import contextlib
import ctypes
import os
import pathlib
import subprocess
import sys
import time

# Only against tests that hang: nothing is measured.
PATIENCE = 120
SKIPPED = 77

LIBC = ctypes.CDLL(None, use_errno=True)
PTRACE_SEIZE = 0x4206


class Vector(ctypes.Structure):
    _fields_ = [("base", ctypes.c_void_p), ("length", ctypes.c_size_t)]


@contextlib.contextmanager
def running(program, *words, **more):
    """A process of running.c that is ready; it ends with the block."""
    child = subprocess.Popen([program, *words], stdin=subprocess.PIPE, stdout=subprocess.PIPE, **more)
    try:
        line = child.stdout.readline()
        assert line == b"ready\n", f"the process to look at says {line!r}"
        yield child
    finally:
        child.kill()
        child.stdin.close()
        child.stdout.close()
        child.wait(PATIENCE)


def resolve(command, *arguments, **more):
    """What a run of the command gives, with plain numbers."""
    return subprocess.run([command, "--plain", *map(str, arguments)], capture_output=True,
                          text=True, stdin=subprocess.DEVNULL, timeout=PATIENCE, **more)


class Dialogue:
    """A run of the command that reads expressions from a pipe, which stays open."""

    def __init__(self, command, *arguments):
        self.process = subprocess.Popen([command, *map(str, arguments), "-"], stdin=subprocess.PIPE,
                                        stdout=subprocess.PIPE, stderr=subprocess.PIPE)

    def __enter__(self):
        return self

    def __exit__(self, *exception):
        self.process.kill()
        for stream in (self.process.stdin, self.process.stdout, self.process.stderr):
            with contextlib.suppress(BrokenPipeError):
                stream.close()
        self.process.wait(PATIENCE)

    def send(self, expression):
        self.process.stdin.write(expression.encode() + b"\n")
        self.process.stdin.flush()

    def ask(self, expression):
        self.send(expression)
        return self.process.stdout.readline().decode().rstrip("\n")

    def end(self):
        """Ends the input; the rest of the output, the errors and the status."""
        out, err = self.process.communicate(timeout=PATIENCE)
        return out.decode(), err.decode(), self.process.returncode


def status(process, key, thread=None):
    """A line of the status of a process or thread; empty when it is gone."""
    try:
        text = pathlib.Path(f"/proc/{process}/task/{thread or process}/status").read_text()
    except (FileNotFoundError, ProcessLookupError):
        return ""
    return next((line.split(":", 1)[1].strip() for line in text.splitlines()
                 if line.startswith(key + ":")), "")


def threads(process):
    return [int(name) for name in os.listdir(f"/proc/{process}/task")]


def states(process):
    """The letters for the states of all threads."""
    return {status(process, "State", thread)[:1] for thread in threads(process)} - {""}


def wait_until(condition, what):
    end = time.monotonic() + PATIENCE
    while not condition():
        assert time.monotonic() < end, f"waited in vain: {what}"
        time.sleep(0.01)


def may_read(process):
    """Does the system let this process read the memory of that one?"""
    byte = ctypes.create_string_buffer(1)
    address = int(pathlib.Path(f"/proc/{process}/maps").read_text().split("-")[0] or "0", 16)
    local, remote = Vector(ctypes.addressof(byte), 1), Vector(address, 1)
    return LIBC.process_vm_readv(process, ctypes.byref(local), 1, ctypes.byref(remote), 1, 0) == 1


def may_hold(process):
    """Does the system let this process be held? Asked by a process that ends at once."""
    child = os.fork()
    if child == 0:
        LIBC.ptrace.argtypes = [ctypes.c_long, ctypes.c_long, ctypes.c_void_p, ctypes.c_void_p]
        os._exit(0 if LIBC.ptrace(PTRACE_SEIZE, process, None, None) == 0 else 1)
    return os.waitpid(child, 0)[1] == 0


def skip(reason):
    print(f"SKIPPED: {reason}", flush=True)
    sys.exit(SKIPPED)


def run_checks(checks, hold=False):
    """Runs each check: a function of RESOLVE and of the folder with the programs to look at. It
    asserts what must hold, and may return why it could not be made here. Exits with the verdict."""
    command, folder = sys.argv[1], pathlib.Path(sys.argv[2])
    with running(folder / "running") as child:
        if not may_read(child.pid):
            skip("this system lets no process read the memory of its child")
        if hold and not may_hold(child.pid):
            skip("this system lets no process hold its child (ptrace)")
    failures = 0
    for check in checks:
        try:
            reason = check(command, folder)
            if reason:
                print(f"SKIPPED {check.__name__}: {reason}")
        except (AssertionError, subprocess.TimeoutExpired) as error:
            failures += 1
            print(f"FAILED {check.__name__}: {check.__doc__}\n  {error}")
    print(f"{len(checks) - failures} of {len(checks)} held")
    sys.exit(1 if failures else 0)


def expect(actual, wanted):
    assert actual == wanted, f"got {actual!r}, not {wanted!r}"


def expect_run(done, stdout="", stderr="", code=0):
    expect((done.stdout, done.stderr, done.returncode), (stdout, stderr, code))
