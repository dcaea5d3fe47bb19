#!/usr/bin/env python3
"""A process of a big-endian 32-bit system, stopped before its first instruction.

usage: process.py RESOLVE FOLDER
"""
import pathlib
import sys

import emulators
import stubs
from emulators import emulator, expect_values
from stubs import expect, resolve


def values(command, folder):
    """Every variable of a program that lies where it was linked; it then ends by itself."""
    program = folder / "mips-fixed"
    with emulator("qemu-mips", "-g", "SOCKET", program) as (path, child):
        expect_values(command, path, program, {**emulators.VALUES, **emulators.POINTED})
        expect(child.wait(stubs.PATIENCE), 7, "the status of the program")


def moved(command, folder):
    """Variables of a program that was loaded elsewhere; nothing has relocated its pointers yet."""
    program = folder / "mips-pie"
    with emulator("qemu-mips", "-g", "SOCKET", program) as (path, _):
        expect_values(command, path, program, emulators.VALUES)


def moved_indeed(command, folder):
    """The addresses are those of the process, not those of the file."""
    program = folder / "mips-pie"
    in_file, _, _ = resolve(command, program, "&x")
    with emulator("qemu-mips", "-g", "SOCKET", program) as (path, _):
        out, err, code = resolve(command, "--remote", path, program, "&x")
    expect((err, code), ("", 0))
    moved_by = int(out) - int(in_file)
    assert moved_by != 0 and moved_by % 4096 == 0, (in_file, out)


def another_program(command, folder):
    """A warning when another program runs."""
    with emulator("qemu-mips", "-g", "SOCKET", folder / "mips-fixed") as (path, _):
        _, err, _ = resolve(command, "--remote", path, folder / "mips-pie", "sizeof(x)")
    assert err.startswith(f"warning: what runs behind '{path}' is not "), err


command, folder = sys.argv[1], pathlib.Path(sys.argv[2])
emulators.need("qemu-mips")
emulators.need_file(folder / "mips-fixed")
stubs.run_checks([values, moved, moved_indeed, another_program], command, folder)
