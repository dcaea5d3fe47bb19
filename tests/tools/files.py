#!/usr/bin/env python3
"""Files that are no programs, or hardly: each ends the command at once, with one line that says why."""
import os
import pathlib
import shutil
import struct
import subprocess
import tempfile

import elf
from command import Row, pattern, run_table, unusable

def compressed(method, size=64):
    """A file whose debug information is compressed by this method, of which `size` bytes are left."""
    section = (struct.pack("<IIQQ", method, 0, 100, 1) + b"?" * 64)[:size]
    content = bytearray(elf.elf_file([(".debug_info", section)]))
    headers, = struct.unpack_from("<Q", content, 0x28)
    struct.pack_into("<Q", content, headers + 64 + 8, 0x800)  # the flag of the first section
    return bytes(content)


FILES = {
    "empty": b"",
    "script": b"#!/bin/sh\necho hello\n",
    "windows": b"MZ\x90\0" + bytes(60) + b"PE\0\0" + bytes(200),
    "mac": b"\xcf\xfa\xed\xfe\x07\0\0\x01" + bytes(200),
    "archive": b"!<arch>\n" + b"member/".ljust(48) + b"4".ljust(10) + b"`\nabc\n",
    "core": elf.elf_file(kind=elf.CORE),
    "object": elf.with_entries(elf.INTEGER_ENTRY, kind=elf.OBJECT),
    "shared": elf.with_entries(elf.INTEGER_ENTRY, kind=elf.SHARED),
    "bare": elf.elf_file(),
    "deep": elf.deep_namespaces(1_000_000),
    "long": elf.long_name(10_000_000),
    "lost": elf.past_the_end(),
    "doubling": elf.doubling(40),
    "damaged": compressed(1),
    "method2": compressed(2),
    "method7": compressed(7),
    "cut": compressed(1, size=9),
}


def broken(name, expression, message, **more):
    return Row([name, expression], status=1, stderr=pattern(
        f"resolve: {expression}: broken debug information in '{name}' at offset <address>: "
        f"{message}\n"), **more)


ROWS = [
    # other kinds of files
    *(unusable([name, "x"], f"'{name}' is not an ELF file")
      for name in ("empty", "script", "windows", "mac")),
    *(unusable([name, "x"], f"'{name}' is not a regular file")
      for name in ("/dev/null", "/dev/zero", "/dev/full")),
    unusable(["archive", "x"], "'archive' is an archive of object files, not a program"),
    unusable(["core", "x"], "'core' is a core dump, not a program"),
    unusable(["object", "x"], "'object' is an object file that has not been linked"),
    unusable(["bare", "x"], "the program 'bare' has no debug information and no symbols"),
    Row(["shared", "sizeof(int)"], stdout="4\n"),
    *(unusable([name, "x"], f"the debug information of '{name}' cannot be read: its section "
               f".debug_info is compressed {how}")
      for name, how in (("damaged", "with zlib, and damaged"),
                        ("method2", "with zstd, which this build cannot read"),
                        ("method7", "by method 7, which this build cannot read"),
                        ("cut", "and damaged"))),
    # debug information that no compiler writes
    broken("deep", "x", "entries are nested too deeply"),
    Row(["deep", "(int)'a'"], stdout="97\n"),
    Row(["--labels", "long"], stdout=pattern("n<rest>\n")),
    Row(["long", "sizeof(int)"], stdout="4\n"),
    broken("lost", "lost", "<rest>"),
    Row(["doubling", "-"], stdin=b"d.a\n" * 5000, status=1,
        stderr=pattern("resolve: d.a: <rest>\n" * 5000)),
]


def run(resolve, *arguments, folder=None, **more):
    return subprocess.run([resolve, *arguments], capture_output=True, text=True, cwd=folder, **more)


def refused(done, sentence):
    got = (done.stdout, done.stderr, done.returncode)
    wanted = ("", f"resolve: {sentence}\n", 2)
    return "" if got == wanted else f"got {got}, not {wanted}"


def in_a_folder(check):
    """The check gets a folder of its own."""
    def with_folder(resolve, program):
        with tempfile.TemporaryDirectory() as folder:
            return check(resolve, program, pathlib.Path(folder))
    with_folder.__doc__ = check.__doc__
    return with_folder


@in_a_folder
def pipe(resolve, program, folder):
    """A pipe that nobody writes to is not waited for."""
    os.mkfifo(folder / "pipe")
    return refused(run(resolve, "pipe", "x", folder=folder), "'pipe' is not a regular file")


@in_a_folder
def pipe_for_debug_information(resolve, program, folder):
    """Nor is one that a program names as the place of its debug information."""
    os.mkfifo(folder / "pipe")
    place = os.path.realpath(folder / "pipe")
    integer = elf.INTEGER_ENTRY
    cases = {
        "split": (elf.skeleton("pipe"), "lies in '" + place + "', which is not a regular file"),
        "apart": (elf.elf_file([elf.link(".gnu_debuglink", "pipe", bytes(3 + 4))]),
                  "cannot be used: '" + place + "' is not a regular file"),
        "shared": (elf.with_entries(integer, more=[elf.link(".gnu_debugaltlink", "pipe", bytes(20))]),
                   "lies in 'pipe', but '" + place + "' is not a regular file"),
    }
    wrong = []
    for name, (content, sentence) in cases.items():
        (folder / name).write_bytes(content)
        done = run(resolve, name, "x", folder=folder)
        if done.returncode != 2 or done.stderr.count("\n") != 1 or sentence not in done.stderr:
            wrong.append(f"{name}: {done}")
    return "; ".join(wrong)


