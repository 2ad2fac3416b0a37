# SPDX-License-Identifier: Apache-2.0
"""The examples do what they say: the ten lines of the README, the tour with its watch of the network and of a
host, the passwords that are kept, the types of a host as JSON, its dates, its texts, and its values.

Usage: ExamplesTests.py MINIMAL TOUR SECRETS JSON DATES TEXTS VALUES STRINGS README [unittest arguments]
"""

import os
import pathlib
import pty
import re
import signal
import subprocess
import sys
import tempfile
import termios
import unittest

from Following import Following, limit, run

minimal, tour, secrets, json, dates, texts, values, strings, readme = sys.argv[1:10]


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
                      "Logging and timing", "Settings, folders and the bundle", "Persistence", "Dates",
                      "Texts and translations", "Circles, pages and values", "Keychain", "Network",
                      "Reachability of a host"):
            self.assertIn(f"\n{title}\n", result.stdout)
        self.assertIn("shown on the main thread", result.stdout)
        self.assertIn("$.items[1].price: expected a number, found a string", result.stdout)
        self.assertIn("Добрый день, 1 файл, 2 файла, 5 файлов; Страница 2 из 9", result.stdout)
        self.assertIn("welcome (33 %) settings (67 %) done (100 %) and no further", result.stdout)
        self.assertNotIn("correct horse", result.stdout, "a secret")
        self.assertNotIn("\x1b", result.stdout)

    def test_leaves_the_user_s_folders_alone(self):
        with tempfile.TemporaryDirectory() as home:
            folders = {variable: home for variable in ("HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME")}
            result = subprocess.run([tour], capture_output=True, timeout=limit, env={**os.environ, **folders})
            self.assertEqual((result.returncode, os.listdir(home)), (0, []))

    def test_refuses_unknown_arguments(self):
        for arguments, reason in ((["--wach"], "--wach"), (["--reach"], "--reach"), (["--watch", "now"], "now"),
                                  (["--reach", "localhost", "--watch"], "--watch")):
            result = run(tour, *arguments)
            self.assertEqual((result.returncode, result.stdout), (2, ""), arguments)
            self.assertIn(reason, result.stderr)
            self.assertIn("Usage:", result.stderr)

    def test_explains_itself(self):
        result = run(tour, "--help")
        self.assertEqual(result.returncode, 0)
        self.assertIn("--watch", result.stdout)
        self.assertIn("--reach HOST", result.stdout)

    def test_says_that_a_name_can_be_no_host_s(self):
        for name in ("", 254 * "x"):
            result = run(tour, "--reach", name)
            self.assertEqual((result.returncode, result.stdout), (1, ""))
            self.assertRegex(result.stderr, f'^vorlan-tour: .*"{name[:20]}.*Invalid argument')

    def test_follows_the_network_until_interrupted(self):
        with Following(self, tour, "--watch") as follower:
            follower.wait_for("Watching the network")
            follower.wait_for("offline over none")
            follower.tell("ip route add default via 10.9.0.2")
            self.assertIn("via 10.9.0.2", follower.wait_for("online over wired Ethernet"))
            follower.tell("ip link set vpeer down")
            follower.wait_for("offline over none")
            self.assertEqual(follower.interrupt(), "0")

    def test_follows_a_host_until_interrupted(self):
        with Following(self, tour, "--reach", "198.51.100.7") as follower:
            follower.wait_for("Following the way to 198.51.100.7")
            follower.wait_for(r'No Connection, flags "-- -------"')
            follower.wait_for('"reachabilityChanged" was posted')
            follower.tell("ip route add default via 10.9.0.2")
            follower.wait_for(r'WiFi, flags "-R -------"')
            follower.wait_for('"reachabilityChanged" was posted')
            follower.tell("ip link set vpeer down")
            follower.wait_for(r'No Connection, flags "-- -------"')
            self.assertEqual(follower.interrupt(), "0")


