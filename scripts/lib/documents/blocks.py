"""The blocks of a page, and the text around them."""
import re
from dataclasses import dataclass

SCAN = re.compile(r"^```(?P<info>.*)\n(?P<body>(?:.*\n)*?)```$"
                  r"|^<!-- setup\n(?P<setup>(?:.*\n)*?)-->$", re.MULTILINE)


@dataclass(frozen=True)
class Block:
    """What stands between two fences; `line` is that of the first one.

    Of the info string `kind` is the first word and `name` the rest. The lines of a comment that
    begins with `<!-- setup` are a block of the kind `setup`.
    """
    line: int
    kind: str
    name: str
    body: str


def blocks_of(text):
    for match in SCAN.finditer(text):
        line = text.count("\n", 0, match.start()) + 1
        if match["setup"] is not None:
            yield Block(line, "setup", "", match["setup"])
        else:
            kind, _, name = match["info"].strip().partition(" ")
            yield Block(line, kind, name.strip(), match["body"])


def prose_of(text):
    """The page with an empty line in place of each line of its blocks."""
    return SCAN.sub(lambda match: "\n" * match[0].count("\n"), text)


def hidden_block_faults(text):
    """What looks like a block and is none, so that nobody would check it."""
    before = ""
    for number, line in enumerate(prose_of(text).splitlines(), 1):
        if re.match(r"\s*(```|~~~)", line):
            yield number, "a fence that is indented, not closed, or made of ~~~"
        elif re.search(r"<pre\b", line, re.IGNORECASE):
            yield number, "a block in HTML; put it between fences"
        elif re.match(r" {4,}\S|\t", line) and not before:
            yield number, "an indented block; put it between fences"
        before = line.strip() or (before if before.startswith(" ") else "")
