#!/usr/bin/env python3
"""Checks that includes go down the table of folders, never up.

A folder may include itself and what the table allows. A file that names a folder which the table
does not allow, or a dependency outside its own place, is reported with its line.
"""
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
LIBRARY = ["infra", "errors", "message", "events", "adapter", "engine", "guaranteed"]
MAY_INCLUDE = {
    "infra": [],
    "errors": ["infra"],
    "message": ["infra"],
    "events": ["message", "infra"],
    "adapter": ["events", "message", "errors", "infra"],
    "engine": ["adapter", "events", "message", "errors", "infra"],
    "guaranteed": LIBRARY,
    "comfort": LIBRARY,
    "server": LIBRARY,
    "transports": LIBRARY + ["server"],
    "apps": LIBRARY + ["server"],
    "examples": LIBRARY + ["comfort", "server", "transports"],
}
# An adapter's event goes back to the facade: the one arrow that runs up, in a source only.
UPWARD = {("adapter/IZANEngineAdapter.cpp", "engine/ZANEngineProxy.h")}
# What an application includes, whole.
WHOLE = ("comfort/comfort.h", "zanengine.h")
# Libraries of others are included in one place each.
PLACES = {
    "quickfix/": ["server/sessions/", "tests/support/acceptor/", "tests/crash/", "tests/apps/zan/",
                  "benchmarks/"],
    "sqlite3.h": ["server/log/"],
    "microhttpd.h": ["server/metrics/"],
    "prometheus/": ["server/metrics/"],
    "nats/": ["transports/nats/"],
    "CLI/": ["apps/zan/"],
    "nlohmann/": ["apps/zan/", "tests/apps/zan/"],
    "libxml/": ["server/dictionaries/"],
}
INCLUDE = re.compile(r'^\s*#\s*include\s+(["<])([^">]+)[">]', re.MULTILINE)


def tracked_files():
    listed = subprocess.run(["git", "ls-files", "--", "*.h", "*.cpp"], cwd=ROOT, check=True,
                            capture_output=True, text=True)
    return [name for name in listed.stdout.splitlines() if (ROOT / name).exists()]


def fault_of(name, quoted, included):
    """What is wrong with one include line, or None."""
    folder = name.split("/")[0]
    target = included.split("/")[0] if "/" in included else ""
    for dependency, places in PLACES.items():
        if included.startswith(dependency) and not name.startswith(tuple(places)):
            return f"only {' and '.join(places)} may include {dependency}"
    if (name, included) == WHOLE:
        return None
    if folder not in MAY_INCLUDE or target == folder or target not in MAY_INCLUDE:
        if folder in LIBRARY + ["comfort"] and quoted and target not in MAY_INCLUDE:
            return "the library includes its own folders and the standard library only"
        return None
    if target in MAY_INCLUDE[folder] or (name, included) in UPWARD:
        return None
    return f"{folder}/ may include only: {', '.join(MAY_INCLUDE[folder]) or 'itself'}"


def check(name):
    text = (ROOT / name).read_text()
    for found in INCLUDE.finditer(text):
        fault = fault_of(name, found.group(1) == '"', found.group(2))
        if fault:
            line = text.count("\n", 0, found.start(2)) + 1
            yield f"{name}:{line}: {found.group(2)}: {fault}"


def main():
    files = tracked_files()
    faults = [fault for name in files for fault in check(name)]
    print("\n".join(faults) if faults else f"The includes of {len(files)} files go one way.")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
