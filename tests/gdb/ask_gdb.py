"""Run inside gdb: evaluates each expression of a JSON list and writes what it is as JSON.

The environment names the files: EXPRESSIONS the list, ANSWERS the result, an object of
expression -> {"kind": "integer" | "float" | "other" | "error", "value": ..., "size": bytes}.
"""
import json
import os

import gdb


def describe(value):
    plain = value.type.strip_typedefs()
    if plain.code == gdb.TYPE_CODE_FUNC:
        return {"kind": "integer", "value": int(value.address)}
    if plain.code == gdb.TYPE_CODE_FLT:
        return {"kind": "float", "value": float(value).hex(), "size": plain.sizeof}
    if plain.code in (gdb.TYPE_CODE_INT, gdb.TYPE_CODE_CHAR, gdb.TYPE_CODE_BOOL,
                      gdb.TYPE_CODE_ENUM, gdb.TYPE_CODE_PTR):
        return {"kind": "integer", "value": int(value)}
    return {"kind": "other", "value": str(value)}


def answer(expression):
    try:
        return describe(gdb.parse_and_eval(expression))
    except gdb.error as error:
        return {"kind": "error", "value": str(error)}


with open(os.environ["EXPRESSIONS"]) as wanted:
    answers = {expression: answer(expression) for expression in json.load(wanted)}
with open(os.environ["ANSWERS"], "w") as out:
    json.dump(answers, out)
