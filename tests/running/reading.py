#!/usr/bin/env python3
"""Running processes that are only looked at: what is read, and that nothing happens to them."""
import os
import pathlib
import shutil
import subprocess
import tempfile

from child import (expect, expect_run, may_read, resolve, run_checks, running, states, status,
                   threads)

# Expression -> what `resolve` prints.
ANSWERS = {
    "number": "-7",
    "numbers[2]+0": "30",
    "ratio": "0.25",
    "head->next->v": "22",
    "only_here": "5",
    "*(int*)edge": str((99 << 24) + 0x010101),
    "*(closed-1)": "99",
    "shared_number": "42",
    "shared_parcels[1].weight": "200",
    "library_only": "17",
    "signals_seen": "0",
}


def check_answers(command, process, *options):
    expect_run(resolve(command, *options, "--pid", process, *ANSWERS),
               "".join(answer + "\n" for answer in ANSWERS.values()))


def address(command, process, expression):
    return int(resolve(command, "--plain", "--pid", process, expression).stdout)


def answers(command, folder):
    """Labels and types are those of the program and its libraries, values those of the process."""
    with running(folder / "running") as child:
        check_answers(command, child.pid)


def answers_of_32_bit(command, folder):
    """A process of 32 bits is read by a command of 64."""
    if not (folder / "running-m32").exists():
        return "there is no program of 32 bits"
    with running(folder / "running-m32") as child:
        check_answers(command, child.pid)
        expect(resolve(command, "--pid", child.pid, "sizeof(head)").stdout, "4\n")


def answers_by_thread(command, folder):
    """The number of a thread stands for its process."""
    with running(folder / "running") as child:
        for thread in threads(child.pid):
            check_answers(command, thread)


def first_thread_left(command, folder):
    """A process whose first thread has ended goes on with the others."""
    with running(folder / "running", "leave") as child:
        while status(child.pid, "State")[:1] != "Z":
            assert child.poll() is None, "the process has ended"
        check_answers(command, child.pid)


def gaps(command, folder):
    """Memory that is not there and memory that is closed are told apart, to the byte."""
    with running(folder / "running") as child:
        closed = address(command, child.pid, "closed")
        gone = address(command, child.pid, "gone")
        refused = {
            "*closed": f"{closed:#x}: that is not allowed",
            "*(closed+100)": f"{closed + 100:#x}: that is not allowed",
            "*gone": f"{gone:#x}",
            "*(gone-1)": f"{gone - 1:#x}: that is not allowed",
            "*(int*)0": "0x0",
            "*(char*)0xffffffffffffffff": "0xffffffffffffffff",
        }
        expect_run(resolve(command, "--pid", child.pid, *refused), code=1, stderr="".join(
            f"resolve: {text}: cannot read memory at {place}\n" for text, place in refused.items()))


def changes(command, folder):
    """A value that the process changes is read anew each time."""
    with running(folder / "running", "count") as child:
        seen = set()
        while len(seen) < 2:
            seen.update(resolve(command, "--pid", child.pid, *["counter"] * 50).stdout.split())


def undisturbed(command, folder):
    """The process is never stopped, traced or signalled."""
    with running(folder / "running", "count") as child:
        with subprocess.Popen([command, "--pid", str(child.pid), *["head->next->v"] * 20000],
                              stdout=subprocess.PIPE) as looking:
            seen, tracers = set(), set()
            while looking.poll() is None:
                seen |= states(child.pid)
                tracers.add(status(child.pid, "TracerPid"))
                looking.stdout.read1(65536)
        expect(looking.returncode, 0)
        assert seen <= {"R", "S", "D"}, f"states of its threads: {seen}"
        expect(tracers, {"0"})
        expect_run(resolve(command, "--pid", child.pid, "signals_seen"), "0\n")


def another_user(command, folder):
    """With the right to do so, the process of another user is read."""
    if os.geteuid() != 0:
        return "needs root"
    with running(folder / "running", "nobody") as child:
        if not may_read(child.pid):
            return "root may not read other users' processes here"
        expect(status(child.pid, "Uid").split()[0], "65534")
        check_answers(command, child.pid)


def listings(command, folder):
    """Listings hold the names of the program and of its libraries."""
    with running(folder / "running") as child:
        done = resolve(command, "--labels", "shared_*", "--pid", child.pid)
        expect([line.split()[0] for line in done.stdout.splitlines()],
               ["shared_number", "shared_parcels"])
        done = resolve(command, "--pid", child.pid, "--types", "struct node")
        expect((done.stdout.split()[:2], done.returncode), (["struct", "node"], 0))
        expect_run(resolve(command, "--labels", "x*", "--pid", child.pid, "y"), code=2,
                   stderr="resolve: a listing takes no expressions; see resolve --help\n")
        expect_run(resolve(command, "--labels", "nowhere", "--pid", child.pid), code=1,
                   stderr=f"resolve: no label of process {child.pid} matches nowhere\n")


