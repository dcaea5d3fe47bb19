"""Run inside gdb: prints each expression of a JSON list and writes the texts as JSON.

The environment names the files: EXPRESSIONS the list, ANSWERS the result, an object of expression ->
what `print` writes behind `$1 = `, or the error.
"""
import json
import os

import gdb


def printed(expression):
    try:
        return gdb.execute("print " + expression, to_string=True).split(" = ", 1)[1].rstrip("\n")
    except gdb.error as error:
        return str(error)


with open(os.environ["EXPRESSIONS"]) as wanted:
    answers = {expression: printed(expression) for expression in json.load(wanted)}
with open(os.environ["ANSWERS"], "w") as out:
    json.dump(answers, out)
