#!/usr/bin/env python3
"""Checks the code and the links of the documents. The one argument is a build tree.

A code block that is marked `cpp <file>` must stand in that file, word for word; the file itself is
built and tested elsewhere. A block of a whole source with `main` must be the whole file, and its
program, <build tree>/bin/<name of the file>, must run. Every other block marked `cpp` must compile:
as it is when it begins with an include or declares a class, else as the inside of a function that
has a `proxy` and a `ticket`. Links must lead to files of the project and to headings in them.
"""
import pathlib
import re
import subprocess
import sys
import textwrap

ROOT = pathlib.Path(__file__).resolve().parents[2]
BLOCK = re.compile(r"^```cpp[ ]*(\S*)\n(.*?)^```$", re.MULTILINE | re.DOTALL)
LINK = re.compile(r"\[[^\]]+\]\(([^)\s]+)\)")
FUNCTION = """#include "zanengine.h"

#include <iostream>
#include <string>
#include <vector>

void fragment(ZANEngineProxy& proxy, UserTicket const& ticket);
void fragment(ZANEngineProxy& proxy, UserTicket const& ticket) {{
    (void)proxy;
    (void)ticket;
{code}
}}
"""


def pages():
    return [ROOT / name for name in ("README.md", "CHANGELOG.md", "CONTRIBUTING.md")] + sorted(
        (ROOT / "docs").glob("*.md"))


def compile_block(code):
    if re.match(r"#include|class |struct |namespace |ZAN_", code):
        source = '#include "zanengine.h"\n' + code
    else:
        source = FUNCTION.format(code=textwrap.indent(code, "    "))
    done = subprocess.run(["g++", "-std=c++17", "-fsyntax-only", "-Wall", "-Wextra", "-Werror",
                           f"-I{ROOT}", "-x", "c++", "-"], input=source, capture_output=True,
                          text=True)
    return [] if done.returncode == 0 else [f"the code does not compile:\n{done.stderr}"]


def compare_with_file(file, code, tree):
    path = ROOT / file
    if not path.is_file():
        return [f"there is no file {file}"]
    text = path.read_text()
    if not re.search(r"^int main\(", code, re.MULTILINE):
        wanted = textwrap.dedent(code).strip()
        found = any(textwrap.dedent(part).strip() == wanted for part in windows(text, wanted))
        return [] if found else [f"the code is not in {file} as it stands here"]
    if text != code:
        return [f"the program differs from {file}"]
    try:
        done = subprocess.run([tree / "bin" / path.stem], capture_output=True, text=True,
                              timeout=60)
    except (OSError, subprocess.TimeoutExpired) as failure:
        return [f"the program of {file} does not run: {failure}"]
    return [] if done.returncode == 0 else [f"the program of {file} failed:\n{done.stderr}"]


def windows(text, wanted):
    """All parts of the text with as many lines as are wanted."""
    lines = text.splitlines()
    count = len(wanted.splitlines())
    return ("\n".join(lines[at:at + count]) for at in range(len(lines) - count + 1))


def anchors(path):
    headings = re.findall(r"^#+ (.+)$", path.read_text(), re.MULTILINE)
    return {re.sub(r"[^\w\- ]", "", heading.lower()).strip().replace(" ", "-")
            for heading in headings}


def link_faults(page, text):
    for target in LINK.findall(text):
        if re.match(r"https?:", target):
            continue
        name, _, anchor = target.partition("#")
        path = (page.parent / name).resolve() if name else page
        if not path.exists():
            yield f"the link {target} leads nowhere"
        elif anchor and anchor not in anchors(path):
            yield f"the link {target} names no heading of {path.name}"


def code_faults(text, tree):
    for block in BLOCK.finditer(text):
        file, code = block.groups()
        line = text.count("\n", 0, block.start()) + 1
        faults = compare_with_file(file, code, tree) if file else compile_block(code)
        yield from (f"line {line}: {fault}" for fault in faults)


def main():
    tree = pathlib.Path(sys.argv[1]).resolve()
    faults = []
    blocks = 0
    for page in pages():
        text = page.read_text()
        blocks += len(BLOCK.findall(text))
        found = [*code_faults(text, tree), *link_faults(page, text)]
        faults += [f"{page.relative_to(ROOT)}: {fault}" for fault in found]
    print("\n".join(faults) if faults else
          f"{len(pages())} documents: {blocks} code blocks and all links are good.")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
