"""What the peers that are asked through Python share: timing each text of a list.

The environment variable TEXTS holds the list as JSON. For each text one line is printed: median
nanoseconds of an evaluation, and the answer, a number or "error"; tab-separated.
"""
import json
import os
import statistics
import time

ROUNDS = 9
ROUND_SECONDS = 0.01


def nanoseconds(work, times):
    # Processor time: what else runs on the machine is not counted.
    start = time.process_time_ns()
    for _ in range(times):
        work()
    return (time.process_time_ns() - start) / times


def report(work_of, failure):
    """Times what `work_of` makes of each text: a callable that evaluates it to a number, or raises
    `failure`."""
    for text in json.loads(os.environ["TEXTS"]):
        work = work_of(text)

        def answer():
            try:
                return work()
            except failure:
                return "error"

        result = answer()
        once = max(1, min(nanoseconds(answer, 1) for _ in range(5)))
        times = max(1, int(ROUND_SECONDS * 1e9 / once))
        median = statistics.median(nanoseconds(answer, times) for _ in range(ROUNDS))
        print(f"{median:.0f}\t{result}", flush=True)
