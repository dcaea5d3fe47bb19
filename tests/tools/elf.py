"""Makes ELF files with hand-made debug information, small enough to be read here."""
import struct

OBJECT, EXECUTABLE, SHARED, CORE = range(1, 5)


def elf_file(sections=(), kind=EXECUTABLE):
    """A 64-bit little-endian file for x86-64 with these (name, bytes) sections and no segments."""
    names = b"\0"
    headers = bytes(64)
    body = b""
    for name, content in [*sections, (".shstrtab", None)]:
        at = len(names)
        names += name.encode() + b"\0"
        if content is None:
            content = names
        headers += struct.pack("<IIQQQQIIQQ", at, 3 if name == ".shstrtab" else 1, 0, 0,
                               64 + len(body), len(content), 0, 0, 1, 0)
        body += content
    header = b"\x7fELF\x02\x01\x01" + bytes(9) + struct.pack(
        "<HHIQQQIHHHHHH", kind, 62, 1, 0, 0, 64 + len(body), 0, 64, 0, 0, 64,
        len(headers) // 64, len(headers) // 64 - 1)
    return header + body + headers


def abbreviation(number, tag, children, *attributes):
    return bytes([number, tag, children, *attributes, 0, 0])


UNIT, INTEGER, VARIABLE, NAMESPACE, STRUCTURE, MEMBER = 1, 2, 3, 4, 5, 6
ABBREVIATIONS = b"".join((
    abbreviation(UNIT, 0x11, 1, 0x03, 0x08),                               # name
    abbreviation(INTEGER, 0x24, 0, 0x03, 0x08, 0x0B, 0x0B, 0x3E, 0x0B),     # name, size, encoding
    abbreviation(VARIABLE, 0x34, 0, 0x03, 0x08, 0x49, 0x13, 0x02, 0x18),    # name, type, location
    abbreviation(NAMESPACE, 0x39, 1),
    abbreviation(STRUCTURE, 0x13, 1, 0x03, 0x08, 0x0B, 0x0B),               # name, size
    abbreviation(MEMBER, 0x0D, 0, 0x49, 0x13, 0x38, 0x0B),                  # type, offset
    b"\0"))
UNIT_NAME = b"made.c\0"
# The unit's header, its abbreviation's number and its name come first.
FIRST_ENTRY = 11 + 1 + len(UNIT_NAME)
INTEGER_ENTRY = bytes([INTEGER]) + b"int\0" + bytes([4, 5])


def variable(name, kind):
    """A variable at address 0x1000, of the type whose entry lies at the offset `kind`."""
    return bytes([VARIABLE]) + name + b"\0" + struct.pack("<I", kind) + bytes([9, 3]) + struct.pack("<Q", 0x1000)


def debug_sections(unit, abbreviations):
    """The sections of debug information (DWARF 4) of one unit."""
    content = struct.pack("<HIB", 4, 0, 8) + unit
    return [(".debug_info", struct.pack("<I", len(content)) + content),
            (".debug_abbrev", abbreviations)]


def with_entries(entries, kind=EXECUTABLE, more=()):
    """A file with one unit of these entries, the first of them at the offset FIRST_ENTRY, and with
    `more` sections."""
    unit = bytes([UNIT]) + UNIT_NAME + entries + b"\0"
    return elf_file([*debug_sections(unit, ABBREVIATIONS), *more], kind)


def skeleton(name):
    """A file whose debug information lies in the file `name`."""
    unit = bytes([1]) + UNIT_NAME + name.encode() + b"\0" + bytes(8)
    # name, name of the other file, number of the other file
    abbreviations = abbreviation(1, 0x11, 0, 0x03, 0x08, 0xB0, 0x42, 0x08, 0xB1, 0x42, 0x07)
    return elf_file(debug_sections(unit, abbreviations + b"\0"))


def link(section, name, rest):
    """A section that refers to a file, with what follows the name."""
    return (section, name.encode() + b"\0" + rest)


def deep_namespaces(depth):
    return with_entries(INTEGER_ENTRY + bytes([NAMESPACE]) * depth + bytes(depth))


def long_name(length):
    return with_entries(INTEGER_ENTRY + variable(b"n" * length, FIRST_ENTRY))


def past_the_end():
    return with_entries(INTEGER_ENTRY + variable(b"lost", 0x7FFFFFFF))


def doubling(levels):
    """Structures of two anonymous members each, which are structures of the same making."""
    entries = INTEGER_ENTRY
    inner = FIRST_ENTRY
    for level in range(levels):
        at = FIRST_ENTRY + len(entries)
        entries += bytes([STRUCTURE]) + f"s{level}".encode() + b"\0\x08"
        entries += 2 * (bytes([MEMBER]) + struct.pack("<I", inner) + b"\0") + b"\0"
        inner = at
    return with_entries(entries + variable(b"d", inner))
