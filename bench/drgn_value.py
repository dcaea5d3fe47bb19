"""Evaluates a Python expression over a program with drgn.

usage: drgn_value.py PROGRAM EXPRESSION

The names of an expression are the program's variables, looked up each time, and sizeof, cast and
type. Imports nothing that drgn does not need: the start of this script is measured.
"""
import struct
import sys

import drgn

LOAD = 1


def open_program(path):
    """The program with its initial memory, as gdb has it before the program runs. 64 bit,
    little-endian."""
    program = drgn.Program()
    program.load_debug_info([path])
    with open(path, "rb") as file:
        image = file.read()
    (first,) = struct.unpack_from("<Q", image, 32)
    size, count = struct.unpack_from("<HH", image, 54)
    for place in range(first, first + size * count, size):
        kind, _, offset, address, _, length = struct.unpack_from("<IIQQQQ", image, place)
        if kind == LOAD:
            def read(_, count, place, physical, offset=offset):
                return image[offset + place:offset + place + count]
            program.add_memory_segment(address, length, read)
    return program


class Names(dict):
    def __init__(self, program):
        super().__init__(sizeof=drgn.sizeof, cast=drgn.cast, type=program.type)
        self.program = program

    def __missing__(self, name):
        return self.program[name]


def evaluate(text, names):
    value = eval(text, {}, names)
    return value.value_() if isinstance(value, drgn.Object) else value


if __name__ == "__main__":
    print(evaluate(sys.argv[2], Names(open_program(sys.argv[1]))))
