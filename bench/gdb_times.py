"""Run inside gdb on a program: times expressions, as peer_times.py says."""
import gdb

import peer_times


def work_of(text):
    convert = int
    try:
        if gdb.parse_and_eval(text).type.strip_typedefs().code == gdb.TYPE_CODE_FLT:
            convert = float
    except gdb.error:
        pass
    return lambda: convert(gdb.parse_and_eval(text))


peer_times.report(work_of, gdb.error)
