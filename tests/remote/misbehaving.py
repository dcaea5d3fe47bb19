#!/usr/bin/env python3
"""`resolve --remote` against stubs that do what they should not, and against none at all: one clear
line, and an end.

usage: misbehaving.py RESOLVE PROGRAM
"""
import re
import signal
import socket
import subprocess
import sys
import time

import stubs
from stubs import expect, frame, listening, packets, process, resolve


def answering(answers, rest=None):
    """A service that answers requests by their beginnings, in pieces; `rest` is called with the
    connection when there is no answer."""

    def serve(connection):
        for request in packets(connection):
            known = [text for start, text in answers.items() if request.startswith(start)]
            if not known:
                if rest:
                    rest(connection)
                    return
                connection.sendall(b"+" + frame(b""))
                continue
            for byte in b"+" + frame(known[0]):
                connection.sendall(bytes([byte]))

    return serve


GREETING = {b"qSupported": b"PacketSize=400", b"?": b"S05", b"qOffsets": b"Text=0;Data=0", b"D": b"OK"}


def without_end(connection):
    while True:
        connection.sendall(b"~" * 4096)


def wait_for_the_end(connection):
    while connection.recv(4096):
        pass


def late(connection):
    """Answers everything, but takes its time."""
    for request in packets(connection):
        time.sleep(0.05)
        known = [text for start, text in GREETING.items() if request.startswith(start)]
        connection.sendall(b"+" + frame(known[0] if known else b"2a000000"))


# Options, what serves, what the command says, its status.
ROWS = [
    ("never answers", ["--timeout", "0.2"], wait_for_the_end,
     "resolve: no answer in time from the stub at 'STUB'\n", 2),
    ("hangs up at once", [], lambda connection: None,
     "resolve: the connection was closed by the stub at 'STUB'\n", 2),
    ("sends without end", [], without_end, "resolve: the stub at 'STUB' sends without end\n", 2),
    ("is another service", [], lambda connection: connection.sendall(b"220 mail ESMTP\r\n"),
     "resolve: the connection was closed by the stub at 'STUB'\n", 2),
    ("holds nothing", [], answering({**GREETING, b"?": b"W00"}),
     "resolve: the stub at 'STUB' has no program that runs\n", 2),
    ("stops answering", ["--timeout", "0.2"], answering(GREETING, wait_for_the_end),
     "resolve: no answer in time from the stub at 'STUB'\n", 2),
    ("hangs up half-way", [], answering(GREETING, lambda connection: None),
     "resolve: the connection was closed by the stub at 'STUB'\n", 2),
    ("sends nonsense for memory", [], answering({**GREETING, b"m": b"nonsense"}),
     "resolve: the stub at 'STUB' answers a request for memory with 'nonsense'\n", 2),
    ("refuses", [], answering({**GREETING, b"m": b"E01"}),
     "resolve: x: cannot read memory at <address>\n", 1),
    ("forbids", [], answering({**GREETING, b"m": b"E0d"}),
     "resolve: x: cannot read memory at <address>: that is not allowed\n", 1),
]


def stub_that(row):
    name, options, serve, said, status = row

    def check(command, program):
        with listening(serve) as path:
            out, err, code = resolve(command, *options, "--remote", path, program, "x")
        expect((out, code), ("", status), name)
        wanted = re.escape(said.replace("STUB", str(path))).replace("<address>", "0x[0-9a-f]+")
        assert re.fullmatch(wanted, err), f"{name}: {err!r}"

    check.__name__ = "stub that " + name
    check.__doc__ = ""
    return check


def slow(command, program):
    """A stub that is slow but in time is waited for, byte by byte."""
    for serve in (late, answering({**GREETING, b"m": b"2a000000"})):
        with listening(serve) as path:
            expect(resolve(command, "--timeout", "100", "--remote", path, program, "x"),
                   ("42\n", "", 0))


def interrupted(command, program):
    """A signal ends the wait for a stub that never answers, which is still told to go on."""
    heard = []

    def serve(connection):
        # The command may be quicker than the line that notes it.
        stubs.wait_until(lambda: runs, "the command is known")
        for request in packets(connection):
            heard.append(request)
            if request == b"qSupported":
                runs[0].send_signal(signal.SIGINT)

    runs = []
    with listening(serve) as path:
        with process(command, "--timeout", "100", "--remote", path, program, "x",
                     stdin=subprocess.PIPE, stderr=subprocess.PIPE) as run:
            runs.append(run)
            expect(run.wait(stubs.PATIENCE), -signal.SIGINT)
    expect(heard, [b"qSupported", b"D"])


def nobody(command, program):
    """Addresses that lead nowhere, and words that are none."""
    with socket.socket() as taken:
        # Bound and not listening: whoever connects is refused, and nobody else gets the port.
        taken.bind(("127.0.0.1", 0))
        port = taken.getsockname()[1]
        expect(resolve(command, "--remote", f"127.0.0.1:{port}", program, "x"),
               ("", f"resolve: nobody listens on '127.0.0.1:{port}'\n", 2))
    expect(resolve(command, "--remote", "/nowhere/at/all", program, "x"),
           ("", "resolve: there is no socket '/nowhere/at/all'\n", 2))
    expect(resolve(command, "--remote", "host", program, "x"),
           ("", "resolve: --remote takes HOST:PORT or the path of a socket, not 'host'; "
            "see resolve --help\n", 2))
    out, err, code = resolve(command, "--timeout", "20", "--remote", "no.such.host.invalid:1",
                             program, "x")
    expect((out, code), ("", 2))
    assert "the host 'no.such.host.invalid' " in err and err.count("\n") == 1, err


def program_first(command, program):
    """A program that cannot be used is told before anybody is disturbed."""
    expect(resolve(command, "--remote", "127.0.0.1:1", "missing", "x"),
           ("", "resolve: there is no file 'missing'\n", 2))


stubs.run_checks([*map(stub_that, ROWS), slow, interrupted, nobody, program_first], *sys.argv[1:3])
