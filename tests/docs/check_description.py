#!/usr/bin/env python3
"""Evaluates the example of docs/DESCRIBE.md: check_description.py RESOLVE DOCUMENT."""
import pathlib
import re
import subprocess
import sys
import tempfile

resolve, document = sys.argv[1:3]
text = pathlib.Path(document).read_text(encoding="utf-8")
example = re.search(r"^```toml\n(.*?)^```$", text, re.MULTILINE | re.DOTALL)
table = text.partition("| Asked | Answer |\n")[2].partition("\n\n")[0]
rows = re.findall(r"^\| `(.+?)` \| (.+?) \|$", table, re.MULTILINE)
if not example or not rows:
    sys.exit(f"{document} has no example, or no table of answers")
wrong = 0
with tempfile.TemporaryDirectory() as folder:
    (pathlib.Path(folder) / "board.toml").write_text(example.group(1), encoding="utf-8")
    for expression, answer in rows:
        run = subprocess.run([resolve, "--plain", "--describe", "board.toml", expression], cwd=folder,
                             capture_output=True, text=True, timeout=60)
        if (run.stdout, run.stderr, run.returncode) != (answer + "\n", "", 0):
            wrong += 1
            print(f"{expression}: the document says {answer}, the command {run}")
print(f"{len(rows)} expressions; {wrong} wrong")
sys.exit(1 if wrong else 0)
