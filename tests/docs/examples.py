"""Finds the examples of a document: what a reader would try, and what the document promises.

A table is a table of examples when it has a column with one of these headings:

  Expression      an expression, evaluated on the documented host in the C dialect; the next column
                  headed Result promises what it gives
  In assembly     the same in the assembly dialect
  Write           the same; the cell may be empty
  Example         expressions that must fail with the message in the row's column Message
  Label           labels; the row's column Address promises where they lie, or their value

Control characters stand for themselves in their pictures: \u240d is the byte 0x0d.

A fenced block whose first line is ```console holds commands behind "$ ", each followed by its exact
output. The command must end with status 0, unless "$ echo $?" and the status come next. A fenced
block ```cpp is a stretch of the example host, or compiles as it stands; the package and targets of a
fenced block ```cmake are those of the example host.
"""

import re
from dataclasses import dataclass, field

C_FILE = "main.c"
ASSEMBLY_FILE = "table.s"
FILE_OF_COLUMN = {"Expression": C_FILE, "In assembly": ASSEMBLY_FILE, "Write": C_FILE}


@dataclass
class Expression:
    """An expression and what it gives, in the notation of evaluate_examples."""

    line: int
    file: str
    text: str
    result: str


@dataclass
class Failure:
    """An expression that fails with a message that begins so (the whole of it, if not `open`)."""

    line: int
    text: str
    message: str
    open: bool
    file: str = C_FILE


@dataclass
class Label:
    line: int
    text: str
    address: int
    file: str = C_FILE


@dataclass
class Command:
    line: int
    text: str
    output: list = field(default_factory=list)
    status: int = 0


@dataclass
class Code:
    line: int
    language: str
    text: str


class Malformed(Exception):
    """A document that breaks the conventions above; holds the line and what is wrong."""


CODE_SPAN = re.compile(r"(`+)(.+?)(?<!`)\1(?!`)")


def code_spans(cell):
    spans = [match.group(2) for match in CODE_SPAN.finditer(cell)]
    # One blank on either side lets a span begin or end with a backquote.
    return [s[1:-1] if "`" in s and s.startswith(" ") and s.endswith(" ") else s for s in spans]


def decoded(expression):
    return "".join(chr(ord(c) - 0x2400) if 0x2400 <= ord(c) < 0x2420 else c for c in expression)


def plain(cell):
    return CODE_SPAN.sub(lambda match: code_spans(match.group(0))[0], cell).strip()


def cells(line):
    inner = line.strip()[1:-1]
    return [cell.strip().replace("\\|", "|") for cell in re.split(r"(?<!\\)\|", inner)]


def examples_of_row(number, header, row):
    if len(row) != len(header):
        raise Malformed(number, f"the row has {len(row)} cells, the header {len(header)}")
    for column, heading in enumerate(header):
        if heading in FILE_OF_COLUMN:
            if heading == "Write" and not row[column]:
                continue
            spans = code_spans(row[column])
            if len(spans) != 1:
                raise Malformed(number, f"not one expression: {row[column]}")
            if "Result" not in header[column:]:
                raise Malformed(number, f"no column Result behind {heading}")
            result = row[header.index("Result", column)]
            yield Expression(number, FILE_OF_COLUMN[heading], decoded(spans[0]), plain(result))
        elif heading == "Example":
            message = row[header.index("Message")]
            for span in code_spans(row[column]):
                yield Failure(number, decoded(span), code_spans(message)[0] if "`" in message else "",
                              message.endswith("*"))
        elif heading == "Label":
            for span in code_spans(row[column]):
                yield Label(number, span, int(plain(row[header.index("Address")]), 0))


def commands(first, lines):
    found = []
    for number, line in enumerate(lines, first):
        if line == "$ echo $?":
            if not found or found[-1].text == line:
                raise Malformed(number, "no command before echo $?")
            found.append(Command(number, line))
        elif line.startswith("$ "):
            found.append(Command(number, line[2:]))
        elif found:
            found[-1].output.append(line)
        else:
            raise Malformed(number, "output without a command")
    for command, question in zip(found, found[1:]):
        if question.text == "$ echo $?":
            command.status = int("".join(question.output))
    return [command for command in found if command.text != "$ echo $?"]


def find_examples(document):
    """Yields every example of the document's text, in order."""
    lines = document.split("\n")
    header = None
    number = 0
    while number < len(lines):
        line = lines[number]
        number += 1
        if line.startswith("```"):
            first = number
            while number < len(lines) and lines[number] != "```":
                number += 1
            if number == len(lines):
                raise Malformed(first, "the fenced block does not end")
            language = line[3:]
            block = lines[first:number]
            number += 1
            if language == "console":
                yield from commands(first + 1, block)
            elif language in ("cpp", "cmake"):
                yield Code(first + 1, language, "\n".join(block) + "\n")
        elif not line.startswith("|"):
            header = None
        elif header is None:
            header = cells(line)
        elif not re.fullmatch(r"[|:\- ]+", line):
            yield from examples_of_row(number, header, cells(line))


def messages_of(document):
    """The messages that the document's tables list, without their variable ends."""
    found = []
    header = None
    for line in document.split("\n"):
        if not line.startswith("|"):
            header = None
        elif header is None:
            header = cells(line)
        elif "Message" in header and not re.fullmatch(r"[|:\- ]+", line):
            found += code_spans(cells(line)[header.index("Message")])
    return found
