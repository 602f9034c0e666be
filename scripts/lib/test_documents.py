#!/usr/bin/env python3
"""Each kind of block is found when it is wrong: test_documents.py <build tree>."""
import pathlib
import sys
import tempfile
import time
import unittest

from check_documents import ROOT, faults_of

SESSION = """```ini sessions.cfg
[DEFAULT]
ConnectionType=initiator
[SESSION]
ConnectionName=BROKER
BeginString=FIX.4.4
SenderCompID=US
TargetCompID=BROKER
StartTime=00:00:00
EndTime=00:00:00
HeartBtInt=30
SocketConnectHost=127.0.0.1
SocketConnectPort=5001
```
"""
SECOND = "```console second\n$ sh -c 'echo up 5001; sleep 60'\nup 5001\n```\n"

RIGHT = {
    "code": "```cpp\nproxy.connect(ticket, \"DEMO\");\n```\n",
    "blocks that share a shell": "```sh\nname=one\nmkdir in && cd in\n```\n"
                                 "```sh\n[ $name = one ] && [ ${PWD##*/} = in ]\n```\n",
    "a setup": "<!-- setup\necho 1 >there\n-->\n```sh\ncat there\n```\n",
    "what is printed": "```console\n$ echo one; \\\n  echo two\none\ntwo\n```\n",
    "any lines": "```console\n$ seq 9\n1\n...\n8\n9\n```\n",
    "any text, any time": "```console\n$ echo id 17 at 20260102-03:04:05.678\n"
                          "id … at 20261121-09:30:00.000\n```\n",
    "an exit status": "```console\n$ echo no; exit_with() { return 3; }; exit_with\nno\n[exit 3]\n```\n",
    "a port": "```console\n$ echo 127.0.0.1:5001\n127.0.0.1:5001\n```\n",
    "a second terminal": SECOND,
    "a session file": SESSION + "```sh\nzan --url embedded:sessions.cfg state\n```\n",
    "a file of the reader's": "```cpp own.cpp\nint main() {}\n```\n```sh\ng++ own.cpp\n```\n",
    "a change": "```sh\necho a >f\n```\n```diff\n--- a/f\n+++ b/f\n@@ -1 +1 @@\n-a\n+b\n```\n"
                "```sh\ngrep b f\n```\n",
    "metrics": "```yaml\nexpr: rate(zan_log_commit_seconds_bucket[5m])\n```\n",
    "what CI runs": "```sh by-ci\n./scripts/ci docs # and that is all\n./scripts/test -R Url\n"
                    "cmake --preset asan && cmake --build --preset asan --target infra_tests\n"
                    "ninja -C build/default zan\nscripts/bench --part engine\n```\n",
    "a drawing": "```text\na --> b\n```\n",
}

