#!/usr/bin/env python3
"""--stop: the process is held while the command looks at it, and goes on afterwards, whatever ends the
command."""
import fcntl
import os
import signal
import sys
import termios

from child import (PATIENCE, Dialogue, expect, expect_run, resolve, run_checks, running, states,
                   status, wait_until)

COUNTERS = ("counter", "other_counter")
ENDS = (signal.SIGINT, signal.SIGTERM, signal.SIGHUP, signal.SIGKILL)


def counters(command, process, *options):
    done = resolve(command, *options, "--pid", process, *COUNTERS, *COUNTERS)
    expect((done.stderr, done.returncode), ("", 0))
    values = [int(line) for line in done.stdout.split()]
    return values[:2], values[2:]


def check_goes_on(command, process):
    """Nobody holds the process, and all its threads make progress."""
    expect(status(process, "TracerPid"), "0")
    before, _ = counters(command, process)

    def both_grew():
        now, _ = counters(command, process)
        return all(a < b for a, b in zip(before, now))
    wait_until(both_grew, "the threads do not go on")


def waiting_bytes(pipe):
    return int.from_bytes(fcntl.ioctl(pipe, termios.FIONREAD, bytes(4)), sys.byteorder)


def value(command, process, name):
    return resolve(command, "--pid", process, name).stdout.strip()


def held(command, folder):
    """Two looks in one run see the same, and the process goes on afterwards."""
    with running(folder / "running", "count") as child:
        for _ in range(20):
            first, second = counters(command, child.pid, "--stop")
            expect(first, second)
        check_goes_on(command, child.pid)
        expect(value(command, child.pid, "signals_seen"), "0")


def held_32_bit(command, folder):
    """A process of 32 bits as well."""
    if not (folder / "running-m32").exists():
        return "there is no program of 32 bits"
    with running(folder / "running-m32", "count") as child:
        first, second = counters(command, child.pid, "--stop")
        expect(first, second)
        check_goes_on(command, child.pid)


def held_until_the_end(command, folder):
    """All threads are held from the first answer to the end of the expressions."""
    with running(folder / "running", "count") as child:
        with Dialogue(command, "--pid", child.pid, "--stop") as dialogue:
            answers = [dialogue.ask(name) for name in (*COUNTERS, *COUNTERS)]
            expect(answers[:2], answers[2:])
            expect(states(child.pid), {"t"})
            expect(status(child.pid, "TracerPid"), str(dialogue.process.pid))
            expect(dialogue.end(), ("", "", 0))
        check_goes_on(command, child.pid)


def threads_come_and_go(command, folder):
    """Threads that start while others are being held are held as well."""
    with running(folder / "running", "spawn") as child:
        for _ in range(20):
            with Dialogue(command, "--pid", child.pid, "--stop") as dialogue:
                first = dialogue.ask("spawned")
                assert states(child.pid) <= {"t", "Z", "X"}, states(child.pid)
                expect(dialogue.ask("spawned"), first)
                expect(dialogue.end(), ("", "", 0))
            before = int(first)
            wait_until(lambda: int(value(command, child.pid, "spawned")) > before,
                       "no thread starts any more")


def first_thread_left(command, folder):
    """A process whose first thread has ended is held by the others."""
    with running(folder / "running", "count", "leave") as child:
        wait_until(lambda: status(child.pid, "State")[:1] == "Z", "the first thread does not end")
        first, second = counters(command, child.pid, "--stop")
        expect(first, second)
        check_goes_on(command, child.pid)


def ended_by_signals(command, folder):
    """The process goes on when a signal ends the command, and gets the signals of its own that came
    meanwhile."""
    with running(folder / "running", "count") as child:
        for count, end in enumerate(ENDS):
            with Dialogue(command, "--pid", child.pid, "--stop") as dialogue:
                dialogue.ask("counter")
                os.kill(child.pid, signal.SIGUSR1)
                expect(dialogue.ask("signals_seen"), str(count))
                dialogue.process.send_signal(end)
                expect(dialogue.process.wait(PATIENCE), -end)
            check_goes_on(command, child.pid)
            wait_until(lambda: value(command, child.pid, "signals_seen") == str(count + 1),
                       "the signal does not arrive")
            expect(value(command, child.pid, "last_signal"), str(int(signal.SIGUSR1)))


def signals_arrive(command, folder):
    """Signals that come at any moment arrive, each of them."""
    with running(folder / "running", "count") as child:
        sent = 0
        for _ in range(30):
            with Dialogue(command, "--pid", child.pid, "--stop") as dialogue:
                # Before, while and after the threads are being held. Signals of this kind queue up.
                dialogue.send("number")
                for _ in range(20):
                    os.kill(child.pid, signal.SIGRTMIN + 1)
                    sent += 1
                expect(dialogue.end(), ("-7\n", "", 0))
        wait_until(lambda: value(command, child.pid, "signals_seen") == str(sent),
                   "signals do not arrive")