class Secrets(unittest.TestCase):
    def setUp(self):
        home = tempfile.TemporaryDirectory()
        self.addCleanup(home.cleanup)
        self.data = pathlib.Path(home.name) / "data"
        self.environment = {**os.environ, "HOME": home.name, "XDG_DATA_HOME": str(self.data),
                            "VORLAN_KEYCHAIN_STORE": "embedded", "DBUS_SESSION_BUS_ADDRESS": "unix:path=/nonexistent/bus"}

    def ask(self, *arguments, input=""):
        result = subprocess.run([secrets, *arguments], input=input, capture_output=True, text=True, timeout=limit,
                                env=self.environment)
        return result.returncode, result.stdout, result.stderr

    def test_keeps_a_password_until_it_is_deleted(self):
        self.assertEqual(self.ask("list"), (0, "", ""))
        self.assertEqual(self.ask("set", "mail", input="correct horse\nanother line\n"), (0, "", ""))
        self.assertEqual(self.ask("set", "chat", input="no line end"), (0, "", ""))
        self.assertEqual(self.ask("list"), (0, "mail\nchat\n", ""))
        self.assertEqual(self.ask("get", "mail"), (0, "correct horse\n", ""))
        self.assertEqual(self.ask("get", "chat"), (0, "no line end\n", ""))
        self.assertEqual(self.ask("set", "mail", input="battery staple\n"), (0, "", ""))
        self.assertEqual(self.ask("get", "mail"), (0, "battery staple\n", ""))
        self.assertEqual(self.ask("delete", "mail"), (0, "", ""))
        self.assertEqual(self.ask("list"), (0, "chat\n", ""))

    def test_says_what_is_not_there(self):
        missing = (1, "", "vorlan-secrets: there is no password 'mail'\n")
        self.assertEqual(self.ask("get", "mail"), missing)
        self.assertEqual(self.ask("delete", "mail"), missing)
        self.ask("set", "chat", input="secret\n")
        self.assertEqual(self.ask("get", "mail"), missing)

    def test_says_that_the_keychain_cannot_be_reached(self):
        self.environment["VORLAN_KEYCHAIN_STORE"] = "secretService"
        unreachable = (1, "", "vorlan-secrets: The keychain cannot be reached\n")
        self.assertEqual(self.ask("set", "mail", input="secret\n"), unreachable)
        self.assertEqual(self.ask("get", "mail"), unreachable)
        self.assertEqual(self.ask("list"), unreachable)

    def test_says_where_they_are_kept(self):
        self.assertEqual(self.ask("where"), (0, f"the embedded keychain in {self.data}/vorlan/keychain\n", ""))

    def test_needs_a_password(self):
        self.assertEqual(self.ask("set", "mail"), (1, "", "vorlan-secrets: no password was given\n"))
        self.assertEqual(self.ask("list"), (0, "", ""))

    def test_refuses_what_it_does_not_know(self):
        for arguments in ((), ("wipe",), ("get",), ("list", "all"), ("set", "a", "b")):
            code, output, error = self.ask(*arguments)
            self.assertEqual((code, output), (2, ""))
            self.assertIn("Usage:", error)
        self.assertIn("Usage:", self.ask("--help")[1])

    def test_shows_nothing_of_what_is_typed(self):
        terminal, other_end = pty.openpty()
        self.addCleanup(os.close, terminal)
        process = subprocess.Popen([secrets, "set", "mail"], stdin=other_end, stdout=other_end, stderr=other_end,
                                   env=self.environment)
        os.close(other_end)
        shown = b""
        while not shown.endswith(b"Password for mail: "):
            shown += os.read(terminal, 1000)
        os.write(terminal, b"correct horse\n")
        process.wait(limit)
        try:
            while chunk := os.read(terminal, 1000):
                shown += chunk
        except OSError:  # the other end is closed
            pass
        self.assertEqual(process.returncode, 0)
        self.assertNotIn(b"horse", shown)
        self.assertEqual(self.ask("get", "mail"), (0, "correct horse\n", ""))

    def test_interrupted_it_leaves_a_terminal_that_shows_what_is_typed(self):
        terminal, other_end = pty.openpty()
        self.addCleanup(os.close, terminal)
        self.addCleanup(os.close, other_end)
        process = subprocess.Popen([secrets, "set", "mail"], stdin=other_end, stdout=other_end, stderr=other_end,
                                   env=self.environment)
        shown = b""
        while not shown.endswith(b"Password for mail: "):
            shown += os.read(terminal, 1000)
        self.assertFalse(termios.tcgetattr(other_end)[3] & termios.ECHO)
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        process.send_signal(signal.SIGTERM)
        self.assertEqual(process.wait(limit), -signal.SIGTERM)
        self.assertTrue(termios.tcgetattr(other_end)[3] & termios.ECHO)
        self.assertEqual(self.ask("list"), (0, "", ""))


def without_indentation(text):
    return "\n".join(line.strip() for line in text.split("\n"))


