#!/usr/bin/env python3
"""What `resolve --remote` asks a stub for, counted on the way, beside what gdb asks the same one.

usage: packets.py RESOLVE FOLDER
"""
import pathlib
import re
import select
import socket
import subprocess
import sys

import stubs
from stubs import expect, gdbserver, target

# How many reads of memory an expression takes.
READS = {
    "x": 1, "x + x": 1, "a[3]": 1, "a[i]": 2, "head->v": 2, "head->next->v": 3, "&x": 0,
    "sizeof(x)": 0, "record.in.deep": 1, "*text": 2,
}


def counted(address, counts):
    """A service for one connection that passes everything on, and keeps the requests."""

    def serve(connection):
        host, port = address.split(":")
        with socket.create_connection((host, int(port)), stubs.PATIENCE) as server:
            sent = b""
            while True:
                ready, _, _ = select.select([connection, server], [], [], stubs.PATIENCE)
                if not ready:
                    return
                for side, other in ((connection, server), (server, connection)):
                    if side not in ready:
                        continue
                    data = side.recv(65536)
                    if not data:
                        counts.extend(re.findall(rb"\$([^#]*)#..", sent))
                        return
                    if side is connection:
                        sent += data
                    other.sendall(data)

    return serve


def requests(command, program, expression):
    """All that was sent for one expression by a command of its own."""
    sent = []
    with target(program) as child, gdbserver("--once", "--attach", "PORT", child.pid) as address:
        with stubs.listening(counted(address, sent)) as path:
            _, err, code = stubs.resolve(command, "--remote", path, program, expression)
            expect((err, code), ("", 0), expression)
    return [request.decode() for request in sent]


def is_read(request):
    return re.match(r"[mx][0-9a-f]+,", request) is not None


def reads_of_gdb(program, expression):
    """The reads that gdb makes for an expression when it has printed it before: the first time, it
    reads the headers of the program as well."""
    with target(program) as child, gdbserver("--once", "--attach", "PORT", child.pid) as address:
        done = subprocess.run(
            ["gdb", "-batch", "-nx", "-iex", "set debuginfod enabled off", "-ex",
             f"target remote {address}", "-ex", f"print {expression}", "-ex", "set debug remote 1",
             "-ex", "echo BEGIN\\n", "-ex", f"print {expression}", "-ex", "echo END\\n", "-ex",
             "set debug remote 0", "-ex", "detach", str(program)],
            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
            timeout=stubs.PATIENCE)
        text = done.stdout.decode(errors="replace")
        assert "BEGIN" in text and "END" in text, text[-2000:]
        between = text.split("BEGIN", 1)[1].rsplit("END", 1)[0]
        return [request for request in re.findall(r"Sending packet: \$([^#]*)#", between)
                if is_read(request)]


def reads(command, folder):
    """An expression takes its reads, each once, and no other."""
    for name in ("target-pie", "target-m32"):
        program = folder / name
        if not program.exists():
            continue
        for expression, wanted in READS.items():
            sent = requests(command, program, expression)
            made = [request for request in sent if is_read(request)]
            expect(len(made), wanted, f"{name}: {expression}: {made}")
            expect(len(set(made)), len(made), f"{expression}: something is read twice")


def beside_gdb(command, folder):
    """`head->next->v` takes no more reads than gdb makes for it."""
    program = folder / "target-pie"
    sent = requests(command, program, "head->next->v")
    ours = [request for request in sent if is_read(request)]
    theirs = reads_of_gdb(program, "head->next->v")
    print(f"head->next->v: {len(ours)} reads, {len(sent)} packets with greeting and leaving; "
          f"gdb: {len(theirs)} reads, when it has printed the same before", flush=True)
    assert len(ours) <= len(theirs), (ours, theirs)


stubs.run_checks([reads, beside_gdb], sys.argv[1], pathlib.Path(sys.argv[2]))
