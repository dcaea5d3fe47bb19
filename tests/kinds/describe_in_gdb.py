"""Run inside gdb on a process: writes a description of the program, as docs/DESCRIBE.md defines it,
and beside it the memory that the process has of it.

The environment names them: EXPRESSIONS is a JSON list, whose names are described; DESCRIPTION is the
file to write.
"""
import json
import os
import pathlib
import re

import gdb

description = pathlib.Path(os.environ["DESCRIPTION"])
expressions = json.loads(pathlib.Path(os.environ["EXPRESSIONS"]).read_text())
names = sorted(set(re.findall(r"(?<![.>\w])[A-Za-z_]\w*", " ".join(expressions))))
tags = {}
tables = []
typedefs = {}


def tag_of(type_):
    """The keyword and tag of a structure, union or enumeration; one without a tag is given one."""
    keyword = {gdb.TYPE_CODE_STRUCT: "struct", gdb.TYPE_CODE_UNION: "union",
               gdb.TYPE_CODE_ENUM: "enum"}[type_.code]
    tag = type_.tag or "unnamed" + "".join(f"_{f.name}" for f in type_.fields())
    if (keyword, tag) not in tags:
        tags[keyword, tag] = True
        tables.append(table_of(keyword, tag, type_))
    return f"{keyword} {tag}"


def table_of(keyword, tag, type_):
    head = f"[{keyword}.{tag}]\n"
    if keyword == "enum":
        values = ", ".join(f"{f.name} = {f.enumval}" for f in type_.fields())
        return head + f"values = {{ {values} }}\nsize = {type_.sizeof}\n"
    if not type_.fields():
        return head
    fields = []
    for field in type_.fields():
        text = declared(field.type)
        place = f"offset = {field.bitpos // 8}"
        if field.bitsize:
            text += f" : {field.bitsize}"
            place += f", bit = {field.bitpos % 8}"
        name = f'name = "{field.name}", ' if field.name else ""
        fields.append(f'  {{ {name}type = "{text}", {place} }},\n')
    return head + "fields = [\n" + "".join(fields) + f"]\nsize = {type_.sizeof}\n"


def declared(type_, inner=""):
    """The type as C writes it around `inner`."""
    type_ = type_.unqualified()
    if type_.code == gdb.TYPE_CODE_PTR:
        target = type_.target().unqualified()
        composed = target.code in (gdb.TYPE_CODE_ARRAY, gdb.TYPE_CODE_FUNC)
        return declared(target, f"(*{inner})" if composed else f"*{inner}")
    if type_.code == gdb.TYPE_CODE_ARRAY:
        low, high = type_.range()
        return declared(type_.target(), f"{inner}[{high - low + 1}]")
    if type_.code == gdb.TYPE_CODE_FUNC:
        return declared(type_.target(), f"{inner}()") if type_.target() else f"void {inner}()"
    if type_.code == gdb.TYPE_CODE_TYPEDEF:
        if type_.name not in typedefs:
            typedefs[type_.name] = None
            typedefs[type_.name] = declared(type_.target())
        text = type_.name
    elif type_.code in (gdb.TYPE_CODE_STRUCT, gdb.TYPE_CODE_UNION, gdb.TYPE_CODE_ENUM):
        text = tag_of(type_)
    elif type_.code == gdb.TYPE_CODE_FLT and type_.sizeof > 8:
        # Nothing that descriptions know; only its place counts.
        return declared(gdb.lookup_type("char"), f"{inner}[{type_.sizeof}]")
    else:
        text = type_.name
    return f"{text} {inner}".strip()


labels = []
for name in names:
    symbol = gdb.lookup_global_symbol(name) or gdb.lookup_static_symbol(name)
    if symbol and (symbol.is_variable or symbol.is_function):
        address = int(symbol.value().address)
        labels.append(f'{name} = {{ address = "{address:#x}", type = "{declared(symbol.type)}" }}\n')
        continue
    for spelled in (name, f"struct {name}", f"union {name}", f"enum {name}"):
        try:
            found = gdb.lookup_type(spelled)
        except gdb.error:
            continue
        if found.code != gdb.TYPE_CODE_INT and found.code != gdb.TYPE_CODE_FLT:
            declared(found)

program = pathlib.Path(gdb.current_progspace().filename).resolve()
regions = []
for line in pathlib.Path(f"/proc/{gdb.selected_inferior().pid}/maps").read_text().splitlines():
    fields = line.split(None, 5)
    if len(fields) < 6 or fields[5] != str(program) or fields[1][0] != "r":
        continue
    first, end = (int(part, 16) for part in fields[0].split("-"))
    file = f"memory-{len(regions)}.bin"
    (description.parent / file).write_bytes(
        bytes(gdb.selected_inferior().read_memory(first, end - first)))
    regions.append(f'[[memory]]\naddress = "{first:#x}"\nfile = "{file}"\n')

small = gdb.lookup_type("long").sizeof == 4
target = ('[target]\npointer-size = %d\nbyte-order = "little"\nfile = "main.c"\n'
          % gdb.lookup_type("char").pointer().sizeof)
if small:
    target += "largest-alignment = 4\n"
text = target + "\n[typedef]\n" + "".join(f'{n} = "{t}"\n' for n, t in typedefs.items())
description.write_text("\n".join([text, *tables, "[labels]\n" + "".join(labels), *regions]))
