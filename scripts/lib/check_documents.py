#!/usr/bin/env python3
"""Checks every block and every link of the documents. The one argument is a build tree.

The first word behind the fence tells what a block is and how it is checked:

  cpp               compiles: as it is when it begins with an include or declares a class, else as
                    the inside of a function that has a `proxy` and a `ticket`
  cpp <folder/file> stands in that file of the project, word for word; a source with `main` is the
                    whole file, and its program, <build tree>/bin/<name of the file>, runs
  conv <folder/file> stands in that file, word for word
  cpp <file>        compiles, and is saved for the blocks that follow, which have to use it
  sh                runs, in the order of the page, in a shell and a folder of the page's own
  console           the same, each `$ command` with what it prints
  console second    the same in a second terminal: its commands run until the page ends
  ini <file>        a session file: `zan` loads it; saved for the blocks that follow
  conf, cmake <file> saved in the same way
  diff              applied to the files of the folder
  yaml              is YAML, and the metrics that it names are served
  sh by-ci          what CI runs itself: scripts, gates, options, presets and targets are there
  text              for people: holds no command

A comment that begins with `<!-- setup` holds lines for `sh` that put in place what a reader is
assumed to have. What the page's shell is like is told in documents/shell.py, what stands for other
output in documents/console.py. A page that needs an installed library is followed by the gate
`install`; FOLLOWED names it.
"""
import concurrent.futures
import os
import pathlib
import re
import subprocess
import sys
import tempfile

import yaml

from documents.blocks import blocks_of, hidden_block_faults
from documents.code import code_faults, compare_with_file
from documents.commands import by_ci_faults
from documents.links import link_faults
from documents.shell import PageShell, is_step

ROOT = pathlib.Path(__file__).resolve().parents[2]
# The page, and what follows it.
FOLLOWED = {"docs/adapter-guide.md": "scripts/lib/check_install.sh"}
COMMAND = re.compile(r"^\s*(\$ |\./|zan |zan-|cmake |g\+\+ |build/)", re.MULTILINE)


def pages(root):
    listed = subprocess.run(["git", "ls-files", "--cached", "--others", "--exclude-standard",
                             "*.md"], cwd=root, capture_output=True, text=True, check=True)
    return [root / name for name in sorted(listed.stdout.split()) if (root / name).is_file()]


def text_faults(block):
    command = COMMAND.search(block.body)
    if command:
        yield f"a command in a block of the kind text: {command[1].strip()}"


def yaml_faults(block, root):
    try:
        yaml.safe_load(block.body)
    except yaml.YAMLError as failure:
        yield f"this is no YAML: {failure}"
    served = "".join(path.read_text() for path in (root / "server/metrics").glob("*.cpp"))
    for name in sorted(set(re.findall(r"\bzan_\w+", block.body))):
        if f'"{re.sub("_(bucket|count|sum)$", "", name)}"' not in served:
            yield f"no metric is called {name}"


def saved_file_faults(block, blocks):
    if block.kind == "cpp" and (not block.name or "/" in block.name):
        return
    used = "cmake" if block.kind == "cmake" else block.name
    later = [other for other in blocks if other.line > block.line and other.kind in ("sh", "console")]
    if not block.name:
        yield f"a block of the kind {block.kind} needs the name of a file"
    elif not any(used in other.body for other in later):
        yield f"no command below uses {block.name}"


def at_line(block, faults):
    return [(block.line, fault) for fault in faults]


def block_faults(block, blocks, root, tree):
    """Pairs of a line and what is wrong, of all that needs no shell."""
    if block.kind == "sh" and block.name == "by-ci":
        return list(by_ci_faults(block, root, tree))
    checks = {
        "cpp": lambda: [*code_faults(block, root, tree), *saved_file_faults(block, blocks)],
        "conv": lambda: compare_with_file(block.name, block.body, root, tree),
        "text": lambda: text_faults(block),
        "yaml": lambda: yaml_faults(block, root),
        "conf": lambda: saved_file_faults(block, blocks),
        "cmake": lambda: saved_file_faults(block, blocks),
    }
    if block.kind in checks:
        return at_line(block, checks[block.kind]())
    if not is_step(block):
        what = f"{block.kind} {block.name}".strip() or "nothing"
        return [(block.line, f"a block has to tell what it is; this one tells: {what}")]
    return []


def shell_faults(page, blocks, root, tree):
    steps = [block for block in blocks if is_step(block)]
    name = str(page.relative_to(root))
    if name in FOLLOWED:
        script = (root / FOLLOWED[name]).read_text()
        return [] if name in script else [(1, f"{FOLLOWED[name]} does not follow this page")]
    if not steps:
        return []
    environment = dict(os.environ, PATH=f"{tree / 'bin'}:{os.environ['PATH']}")
    with tempfile.TemporaryDirectory() as folder:
        try:
            shell = PageShell(steps, pathlib.Path(folder), environment)
            (shell.folder / "build").mkdir()
            (shell.folder / "build/default").symlink_to(tree)
            return shell.faults()
        except ValueError as fault:
            return [(1, str(fault))]


def checks_of(page, root, tree):
    """Functions that return pairs of a line and what is wrong; two may run at a time."""
    text = page.read_text()
    blocks = list(blocks_of(text))
    yield lambda: shell_faults(page, blocks, root, tree)
    yield lambda: [*hidden_block_faults(text), *link_faults(page, text)]
    for block in blocks:
        yield lambda block=block: block_faults(block, blocks, root, tree)


def faults_of(checked, root, tree):
    """One line for each fault, in the order of the pages."""
    with concurrent.futures.ThreadPoolExecutor(2) as workers:
        running = [(page, [workers.submit(check) for check in checks_of(page, root, tree)])
                   for page in checked]
        return [f"{page.relative_to(root)}:{line}: {fault}" for page, checks in running
                for line, fault in sorted(pair for check in checks for pair in check.result())]


def main():
    tree = pathlib.Path(sys.argv[1]).resolve()
    checked = [pathlib.Path(name).resolve() for name in sys.argv[2:]] or pages(ROOT)
    faults = faults_of(checked, ROOT, tree)
    count = sum(len(list(blocks_of(page.read_text()))) for page in checked)
    print("\n".join(faults) if faults else
          f"{len(checked)} documents: {count} blocks and all links are good.")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