WRONG = {
    "no kind": ("```\nx\n```\n", "has to tell what it is"),
    "an unknown kind": ("```perl\nx\n```\n", "has to tell what it is"),
    "an unknown name of a kind": ("```sh quickly\nfalse\n```\n", "has to tell what it is"),
    "an open fence": ("```sh\ntrue\n", "not closed"),
    "an indented fence": ("- so\n\n  ```sh\n  true\n  ```\n", "indented"),
    "a block in HTML": ("<pre>zan connect</pre>\n", "block in HTML"),
    "an indented block": ("So:\n\n    zan connect\n", "indented block"),
    "code": ("```cpp\nproxy.fly(ticket);\n```\n", "does not compile"),
    "code that is no more in its file": ("```cpp examples/order/order.cpp\nint gone;\n```\n",
                                         "not in examples/order/order.cpp"),
    "a conversation": ("```conv tests/conversations/resend/one.conv\nlogoff\n```\n", "as it stands"),
    "a file of code that is not there": ("```cpp examples/gone.cpp\nint a;\n```\n", "no file"),
    "a command that fails": ("```sh\ntrue\nfalse\ntrue\n```\n", "exit status 1"),
    "a command that fails in a pipe": ("```sh\nfalse | true\n```\n", "exit status 1"),
    "a variable that is not there": ("```sh\necho $nowhere\n```\n", "nowhere"),
    "an end of the shell": ("```sh\nexit 0\n```\n```sh\nfalse\n```\n", "exit status 0"),
    "a wrong setup": ("<!-- setup\nfalse\n-->\n", "exit status 1"),
    "other output": ("```console\n$ echo two\none\n```\n", "this was printed:\ntwo"),
    "more output": ("```console\n$ seq 3\n1\n2\n```\n", "this was printed"),
    "another time": ("```console\n$ echo 20261121\n20261121-09:30:00\n```\n", "this was printed"),
    "an exit status that is not told": ("```console\n$ false\n```\n", "exit status 1, not 0"),
    "an exit status that is another": ("```console\n$ false\n[exit 2]\n```\n", "not 2"),
    "output without a command": ("```console\nwell\n```\n", "should be a command"),
    "a second terminal that prints other things": (SECOND.replace("up 5001\n```", "down\n```"),
                                                   "this was printed:\nup 5001"),
    "a second terminal that has ended badly": (
        "```console second\n$ sh -c 'echo x; exit 4'\nx\n```\n```sh\nsleep 0.5\n```\n",
        "exit status 4"),
    "a session file": (SESSION.replace("HeartBtInt", "HartBtInt"), "HartBtInt"),
    "a file that nothing uses": ("```conf zan.conf\nurl = a\n```\n", "no command below"),
    "a program that nothing uses": ("```cpp own.cpp\nint main() {}\n```\n", "no command below"),
    "a change of something else": ("```diff\n--- a/f\n+++ b/f\n@@ -1 +1 @@\n-a\n+b\n```\n", "f"),
    "YAML": ("```yaml\na: [\n```\n", "no YAML"),
    "a metric": ("```yaml\nexpr: zan_gone_total\n```\n", "no metric is called zan_gone_total"),
    "a command among those of CI": ("```sh by-ci\nrm -r .\n```\n", "CI does not run rm"),
    "another use of cmake": ("```sh by-ci\ncmake -E rm x\n```\n", "nothing that CI runs"),
    "another use of ctest": ("```sh by-ci\nctest --build-and-test x\n```\n", "nothing that CI"),
    "a command behind one of CI's": ("```sh by-ci\n./scripts/test; rm x\n```\n", "has no place"),
    "a command inside one of CI's": ("```sh by-ci\n./scripts/test $(rm x)\n```\n", "has no place"),
    "a script": ("```sh by-ci\n./scripts/gone\n```\n", "no script scripts/gone"),
    "a gate": ("```sh by-ci\n./scripts/ci gone\n```\n", "no gate of scripts/ci gone"),
    "an option": ("```sh by-ci\nscripts/bench --gone\n```\n", "no option of scripts/bench --gone"),
    "a preset": ("```sh by-ci\ncmake --preset gone\n```\n", "no preset gone"),
    "a target": ("```sh by-ci\nninja -C build/default gone\n```\n", "no target gone"),
    "tests": ("```sh by-ci\nctest --test-dir build/default -R GoneTest\n```\n", "no test"),
    "a command in a text": ("```text\n$ zan connect\n```\n", "a command in a block"),
    "a link": ("[a](gone.md)\n", "leads nowhere"),
    "a heading": ("[a](#gone)\n\n```sh\n# gone\n```\n", "names no heading"),
}


class Documents(unittest.TestCase):
    tree = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else "build/default").resolve()

    def faults(self, pages):
        """What is found in each page, by its name."""
        with tempfile.TemporaryDirectory(dir=ROOT / "build") as folder:
            paths = {name: pathlib.Path(folder) / f"{number}.md"
                     for number, name in enumerate(pages)}
            for name, path in paths.items():
                path.write_text(pages[name])
            found = faults_of(paths.values(), ROOT, self.tree)
            return {name: [fault for fault in found if f"/{path.name}:" in fault]
                    for name, path in paths.items()}

    def test_what_is_right_passes(self):
        for name, found in self.faults(RIGHT).items():
            with self.subTest(name):
                self.assertEqual(found, [])

    def test_what_is_wrong_is_found(self):
        found = self.faults({name: text for name, (text, _) in WRONG.items()})
        for name, (_, fault) in WRONG.items():
            with self.subTest(name):
                self.assertIn(fault, "\n".join(found[name]))

    def test_what_a_page_has_left_running_is_ended(self):
        with tempfile.NamedTemporaryFile() as beat:
            page = f"```sh\nwhile sleep 0.05; do date +%N >{beat.name}; done &\nsleep 0.3\n```\n"
            self.assertEqual(self.faults({"page": page})["page"], [])
            last = pathlib.Path(beat.name).read_text()
            time.sleep(0.3)
            self.assertNotEqual(last, "")
            self.assertEqual(pathlib.Path(beat.name).read_text(), last)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
