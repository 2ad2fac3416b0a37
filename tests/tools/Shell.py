# SPDX-License-Identifier: Apache-2.0
"""A real bash in a terminal of its own, for the tests of completions."""

import os
import pathlib
import pty
import selectors
import shlex
import shutil
import subprocess
import time

limit = 60  # seconds, on a machine that has much else to do


class Reader:
    """What comes out of a descriptor, taken up to a mark that is waited for."""

    def __init__(self, descriptor):
        self.descriptor, self.text = descriptor, b""

    def read_until(self, mark):
        mark = mark.encode()
        deadline = time.monotonic() + limit
        with selectors.DefaultSelector() as selector:
            selector.register(self.descriptor, selectors.EVENT_READ)
            while mark not in self.text:
                ready = selector.select(max(0, deadline - time.monotonic()))
                chunk = os.read(self.descriptor, 4096) if ready else b""
                if not chunk:
                    raise AssertionError(f"{mark} did not come, but {self.text!r}")
                self.text += chunk
        found, self.text = self.text.split(mark, 1)
        return found.decode()


class Shell:
    """Completes lines that call a program, and ends with the test."""

    def __init__(self, test, program, completion, environment, folder):
        bash = shutil.which("bash")
        if bash is None:
            test.skipTest("SKIPPED: there is no bash")
        program = pathlib.Path(program)
        self.name = program.name
        environment = {**environment, "PATH": f"{program.parent}:{os.environ['PATH']}", "TERM": "dumb",
                       "INPUTRC": "/dev/null", "LC_ALL": "C.UTF-8"}
        start = folder / "start"  # read after what the system has all shells read, which sets a prompt too
        start.write_text(f"unset HISTFILE PROMPT_COMMAND; PS1='READY>'; . {shlex.quote(completion)}\n")
        self.terminal, side = pty.openpty()
        test.addCleanup(os.close, self.terminal)
        shell = subprocess.Popen([bash, "--noprofile", "--rcfile", str(start), "-i"], env=environment, stdin=side,
                                 stdout=side, stderr=side, start_new_session=True, cwd=folder)
        os.close(side)
        test.addCleanup(shell.wait, limit)
        test.addCleanup(shell.kill)
        self.output = Reader(self.terminal)
        self.output.read_until("READY>")

    def completed(self, line, keys="\x1b*"):
        """The words of a line after all completions, or with a tab the only one, took the place of its end."""
        start, end = "\x01printf '<%s>\\n' \x05", " 'E''ND'\n"
        os.write(self.terminal, f"{self.name} {line}{keys}{start}{end}".encode())
        output = self.output.read_until("<END>").replace("\r\n", "\n")
        self.output.read_until("READY>")
        return output[output.index(f"<{self.name}>"):].strip()[1:-1].split(">\n<")[1:]
