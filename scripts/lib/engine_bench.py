"""The engine's part of scripts/bench: runs zan-bench-engine and makes its table."""

import collections
import subprocess

BEGIN, END = "<!-- engine table: written by scripts/bench -->", "<!-- end of engine table -->"
HEAD = ["work : measured against", "ours", "peer", "ratio", "must", "verdict"]

# `load` is how much of what is allowed was needed: the bound holds up to 1. Below 0 without a bound.
Row = collections.namedtuple("Row", "work ours peer ratio must load")


def build(folder):
    subprocess.run(["ninja", "-C", str(folder), "zan-bench-engine"], check=True,
                   stdout=subprocess.DEVNULL)
    return folder / "bin" / "zan-bench-engine"


def output_of(program, *options):
    return subprocess.run([str(program), *options], check=True, text=True,
                          stdout=subprocess.PIPE).stdout


def run(folder, quick):
    """The rows, and the conditions that the program tells."""
    program = build(folder)
    size = ["--quick"] if quick else []
    rows = []
    for line in output_of(program, "--records", *size).splitlines():
        *texts, load = line.split("\t")
        rows.append(Row(*texts, float(load)))
    return rows, output_of(program, "--conditions", *size).strip()


def verdict(row):
    if row.load < 0:
        return ""
    return "holds" if row.load <= 1 else "MISSES"


def cells_of(row):
    return [row.work, row.ours, row.peer, row.ratio, row.must, verdict(row)]


def print_table(rows):
    lines = [HEAD] + [cells_of(row) for row in rows]
    widths = [max(len(line[i]) for line in lines) for i in range(len(HEAD))]
    for line in lines:
        fitted = [cell.ljust(width) if i in (0, 5) else cell.rjust(width)
                  for i, (cell, width) in enumerate(zip(line, widths))]
        print("  ".join(fitted).rstrip())


def page_table(rows, told):
    lines = ["| " + " | ".join(HEAD) + " |", "|---|---:|---:|---:|---:|---|"]
    lines += ["| " + " | ".join(cells_of(row)) + " |" for row in rows]
    return "\n".join([told, "", *lines])


def missed(rows, tolerance):
    return [row.work for row in rows if row.load > tolerance]
