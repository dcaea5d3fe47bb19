"""Emulators whose stub listens on a Unix socket, and the values that every program here begins
with."""
import contextlib
import pathlib
import shutil
import subprocess

import stubs

VALUES = {
    "x": "-42", "s": "-300", "byte": "200", "wide": "-6000000000", "real": "-1.5", "a[3]": "40",
    "a[i]": "30", "record.in.deep": "99", "finished": "0", "sizeof(struct node)": "8",
    "(unsigned char)x": "214", "x + s": "-342",
}
# Through pointers, which somebody must have relocated.
POINTED = {
    "head->v": "11", "head->next->v": "22", "head->next->next": "0", "*p": "20", "*(p+1)": "30",
}


def need(*paths):
    """Ends the script when a program that it needs is missing."""
    for path in paths:
        if shutil.which(path) is None:
            stubs.skip(f"{path} is missing; the group `emulators` of scripts/packages has it, and "
                       "programs for other machines take clang and lld")


def need_file(path):
    if not path.exists():
        stubs.skip(f"{path.name} was not compiled: that takes clang and lld")


def listens(path):
    """Does somebody listen on the socket? Trying it would take the only connection."""
    accepting = "00010000"
    return any(len(words) == 8 and words[3] == accepting and words[7] == str(path)
               for words in map(str.split, pathlib.Path("/proc/net/unix").read_text().splitlines()))


@contextlib.contextmanager
def emulator(*words):
    """Runs an emulator, in whose words SOCKET stands for the path of the socket; the path, and the
    process."""
    with stubs.folder() as place:
        path = place / "socket"
        words = [str(word).replace("SOCKET", str(path)) for word in words]
        with stubs.process(*words, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                           stderr=subprocess.DEVNULL) as child:
            stubs.wait_until(lambda: listens(path) or child.poll() is not None, words[0])
            assert child.poll() is None, f"{words} ended with {child.returncode}"
            yield path, child


def expect_values(command, path, program, values, *options):
    stubs.expect(stubs.resolve(command, *options, "--remote", path, program, *values),
                 ("".join(value + "\n" for value in values.values()), "", 0), program)


def gdb_values(path, program, expressions):
    """What gdb prints, over the same stub; nothing when there is no gdb for this machine."""
    if shutil.which("gdb-multiarch") is None:
        return None
    words = ["gdb-multiarch", "-batch", "-nx", "-ex", f"target remote {path}"]
    for expression in expressions:
        words += ["-ex", f'output/d {expression}', "-ex", "echo \\n"]
    done = subprocess.run([*words, str(program)], stdin=subprocess.DEVNULL, capture_output=True,
                          text=True, timeout=stubs.PATIENCE)
    return done.stdout.strip().splitlines()[-len(expressions):]
