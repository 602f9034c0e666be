"""The commands of a page that CI runs itself: whether what they name is there.

A line is a script of the project, `cmake`, `ctest` or `ninja`, and several of them are joined by
`&&`. Nothing else can stand there, so nothing gets past the checks of the other blocks this way.
"""
import json
import re
import shlex
import subprocess


class Wrong(Exception):
    """What a command names and the project has not."""


def by_ci_faults(block, root, tree):
    """Pairs of a line and what is wrong there."""
    for number, line in enumerate(block.body.splitlines(), block.line + 1):
        try:
            for words in split(line):
                check(words, root, tree)
        except Wrong as wrong:
            yield number, str(wrong)


def split(line):
    lexer = shlex.shlex(line, posix=True, punctuation_chars=True)
    commands = [[]]
    for word in lexer:
        if word == "&&":
            commands.append([])
        elif set(word) & set("();<>|&$`"):
            raise Wrong(f"{word} has no place among the commands that CI runs")
        else:
            commands[-1].append(word)
    return [words for words in commands if words]


def check(words, root, tree):
    program, arguments = words[0], words[1:]
    checks = {"cmake": check_cmake, "ctest": check_ctest, "ninja": check_ninja}
    if program in checks:
        checks[program](arguments, root, tree)
    elif re.fullmatch(r"(\./)?scripts/\w+", program):
        check_script(root / program, arguments, root)
    else:
        raise Wrong(f"CI does not run {program}; mark the block sh or console, so that it is run here")


def check_script(script, arguments, root):
    if not script.is_file():
        raise Wrong(f"there is no script {script.relative_to(root)}")
    text = script.read_text()
    if script.name == "ci":
        require(arguments, gates(script) | {"list", "all"}, "gate of scripts/ci")
        return
    # What the script does not read itself it hands on.
    known = text + (printed("ctest", "--help") if "ctest" in text else "")
    require([word for word in arguments if word.startswith("-")],
            set(re.findall(r"(?<![\w-])-[\w-]+", known)), f"option of scripts/{script.name}")


def gates(script):
    return set(re.findall(r"^(\w+)  ?", printed(script, "list"), re.MULTILINE))


def check_cmake(arguments, root, tree):
    allow(arguments, {"--build": 0, "--preset": 1, "--target": 1}, "cmake")
    presets = json.loads((root / "CMakePresets.json").read_text())
    building = "--build" in arguments
    names = presets["buildPresets" if building else "configurePresets"]
    require(after("--preset", arguments), {preset["name"] for preset in names}, "preset")
    require(after("--target", arguments), targets(tree), "target")


def check_ctest(arguments, _, tree):
    allow(arguments, {"--test-dir": 1, "-j4": 0, "-R": 1}, "ctest")
    for pattern in after("-R", arguments):
        if "Total Tests: 0" in printed("ctest", "--test-dir", tree, "-N", "-R", pattern):
            raise Wrong(f"no test has a name like {pattern}")


def check_ninja(arguments, _, tree):
    if arguments[:2] != ["-C", "build/default"]:
        raise Wrong("ninja works in build/default")
    require(arguments[2:], targets(tree), "target")


def allow(arguments, options, program):
    """Takes options with so many values each, and nothing else."""
    at = 0
    while at < len(arguments):
        if arguments[at] not in options:
            raise Wrong(f"{program} {arguments[at]} is nothing that CI runs")
        at += 1 + options[arguments[at]]


def targets(tree):
    return set(re.findall(r"^([\w./-]+):", printed("ninja", "-C", tree, "-t", "targets", "all"),
                          re.MULTILINE))


def require(words, known, what):
    for word in words:
        if word not in known:
            raise Wrong(f"there is no {what} {word}")


def after(option, arguments):
    return [value for name, value in zip(arguments, arguments[1:]) if name == option]


def printed(*command):
    return subprocess.run(command, capture_output=True, text=True, check=True).stdout
