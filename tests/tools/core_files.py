"""Makes core dumps and the small program that they are of, by hand."""
import dataclasses
import struct

PT_LOAD, PT_DYNAMIC, PT_NOTE = 1, 2, 4
READ, WRITE, EXECUTE = 4, 2, 1
NT_PRPSINFO, NT_AUXV, NT_FILE = 3, 6, 0x46494C45
AT_PHDR, AT_ENTRY, AT_EXECFN = 3, 9, 31
PAGE = 4096


@dataclasses.dataclass
class Machine:
    number: int = 62
    wide: bool = True
    order: str = "<"

    def pack(self, form, *values):
        """As struct.pack; W stands for a word of the machine."""
        return struct.pack(self.order + form.replace("W", "Q" if self.wide else "I"), *values)

    def header(self, kind, count, entry=0):
        size, entry_size = (64, 56) if self.wide else (52, 32)
        return (b"\x7fELF" + bytes([2 if self.wide else 1, 1 if self.order == "<" else 2, 1]) +
                bytes(9) + self.pack("HHIWWWIHHHHHH", kind, self.number, 1, entry, size, 0, 0,
                                     size, entry_size, count, 0, 0, 0))

    def segment(self, kind, flags, offset, address, file_size, size):
        if self.wide:
            return self.pack("IIWWWWWW", kind, flags, offset, address, 0, file_size, size, 1)
        return self.pack("IWWWWWIW", kind, offset, address, 0, file_size, size, flags, 1)


X64, X86, POWER_PC = Machine(), Machine(3, False), Machine(20, False, ">")


def note(machine, kind, contents):
    whole = machine.pack("III", 5, len(contents), kind) + b"CORE\0\0\0\0" + contents
    return whole + bytes(-len(whole) % 4)


def core(machine, segments=(), mappings=(), auxiliary=(), process=True):
    """Segments are (address, bytes, size, flags); mappings, (start, end, offset, path)."""
    notes = note(machine, NT_PRPSINFO, bytes(16)) if process else b""
    if auxiliary:
        notes += note(machine, NT_AUXV, b"".join(
            machine.pack("WW", *pair) for pair in [*auxiliary, (0, 0)]))
    if mappings:
        notes += note(machine, NT_FILE, machine.pack("WW", len(mappings), PAGE) + b"".join(
            machine.pack("WWW", start, end, offset // PAGE)
            for start, end, offset, _ in mappings) + b"".join(
                path.encode() + b"\0" for *_, path in mappings))
    start = len(machine.header(4, 0)) + (len(segments) + 1) * len(machine.segment(*[0] * 6))
    headers = machine.header(4, len(segments) + 1)
    headers += machine.segment(PT_NOTE, 0, start, 0, len(notes), 0)
    contents = notes
    for address, content, size, flags in segments:
        headers += machine.segment(PT_LOAD, flags, start + len(contents), address, len(content),
                                   size)
        contents += content
    return headers + contents


def program():
    """The program of the fuzz target `core`: see there."""
    data, address, size = 0x180, 0x1180, 0x40
    headers = 64 + 4 * 56

    def segment(kind, flags, offset, at, file_size, memory_size, align):
        return struct.pack("<IIQQQQQQ", kind, flags, offset, at, at, file_size, memory_size, align)

    whole = (X64.header(3, 4, 0x150) +
             segment(PT_LOAD, READ | EXECUTE, 0, 0, data, data, 0x1000) +
             segment(PT_LOAD, READ | WRITE, data, address, size, 0x100, 0x1000) +
             segment(PT_NOTE, READ, headers, headers, 20, 20, 4) +
             segment(PT_DYNAMIC, READ | WRITE, data, address, size, size, 8) +
             b"\4\0\0\0\4\0\0\0\3\0\0\0GNU\0mark")
    return whole.ljust(data, b"t").ljust(data + size, b"d")


def load(path, bias=0):
    """The segments and mappings of a 64-bit little-endian program: written memory is saved whole,
    of the rest only the first page."""
    image = open(path, "rb").read()
    table, = struct.unpack_from("<Q", image, 32)
    size, count = struct.unpack_from("<HH", image, 54)
    segments, mappings = [], []
    for at in range(table, table + size * count, size):
        kind, flags, offset, address, _, file_size, memory_size, _ = struct.unpack_from(
            "<IIQQQQQQ", image, at)
        if kind != PT_LOAD:
            continue
        start, first = address // PAGE * PAGE, offset // PAGE * PAGE
        end = -(-(address + memory_size) // PAGE) * PAGE
        file_end = -(-(address + file_size) // PAGE) * PAGE
        if flags & WRITE:
            saved = (image[first:offset] + image[offset:offset + file_size]).ljust(
                end - start, b"\0")
        else:
            saved = image[:PAGE] if first == 0 else b""
        segments.append((start + bias, saved, end - start, flags))
        mappings.append((start + bias, file_end + bias, first, str(path)))
    return segments, mappings
