"""Times expressions over a program with drgn, as peer_times.py says.

usage: drgn_times.py PROGRAM
"""
import sys

import drgn_value
import peer_times

names = drgn_value.Names(drgn_value.open_program(sys.argv[1]))
# An unknown label is a KeyError, and to Python a name without meaning.
peer_times.report(lambda text: lambda: drgn_value.evaluate(text, names), NameError)
