#!/usr/bin/env python3
"""Compiles each public header alone, with both compilers and each language level.

The one argument is the list that the build writes: a public header a line. Also checks that
zanengine.h includes every one of them, and comfort/comfort.h those of that folder.
"""
import concurrent.futures
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
# Clang 14 knows C++23 by its working name only; both compilers take that.
COMPILERS = [(compiler, level) for compiler in ("g++", "clang++")
             for level in ("c++17", "c++20", "c++2b")]
# These include all others, the second those of its own folder.
WHOLE = "zanengine.h"
WHOLE_COMFORT = "comfort/comfort.h"
WARNINGS = ["-Wall", "-Wextra", "-Wpedantic", "-Wshadow", "-Werror"]


def compile_alone(header, compiler, level):
    # Included twice, so that a missing guard shows; -I as an installed package gives it.
    source = f'#include "{header}"\n#include "{header}"\n'
    done = subprocess.run([compiler, f"-std={level}", "-fsyntax-only", *WARNINGS, f"-I{ROOT}",
                           "-x", "c++", "-"], input=source, capture_output=True, text=True)
    return None if done.returncode == 0 else f"{header}, {compiler} {level}:\n{done.stderr}"


def includes_of(whole):
    return set(re.findall(r'#include "([^"]+)"', (ROOT / whole).read_text()))


def missing_in_the_lists(headers):
    for header in headers:
        whole = WHOLE_COMFORT if header.startswith("comfort/") else WHOLE
        if header != whole and header not in includes_of(whole):
            yield f"{whole} does not include {header}"


def main():
    lines = pathlib.Path(sys.argv[1]).read_text().split()
    headers = sorted(str(pathlib.Path(line).relative_to(ROOT)) for line in lines)
    faults = list(missing_in_the_lists(headers))
    with concurrent.futures.ThreadPoolExecutor(2) as pool:
        work = [pool.submit(compile_alone, header, *how) for header in headers for how in COMPILERS]
        faults += [done.result() for done in work if done.result()]
    print("\n".join(faults) if faults else
          f"{len(headers)} public headers compile alone in {len(COMPILERS)} ways.")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
