#!/usr/bin/env python3
"""Does what a guide says: follow_guide.py <guide> <prefix> <folder>.

In a new folder it carries out the guide's blocks from the first to the last, in one shell: a block
marked `sh` is run, one marked `diff` is applied to the files of the folder that the shell is in.
PREFIX is where the library is installed. Fails at the first block that does.
"""
import os
import pathlib
import re
import subprocess
import sys

BLOCK = re.compile(r"^```(sh|diff)\n(.*?)^```$", re.MULTILINE | re.DOTALL)


def script_of(text):
    yield "set -euo pipefail\n"
    for block in BLOCK.finditer(text):
        kind, body = block.groups()
        line = text.count("\n", 0, block.start()) + 1
        yield f"echo 'the guide, line {line}'\n"
        yield body if kind == "sh" else f"git apply --verbose - <<'END OF DIFF'\n{body}END OF DIFF\n"


def main():
    guide, prefix, folder = (pathlib.Path(word).resolve() for word in sys.argv[1:4])
    script = "".join(script_of(guide.read_text()))
    if "git apply" not in script:
        sys.exit(f"{guide} has no steps to follow")
    folder.mkdir(parents=True)
    environment = dict(os.environ, PREFIX=str(prefix), GIT_CEILING_DIRECTORIES=str(folder.parent))
    return subprocess.run(["bash", "-c", script], cwd=folder, env=environment).returncode


if __name__ == "__main__":
    sys.exit(main())
