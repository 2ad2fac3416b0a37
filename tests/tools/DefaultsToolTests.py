# SPDX-License-Identifier: Apache-2.0
"""vorlan-defaults reads and changes the settings of any application, each test in a home of its own.

Usage: DefaultsToolTests.py PROGRAM OBSERVING-HOST COMPLETION [unittest arguments]
"""

import base64
import json
import math
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

from Shell import Reader, Shell, limit

program, host, completion = sys.argv[1:4]
domain = "com.example.notes"


class InHome(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.home = pathlib.Path(folder.name)
        self.config = self.home / "config"
        kept = {name: value for name, value in os.environ.items() if not name.startswith("XDG_")}
        self.environment = {**kept, "HOME": str(self.home), "XDG_CONFIG_HOME": str(self.config)}

    def run_tool(self, *words, **options):
        return subprocess.run([program, *words], env=self.environment, capture_output=True, timeout=limit,
                              stdin=subprocess.DEVNULL, **options)

    def tool(self, *words, status=0):
        """The output of a call that ends as it should: with a message exactly when it fails."""
        result = self.run_tool(*words)
        output, errors = result.stdout.decode(), result.stderr.decode()
        self.assertEqual(result.returncode, status, f"{words}: {output}{errors}")
        self.assertEqual(bool(errors), status != 0, errors)
        self.assertFalse(status and output, output)
        return output if status == 0 else errors

    def json(self, *words):
        return json.loads(self.tool("read", *words, "--json"))

    def written(self, *value):
        """What a value is as a text and as JSON, once it is written."""
        self.tool("write", domain, "key", *value)
        text = self.tool("read", domain, "key")
        self.assertEqual(text[-1], "\n")
        return text[:-1], self.json(domain, "key")

    def tree(self):
        return sorted(str(path) for path in self.home.rglob("*"))


class Values(InHome):
    def test_booleans_have_six_spellings(self):
        for texts, value in (("true", "yes", "1"), True), (("false", "no", "0"), False):
            for text in texts:
                self.assertEqual(self.written("-bool", text), ("true" if value else "false", value))

    def test_integers_have_64_bits_with_or_without_a_sign(self):
        for integer in 0, -1, 42, 2**53 + 1, 2**63 - 1, -2**63, 2**63, 2**64 - 1:
            text, value = self.written("-int", str(integer))
            self.assertEqual((text, value, type(value)), (str(integer), integer, int))

    def test_numbers_read_back_the_same(self):
        for text, number in (("3", 3.0), ("-0.1", -0.1), ("1e300", 1e300), ("5e-324", 5e-324), ("-0", -0.0),
                             ("0.30000000000000004", 0.1 + 0.2)):
            plain, value = self.written("-float", text)
            self.assertEqual((repr(float(plain)), repr(value)), (repr(number), repr(number)))
        self.assertEqual(self.written("-float", "3")[0], "3.0")

    def test_numbers_that_json_does_not_have_are_texts_there(self):
        for text in "inf", "-inf", "nan":
            self.assertEqual(self.written("-float", text), (text, text))
        self.assertTrue(math.isnan(float(self.written("-float", "nan")[0])))

    def test_texts_stand_as_they_are(self):
        for text in "", "plain", "two\nlines", "-dash", "--", "--help", "tab\t\"quote\" \\", "\x01\x7f", "Grüße 🙂":
            self.assertEqual(self.written("-string", text), (text, text))

    def test_a_bare_value_is_a_text(self):
        self.assertEqual(self.written("true"), ("true", "true"))
        self.assertEqual(self.written(""), ("", ""))
        self.assertEqual(self.written("-"), ("-", "-"))
        self.assertEqual(self.written("--", "-5"), ("-5", "-5"))

    def test_dates_are_iso_texts_in_utc(self):
        for text, read in (("2026-03-05T14:07:09Z",) * 2, ("2026-03-05", "2026-03-05T00:00:00Z"),
                           ("2026-03-05T14:07:09.250Z", "2026-03-05T14:07:09.25Z"),
                           ("2026-03-05T14:07:09.000001Z",) * 2, ("2026-03-05T14:07:09.9999999Z", "2026-03-05T14:07:10Z"),
                           ("2026-03-05T00:07:09+01:00", "2026-03-04T23:07:09Z"),
                           ("2026-12-31T23:30:00-01:45", "2027-01-01T01:15:00Z"),
                           ("2024-02-29", "2024-02-29T00:00:00Z"), ("1969-12-31T23:59:59.5Z",) * 2,
                           ("0000-01-01T00:00:00Z",) * 2, ("9999-12-31T23:59:59Z",) * 2):
            self.assertEqual(self.written("-date", text), (read, read))

    def test_data_is_hexadecimal_and_base64_in_json(self):
        for data in b"", b"\x00", b"\x00\xff", b"abc", bytes(range(256)):
            text, value = self.written("-data", data.hex())
            self.assertEqual((text, base64.b64decode(value, validate=True)), (data.hex(), data))
        self.assertEqual(self.written("-data", "AbCd")[0], "abcd")

    def test_elements_are_texts_unless_a_type_precedes_them(self):
        self.assertEqual(self.written("-array")[1], [])
        text, value = self.written("-array", "a", "-int", "-1", "-bool", "yes", "-string", "-b", "-float", "2", "3")
        self.assertEqual(value, ["a", -1, True, "-b", 2.0, "3"])
        self.assertEqual(text, '[\n    "a",\n    -1,\n    true,\n    "-b",\n    2.0,\n    "3"\n]')
        self.assertEqual(self.written("-array", "--", "-int", "--")[1], ["-int", "--"])

    def test_dictionaries_are_keys_and_elements(self):
        self.assertEqual(self.written("-dict"), ("{}", {}))
        text, value = self.written("-dict", "b", "-data", "00ff", "", "x", "a", "-date", "2026-03-05")
        self.assertEqual(value, {"b": "AP8=", "": "x", "a": "2026-03-05T00:00:00Z"})
        self.assertEqual(text, '{\n    "": "x",\n    "a": 2026-03-05T00:00:00Z,\n    "b": <00ff>\n}')


class Commands(InHome):
    def test_all_entries_are_read_at_once(self):
        self.tool("write", domain, "n", "-int", "1")
        self.tool("write", domain, "list", "-array", "a", "b")
        self.assertEqual(self.json(domain), {"n": 1, "list": ["a", "b"]})
        self.assertEqual(self.tool("read", domain), '{\n    "list": [\n        "a",\n        "b"\n    ],\n    "n": 1\n}\n')

    def test_strange_keys_are_keys(self):
        keys = ["", "-dash", "--", "--help", "-bool", "two\nlines", "a b", "Schlüssel 🙂", "a.b:c=d", "\"'\\", "$HOME"]
        for number, key in enumerate(keys):
            self.tool("write", "-int", str(number), "--", domain, key)
            self.assertEqual(self.tool("read", "--", domain, key), f"{number}\n")
        self.assertEqual(self.json(domain), {key: number for number, key in enumerate(keys)})
        for key in keys:
            self.tool("delete", domain, "--", key)
        self.assertEqual(self.json(domain), {})

    def test_behind_two_dashes_nothing_is_an_option(self):
        self.tool("write", domain, "--", "-key", "-text")
        self.tool("write", domain, "-array", "x", "-int", "2", "--", "-list", "--json")
        self.assertEqual(self.json(domain), {"-key": "-text", "-list": ["x", 2, "--json"]})

    def test_delete_removes_one_entry_or_all(self):
        for key in "a", "b", "c":
            self.tool("write", domain, key, key)
        self.assertEqual(self.tool("delete", domain, "b"), "")
        self.assertEqual(self.tool("list", domain), "a\nc\n")
        self.tool("delete", domain)
        self.assertEqual((self.tool("list", domain), self.tool("read", domain)), ("", "{}\n"))

    def test_list_and_domains_are_sorted(self):
        self.assertEqual(self.tool("domains"), "")
        for name in "org.b", domain, "an app":
            for key in "b", "a", "B":
                self.tool("write", name, key, "x")
        (self.config / "no.store").mkdir()
        self.assertEqual(self.tool("list", domain), "B\na\nb\n")
        self.assertEqual(self.tool("domains"), f"an app\n{domain}\norg.b\n")

    def test_a_write_is_in_the_file_when_the_program_ends(self):
        self.tool("write", domain, "key", "text")
        self.assertIn(b"text", (self.config / domain / "defaults.plist").read_bytes())

    def test_help_and_version_are_no_errors(self):
        usage = self.tool("--help")
        for word in "read", "write", "delete", "list", "domains", "--json", "-dict":
            self.assertIn(word, usage)
        self.assertEqual(self.tool("write", domain, "--help"), usage)
        self.assertRegex(self.tool("--version"), r"^vorlan-defaults \d+\.\d+\.\d+\n$")
        self.assertEqual(self.tree(), [])


class Errors(InHome):
    def test_what_is_not_there_is_not_found(self):
        for words in ("read", domain), ("read", domain, "key"), ("delete", domain), ("delete", domain, "key"), \
                ("list", domain):
            self.assertIn(f"no domain '{domain}'", self.tool(*words, status=1))
        self.assertEqual(self.tree(), [], "looking must not leave anything behind")
        self.tool("write", domain, "other", "x")
        self.tool("list", domain)  # tidies up after the process that wrote
        before = self.tree()
        for command in "read", "delete":
            self.assertIn("no key 'key'", self.tool(command, domain, "key", status=1))
        self.assertEqual(self.tree(), before)

    def test_a_wrong_call_is_told_with_the_usage_and_changes_nothing(self):
        for words in ((), ("",), ("show", domain), ("read",), ("read", domain, "a", "b"), ("read", domain, "--xml"),
                      ("read", domain, "-int", "1"), ("read", domain, "key", "-array"), ("list",), ("list", domain, "a"),
                      ("list", domain, "--json"), ("domains", domain), ("delete",), ("delete", domain, "a", "b"),
                      ("write",), ("write", domain), ("write", domain, "key"), ("write", domain, "-bool", "true"),
                      ("write", domain, "-array", "key", "x"), ("write", domain, "key", "a", "b"),
                      ("write", domain, "key", "-int", "1", "2"), ("write", domain, "key", "-int"),
                      ("write", domain, "key", "-5"), ("write", domain, "key", "-array", "-dict"),
                      ("write", domain, "key", "-int", "1", "-array"), ("write", domain, "key", "-dict", "a"),
                      ("write", domain, "key", "-dict", "-int", "1", "a"),
                      ("write", domain, "key", "-dict", "a", "1", "a", "2"), ("write", domain, "key", "x", "--json")):
            message = self.tool(*words, status=2)
            self.assertTrue(message.startswith("vorlan-defaults: "), message)
            self.assertIn("\n\nUsage: vorlan-defaults", message)
        self.assertEqual(self.tree(), [])

    def test_values_are_read_strictly(self):
        wrong = {
            "-bool": ("", "maybe", "TRUE", "2", "true "),
            "-int": ("", "x", "1.5", "1 ", " 1", "+1", "0x10", str(2**64), str(-2**63 - 1), "9" * 40),
            "-float": ("", "x", "1,5", "1.5 ", "1e999", "0x1p3", "--1"),
            "-date": ("", "today", "2026-3-5", "2026-02-29", "2026-13-01", "2026-00-10", "2026-04-31", "2026-01-00",
                      "26-03-05", "02026-03-05", "2026-03-05 14:07:09Z", "2026-03-05T14:07:09", "2026-03-05T14:07Z",
                      "2026-03-05T24:00:00Z", "2026-03-05T14:60:00Z", "2026-03-05T14:07:60Z", "2026-03-05Z",
                      "2026-03-05T14:07:09.Z", "2026-03-05T14:07:09+0100", "2026-03-05T14:07:09+01:60",
                      "2026-03-05T14:07:09+24:00", "2026-03-05T14:07:09ZZ", "2026-03-05T14:07:09z", "-026-03-05",
                      "2026-03-05T14:07:09." + "1" * 10 + "Z", "2026-03-05T14:07:0" + "9" * 40 + "Z"),
            "-data": ("0", "0g", "0x00", "00 ff", "-1", "+1"),
        }
        for option, texts in wrong.items():
            for text in texts:
                with self.subTest(option=option, text=text):
                    self.tool("write", domain, "key", option, text, status=2)
        self.assertEqual(self.tree(), [])

    def test_a_domain_is_a_name_of_a_folder(self):
        for name in "", ".", "..", ".hidden", "a/b", "a" * 256:
            for words in ("read", name), ("write", name, "key", "x"), ("delete", name), ("list", name):
                self.assertIn("is no name of a domain", self.tool(*words, status=2))
        self.assertEqual(self.tree(), [])

    def test_text_that_is_not_well_formed_is_refused(self):
        for words in (b"key", b"\xff"), (b"\xff", b"text"), (b"key", b"-array", b"\xc0\x80"):
            result = self.run_tool(b"write", domain.encode(), *words)
            self.assertEqual(result.returncode, 2, result.stderr)
            result.stderr.decode()
        self.tool("read", domain, "key", status=1)

    def test_what_cannot_be_saved_is_told(self):
        self.config.mkdir()
        (self.config / domain).write_text("a file where a folder should be")
        self.assertIn(domain, self.tool("write", domain, "key", "x", status=3))
        self.assertEqual((self.config / domain).read_text(), "a file where a folder should be")

    def test_a_damaged_store_is_told_and_kept_aside(self):
        (self.config / domain).mkdir(parents=True)
        (self.config / domain / "defaults.plist").write_bytes(b"no property list")
        self.assertIn("defaults.plist", self.tool("read", domain, "key", status=3))
        kept = list((self.config / domain).glob("defaults.plist.damaged-*"))
        self.assertEqual([path.read_bytes() for path in kept], [b"no property list"])
        self.tool("write", domain, "key", "x")
        self.assertEqual(self.json(domain), {"key": "x"})

    def test_a_store_that_cannot_be_read_is_told_and_left_alone(self):
        (self.config / domain).mkdir(parents=True)
        file = self.config / domain / "defaults.plist"
        file.symlink_to("/proc/self/mem")  # reading it fails for everyone
        for words in ("read", domain), ("read", domain, "key"), ("list", domain), ("delete", domain), \
                ("write", domain, "key", "x"):
            self.assertIn("defaults.plist", self.tool(*words, status=3))
        self.assertTrue(file.is_symlink())

    def test_output_that_cannot_be_written_is_told(self):
        self.tool("write", domain, "key", "x")
        with open("/dev/full", "wb") as full:
            result = subprocess.run([program, "read", domain], env=self.environment, stdout=full,
                                    stderr=subprocess.PIPE, timeout=limit)
        self.assertEqual(result.returncode, 3)
        self.assertIn(b"cannot write the output", result.stderr)


class Processes(InHome):
    def test_a_running_host_hears_of_changes(self):
        self.tool("write", domain, "level", "-int", "1")
        with subprocess.Popen([host, domain, "level"], env=self.environment, stdin=subprocess.PIPE,
                              stdout=subprocess.PIPE) as running:
            try:
                output = Reader(running.stdout.fileno())
                output.read_until("observing\n")
                for value in "2", "3":
                    self.tool("write", domain, "level", "-int", value)
                    output.read_until(f"{value}\n")
                self.tool("delete", domain, "level")
                output.read_until("absent\n")
                running.stdin.close()
                self.assertEqual(running.wait(limit), 0)
            finally:
                running.kill()

    def test_two_that_write_at_once_lose_nothing(self):
        expected = {f"{side}{number}": number for side in "ab" for number in range(20)}
        for number in range(20):
            both = [subprocess.Popen([program, "write", domain, f"{side}{number}", "-int", str(number)],
                                     env=self.environment) for side in "ab"]
            self.assertEqual([one.wait(limit) for one in both], [0, 0])
        self.assertEqual(self.json(domain), expected)


class Completion(InHome):
    """Typed into a real bash, which then prints the words that the line was completed to."""

    def setUp(self):
        super().setUp()
        self.completed = Shell(self, program, completion, self.environment, self.home).completed

    def test_commands(self):
        self.assertEqual(sorted(self.completed("")),
                         ["--help", "--version", "delete", "domains", "list", "read", "write"])
        self.assertEqual(self.completed("d"), ["delete", "domains"])
        self.assertEqual(self.completed("wr", "\t"), ["write"])

    def test_domains(self):
        for name in domain, "com.example.mail", "org.other":
            self.tool("write", name, "key", "x")
        for command in "read", "write", "delete", "list":
            self.assertEqual(self.completed(f"{command} com."), [command, "com.example.mail", domain])
        self.assertEqual(self.completed("read org", "\t"), ["read", "org.other"])

    def test_keys(self):
        keys = ["plain", "two words", "colon:one", "colon:two", "$HOME", "it's", "Größe"]
        for key in keys:
            self.tool("write", "my app", "--", key, "x")
        self.assertEqual(self.completed("read my", "\t"), ["read", "my app"])
        self.assertEqual(sorted(self.completed("read my\\ app ")[2:]), sorted(keys))
        for line, key in (("read my\\ app pl", "plain"), ("write 'my app' tw", "two words"),
                          ('delete "my app" two\\ w', "two words"), ("read my\\ app 'two w", "two words"),
                          ("read my\\ app colon:o", "colon:one"), ("read my\\ app \\$", "$HOME"),
                          ("read my\\ app it", "it's"), ("read my\\ app G", "Größe")):
            with self.subTest(line=line):
                self.assertEqual(self.completed(line, "\t"), [line.split()[0], "my app", key])

    def test_options(self):
        self.assertEqual(self.completed("read a b --j", "\t"), ["read", "a", "b", "--json"])
        self.assertEqual(self.completed("write a b -d"), ["write", "a", "b", "-data", "-date", "-dict"])
        self.assertEqual(self.completed("write a b -bool t", "\t"), ["write", "a", "b", "-bool", "true"])
        self.assertEqual(self.completed("write a b -array -int 1 -bo", "\t")[-2:], ["1", "-bool"])


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], "-v", *sys.argv[4:]])
