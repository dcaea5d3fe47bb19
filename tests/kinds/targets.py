"""The kinds of target that one program can be looked at as, each made ready by a context manager.

`KIND(program, folder, ask)` yields what gdb answers about the target and the arguments with which
`resolve` looks at the same one. `ask` takes the arguments for gdb and returns its answers. Where the
environment refuses what a kind needs, `Refused` says why.
"""
import contextlib
import os
import pathlib
import re
import resource
import shutil
import signal
import subprocess

# Against hanging only: a loaded machine may be slow.
PATIENCE = 120

GDB = ["gdb", "-batch", "-nx", "-iex", "set debuginfod enabled off", "-iex", "set auto-load no"]


class Refused(Exception):
    """The environment does not let this kind of target be made."""


def run_gdb(arguments, environment=None):
    """What gdb says."""
    done = subprocess.run([*GDB, *map(str, arguments)], capture_output=True, text=True,
                          timeout=PATIENCE, stdin=subprocess.DEVNULL, env=environment)
    said = done.stdout + done.stderr
    if "ptrace: Operation not permitted" in said or "Could not attach" in said:
        raise Refused("gdb may not attach to a process here")
    return said


@contextlib.contextmanager
def running(program, folder, prepare=None):
    """The program, waiting for input: the end of it ends the program, anything else aborts it."""
    process = subprocess.Popen([program], stdin=subprocess.PIPE, stdout=subprocess.PIPE, cwd=folder,
                               preexec_fn=prepare)
    try:
        if process.stdout.readline() != b"ready\n":
            raise RuntimeError(f"{program} does not start")
        yield process
    finally:
        process.kill()
        process.wait()
        process.stdin.close()
        process.stdout.close()


@contextlib.contextmanager
def file(program, folder, ask):
    yield ask([program]), [program]


@contextlib.contextmanager
def process(program, folder, ask):
    with running(program, folder) as target:
        yield ask(["-p", target.pid]), ["--pid", target.pid]


@contextlib.contextmanager
def held_process(program, folder, ask):
    with running(program, folder) as target:
        yield ask(["-p", target.pid]), ["--stop", "--pid", target.pid]


@contextlib.contextmanager
def gcore(program, folder, ask):
    core = folder / "gcore"
    with running(program, folder) as target:
        said = run_gdb(["-p", target.pid, "-ex", f"generate-core-file {core}"])
    if not core.exists():
        raise RuntimeError(f"gdb wrote no core dump:\n{said}")
    yield ask([program, core]), ["--core", core, program]


@contextlib.contextmanager
def kernel_core(program, folder, ask):
    pattern = pathlib.Path("/proc/sys/kernel/core_pattern").read_text().strip()
    if pattern.startswith("|") or "/" in pattern:
        raise Refused(f"the kernel puts core dumps elsewhere: {pattern}")
    most = resource.getrlimit(resource.RLIMIT_CORE)[1]
    if most == 0:
        raise Refused("core dumps are limited to 0 bytes here")
    with running(program, folder,
                 lambda: resource.setrlimit(resource.RLIMIT_CORE, (most, most))) as target:
        target.stdin.write(b"x")
        target.stdin.flush()
        if target.wait(timeout=PATIENCE) != -signal.SIGABRT:
            raise RuntimeError(f"{program} ended with {target.returncode}")
    cores = [path for path in folder.iterdir() if path.name.startswith("core")]
    if not cores:
        raise Refused("the kernel wrote no core dump")
    yield ask([program, cores[0]]), ["--core", cores[0], program]


@contextlib.contextmanager
def stub(pid):
    """The port of a gdbserver that is attached to a process."""
    if not shutil.which("gdbserver"):
        raise Refused("there is no gdbserver")
    server = subprocess.Popen(["gdbserver", "--attach", "127.0.0.1:0", str(pid)],
                              stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                              stderr=subprocess.PIPE, text=True)
    try:
        said = []
        for line in server.stderr:
            said.append(line)
            port = re.search(r"Listening on port (\d+)", line)
            if port:
                break
        else:
            raise Refused("gdbserver does not listen: " + "".join(said))
        yield int(port[1])
    finally:
        server.kill()
        server.wait()
        server.stderr.close()


@contextlib.contextmanager
def remote(program, folder, ask):
    with running(program, folder) as target:
        # gdb looks at the process itself, before the server holds it.
        answers = ask(["-p", target.pid])
        with stub(target.pid) as port:
            yield answers, ["--remote", f"127.0.0.1:{port}", program]


@contextlib.contextmanager
def described(program, folder, ask):
    """What gdb knows of the process, written down; the process has ended when it is read."""
    description = folder / "program.toml"
    with running(program, folder) as target:
        # Writes the file of expressions as well.
        answers = ask(["-p", target.pid])
        said = run_gdb(["-p", target.pid, "-x", pathlib.Path(__file__).with_name("describe_in_gdb.py")],
                       dict(os.environ, EXPRESSIONS=str(folder / "expressions"),
                            DESCRIPTION=str(description)))
    if not description.exists():
        raise RuntimeError(f"gdb wrote no description:\n{said}")
    yield answers, ["--describe", description]


KINDS = {kind.__name__: kind
         for kind in (file, process, held_process, gcore, kernel_core, remote, described)}
