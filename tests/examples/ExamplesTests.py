# SPDX-License-Identifier: Apache-2.0
"""The examples do what they say: the ten lines of the README, and the tour with its watch of the network.

Usage: ExamplesTests.py MINIMAL TOUR README [unittest arguments]
"""

import os
import pathlib
import re
import selectors
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest

minimal, tour, readme = sys.argv[1:4]
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


class Minimal(unittest.TestCase):
    def test_prints_the_answer_and_ends(self):
        result = run(minimal)
        self.assertEqual((result.returncode, result.stdout), (0, "42\n"))

    def test_is_what_the_readme_shows(self):
        code = re.search(r"```cpp\n(.*?)```", pathlib.Path(readme).read_text(), re.DOTALL).group(1)
        source = pathlib.Path(readme).parent / "examples" / "minimal" / "main.cpp"
        self.assertEqual(code, source.read_text().split("\n", 1)[1])
        self.assertEqual(len(code.splitlines()), 10)


class Tour(unittest.TestCase):
    def test_shows_each_area_without_colours_in_a_pipe(self):
        result = run(tour)
        self.assertEqual(result.returncode, 0, result.stdout + result.stderr)
        for title in ("Execution", "Timers and rate limits", "Threads and operations", "Observation",
                      "Logging and timing", "Settings, folders and the bundle", "Network"):
            self.assertIn(f"\n{title}\n", result.stdout)
        self.assertIn("shown on the main thread", result.stdout)
        self.assertNotIn("\x1b", result.stdout)

    def test_leaves_the_user_s_folders_alone(self):
        with tempfile.TemporaryDirectory() as home:
            folders = {variable: home for variable in ("HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME")}
            result = subprocess.run([tour], capture_output=True, timeout=limit, env={**os.environ, **folders})
            self.assertEqual((result.returncode, os.listdir(home)), (0, []))

    def test_refuses_unknown_arguments(self):
        result = run(tour, "--wach")
        self.assertEqual(result.returncode, 2)
        self.assertIn("--wach", result.stderr)
        self.assertIn("Usage:", result.stderr)

    def test_explains_itself(self):
        result = run(tour, "--help")
        self.assertEqual(result.returncode, 0)
        self.assertIn("--watch", result.stdout)

    def test_follows_the_network_until_interrupted(self):
        command = namespace_command()
        if command is None:
            self.skipTest("this machine allows no network namespaces")
        # The shell makes the network's changes in the namespace when it is told to, line by line.
        shell = subprocess.Popen([*command, "sh", "-es"], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        self.addCleanup(shell.communicate)
        steps = f"""ip link set lo up
            ip link add veth0 type veth peer name vpeer
            ip addr add 10.9.0.1/24 dev veth0
            ip link set veth0 up
            ip link set vpeer up
            {tour} --watch & echo pid $!"""
        shell.stdin.write(steps + "\n")
        shell.stdin.flush()
        output = Output(shell.stdout)
        pid = int(output.wait_for("pid ").split()[1])
        output.wait_for("Watching the network")
        output.wait_for("offline over none")
        shell.stdin.write("ip route add default via 10.9.0.2\n")
        shell.stdin.flush()
        self.assertIn("via 10.9.0.2", output.wait_for("online over wired Ethernet"))
        shell.stdin.write("ip link set vpeer down\n")
        shell.stdin.flush()
        output.wait_for("offline over none")
        os.kill(pid, signal.SIGINT)
        shell.stdin.write(f"wait {pid}; echo status $?\n")
        shell.stdin.flush()
        self.assertEqual(output.wait_for("status ").split()[1], "0")


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], "-v", *sys.argv[4:]])
