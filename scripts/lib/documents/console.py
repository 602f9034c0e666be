"""The commands of a console block, and what they print, where these stand for others:

    ...                      alone on a line: any lines, also none
    …                        any text within a line
    20261121-09:30:00.123    any time, to the second or the millisecond
    [exit 3]                 the last line: the exit status, which is 0 without it
"""
import re
from dataclasses import dataclass

TIME = re.compile(r"\b\d{8}-\d\d:\d\d:\d\d(\.\d{3})?\b")
EXIT = re.compile(r"\[exit (\d+)\]")


@dataclass(frozen=True)
class Command:
    """A command of a console block, and what it must print."""
    line: int
    text: str
    expected: tuple
    status: int


def commands_of(block):
    """A command begins with `$ ` and goes on behind a backslash, or on lines that begin with `> `."""
    lines = block.body.splitlines()
    at = 0
    while at < len(lines):
        start = at
        if not lines[at].startswith("$ "):
            raise ValueError(f"line {block.line + 1 + at}: this should be a command: {lines[at]}")
        command = [lines[at][2:]]
        at += 1
        while at < len(lines) and (lines[at].startswith("> ") or command[-1].endswith("\\")):
            command.append(lines[at].removeprefix("> "))
            at += 1
        expected = []
        while at < len(lines) and not lines[at].startswith("$ "):
            expected.append(lines[at])
            at += 1
        status = EXIT.fullmatch(expected[-1]) if expected else None
        yield Command(block.line + 1 + start, "\n".join(command),
                      tuple(expected[:-1] if status else expected), int(status[1]) if status else 0)


def pattern_of(expected):
    """The regular expression of lines that a command prints."""
    def of_line(line):
        if line == "...":
            return r"(?:.*\n)*?"
        texts = [re.escape(text).replace("…", ".*") for text in TIME.split(line)[::2]]
        times = [r"\d{8}-\d\d:\d\d:\d\d" + (r"\.\d{3}" if fraction else "")
                 for fraction in TIME.split(line)[1::2]]
        return "".join(text + time for text, time in zip(texts, [*times, ""])) + r"\n"
    return re.compile("".join(of_line(line) for line in expected))
