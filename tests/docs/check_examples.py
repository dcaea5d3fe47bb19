#!/usr/bin/env python3
"""Runs every example of a document. Each one that does not hold is named with document and line."""

import argparse
import os
import pathlib
import re
import subprocess
import sys

import examples


class Checker:
    def __init__(self, options):
        self.options = options
        self.document = pathlib.Path(options.document)
        self.wrong = 0

    def complain(self, line, *parts):
        self.wrong += 1
        print(f"{self.document.name}:{line}: " + "\n    ".join(parts))

    def evaluate(self, found):
        """Asks for all results at once: one process, a fresh resolver for each."""
        lines = "".join(f"{example.file}\t{example.text}\n" for example in found)
        run = subprocess.run([self.options.evaluate], input=lines.encode(), check=True,
                             stdout=subprocess.PIPE)
        answers = run.stdout.decode().splitlines()
        if len(answers) != len(found):
            sys.exit(f"{self.document.name}: {len(found)} expressions, {len(answers)} results")
        for example, answer in zip(found, answers):
            result, address = answer.split("\t")
            self.check_result(example, result, address)

    def check_result(self, example, result, address):
        if isinstance(example, examples.Label):
            if int(address, 16) != example.address:
                self.complain(example.line, f"{example.text} lies at {address}")
        elif isinstance(example, examples.Failure):
            whole = f"error {example.message}" if example.message else "error, no message"
            if result != whole and not (example.open and result.startswith(whole)):
                self.complain(example.line, f"expression: {example.text}",
                              f"document:   {whole}", f"resolver:   {result}")
        elif result != example.result:
            self.complain(example.line, f"expression: {example.text}",
                          f"document:   {example.result}", f"resolver:   {result}")

    def run_commands(self, found):
        """Runs them in a folder that looks like a clone in which scripts/demo has been run."""
        source = pathlib.Path(self.options.source)
        top = pathlib.Path(self.options.scratch, "top")
        (top / "build/demo").mkdir(parents=True, exist_ok=True)
        for link, goal in (("scripts", source / "scripts"), ("examples", source / "examples"),
                           ("build/demo/bin", pathlib.Path(self.options.bin))):
            (top / link).unlink(missing_ok=True)
            (top / link).symlink_to(goal)
        built = pathlib.Path(self.options.scratch, "build")
        environment = dict(os.environ, STRINGRESOLVER_BUILD=str(built), STRINGRESOLVER_INSTALL="no",
                           PATH=f"{self.options.bin}:{os.environ['PATH']}", LC_ALL="C.UTF-8")
        for command in found:
            if command.text.startswith("scripts/") and self.options.skip_scripts:
                continue
            # What the scripts say on standard error is progress; what the command says is an answer.
            quiet = command.text.startswith("scripts/")
            run = subprocess.run(["bash", "-c", command.text], cwd=top, env=environment,
                                 stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                 stderr=subprocess.PIPE if quiet else subprocess.STDOUT)
            output = run.stdout.decode()
            # As it is, and as a script shows it for the shell.
            for shown in (str(built), str(built).replace(" ", "\\ ")):
                output = output.replace(shown, "build")
            output = output.replace(f"{source}/", "")
            output = strip_end(output.splitlines())
            # Blank lines between two commands belong to neither.
            if output != strip_end(command.output):
                self.complain(command.line, f"$ {command.text}", "document:",
                              *strip_end(command.output), "command:", *output,
                              *(run.stderr.decode().splitlines() if quiet else ()))
            if run.returncode != command.status:
                self.complain(command.line, f"$ {command.text}",
                              f"document: exit status {command.status}",
                              f"command:  exit status {run.returncode}")

    def check_code(self, found):
        example = pathlib.Path(self.options.source, "examples/embedding")
        host = (example / "main.cpp").read_text()
        lists = (example / "CMakeLists.txt").read_text()
        for block in found:
            if block.language == "cmake":
                # The names of package and targets count; the project around them is the reader's.
                names = re.findall(r"find_package\((\w+)|(\w+::\w+)", block.text)
                missing = [name for pair in names for name in pair if name and
                           not re.search(rf"(?<![\w:]){name}(?![\w:])", lists)]
                if missing or not names:
                    self.complain(block.line, "not in examples/embedding/CMakeLists.txt: "
                                  f"{' '.join(missing) or 'any package or target'}")
            elif squeezed(block.text) not in squeezed(host):
                self.compile(block)

    def compile(self, block):
        run = subprocess.run([self.options.compiler, "-std=c++20", "-Wall", "-Wextra", "-Werror",
                              "-fsyntax-only", "-I", self.options.source, "-x", "c++", "-"],
                             input=block.text.encode(), stderr=subprocess.PIPE)
        if run.returncode != 0:
            self.complain(block.line, "no stretch of examples/embedding/main.cpp, and does not compile"
                          " as it stands:", *run.stderr.decode().splitlines()[:8])

    def check_messages(self, text):
        """Every message of the resolver's sources is in the document, and no other."""
        sources = pathlib.Path(self.options.source, "resolver").glob("*.cpp")
        given = set()
        for path in sources:
            for literal in re.findall(r'"([A-Z][^"\n]*)"', path.read_text()):
                if " " in literal:
                    given.add(literal)
        listed = {message for message in examples.messages_of(text) if message}
        for message in sorted(given - listed):
            self.complain(1, f"the table of messages lacks: {message}")
        for message in sorted(listed - given):
            self.complain(1, f"the resolver has no such message: {message}")

    def run(self):
        try:
            text = self.document.read_text(encoding="utf-8")
            found = list(examples.find_examples(text))
        except OSError as error:
            sys.exit(f"{self.document}: {error.strerror}")
        except examples.Malformed as error:
            sys.exit(f"{self.document.name}:{error.args[0]}: {error.args[1]}")
        kinds = {
            "expressions": (examples.Expression, examples.Failure, examples.Label),
            "commands": examples.Command,
            "code": examples.Code,
        }
        found = {kind: [e for e in found if isinstance(e, of)] for kind, of in kinds.items()}
        if found["expressions"]:
            self.evaluate(found["expressions"])
        if self.options.bin:
            self.run_commands(found["commands"])
        self.check_code(found["code"])
        if self.options.messages:
            self.check_messages(text)
        print(f"{self.document.name}: {len(found['expressions'])} expressions, "
              f"{len(found['commands'])} commands{self.not_run()}, "
              f"{len(found['code'])} stretches of code; {self.wrong} wrong")
        for kind in self.options.expect.split(","):
            if not found[kind]:
                sys.exit(f"{self.document.name}: no examples found: {kind}")
        return 1 if self.wrong else 0

    def not_run(self):
        if not self.options.bin:
            return " (not run: the command is not built)"
        return " (those of scripts/ not run)" if self.options.skip_scripts else ""


def strip_end(lines):
    end = len(lines)
    while end and not lines[end - 1]:
        end -= 1
    return lines[:end]


def squeezed(text):
    """Line by line, without indentation and empty lines, so that a stretch may be cut out."""
    return "\n".join(["", *(line.strip() for line in text.splitlines() if line.strip()), ""])


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("document")
    parser.add_argument("--source", required=True, help="the top of the source tree")
    parser.add_argument("--evaluate", required=True, help="the program evaluate_examples")
    parser.add_argument("--bin", help="the folder of resolve and example_program")
    parser.add_argument("--compiler", required=True)
    parser.add_argument("--scratch", required=True, help="a folder to build and link in")
    parser.add_argument("--expect", required=True,
                        help="the kinds that the document must have: expressions,commands,code")
    parser.add_argument("--skip-scripts", action="store_true",
                        help="what begins with scripts/ is not run: it makes a build of its own")
    parser.add_argument("--messages", action="store_true",
                        help="the document lists every message of the resolver")
    sys.exit(Checker(parser.parse_args()).run())


if __name__ == "__main__":
    main()
