#!/usr/bin/env python3
"""Writes the names of tags and values for C++: comfort/Tags.h and comfort/Values.h.

They come from the dictionaries of the embedded engine and from the list of what values stand for.
With `--check` nothing is written: it fails when a header is not what would be written.
"""
import pathlib
import re
import sys
import xml.etree.ElementTree as xml

ROOT = pathlib.Path(__file__).resolve().parents[2]
DICTIONARIES = ROOT / "server/dictionaries"
# The later version first: its name and type of a field count.
VERSIONS = ("FIX44.xml", "FIX42.xml")
MSG_TYPE = 35
# What a field of a type holds, as C++ has it; every other type is text.
HOLDS = {
    "AMT": "double", "FLOAT": "double", "PERCENTAGE": "double", "PRICE": "double",
    "PRICEOFFSET": "double", "QTY": "double",
    "DAYOFMONTH": "long", "INT": "long", "LENGTH": "long", "SEQNUM": "long",
    "BOOLEAN": "bool", "CHAR": "char", "UTCTIMESTAMP": "infra::Time",
}
TEXT = "std::string"
ORIGIN = "// Written by scripts/lib/make_names.py; to change a name, change the dictionaries.\n"

TAGS = """/// `zan::tag`: the tags of FIX 4.2 and 4.4 by their names, each with the type that its values have.
///
/// Threads: constants.
{origin}#ifndef ZANENGINE_COMFORT_TAGS_H
#define ZANENGINE_COMFORT_TAGS_H

#include "comfort/Tag.h"
#include "comfort/Values.h"

namespace zan::tag {{

{tags}
}} // namespace zan::tag

#endif
"""

VALUES = """/// What the values of some fields stand for, by name: `zan::Side::Buy` is 1 in tag 54. A value that
/// has no name here is written as `zan::Side{{'Z'}}`; those of text are plain text.
///
/// Threads: constants.
{origin}#ifndef ZANENGINE_COMFORT_VALUES_H
#define ZANENGINE_COMFORT_VALUES_H

#include <string_view>

namespace zan {{

{values}
}} // namespace zan

#endif
"""


class Fields:
    """Name, number and type of each field, and which of them count the instances of a group."""

    def __init__(self):
        self.types = {}  # number: type, of the latest version
        self.names = {}  # name: number
        self.groups = set()
        self.messages = {}  # name: type of message
        for version in VERSIONS:
            self.add(xml.parse(DICTIONARIES / version).getroot())

    def add(self, root):
        for field in root.find("fields"):
            number = int(field.get("number"))
            self.types.setdefault(number, field.get("type"))
            self.names.setdefault(field.get("name"), number)
        known = set(self.messages.values())
        for message in root.find("messages"):
            if message.get("msgtype") not in known:
                self.messages[message.get("name")] = message.get("msgtype")
        self.groups |= {self.names[group.get("name")] for group in root.iter("group")}
        self.groups |= {number for number, kind in self.types.items() if kind == "NUMINGROUP"}

    def name_of(self, number):
        """The name in the latest version, which is the first that was read."""
        return next(name for name, its in self.names.items() if its == number)

    def holds(self, number):
        return HOLDS.get(self.types[number], TEXT)


def named_values():
    """Number of a tag: pairs of a name and its value."""
    values = {}
    for line in (DICTIONARIES / "Values.txt").read_text().splitlines():
        if line and not line.startswith("#"):
            tag, value, meaning = line.split(" ", 2)
            values.setdefault(int(tag), []).append((identifier(meaning), value))
    return values


def identifier(meaning):
    words = re.findall(r"[A-Za-z0-9]+", meaning.replace("+", " plus "))
    return "".join(word[0].upper() + word[1:] for word in words)


def check_names(where, pairs):
    names = [name for name, _ in pairs]
    for name in names:
        if not re.fullmatch(r"[A-Za-z]\w*", name) or names.count(name) > 1:
            sys.exit(f"{where}: {name} cannot be a name in C++, or stands there twice")


def enumeration(name, kind, pairs):
    literal = "'{}'" if kind == "char" else "{}"
    underlying = "char" if kind == "char" else "int"
    lines = [f"    {each} = {literal.format(value)}," for each, value in pairs]
    return "\n".join([f"enum class {name} : {underlying} {{", *lines, "};\n"])


def texts(name, pairs):
    lines = [f'inline constexpr std::string_view {each} = "{value}";' for each, value in pairs]
    return "\n".join([f"namespace {name} {{", *lines, f"}} // namespace {name}\n"])


def values_header(fields, values):
    parts = {}
    for number, pairs in values.items():
        if number not in fields.types or fields.holds(number) == "bool":
            continue  # a field of other versions; true and false need no names
        kind = fields.holds(number)
        name = fields.name_of(number)
        check_names(name, pairs)
        parts[name] = enumeration(name, kind, pairs) if kind in ("char", "long") \
            else texts(name, pairs)
    check_names("MsgType", fields.messages.items())
    parts["MsgType"] = texts("MsgType", sorted(fields.messages.items()))
    return VALUES.format(origin=ORIGIN, values="\n".join(parts[name] for name in sorted(parts)))


def tag_type(fields, values, number):
    if number in fields.groups:
        return "GroupTag"
    kind = fields.holds(number)
    if number in values and kind in ("char", "long"):
        return f"Tag<zan::{fields.name_of(number)}>"
    return f"Tag<{kind}>"


def tags_header(fields, values):
    check_names("tags", fields.names.items())
    lines = [f"inline constexpr {tag_type(fields, values, number)} {name}{{{number}}};\n"
             for name, number in sorted(fields.names.items(), key=lambda pair: (pair[1], pair[0]))]
    return TAGS.format(origin=ORIGIN, tags="".join(lines))


def main():
    fields, values = Fields(), named_values()
    headers = {"comfort/Tags.h": tags_header(fields, values),
               "comfort/Values.h": values_header(fields, values)}
    if sys.argv[1:] == ["--check"]:
        stale = [name for name, text in headers.items()
                 if not (ROOT / name).is_file() or (ROOT / name).read_text() != text]
        for name in stale:
            print(f"{name} is not what the dictionaries say: run scripts/lib/make_names.py")
        return 1 if stale else 0
    for name, text in headers.items():
        (ROOT / name).write_text(text)
    return 0


if __name__ == "__main__":
    sys.exit(main())