@in_a_folder
def debug_folder(resolve, program, folder):
    """The folder of debug information can be chosen."""
    build_id = struct.pack("<III", 4, 20, 3) + b"GNU\0" + bytes(range(20))
    note = (".note.gnu.build-id", build_id)
    (folder / "apart").write_bytes(elf.elf_file([note]))
    place = folder / "symbols/.build-id/00" / (bytes(range(1, 20)).hex() + ".debug")
    place.parent.mkdir(parents=True)
    place.write_bytes(elf.with_entries(elf.INTEGER_ENTRY, more=[note]))
    found = run(resolve, "--debug-folder", "symbols", "apart", "sizeof(int)", folder=folder)
    missed = run(resolve, "apart", "sizeof(int)", folder=folder)
    if (found.stdout, found.stderr, found.returncode) != ("4\n", "", 0):
        return f"got {found}"
    return refused(missed, "the program 'apart' has no debug information and no symbols")


def without_types(done, name, reason):
    """What is wrong with the answers to name, name.a, nowhere and 1 + 2 where the reason has left
    symbols only."""
    address = f"of '{name}' only the address is known: {reason}"
    errors = (f"note: {name}: {address}\n"
              f"resolve: {name}.a: The specified field isn`t found in structure of type; {address}\n"
              f"resolve: nowhere: {reason}\n")
    wanted = (errors, 1)
    answers = done.stdout.splitlines()
    if (done.stderr, done.returncode) != wanted or len(answers) != 2 or answers[1] != "3":
        return f"got {done}, not {wanted}"
    return ""


@in_a_folder
def compressed_program(resolve, program, folder):
    """A program that is compressed with zstd has its symbols only, and says so."""
    subprocess.run(["objcopy", "--compress-debug-sections=zstd", program, folder / "zstd"],
                   check=True)
    done = run(resolve, "zstd", "s", "s.a", "nowhere", "1 + 2", folder=folder)
    return without_types(done, "s", "the debug information of 'zstd' cannot be read: its section "
                         ".debug_info is compressed with zstd, which this build cannot read")


@in_a_folder
def lost_part(resolve, program, folder):
    """What fails for want of a lost .dwo file names it."""
    (folder / "part.c").write_text("struct { int a; } s = {1};\nint main(void) { return 0; }\n")
    for command in ("gcc -g -gsplit-dwarf -c part.c", "gcc part.o -o part"):
        subprocess.run(command.split(), cwd=folder, check=True)
    whole = run(resolve, "part", "s.a", folder=folder)
    if (whole.stdout, whole.stderr) != ("1\n", ""):
        return f"got {whole}"
    (folder / "part.dwo").unlink()
    reason = "part of the debug information of 'part' lies in 'part.dwo', which is not there"
    listing = run(resolve, "--labels", "part", folder=folder)
    if "\nmain " not in listing.stdout:
        return f"got {listing}"
    return (without_types(run(resolve, "part", "s", "s.a", "nowhere", "1 + 2", folder=folder), "s",
                          reason) or
            refused(run(resolve, "--types", "part", folder=folder), reason))


@in_a_folder
def unreadable(resolve, program, folder):
    """A file without the right to read it."""
    (folder / "secret").write_bytes(b"")
    (folder / "secret").chmod(0)
    somebody = {}
    if os.geteuid() == 0:
        # Root may read everything; somebody else may not even look where the command was built.
        nobody = 65534
        somebody = {"user": nobody, "group": nobody, "extra_groups": []}
        folder.chmod(0o755)
        resolve = shutil.copy(resolve, folder)
    return refused(run(resolve, "secret", "x", folder=folder, **somebody),
                   "the file 'secret' cannot be read: Permission denied")


@in_a_folder
def sparse(resolve, program, folder):
    """A file of 1 TiB that holds nothing."""
    with open(folder / "sparse", "wb") as file:
        file.truncate(1 << 40)
    return refused(run(resolve, "sparse", "x", folder=folder), "'sparse' is not an ELF file")


@in_a_folder
def sparse_program(resolve, program, folder):
    """A program that goes on for 1 TiB."""
    content = pathlib.Path(program).read_bytes()
    (folder / "large").write_bytes(content)
    os.truncate(folder / "large", 1 << 40)
    done = run(resolve, "large", "x", folder=folder)
    return "" if (done.stdout, done.returncode) == ("42\n", 0) else f"got {done}"


@in_a_folder
def truncated(resolve, program, folder):
    """A program cut off anywhere gives one line: an answer, or why there is none."""
    content = elf.long_name(2000)
    wrong = []
    for size in range(0, len(content), 64):
        (folder / "cut").write_bytes(content[:size])
        done = run(resolve, "cut", "sizeof(int)", folder=folder)
        answered = (done.stdout, done.stderr, done.returncode) == ("4\n", "", 0)
        failed = done.stdout == "" and done.stderr.count("\n") == 1 and done.returncode in (1, 2)
        if not answered and not failed:
            wrong.append(f"{size} bytes: {done}")
    return "; ".join(wrong)


run_table(ROWS, files=FILES,
          checks=(pipe, pipe_for_debug_information, debug_folder, compressed_program, lost_part,
                  unreadable, sparse, sparse_program, truncated))
