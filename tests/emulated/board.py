#!/usr/bin/env python3
"""A little-endian board without an operating system: memory where the linker put it, peripherals, and
a processor that is stopped before its first instruction.

usage: board.py RESOLVE FOLDER
"""
import pathlib
import sys

import emulators
import stubs
from emulators import emulator, expect_values
from stubs import expect, resolve

MACHINE = ["qemu-system-arm", "-M", "lm3s6965evb", "-nodefaults", "-display", "none", "-serial", "null",
           "-monitor", "none", "-gdb", "unix:path=SOCKET,server=on,wait=off"]


def values(command, folder):
    """Every variable, at the addresses of the file; the board stays stopped for who comes next."""
    program = folder / "board"
    with emulator(*MACHINE, "-S", "-kernel", program) as (path, _):
        for _ in range(2):
            expect_values(command, path, program, {**emulators.VALUES, **emulators.POINTED},
                          "--leave-stopped")


def goes_on(command, folder):
    """A board that is left runs on."""
    program = folder / "board"
    with emulator(*MACHINE, "-S", "-kernel", program) as (path, _):
        expect_values(command, path, program, {"finished": "0"}, "--leave-stopped")
        # Stopped before, and running after the first of these.
        stubs.wait_until(
            lambda: resolve(command, "--remote", path, program, "finished") == ("7\n", "", 0),
            "the board finishes")


def peripherals(command, folder):
    """Registers, and addresses where nothing is."""
    program = folder / "board"
    with emulator(*MACHINE, "-S", "-kernel", program) as (path, _):
        # The flags of the first UART: both queues are empty.
        expect_values(command, path, program, {"*(unsigned int*)0x4000C018": "144"},
                      "--leave-stopped")
        expect(resolve(command, "--leave-stopped", "--remote", path, program, "*(int*)0x90000000"),
               ("", "resolve: *(int*)0x90000000: cannot read memory at 0x90000000\n", 1))


def beside_gdb(command, folder):
    """The same values as gdb, where there is one for this machine."""
    program = folder / "board"
    names = ["x", "s", "wide", "a[3]", "head->next->v", "*p"]
    with emulator(*MACHINE, "-S", "-kernel", program) as (path, _):
        theirs = emulators.gdb_values(path, program, names)
    if theirs is None:
        raise stubs.Refused("gdb-multiarch is not installed")
    with emulator(*MACHINE, "-S", "-kernel", program) as (path, _):
        expect_values(command, path, program, dict(zip(names, theirs)))


command, folder = sys.argv[1], pathlib.Path(sys.argv[2])
emulators.need("qemu-system-arm")
emulators.need_file(folder / "board")
stubs.run_checks([values, goes_on, peripherals, beside_gdb], command, folder)
