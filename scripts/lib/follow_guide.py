#!/usr/bin/env python3
"""Does what a guide says: follow_guide.py <guide> <prefix> <folder>.

In a new folder it follows the guide's blocks from the first to the last, in one shell, as
documents/shell.py tells. PREFIX is where the library is installed.
"""
import os
import pathlib
import sys

from documents.blocks import blocks_of
from documents.shell import PageShell, is_step

TIME_LIMIT = 1800


def main():
    guide, prefix, folder = (pathlib.Path(word).resolve() for word in sys.argv[1:4])
    steps = [block for block in blocks_of(guide.read_text()) if is_step(block)]
    if not steps:
        sys.exit(f"{guide} has no steps to follow")
    shell = PageShell(steps, folder, dict(os.environ, PREFIX=str(prefix)), TIME_LIMIT)
    faults = shell.faults()
    for line, fault in faults:
        print(f"{guide.name}:{line}: {fault}")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
