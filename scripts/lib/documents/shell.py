"""What a page lets its reader do: its blocks, one after the other, in one shell and one folder.

The shell is `bash -eu -o pipefail`, with a home of its own. What it leaves running is ended with
the page. The ports 5001 to 5009 and 9464 stand for ports that the system picks.
"""
import os
import re
import shlex
import signal
import socket
import subprocess

from documents.console import commands_of, pattern_of

TIME_LIMIT = 240
PORT = re.compile(r"\b(?:500[1-9]|9464)\b")
# What bash adds to the word of a terminal when a program is killed.
KILLED = re.compile(r"^.*: line \d+: +\d+ (Killed)\b.*$", re.MULTILINE)
END = "END OF THE BLOCK"


def is_step(block):
    """Whether a block is followed, and not only looked at."""
    return {
        "setup": True, "diff": True,
        "sh": not block.name,
        "console": block.name in ("", "second"),
        "ini": bool(block.name), "conf": bool(block.name), "cmake": bool(block.name),
        "cpp": bool(block.name) and "/" not in block.name,
    }.get(block.kind, False)


class PageShell:
    """Follows the blocks of a page in a folder."""

    def __init__(self, blocks, folder, environment, time_limit=TIME_LIMIT):
        self.time_limit = time_limit
        self.folder = folder / "page"
        self.results = folder / "results"
        self.home = folder / "home"
        for path in (self.folder, self.results, self.home):
            path.mkdir(parents=True)
        kept = {name: value for name, value in environment.items()
                if not name.startswith(("ZAN_", "XDG_"))}
        self.environment = dict(kept, HOME=str(self.home), TMPDIR=str(self.home), NO_COLOR="1",
                                LANG="C.UTF-8", GIT_CEILING_DIRECTORIES=str(folder))
        self.ports = dict(zip(sorted({port for block in blocks for port in PORT.findall(block.body)}),
                              free_ports(10)))
        self.commands = {block: list(commands_of(block)) for block in blocks
                         if block.kind == "console"}
        self.blocks = blocks

    def faults(self):
        """Runs everything and returns pairs of a line and what is wrong there."""
        status = self.run()
        reached = int(self.read("reached") or 0)
        if status == "late":
            return [(reached, f"is not done after {self.time_limit} s:\n{self.output(reached)}")]
        if not (self.results / "end").exists():
            return [*self.console_faults(reached),
                    (reached, f"failed with exit status {status}:\n{self.output(reached)}")]
        return self.console_faults(None)

    def run(self):
        script = self.results / "script"
        script.write_text("".join(self.script()))
        shell = subprocess.Popen(["bash", "-eu", "-o", "pipefail", script], cwd=self.folder,
                                 env=self.environment, stdin=subprocess.DEVNULL,
                                 stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                                 start_new_session=True)
        try:
            return shell.wait(self.time_limit)
        except subprocess.TimeoutExpired:
            return "late"
        finally:
            end_group(shell)

    def script(self):
        for block in self.blocks:
            if block.kind == "console":
                for command in self.commands[block]:
                    yield self.at(command.line)
                    yield self.in_second_terminal(command) if block.name else self.shown(command)
            else:
                yield self.at(block.line)
                yield self.step(block)
        yield f"touch {shlex.quote(str(self.results))}/end\n"

    def at(self, line):
        results = shlex.quote(str(self.results))
        return f"echo {line} >{results}/reached\nexec >{results}/{line} 2>&1\n"

    def step(self, block):
        body = self.with_ports(block.body)
        if block.kind in ("setup", "sh"):
            return body
        if block.kind == "diff":
            return f"git apply --verbose - <<'{END}'\n{body}{END}\n"
        name = shlex.quote(block.name)
        saved = f"cat >{name} <<'{END}'\n{body}{END}\n"
        if block.kind == "ini":
            saved += f'zan --url embedded:./{name}"?data=$(mktemp -d)" connections\n'
        return saved

    def shown(self, command):
        status = shlex.quote(f"{self.results}/{command.line}.status")
        return f"set +e\n{self.with_ports(command.text)}\necho $? >{status}\nset -e\n"

    def in_second_terminal(self, command):
        output = shlex.quote(f"{self.results}/{command.line}")
        status = shlex.quote(f"{self.results}/{command.line}.status")
        return (f"{{ set +e; {self.with_ports(command.text)}\n echo $? >{status}; }} &\n"
                f"for _ in {{1..100}}; do [[ -s {output} ]] && break; sleep 0.1; done\n")

    def console_faults(self, end):
        commands = [command for block in self.blocks if block.kind == "console"
                    for command in self.commands[block] if end is None or command.line < end]
        found = []
        for command in commands:
            printed = self.output(command.line)
            # A command that still runs has no status yet.
            status = int(self.read(f"{command.line}.status") or 0)
            if status != command.status:
                found.append((command.line, f"exit status {status}, not {command.status}; printed:"
                                            f"\n{printed}"))
            elif not pattern_of(command.expected).fullmatch(printed):
                found.append((command.line, f"this was printed:\n{printed}"))
        return found

    def with_ports(self, text):
        return PORT.sub(lambda port: self.ports[port[0]], text)

    def output(self, line):
        text = KILLED.sub(r"\1", self.read(str(line)))
        for shown, real in self.ports.items():
            text = re.sub(rf"\b{real}\b", shown, text)
        return text if text.endswith("\n") or not text else text + "\n"

    def read(self, name):
        path = self.results / name
        return path.read_text(errors="replace") if path.exists() else ""


def free_ports(count):
    sockets = [socket.create_server(("127.0.0.1", 0)) for _ in range(count)]
    ports = [str(one.getsockname()[1]) for one in sockets]
    for one in sockets:
        one.close()
    return ports


def end_group(shell):
    try:
        os.killpg(shell.pid, signal.SIGKILL)
    except ProcessLookupError:
        pass
    shell.wait()
