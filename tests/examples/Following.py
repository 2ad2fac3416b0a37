# SPDX-License-Identifier: Apache-2.0
"""Runs programs, and has one follow what happens to a network of its own."""

import os
import re
import selectors
import shlex
import shutil
import signal
import subprocess
import time

limit = 60  # seconds; generous, as sanitizers and a busy machine are slow


def run(*command):
    return subprocess.run(command, capture_output=True, text=True, timeout=limit, stdin=subprocess.DEVNULL)


class Output:
    """The lines of a running program, read with a deadline."""

    def __init__(self, stream):
        self.stream = stream
        self.text = ""
        self.selector = selectors.DefaultSelector()
        self.selector.register(stream, selectors.EVENT_READ)

    def wait_for(self, pattern):
        """Reads on until a line matches; fails when none does in time. What was read is used up."""
        deadline = time.monotonic() + limit
        while not (found := re.search(f"{pattern}.*\n", self.text)):
            if not self.selector.select(max(0, deadline - time.monotonic())):
                raise AssertionError(f"no line with {pattern!r} in {self.text!r}")
            chunk = os.read(self.stream.fileno(), 65536)
            if not chunk:
                raise AssertionError(f"ended without a line with {pattern!r}: {self.text!r}")
            self.text += chunk.decode()
        self.text = self.text[found.end():]
        return found.group()


def namespace_command():
    """How to run a program in a network namespace of its own here; None where that is forbidden."""
    for options in (["--net"], ["--user", "--map-root-user", "--net"]):
        command = ["unshare", *options, "--"]
        if shutil.which("unshare") and shutil.which("ip") and run(*command, "ip", "link", "set", "lo", "up").returncode == 0:
            return command
    return None


class Following:
    """A program following a network of its own: a cable with an address, and no default route."""

    def __init__(self, case, *program):
        command = namespace_command()
        if command is None:
            case.skipTest("this machine allows no network namespaces")
        # The shell makes the network's changes in the namespace when it is told to, line by line.
        self.shell = subprocess.Popen([*command, "sh", "-es"], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        self.output = Output(self.shell.stdout)
        self.program = program

    def __enter__(self):
        self.tell(f"""ip link set lo up
            ip link add veth0 type veth peer name vpeer
            ip addr add 10.9.0.1/24 dev veth0
            ip link set veth0 up
            ip link set vpeer up
            {shlex.join(self.program)} & echo pid $!""")
        self.pid = int(self.wait_for("pid ").split()[1])
        return self

    def __exit__(self, failure, *_):
        if failure:
            os.kill(self.pid, signal.SIGKILL)  # it would keep the shell's output open for ever
        self.shell.communicate()

    def tell(self, lines):
        self.shell.stdin.write(lines + "\n")
        self.shell.stdin.flush()

    def wait_for(self, pattern):
        return self.output.wait_for(pattern)

    def interrupt(self):
        """Interrupts the program; returns its exit status."""
        os.kill(self.pid, signal.SIGINT)
        self.tell(f"wait {self.pid}; echo status $?")
        return self.wait_for("status ").split()[1]
