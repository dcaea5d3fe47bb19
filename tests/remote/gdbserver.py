#!/usr/bin/env python3
"""`resolve --remote` against gdbserver, with processes of every kind.

usage: gdbserver.py RESOLVE FOLDER
"""
import pathlib
import signal
import subprocess
import sys

import stubs
from stubs import Refused, expect, gdbserver, is_alive, process, resolve, state, target

VALUES = {
    "x": "42", "initial": "12", "s": "-300", "byte": "200", "wide": "-6000000000", "real": "2.5",
    "a[3]": "40", "a[i]": "30", "head->v": "11", "head->next->v": "22", "(*head).v": "11",
    "head->next->next": "0", "record.in.deep": "99", "*text": "99", "x + x": "84",
    "sizeof(struct node) > 4": "1",
}
PROGRAMS = ["target-pie", "target-fixed", "target-m32"]


def programs(folder):
    return [folder / name for name in PROGRAMS if (folder / name).exists()]


def attached(command, folder):
    """Values of a process that gdbserver is attached to, which then goes on."""
    for program in programs(folder):
        with target(program) as child, gdbserver("--once", "--attach", "PORT", child.pid) as address:
            expect(resolve(command, "--remote", address, program, *VALUES),
                   ("".join(value + "\n" for value in VALUES.values()), "", 0), program)
            assert is_alive(child)
            stubs.wait_until(lambda: state(child.pid) in "SR", "the process goes on")


def started(command, folder):
    """A program that gdbserver has just started, at its first instruction; it then runs."""
    for program in programs(folder):
        with gdbserver("--once", "PORT", program) as address:
            expect(resolve(command, "--remote", address, program, "x", "initial", "a[3]"),
                   ("42\n7\n40\n", "", 0), program)


def unreadable(command, folder):
    """Memory that is not there fails for the one expression."""
    program = folder / PROGRAMS[0]
    with target(program) as child, gdbserver("--once", "--attach", "PORT", child.pid) as address:
        out, err, code = resolve(command, "--remote", address, program, "x", "*nowhere", "a[1]")
        expect((out, code), ("42\n20\n", 1))
        expect(err, "resolve: *nowhere: cannot read memory at 0x10\n")


def left_stopped(command, folder):
    """With --leave-stopped the process stays as it is, for the one who asks next."""
    program = folder / PROGRAMS[0]
    with target(program) as child, gdbserver("--attach", "PORT", child.pid) as address:
        for _ in range(2):
            expect(resolve(command, "--leave-stopped", "--remote", address, program, "x"),
                   ("42\n", "", 0))
            expect(state(child.pid), "t")
        expect(resolve(command, "--remote", address, program, "x"), ("42\n", "", 0))
        assert is_alive(child)


def over_a_unix_socket(command, folder):
    """gdbserver that speaks over a pipe, behind a Unix socket."""
    program = folder / PROGRAMS[0]
    with target(program) as child:
        refused = []

        def serve(connection):
            connection.settimeout(None)
            with process("gdbserver", "--once", "--attach", "-", child.pid, stdin=connection,
                         stdout=connection, stderr=subprocess.PIPE, bufsize=0) as server:
                refused.append(server.stderr.read().decode())

        with stubs.listening(serve) as path:
            out, err, code = resolve(command, "--remote", path, program, "head->next->v", "a[i]")
        if "Cannot attach" in "".join(refused):
            raise Refused(refused[0])
        expect((out, err, code), ("22\n30\n", "", 0))
        assert is_alive(child)


def another_program(command, folder):
    """A warning when what runs is another program than the one named."""
    program, other = folder / "target-fixed", folder / "target-pie"
    with target(program) as child, gdbserver("--once", "--attach", "PORT", child.pid) as address:
        _, err, _ = resolve(command, "--remote", address, other, "sizeof(x)")
        assert err.startswith(f"warning: what runs behind '{address}' is not '{other}': "), err


def lost_half_way(command, folder):
    """A stub that goes away between two expressions ends the command."""
    program = folder / PROGRAMS[0]
    with target(program) as child:
        servers = []

        def serve(connection):
            connection.settimeout(None)
            with process("gdbserver", "--once", "--attach", "-", child.pid, stdin=connection,
                         stdout=connection, stderr=subprocess.PIPE, bufsize=0) as server:
                servers.append(server)
                server.stderr.read()

        with stubs.listening(serve) as path:
            with process(command, "--remote", path, program, "-", stdin=subprocess.PIPE,
                         stdout=subprocess.PIPE, stderr=subprocess.PIPE, bufsize=0) as run:
                run.stdin.write(b"x\n")
                if stubs.line_of(run.stdout) != "42\n":
                    raise Refused(run.stderr.read().decode())
                servers[0].send_signal(signal.SIGKILL)
                servers[0].wait(stubs.PATIENCE)
                run.stdin.write(b"a[1]\na[2]\n")
                out, err = run.communicate(timeout=stubs.PATIENCE)
        expect((out.decode(), err.decode(), run.returncode),
               ("", f"resolve: the connection was closed by the stub at '{path}'\n", 2))


def interrupted(command, folder):
    """A signal ends the command, and the process goes on all the same."""
    program = folder / PROGRAMS[0]
    for number in (signal.SIGINT, signal.SIGTERM):
        with target(program) as child:
            with gdbserver("--once", "--attach", "PORT", child.pid) as address:
                with process(command, "--remote", address, program, "-", stdin=subprocess.PIPE,
                             stdout=subprocess.PIPE, bufsize=0) as run:
                    run.stdin.write(b"x\n")
                    expect(stubs.line_of(run.stdout), "42\n")
                    expect(state(child.pid), "t")
                    run.send_signal(number)
                    expect(run.wait(stubs.PATIENCE), -number)
                assert is_alive(child)


stubs.run_checks([attached, started, unreadable, left_stopped, over_a_unix_socket, another_program,
                  interrupted,
                  lost_half_way], sys.argv[1], pathlib.Path(sys.argv[2]))