def moved(folder, name):
    """A copy of the program and its library in a folder of that name."""
    place = pathlib.Path(folder) / name
    place.mkdir()
    for file in ("running", "librunning.so"):
        shutil.copy(pathlib.Path(folder) / file, place / file)
    return place


def copies(folder):
    scratch = tempfile.TemporaryDirectory()
    for file in ("running", "librunning.so"):
        shutil.copy(folder / file, scratch.name)
    return scratch


def odd_names(command, folder):
    """Paths may hold whatever a path may hold."""
    with copies(folder) as scratch:
        for name in ("two words", "line\nfeed", "gone (deleted)", "ü", "-", " [heap]"):
            with running(moved(scratch, name) / "running") as child:
                check_answers(command, child.pid)


def follows_map_files(process):
    links = pathlib.Path(f"/proc/{process}/map_files")
    try:
        return all(link.stat() for link in links.iterdir())
    except OSError:
        return False


def deleted(command, folder):
    """A program that was deleted, or replaced by another, is still found, and its library."""
    with copies(folder) as scratch:
        place = moved(scratch, "place")
        with running(place / "running") as child:
            reachable = follows_map_files(child.pid)
            (place / "running").unlink()
            if reachable:
                (place / "librunning.so").unlink()
            check_answers(command, child.pid)
            shutil.copy("/bin/true", place / "running")
            if reachable:
                shutil.copy("/bin/true", place / "librunning.so")
            check_answers(command, child.pid)
            if not reachable:
                return "of the library: this system lets nobody follow /proc/ID/map_files"


def replaced_library(command, folder):
    """A library that was replaced and cannot be reached is not taken for the one that is loaded."""
    if os.geteuid() != 0:
        return "needs root"
    with copies(folder) as scratch:
        place = moved(scratch, "place")
        os.chmod(scratch, 0o755)
        nobody = {"user": 65534, "group": 65534, "extra_groups": []}
        tool = place / "resolve"
        shutil.copy(command, tool)
        with running(place / "running", **nobody) as child:
            (place / "librunning.so").unlink()
            shutil.copy("/bin/true", place / "librunning.so")
            done = resolve(tool, "--pid", child.pid, "number", "shared_number", **nobody)
            if "not allowed to read" in done.stderr:
                return "this system lets users read no processes of theirs"
            expect((done.stdout, done.returncode), ("-7\n", 1))
            assert "librunning.so (deleted)' cannot be used: " in done.stderr, done.stderr


def other_mounts(command, folder):
    """A program that lies where only its process sees it is found through the process."""
    with copies(folder) as scratch:
        place = moved(scratch, "place")
        hidden = pathlib.Path(scratch) / "hidden"
        hidden.mkdir()
        script = 'mount --bind "$0" "$1" && exec "$1/running"'
        try:
            with running("unshare", "--mount", "sh", "-c", script, place, hidden) as child:
                assert not (hidden / "running").exists()
                check_answers(command, child.pid)
        except (AssertionError, FileNotFoundError) as error:
            if "says b''" in str(error) or isinstance(error, FileNotFoundError):
                return "this system lets nobody make a mount namespace"
            raise


def other_program(command, folder):
    """Names may come from a copy of the program that has debug information."""
    with copies(folder) as scratch:
        place = moved(scratch, "place")
        subprocess.run(["strip", place / "running"], check=True)
        with running(place / "running") as child:
            expect_run(resolve(command, "--pid", child.pid, "number"), code=1,
                       stderr="resolve: number: Undefined label number\n")
            check_answers(command, child.pid, "--program", folder / "running")
            expect(resolve(command, "--program", "/dev/null", "--pid", child.pid, "1").returncode, 2)
            library = folder / "librunning.so"
            done = resolve(command, "--program", library, "--pid", child.pid, "1")
            expect((done.stdout, done.returncode), ("1\n", 0))
            assert done.stderr.startswith(
                f"warning: {library} is not what process {child.pid} runs: "), done.stderr


def current_file(command, folder):
    """A library's source file can be made the current one."""
    with running(folder / "running") as child:
        expect_run(resolve(command, "--file", "library.c", "--pid", child.pid, "only_here"), "17\n")
        expect_run(resolve(command, "--pid", child.pid, "only_here"), "5\n")


run_checks((answers, answers_of_32_bit, answers_by_thread, first_thread_left, gaps, changes,
            undisturbed, another_user, listings, odd_names, deleted, replaced_library, other_mounts,
            other_program, current_file))
