#!/usr/bin/env python3
"""check_runpaths.py <folder>...: no program or library below the folders makes the loader look into
the working folder. That is what an empty or relative entry of a RUNPATH does."""

import os
import re
import subprocess
import sys

ENTRY = re.compile(r"\((?:RUNPATH|RPATH)\).*\[(.*)\]")


def is_elf(path):
    with open(path, "rb") as file:
        return file.read(4) == b"\x7fELF"


def binaries(folder):
    for root, _, names in os.walk(folder):
        for name in names:
            path = os.path.join(root, name)
            if os.path.isfile(path) and not os.path.islink(path) and is_elf(path):
                yield path


def bad_entries(path):
    words = subprocess.run(["readelf", "-d", path], capture_output=True, text=True, check=True)
    for runpath in ENTRY.findall(words.stdout):
        for entry in runpath.split(":"):
            if not entry.startswith(("/", "$ORIGIN")):
                yield entry


def main():
    checked = 0
    faults = 0
    for folder in sys.argv[1:]:
        for path in binaries(folder):
            checked += 1
            for entry in bad_entries(path):
                faults += 1
                print(f'{path}: the entry "{entry}" of its RUNPATH leads into the working folder')
    if checked == 0:
        sys.exit("no program and no library found below: " + " ".join(sys.argv[1:]))
    sys.exit(1 if faults else 0)


main()
