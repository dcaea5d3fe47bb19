#!/usr/bin/env python3
"""What shells complete, and the manual page: both know every option that the command has.

usage: shell_completions.py RESOLVE PROGRAM FOLDER, where FOLDER holds what the build wrote.
"""
import os
import pathlib
import re
import shlex
import shutil
import subprocess
import sys
import tempfile

PATIENCE = 120


def options_of(resolve):
    text = subprocess.run([resolve, "--help"], capture_output=True, check=True, text=True,
                          timeout=PATIENCE).stdout
    lines = [line for line in text.splitlines() if re.match(r"  (-\w,)?--", line)]
    return sorted(option for line in lines for option in line.split()[0].split(","))


def completed(script, resolve, folder, words):
    """What bash offers for the last of `words`, with resolve on the path."""
    text = f"""
        source {shlex.quote(str(script))}
        compopt() {{ :; }}
        COMP_WORDS=({' '.join(map(shlex.quote, words))})
        COMP_CWORD={len(words) - 1}
        _resolve
        printf '%s\\n' "${{COMPREPLY[@]}}"
    """
    path = str(pathlib.Path(resolve).parent) + os.pathsep + os.environ["PATH"]
    done = subprocess.run(["bash", "-u", "-c", text], capture_output=True, text=True, cwd=folder,
                          env={**os.environ, "PATH": path}, timeout=PATIENCE)
    if done.stderr:
        return done.stderr
    return sorted(done.stdout.split())


def main():
    resolve, program, made = (pathlib.Path(path).resolve() for path in sys.argv[1:4])
    options = options_of(resolve)
    failures = []

    def check(what, actual, expected):
        if actual != expected:
            failures.append(f"{what}\n  {actual}\n  expected: {expected}")

    with tempfile.TemporaryDirectory() as folder:
        shutil.copy(program, pathlib.Path(folder) / "prog")
        (pathlib.Path(folder) / "below").mkdir()
        (pathlib.Path(folder) / "prose").write_text("no program\n")
        rows = [
            (["--"], [option for option in options if option.startswith("--")]),
            (["-"], options),
            (["--lab"], ["--labels"]),
            (["-v", "pro"], ["prog", "prose"]),
            (["--labels", "pro"], ["prog", "prose"]),
            (["--debug-folder", ""], ["below"]),
            (["--core", "pro"], ["prog", "prose"]),
            (["--watch", "p"], []),
            (["--file", "list.c", "pro"], ["prog", "prose"]),
            (["prog", "inter"], ["interval"]),
            (["prog", "x + (inter"], ["x", "+", "(interval"]),
            (["prog", "sized2"], ["sized2"] + [f"sized2{n}" for n in range(5)]),
            (["prog", "nowhere"], []),
            (["prog", ""], []),
            (["prog", "--"], []),
            (["-v", "prog", "x", "inter"], ["interval"]),
            (["prose", "inter"], []),
        ]
        for words, expected in rows:
            check(f"bash: resolve {shlex.join(words)}",
                  completed(made / "resolve", resolve, folder, ["resolve", *words]),
                  sorted(expected))
    zsh = (made / "_resolve").read_text()
    check("zsh: the options", sorted(re.findall(r"^  '(-[\w-]*)\[", zsh, re.M)), options)
    if shutil.which("zsh"):
        done = subprocess.run(["zsh", "-n", str(made / "_resolve")], capture_output=True, text=True,
                              timeout=PATIENCE)
        check("zsh: the syntax", (done.returncode, done.stderr), (0, ""))
    else:
        print("SKIPPED: there is no zsh to read its completions")
    manual = made / "resolve.1"
    if manual.exists():
        text = manual.read_text().replace("\\-", "-")
        check("the manual page: options that are missing",
              [option for option in options if option not in text], [])
    else:
        print("SKIPPED: there was no help2man to write the manual page with")
    print("\n".join(failures) or "all as expected")
    sys.exit(1 if failures else 0)


if __name__ == "__main__":
    main()
