#!/usr/bin/env python3
"""Processes that cannot be read, or not to the end: one line that says why, and status 2."""
import os
import pathlib
import shutil
import signal
import subprocess
import tempfile

from child import PATIENCE, Dialogue, expect, expect_run, resolve, run_checks, running, states, wait_until

MORE = "; see resolve --help"
NOBODY = 65534


def unusable(done, sentence):
    expect_run(done, code=2, stderr=f"resolve: {sentence}\n")


def command_lines(command, folder):
    """What is no number of a process."""
    for arguments, sentence in (
            (["--pid", "0"], "--pid: no process has the number 0" + MORE),
            (["--pid", "-0"], "--pid: no process has the number 0" + MORE),
            (["--pid=-5"], "--pid: no process has a negative number, such as -5" + MORE),
            (["--pid", "-5"], "--pid: no process has a negative number, such as -5" + MORE),
            (["--pid", "self"], "--pid takes the number of a process, not 'self'" + MORE),
            (["--pid", "12x"], "--pid takes the number of a process, not '12x'" + MORE),
            (["--pid", "0x10"], "--pid takes the number of a process, not '0x10'" + MORE),
            (["--pid", ""], "--pid takes the number of a process, not ''" + MORE),
            (["--pid", "9" * 30], "--pid: no process has a number as large as " + "9" * 30 + MORE),
            (["--pid", "9999999999"], "there is no process 9999999999"),
            (["--pid", "2147483647"], "there is no process 2147483647"),
            (["--stop"], "--stop and --program are about a process, which --pid names" + MORE),
            (["--program", "prog"],
             "--stop and --program are about a process, which --pid names" + MORE)):
        unusable(resolve(command, *arguments, "x"), sentence)
    unusable(resolve(command, "--pid"), "--pid: 1 required PID missing" + MORE)
    with running(folder / "running") as child:
        unusable(resolve(command, "--watch", "1", "--pid", child.pid),
                 "no expression is given to --watch" + MORE)
        unusable(resolve(command, "--pid", child.pid, "--bogus", "x"),
                 "there is no option --bogus" + MORE)
        expect_run(resolve(command, "--pid", child.pid, "--", "-number"), "7\n")


def ended_before(command, folder):
    """A process that has ended, whether its parent knows or not."""
    with running(folder / "running") as child:
        child.kill()
        wait_until(lambda: states(child.pid) <= {"Z"}, "the process does not end")
        for options in ([], ["--stop"]):
            unusable(resolve(command, *options, "--pid", child.pid, "number"),
                     f"process {child.pid} has ended")
        child.wait()
        unusable(resolve(command, "--pid", child.pid, "number"), f"there is no process {child.pid}")


def ended_meanwhile(command, folder):
    """A process that ends after the first answer."""
    with running(folder / "running") as child:
        with Dialogue(command, "--pid", child.pid) as dialogue:
            expect(dialogue.ask("number"), "-7")
            child.stdin.write(b"q")
            child.stdin.flush()
            wait_until(lambda: states(child.pid) <= {"Z"}, "the process does not end")
            dialogue.send("number\nnumber")
            expect(dialogue.end(), ("", f"resolve: process {child.pid} has ended\n", 2))
    with running(folder / "running") as child:
        with Dialogue(command, "--pid", child.pid) as dialogue:
            expect(dialogue.ask("number"), "-7")
            child.kill()
            child.wait()
            dialogue.send("number")
            expect(dialogue.end(), ("", f"resolve: process {child.pid} has ended\n", 2))


def other_program(command, folder):
    """A process that starts another program, be it the same file, is another target."""
    with running(folder / "running") as child:
        with Dialogue(command, "--pid", child.pid) as dialogue:
            expect(dialogue.ask("number"), "-7")
            child.stdin.write(b"x")
            child.stdin.flush()
            expect(child.stdout.readline(), b"ready\n")
            dialogue.send("number")
            expect(dialogue.end(), ("", f"resolve: process {child.pid} no longer runs the program "
                                        "that it ran\n", 2))
        expect_run(resolve(command, "--pid", child.pid, "number"), "-7\n")


def kernel_thread(command, folder):
    """Threads of the kernel have no memory."""
    for process in filter(str.isdigit, os.listdir("/proc")):
        try:
            flags = pathlib.Path(f"/proc/{process}/stat").read_text().rpartition(")")[2].split()[6]
        except OSError:
            continue
        if int(flags) & 0x200000:
            done = resolve(command, "--pid", process, "x")
            if "not allowed" in done.stderr:
                return "threads of the kernel may not be looked at here"
            return unusable(done, f"process {process} is a thread of the kernel: it has no memory "
                                  "of its own")
    return "no thread of the kernel is to be seen"


def another_user(command, folder):
    """The process of another user, without the right to read it."""
    if os.geteuid() != 0:
        return "needs root"
    with tempfile.TemporaryDirectory() as place, running(folder / "running") as child:
        os.chmod(place, 0o755)
        tool = shutil.copy(command, place)
        for options in ([], ["--stop"]):
            unusable(resolve(tool, *options, "--pid", child.pid, "number", user=NOBODY,
                             group=NOBODY, extra_groups=[]),
                     f"not allowed to read process {child.pid}: it belongs to user root, and that "
                     "takes the capability CAP_SYS_PTRACE")


def itself(command, folder):
    """The command cannot hold itself."""
    # The shell's number is that of the command that takes its place.
    done = subprocess.run(["/bin/sh", "-c", 'exec "$0" --pid $$ --stop 1', command],
                          capture_output=True, text=True, stdin=subprocess.DEVNULL,
                          timeout=PATIENCE)
    expect((done.stdout, done.returncode), ("", 2))
    assert done.stderr.endswith(" is this one: it cannot hold itself\n"), done.stderr


def lost_reader(command, folder):
    """A reader that goes away ends the command, and not the process."""
    with running(folder / "running") as child:
        with Dialogue(command, "--pid", child.pid, "--stop") as dialogue:
            expect(dialogue.ask("number"), "-7")
            dialogue.process.stdout.close()
            dialogue.send("number")
            expect(dialogue.process.wait(60), 2)
        expect_run(resolve(command, "--pid", child.pid, "number"), "-7\n")
        child.send_signal(signal.SIGUSR1)
        wait_until(lambda: resolve(command, "--pid", child.pid, "signals_seen").stdout == "1\n",
                   "the process does not go on")


run_checks((command_lines, ended_before, ended_meanwhile, other_program, kernel_thread, another_user,
            itself, lost_reader))
