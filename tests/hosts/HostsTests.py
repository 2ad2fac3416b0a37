# SPDX-License-Identifier: Apache-2.0
"""A host gets its work on the main queue through its own loop; one with a window, without any glue.

Usage: HostsTests.py gtk|qt|poll PROGRAM SOURCE [unittest arguments]
"""

import os
import pathlib
import re
import selectors
import subprocess
import sys
import tempfile
import unittest

host, program, source = sys.argv[1:4]
has_window = host != "poll"
limit = 90  # seconds; the program ends itself before


def read_line(descriptor, deadline):
    with selectors.DefaultSelector() as selector, open(descriptor, "rb", buffering=0) as stream:
        selector.register(stream, selectors.EVENT_READ)
        text = b""
        while not text.endswith(b"\n"):
            chunk = stream.read(64) if selector.select(deadline) else b""
            if not chunk:
                raise AssertionError(f"no line came, but {text!r}")
            text += chunk
        return text.decode().strip()


class Display:
    """A display that nobody sees, under a number that the server finds free itself."""

    def __enter__(self):
        reader, writer = os.pipe()
        self.log = tempfile.TemporaryFile()
        command = ["Xvfb", "-displayfd", str(writer), "-screen", "0", "640x480x24", "-nolisten", "tcp", "-noreset"]
        self.server = subprocess.Popen(command, pass_fds=[writer], stdin=subprocess.DEVNULL,
                                       stdout=self.log, stderr=self.log)
        os.close(writer)
        try:
            return ":" + read_line(reader, limit)
        except AssertionError as error:
            self.__exit__()
            raise AssertionError(f"Xvfb did not start: {self.output}") from error

    def __exit__(self, *_):
        self.server.terminate()
        self.server.wait(limit)
        self.log.seek(0)
        self.output = self.log.read().decode(errors="replace")
        self.log.close()


def environment(home, display):
    """What a desktop sets, in a home of its own, with nothing of the session that the tests run in.

    There is no session bus, and windows are drawn without the graphics card.
    """
    kept = {name: value for name, value in os.environ.items()
            if not name.startswith(("DBUS_", "DISPLAY", "G_", "GDK_", "GTK_", "QT_", "WAYLAND_", "XDG_"))}
    names = ("XDG_CACHE_HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_RUNTIME_DIR")
    folders = {name: f"{home}/{name}" for name in names}
    for folder in folders.values():
        os.mkdir(folder, 0o700)
    if "TSAN_OPTIONS" in kept:
        # A toolkit's calls may end in GObject's unlocking, which then counts as the toolkit's own: of a mutex that was
        # not seen to be locked, since what happens within GObject is left out of sight.
        kept["TSAN_OPTIONS"] += ":report_mutex_bugs=0"
    return {**kept, **folders, "HOME": home, "DISPLAY": display, "DBUS_SESSION_BUS_ADDRESS": f"unix:path={home}/none",
            "GDK_BACKEND": "x11", "GDK_DEBUG": "gl-disable", "GSK_RENDERER": "cairo", "GSETTINGS_BACKEND": "memory",
            "GTK_A11Y": "none", "QT_QPA_PLATFORM": "xcb"}


def run(display=""):
    with tempfile.TemporaryDirectory() as home:
        return subprocess.run([program], env=environment(home, display), capture_output=True, text=True,
                              timeout=limit, stdin=subprocess.DEVNULL)


def run_where_it_belongs():
    if not has_window:
        return run()
    with Display() as display:
        return run(display)


class Host(unittest.TestCase):
    def test_gets_all_work_on_the_main_thread_in_order(self):
        result = run_where_it_belongs()
        seen = re.fullmatch(rf"{host}: 1500 from workers, 1000 from queues, 20 delayed, (\d+) ticks, (\d+) refreshes\n",
                            result.stdout)
        self.assertEqual((result.returncode, bool(seen)), (0, True), result.stdout + result.stderr)
        print(result.stdout, end="")
        ticks, refreshes = map(int, seen.groups())
        self.assertGreaterEqual(ticks, 20)
        self.assertGreaterEqual(refreshes, 3)

    def test_has_no_glue_but_that_of_a_loop_which_does_not_know_us(self):
        text = pathlib.Path(source).read_text()
        allowed = set() if has_window else {"RunLoop::mainQueueDescriptor", "RunLoop::drainMainQueue"}
        self.assertEqual(set(re.findall(r"(?:RunLoop|Queue|Thread)::\w+", text)), allowed)
        foreign = re.compile(r"\bg_\w*(?:source|idle|timeout|main_context|fd)\w*|QSocketNotifier|QTimer|processEvents")
        self.assertIsNone(foreign.search(text))


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], "-v", *sys.argv[4:]])
