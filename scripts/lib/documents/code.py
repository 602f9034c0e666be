"""The C++ of a page."""
import re
import subprocess
import textwrap

INCLUDES = """#include "comfort/comfort.h"

#include <iostream>
#include <string>
#include <vector>

namespace tag = zan::tag;

"""
FUNCTION = INCLUDES + """
void fragment(ZANEngineProxy& proxy, UserTicket const& ticket);
void fragment(ZANEngineProxy& proxy, UserTicket const& ticket) {{
    (void)proxy;
    (void)ticket;
{code}
}}
"""


def code_faults(block, root, tree):
    """What is wrong with a block of the kind `cpp`; a name with a folder is that of a file here."""
    if "/" in block.name:
        return compare_with_file(block.name, block.body, root, tree)
    return compile_source(block.body if block.name else source_of(block.body), root)


def source_of(code):
    if re.match(r"#include|class |struct |namespace |ZAN_", code):
        return code if code.startswith("#include") else INCLUDES + code
    return FUNCTION.format(code=textwrap.indent(code, "    "))


def compile_source(source, root):
    done = subprocess.run(["g++", "-std=c++17", "-fsyntax-only", "-Wall", "-Wextra", "-Werror",
                           f"-I{root}", "-x", "c++", "-"], input=source, capture_output=True,
                          text=True)
    return [] if done.returncode == 0 else [f"the code does not compile:\n{done.stderr}"]


def compare_with_file(file, code, root, tree):
    path = root / file
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