def expect_excerpts(case, topic):
    """The code of a page, and what it shows of other files, is all in its example."""
    root = pathlib.Path(readme).parent
    files = sorted(file for file in (root / "examples" / topic).rglob("*") if file.is_file())
    source = without_indentation("\n".join(file.read_text() for file in files))
    blocks = re.findall(r"```(?:cpp|strings|xml)\n(.*?)```", (root / "docs" / f"{topic}.md").read_text(), re.DOTALL)
    case.assertGreater(len(blocks), 5)
    for block in blocks:
        case.assertIn(without_indentation(block).strip(), source)


class JSON(unittest.TestCase):
    def test_writes_and_reads_a_host_s_types(self):
        result = run(json)
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertEqual(result.stdout.split("\n"), [
            """{"name":"Ada","addresses":[{"street":"12 St James's Square","town":"London"}]}""",
            "London",
            '{"theme":"dark","pause":60}',
            '"#FF8000"',
            "$.addresses[0].town: expected a string, found a number (at byte 54)",
            "Ada",
            "$.addresses is missing",
            '{"addresses":[],"born":"2001-01-01T00:00:00Z","name":"Ada"}',
            "the same date",
            "800",
            "2",
            '{"title":"sea","width":800}',
            "3.500000",
            '{"squares":[1,4,9]}',
            ""])

    def test_is_what_its_page_shows(self):
        expect_excerpts(self, "json")


class Dates(unittest.TestCase):
    def test_shows_dates_to_a_user(self):
        result = run(dates)
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertEqual(result.stdout.split("\n"), [
            "yesterday",
            "not sent today",
            "43200",
            "1709593200000",
            "2",
            "2024-03-05 08:07:09",
            "Tue, 05 Mar 2024 07:07:09 +0000",
            "0:01:05",
            "1d 2h 5m",
            "March 2024",
            "05/03/2024",
            "2024-03-05 13:07:09 +0000",
            "1 month and 16 days",
            "1",
            "the test passed",
            ""])

    def test_is_what_its_page_shows(self):
        expect_excerpts(self, "dates")


class Texts(unittest.TestCase):
    def test_speaks_to_users_in_their_languages(self):
        result = run(texts)
        self.assertEqual(result.returncode, 0, result.stderr)
        lines = result.stdout.split("\n")
        misfits = [line for line in lines if line.startswith("! ")]
        self.assertEqual([re.search('"(.*?)"', line)[1] for line in misfits], ["%d files", "%d of %d", "100 % done"])
        self.assertEqual([line for line in lines if line not in misfits], [
            "Öffnen",
            "Открыть",
            "Beenden",
            "Nobody has translated this",
            "„Hallo“ sagen",
            "Seite 2 von 9",
            "Nach b verschoben: a",
            "1 Datei",
            "5.000 Dateien",
            "keine Dateien",
            "3 Dateien in 1 Ordner",
            "Выйти",
            "1 файл",
            "3 файла",
            "5 файлов",
            "21 файл в 2 папках",
            "Quit",
            "1 file",
            "3 files",
            "5 files",
            "21 files in 2 folders",
            "3 of nine",
            "Lovelace, Ada",
            "name    |   3.142|0x00ff",
            "1.234,50",
            "three files",
            "1 of %d",
            "100 % done",
            "CAFÉ",
            "notes.txt",
            "home/ada/notes.txt",
            "not found",
            "900150983cd24fb0d6963f7d28e17f72",
            "ba7816bf8f01cfea",
            "an address",
            "the test passed",
            ""])

    def test_is_translated_without_fault(self):
        for program in (texts, tour):
            result = run(strings, "check", "--strict", f"{program}.resources")
            self.assertEqual((result.returncode, result.stdout, result.stderr), (0, "", ""))

    def test_is_what_its_page_shows(self):
        expect_excerpts(self, "texts")


class Values(unittest.TestCase):
    def test_shows_each_operation(self):
        result = run(values)
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertEqual(result.stdout.split("\n"), [
            "1.00",
            "2",
            "0.2998046875",
            "yes",
            "1",
            "yes",
            "yes",
            "no",
            "yes",
            "yes",
            "Open",
            "yes",
            "no",
            "no",
            "15.708",
            "60, 50",
            "done",
            "no page",
            "1.33",
            "hidden",
            "the next one",
            "the lights go on",
            ""])

    def test_is_what_its_page_shows(self):
        expect_excerpts(self, "values")


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], "-v", *sys.argv[10:]])