def ended_while_writing(command, folder):
    """A command whose output nobody reads can be ended as well."""
    with running(folder / "running", "count") as child:
        for end in ENDS:
            with Dialogue(command, "--pid", child.pid, "--stop", "-v") as dialogue:
                dialogue.ask("counter")
                # The answers are more than a pipe holds.
                dialogue.send("counter\n" * 3000)
                wait_until(lambda: waiting_bytes(dialogue.process.stdout) > 60000,
                           "the answers do not fill the pipe")
                dialogue.process.send_signal(end)
                expect(dialogue.process.wait(PATIENCE), -end)
            check_goes_on(command, child.pid)


def ended_while_stopping(command, folder):
    """At whatever moment the command is killed, the process goes on."""
    with running(folder / "running", "count") as child:
        for end in ENDS:
            for _ in range(5):
                with Dialogue(command, "--pid", child.pid, "--stop") as dialogue:
                    wait_until(lambda: status(child.pid, "TracerPid") != "0"
                               or dialogue.process.poll() is not None, "nothing is held")
                    dialogue.process.send_signal(end)
                    expect(dialogue.process.wait(PATIENCE), -end)
                check_goes_on(command, child.pid)


def ignored_signal(command, folder):
    """A signal that was ignored when the command began does not end it."""
    with running(folder / "running") as child:
        handler = signal.signal(signal.SIGHUP, signal.SIG_IGN)
        try:
            dialogue = Dialogue(command, "--pid", child.pid, "--stop")
        finally:
            signal.signal(signal.SIGHUP, handler)
        with dialogue:
            expect(dialogue.ask("number"), "-7")
            dialogue.process.send_signal(signal.SIGHUP)
            expect(dialogue.ask("number"), "-7")
            expect(dialogue.end(), ("", "", 0))


def stopped_before(command, folder):
    """A process that was stopped stays so until someone else lets it go on."""
    for end in (None, *ENDS):
        with running(folder / "running", "count") as child:
            os.kill(child.pid, signal.SIGSTOP)
            wait_until(lambda: states(child.pid) == {"T"}, "the process does not stop")
            with Dialogue(command, "--pid", child.pid, "--stop") as dialogue:
                first = dialogue.ask("counter")
                if end:
                    dialogue.process.send_signal(end)
                    expect(dialogue.process.wait(PATIENCE), -end)
                else:
                    expect(dialogue.end(), ("", "", 0))
            wait_until(lambda: states(child.pid) == {"T"}, "the process does not stay stopped")
            expect(value(command, child.pid, "counter"), first)
            os.kill(child.pid, signal.SIGCONT)
            check_goes_on(command, child.pid)


def stopped_meanwhile(command, folder):
    """A process that someone stops while it is held is stopped afterwards."""
    with running(folder / "running", "count") as child:
        with Dialogue(command, "--pid", child.pid, "--stop") as dialogue:
            dialogue.ask("counter")
            os.kill(child.pid, signal.SIGSTOP)
            expect(dialogue.end(), ("", "", 0))
        wait_until(lambda: states(child.pid) == {"T"}, "the process does not stop")
        os.kill(child.pid, signal.SIGCONT)
        check_goes_on(command, child.pid)


def killed_meanwhile(command, folder):
    """A process that is killed while it is held ends, and so does the command."""
    with running(folder / "running", "count") as child:
        with Dialogue(command, "--pid", child.pid, "--stop") as dialogue:
            expect(dialogue.ask("number"), "-7")
            child.kill()
            wait_until(lambda: states(child.pid) <= {"Z", "X"}, "the process does not end")
            dialogue.send("number")
            expect(dialogue.end(), ("", f"resolve: process {child.pid} has ended\n", 2))
        expect(child.wait(PATIENCE), -signal.SIGKILL)


def held_already(command, folder):
    """Who is held by one command cannot be held by another, but can be looked at."""
    with running(folder / "running") as child:
        with Dialogue(command, "--pid", child.pid, "--stop") as dialogue:
            expect(dialogue.ask("number"), "-7")
            expect_run(resolve(command, "--pid", child.pid, "number"), "-7\n")
            expect_run(resolve(command, "--pid", child.pid, "--stop", "number"), code=2,
                       stderr=f"resolve: not allowed to stop process {child.pid}: process "
                              f"{dialogue.process.pid} is debugging it already\n")
            expect(dialogue.end(), ("", "", 0))


def many_answers(command, folder):
    """What is written in pieces arrives whole."""
    with running(folder / "running") as child:
        expect_run(resolve(command, "--stop", "--pid", child.pid, "--labels", "number"),
                   resolve(command, "--pid", child.pid, "--labels", "number").stdout)
        everything = resolve(command, "--pid", child.pid, "--labels").stdout
        assert len(everything) > 65536
        expect_run(resolve(command, "--stop", "--pid", child.pid, "--labels"), everything)
        expect_run(resolve(command, "--stop", "--pid", child.pid, *["number"] * 5000),
                   "-7\n" * 5000)


run_checks((held, held_32_bit, held_until_the_end, threads_come_and_go, first_thread_left,
            ended_by_signals, signals_arrive, ended_while_writing, ended_while_stopping, ignored_signal,
            stopped_before, stopped_meanwhile, killed_meanwhile, held_already, many_answers),
           hold=True)
