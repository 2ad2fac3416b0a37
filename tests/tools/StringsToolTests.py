# SPDX-License-Identifier: Apache-2.0
"""vorlan-strings checks and shows the tables of bundles, each test in a folder of its own.

Usage: StringsToolTests.py PROGRAM COMPLETION [unittest arguments]
"""

import errno
import json
import os
import pathlib
import plistlib
import subprocess
import sys
import tempfile
import unittest

from Shell import Shell, limit

program, completion = sys.argv[1:3]


def table(**texts):
    return "".join(f'"{key}" = {json.dumps(text)};\n' for key, text in texts.items())


def variable(value_type="d", **forms):
    return {"NSStringFormatSpecTypeKey": "NSStringPluralRuleType", "NSStringFormatValueTypeKey": value_type, **forms}


def plural(text="%#@n@", **variables):
    return {"NSStringLocalizedFormatKey": text, **variables}


class InFolder(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def write(self, path, content):
        """A file: a text in UTF-8, bytes as they are, a dictionary as a property list."""
        path = self.folder / path
        path.parent.mkdir(parents=True, exist_ok=True)
        if isinstance(content, dict):
            content = plistlib.dumps(content)
        path.write_bytes(content.encode() if isinstance(content, str) else content)

    def bundle(self, files, name="b", info=None):
        for path, content in files.items():
            self.write(f"{name}/{path}", content)
        if info is not None:
            self.write(f"{name}/Info.plist", info)

    def run_tool(self, *words):
        return subprocess.run([program, *words], cwd=self.folder, capture_output=True, timeout=limit,
                              stdin=subprocess.DEVNULL)

    def tool(self, *words, status=0, has_message=None):
        """The output of a call, or its message where it has one, which is when it could not be done."""
        result = self.run_tool(*words)
        output, errors = result.stdout.decode(), result.stderr.decode()
        self.assertEqual(result.returncode, status, f"{words}: {output}{errors}")
        has_message = status == 2 if has_message is None else has_message
        self.assertEqual(bool(errors), has_message, f"{words}: {errors}")
        return (output, errors) if has_message else output

    def check(self, *words, status=0):
        return self.tool("check", *words, status=status).splitlines()


class CleanBundles(InFolder):
    def test_clean_tables_of_all_forms_are_silent(self):
        texts = {"Open": "Open", "Open %@ of %d": "Open %@ of %d", "Greeting": "Grüße, %1$@: %2$.2f%%"}
        text = "".join(f'"{key}" = "{value}"; // comment\n' for key, value in texts.items())
        swapped = text.replace('"Open %@ of %d";', '"%2$d / %1$@";')
        one_other = {"files": plural("%#@files@ in %@", files=variable(one="one file", other="%d files"))}
        all_four = {"files": plural("%2$@: %1$#@files@", files=variable(
            "lld", zero="none", one="%lld файл", few="%lld файла", many="%lld файлов", other="%lld файла"))}
        self.bundle({
            "en.lproj/Localizable.strings": text,
            "en.lproj/Localizable.stringsdict": one_other,
            "de.lproj/Localizable.strings": swapped.encode("utf-16"),
            "de.lproj/Localizable.stringsdict": plistlib.dumps(one_other, fmt=plistlib.FMT_BINARY),
            "nl.lproj/Localizable.strings": b"\xfe\xff" + swapped.encode("utf-16-be"),
            "nl.lproj/Localizable.stringsdict": one_other,
            "ru.lproj/Localizable.strings": plistlib.dumps(texts, fmt=plistlib.FMT_BINARY),
            "ru.lproj/Localizable.stringsdict": all_four,
            "ja.lproj/Localizable.strings": {**texts, "files": "%d: %@"},
            "ja.lproj/picture.png": b"no table",
        })
        for options in (), ("--strict",), ("--strict", "--table", "Localizable"):
            self.assertEqual(self.check("b", *options), [])
        self.assertEqual(json.loads(self.tool("check", "b", "--json")), [])
        self.assertEqual(self.tool("list", "b"), "de\tLocalizable\t4\nen\tLocalizable\t4\nja\tLocalizable\t4\n"
                                                 "nl\tLocalizable\t4\nru\tLocalizable\t4\n")

    def test_bundles_are_applications_folders_with_resources_and_folders_with_languages(self):
        files = {"en.lproj/T.strings": '"a" = "a"; "a" = "b";'}
        self.bundle(files, "direct")
        self.bundle(files, "folder/Resources")
        self.bundle(files, "An App.app/Contents/Resources")
        self.write("An App.app/Contents/Info.plist", {})
        message = 'en.lproj/T.strings:1:12: warning: "a": is said once more; this text counts'
        for name, shown in (("direct", "direct/"), ("direct/", "direct/"), ("./direct", "./direct/"),
                            ("folder", "folder/Resources/"), (f"{self.folder}/folder", f"{self.folder}/folder/Resources/"),
                            ("An App.app", "An App.app/Contents/Resources/")):
            self.assertEqual(self.check(name), [shown + message])
        self.assertEqual(self.check("folder", "direct"), ["direct/" + message, "folder/Resources/" + message])


class Findings(InFolder):
    def test_every_kind_is_told_with_its_place(self):
        self.bundle({
            "en.lproj/Main.strings": '"a" = "%d"; "b" = "B";\r\n/* Grüße 🙂 */ "c" = "%@";\n"c" = "%@";\n\n"d \\"\\n" = "";',
            "en.lproj/Extra.strings": table(x="x"),
            "en.lproj/Plural.stringsdict": {"files": plural(n=variable(one="one", other="%d"))},
            "de.lproj/Main.strings": '/* ü */ "a" = "%@";\n  e = "E";\n"c" = "%y";',
            "de.lproj/Plural.stringsdict": {"files": plural("%#@m@", m=variable(few="x", other="%d"))},
            "de.lproj/Own.strings": table(x="x"),
            "fr.lproj/Main.strings": '"a" = "%d";\n"ü" "b";',
            "fr.lproj/Plural.stringsdict": {"files": plural(n=variable(one="x"))},
        })
        (self.folder / "b/fr.lproj/Extra.strings").symlink_to("/proc/self/mem")  # reading it fails for everyone
        expected = [
            'de.lproj: warning: the table "Extra" of "en" is missing',
            'de.lproj/Main.strings: warning: "b": is missing; "en" has it',
            'de.lproj/Main.strings: warning: "d \\"\\n": is missing; "en" has it',
            'de.lproj/Main.strings:1:9: error: "a": takes (any), in "en" (integer)',
            'de.lproj/Main.strings:2:3: warning: "e": is not in "en"',
            'de.lproj/Main.strings:3:1: error: "c": "%y" is no directive of a format',
            'de.lproj/Own.strings: warning: "en" has no table "Own"',
            'de.lproj/Plural.stringsdict: warning: "files": has the form "few" of "m", which "de" has for no number',
            'de.lproj/Plural.stringsdict: warning: "files": has the variables (m), in "en" (n)',
            'de.lproj/Plural.stringsdict: warning: "files": lacks the form "one" of "m", which "de" has for 1',
            'en.lproj/Main.strings:3:1: warning: "c": is said once more; this text counts',
            "fr.lproj/Extra.strings: error: ",
            "fr.lproj/Main.strings:2:5: error: expected '=' or ';', found '\"'",
            "fr.lproj/Plural.stringsdict: error: ",
        ]
        lines = self.check("b", status=1)
        self.assertEqual(len(lines), len(expected), "\n".join(lines))
        for line, wanted in zip(lines, expected):
            whole = not wanted.endswith(" ")
            self.assertEqual(line if whole else line[:len(wanted) + 2], f"b/{wanted}")
        self.assertIn("cannot be read", lines[-3])
        self.assertIn('"files"', lines[-1])

        findings = json.loads(self.tool("check", "--json", "b", status=1))
        for line, finding in zip(lines, findings):
            place = "".join(f":{finding[name]}" for name in ("line", "column") if finding[name] is not None)
            self.assertEqual(line, f"{finding['path']}{place}: {finding['severity']}: {finding['message']}")
        self.assertEqual([finding["kind"] for finding in findings],
                         ["missing-table", "missing-key", "missing-key", "format", "extra-key", "directive", "extra-table",
                          "unused-form", "variables", "missing-form", "repeated-key", "unreadable", "syntax", "syntax"])
        self.assertEqual(findings[2], {
            "path": "b/de.lproj/Main.strings", "line": None, "column": None, "severity": "warning", "kind": "missing-key",
            "language": "de", "table": "Main", "key": 'd "\n', "message": '"d \\"\\n": is missing; "en" has it'})
        self.assertEqual(findings[0]["key"], None)
        self.assertEqual([findings[3][name] for name in ("line", "column", "key")], [1, 9, "a"])

    def test_warnings_count_when_checking_strictly(self):
        self.bundle({"en.lproj/T.strings": table(a="a"), "de.lproj/T.strings": ""})
        lines = self.check("b")
        self.assertEqual(lines, ['b/de.lproj/T.strings: warning: "a": is missing; "en" has it'])
        self.assertEqual(self.check("b", "--strict", status=1), lines)

    def test_places_are_in_characters_whatever_the_encoding(self):
        text = '/* 🙂 */ "ü" = "1";\r\n\t"ä🙂" = "2"; "ü" = "3";'
        encodings = {"en": "utf-8", "de": "utf-16", "fr": "utf-16-be", "it": "utf-8-sig"}
        for text, place, status in (text, "2:14", 0), (text + "\r\"x\" = ;", "3:7", 1):
            self.bundle({f"{name}.lproj/T.strings": text.encode(encoding) for name, encoding in encodings.items()})
            self.assertEqual([line.split(": ")[0] for line in self.check("b", status=status)],
                             [f"b/{name}.lproj/T.strings:{place}" for name in sorted(encodings)])

    def test_names_that_are_not_well_formed_are_told(self):
        self.bundle({"en.lproj/T.strings": "", "de.lproj/T.strings": ""})
        with open(os.fsencode(self.folder) + b"/b/de.lproj/\xff.strings", "w") as file:
            file.write("wrong")
        finding, = json.loads(self.tool("check", "b", "--json", status=1))
        self.assertEqual((finding["path"], finding["table"]), ("b/de.lproj/\ufffd.strings", "\ufffd"))
        self.assertIn(b"b/de.lproj/\xff.strings:1:6: error: ", self.run_tool("check", "b").stdout)

    def test_a_text_with_plural_variables_goes_before_one_without(self):
        self.bundle({"en.lproj/T.strings": table(n="%@"), "de.lproj/T.strings": table(n="%@ %@"),
                     "en.lproj/T.stringsdict": {"n": plural(n=variable(one="1", other="%d"))},
                     "de.lproj/T.stringsdict": {"n": plural(n=variable(one="1", other="%d"))}})
        self.assertEqual(self.check("b", "--strict"), [])

    def test_a_file_that_cannot_be_read_hides_no_other(self):
        self.bundle({"en.lproj/T.strings": table(a="a", b="%d"), "en.lproj/T.stringsdict": {},
                     "de.lproj/T.strings": table(b="%@"), "de.lproj/T.stringsdict": "<plist>"})
        lines = self.check("b", status=1)
        self.assertEqual(len(lines), 2, "what the broken file has is not known to be missing")
        self.assertEqual(lines[0], 'b/de.lproj/T.strings:1:1: error: "b": takes (any), in "en" (integer)')
        self.assertTrue(lines[1].startswith("b/de.lproj/T.stringsdict: error: "))
        self.bundle({"de.lproj/T.strings": table(b="%d", c="c"), "de.lproj/T.stringsdict": {}, "en.lproj/T.strings": "{"})
        self.assertEqual([line.split(": ")[0] for line in self.check("b", status=1)], ["b/en.lproj/T.strings:1:2"])

    def test_hidden_files_are_no_tables(self):
        self.bundle({"en.lproj/T.strings": table(a="a"), "en.lproj/._T.strings": b"\x00\x05\x16\x07",
                     "en.lproj/.#T.stringsdict": "wrong", "Base.lproj/._T.strings": "wrong"})
        self.assertEqual(self.check("b", "--strict"), [])
        self.assertEqual(self.tool("list", "b"), "Base\nen\tT\t1\n")

    def test_a_loop_of_links_is_told_in_a_few_words(self):
        self.bundle({"en.lproj/T.strings": table(a="a")})
        (self.folder / "b/en.lproj/Loop.strings").symlink_to("Loop.strings")
        reason = os.strerror(errno.ELOOP)
        self.assertEqual(self.check("b", status=1), [f"b/en.lproj/Loop.strings: error: cannot be read: {reason}"])
        self.assertEqual(self.tool("print", "b/en.lproj/Loop.strings", status=2)[1],
                         f"vorlan-strings: cannot read 'b/en.lproj/Loop.strings': {reason}\n")

    def test_what_is_no_file_is_not_waited_for(self):
        self.bundle({"en.lproj/T.strings": table(a="a")})
        os.mkfifo(self.folder / "b/en.lproj/Pipe.strings")
        (self.folder / "b/en.lproj/Folder.strings").mkdir()
        (self.folder / "b/en.lproj/Link.strings").symlink_to("nowhere")
        lines = self.check("b", status=1)
        self.assertEqual([line.split(": ")[:3] for line in lines],
                         [[f"b/en.lproj/{name}.strings", "error", "cannot be read"] for name in ("Folder", "Link", "Pipe")])


class Formats(InFolder):
    def findings(self, pairs, name="T.strings"):
        """What is told of pairs of a text and its translation, by language and index."""
        for language, side in zip(("en", "de"), zip(*pairs)):
            self.bundle({f"{language}.lproj/{name}": {f"k{index:02}": text for index, text in enumerate(side)}})
        found = {}
        for finding in json.loads(self.run_tool("check", "b", "--json").stdout):
            text = finding["message"].split(": ", 1)[1]
            found.setdefault((finding["language"], int(finding["key"][1:])), []).append(text)
        return found

    def test_arguments_agree_in_number_and_kind(self):
        same = [("%@ %d", "%2$d %1$@"), ("%1$@ %2$@", "%2$@ %1$@"), ("%d", "%lld"), ("%x", "%'d"), ("%.2f", "%e"),
                ("%s", "%S"), ("%%", ""), ("100%%", "%%100"), ("%*d", "%2$*1$d"),
                ("%1$@", "%1$@ %1$@"), ("", "x"), ("%@", "%p"), ("%1$@ %1$d", "%d")]
        different = [("%d", "%@"), ("%@", "%d"), ("%d", "%f"), ("%@", "%s"), ("%@", ""), ("", "%@"), ("%@ %d", "%d %@"),
                     ("%@ %@", "%2$@"), ("%d", "%*d"), ("%@", "%@ %@")]
        found = self.findings(same + different)
        self.assertEqual(sorted(found), [("de", index) for index in range(len(same), len(same) + len(different))])
        messages = [found[("de", len(same) + index)] for index in range(len(different))]
        self.assertEqual(messages[0], ['takes (any), in "en" (integer)'])
        self.assertEqual(messages[2], ['takes (number), in "en" (integer)'])
        self.assertEqual(messages[4], ['takes nothing, in "en" (any)'])
        self.assertEqual(messages[6], ['takes (integer, any), in "en" (any, integer)'])
        self.assertEqual(messages[7], ['takes (2: any), in "en" (any, any)'])
        self.assertEqual(messages[8], ['takes (integer, integer), in "en" (integer)'])

    def test_what_is_wrong_by_itself_is_told_of_each_language(self):
        pairs = [("%", "%"), ("50 %!", "50 %%"), ("%@", "%y %@"), ("%1$d %1$@", "%1$d %1$s"), ("%#@n@", "%d")]
        found = self.findings(pairs)
        self.assertEqual(found, {
            ("en", 0): ['"%" is no directive of a format'], ("de", 0): ['"%" is no directive of a format'],
            ("en", 1): ['"%!" is no directive of a format'], ("de", 2): ['"%y" is no directive of a format'],
            ("de", 3): ["argument 1 is both integer and text"], ("en", 4): ['there is no variable "n"']})

    def test_percent_signs_of_texts_that_may_be_no_formats_are_warnings(self):
        self.bundle({"en.lproj/T.strings": {"a": "100%", "b": "50 %!", "c": "%d"},
                     "de.lproj/T.strings": {"a": "100 %", "b": "50 %% !", "c": "%y", "d": "%"}})
        lines = self.check("b", status=1)
        severities = [(line.split(":")[0][2:4], line.split('"')[1], line.split(": ")[1]) for line in lines]
        self.assertEqual(severities, [("de", "a", "warning"), ("de", "c", "error"), ("de", "d", "warning"),
                                      ("de", "d", "warning"), ("en", "a", "warning"), ("en", "b", "warning")])

    def test_gaps_that_may_be_chance_are_no_errors_but_others_are(self):
        doubtful = [("100% done", "100% fertig"), ("50% off", "50% Rabatt"), ("100% free", "100% kostenlos"),
                    ("Battery at 10% and", "Akku bei 10% und"), ("%20doc", "%20Dok"), ("%20doc", "%20album"),
                    ("http://a/b%20a", "http://a/b%20b"), ("http://a/%c3%a4", "http://a/a")]
        certain = [("%d done", "% fertig"), ("%02d:%02d", "%02d"), ("%10d", "%10f"), ("%@", "%20doc"),
                   ("%dcm", "%fcm"), ("%-d", "%+f")]
        files = plural("%#@n@", n=variable(one="% d file", other="% d files"))
        pairs = {f"{severity}{index}": pair for severity, group in (("warning", doubtful), ("error", certain))
                 for index, pair in enumerate(group)}
        for language, side in ("en", 0), ("de", 1):
            self.bundle({f"{language}.lproj/T.strings": {key: pair[side] for key, pair in pairs.items()}})
        self.bundle({"en.lproj/P.stringsdict": {"error": files}, "de.lproj/P.strings": table(error="% f"),
                     "de.lproj/P.stringsdict": {"error": plural("%#@n@ %@", n=variable(one="1", other="% d"))}})
        findings = json.loads(self.tool("check", "b", "--json", status=1))
        told = {finding["key"]: finding["severity"] for finding in findings if finding["language"] == "de"}
        self.assertEqual(told, {key: key.rstrip("0123456789") for key in (*pairs, "error")})

    def test_variables_and_their_forms_take_the_same(self):
        def files(text="%#@n@", kind="d", one="one", other="%d"):
            return plural(text, n=variable(kind, one=one, other=other))

        def two(text, first="a", second="b"):
            return plural(text, **{first: variable(one="%d", other="%d"), second: variable(one="%d", other="%d")})

        same = [(files(), files(kind="lld")), (files(other="no number"), files()),
                (files("%#@n@ in %@"), files("%2$@: %1$#@n@")), (files(one="%d %2$@", other="%d %2$@"), files("%#@n@ %@")),
                (files("%1$#@n@%3$@", one="a file", other="%2$@ has %1$d files"),
                 files("%1$#@n@%3$@", one="%2$@", other="%1$d %2$@")),
                (files("%#@n@ %@", one="one", other="%d of %2$@"), files("%#@n@ %@", other="%d")),
                (two("%#@a@ %#@b@"), two("%2$#@b@ %1$#@a@")), (files(kind=".1f", one="%.1f", other="%f"),) * 2]
        different = [(files(), files(kind="f", other="%f", one="1")), (files("%#@n@ in %@"), files()),
                     (files(), files(one="one %2$@")), (files("%#@n@ %@"), files(one="one", other="%d %@")),
                     (files("%#@n@ %@"), files(one="%2$d", other="%d %2$@")), (files(), files(other="%s")),
                     (two("%#@a@ %#@b@"), two("%#@c@ %#@d@", "c", "d")), (files(), files("%2$#@n@"))]
        found = self.findings(same + different, name="T.stringsdict")
        wrong = [found.pop(("de", index + len(same)), None) for index in range(len(different))]
        self.assertEqual(found, {}, wrong)
        self.assertEqual(wrong, [
            ['takes (number), in "en" (integer)'], ['takes (integer), in "en" (integer, any)'],
            ['the form "one" of "n" takes (2: any) beside its number, the form "other" nothing'],
            ['the form "one" of "n" takes nothing beside its number, the form "other" (2: any)'],
            ['the form "one" of "n" takes (2: integer) beside its number, the form "other" (2: any)'],
            ["argument 1 is both integer and text"], ['has the variables (c, d), in "en" (a, b)'],
            ['takes (2: integer), in "en" (integer)']])

    def test_variables_within_forms_take_the_next_argument(self):
        def nested(kind, **forms):
            return {"k00": plural("%#@a@ %@", a=variable(one="%#@b@", other="%d %#@b@"),
                                  b=variable(kind, **{"one": "1", "other": "x", **forms}))}

        self.bundle({"en.lproj/T.stringsdict": nested("d"), "de.lproj/T.stringsdict": nested("d")})
        self.assertEqual(self.check("b", "--strict"), [])
        self.bundle({"de.lproj/T.stringsdict": nested("@")})
        self.assertEqual(self.check("b", status=1), ['b/de.lproj/T.stringsdict: error: "k00": takes (integer, any, any), '
                                                     'in "en" (integer, integer, any)'])
        self.bundle({"de.lproj/T.stringsdict": nested("d", one="%y")})
        self.assertEqual(self.check("b", status=1), ['b/de.lproj/T.stringsdict: error: "k00": "%y" is no directive of a '
                                                     "format"])


class PluralForms(InFolder):
    def remarks(self, language, *names, kind="d", region=None):
        """Of a language whose numbers choose among these forms and "other": what is said of which form, and a number."""
        forms = {name: "x" for name in (*names, "other")}
        self.bundle({f"{language}.lproj/T.stringsdict": {"k": plural(n=variable(kind, **forms))}}, "b" + language,
                    {"CFBundleDevelopmentRegion": region} if region else None)
        parts = [line.split('"') for line in self.check("b" + language, "--base", language)]
        return [f"{part[2].split()[1]} {part[3]} {part[-1].split('has for ')[1]}" for part in parts]

    def test_languages_need_the_forms_that_their_numbers_choose(self):
        self.assertEqual(self.remarks("en", "one"), [])
        self.assertEqual(self.remarks("en"), ["lacks one 1"])
        self.assertEqual(self.remarks("en", "zero", "one", "two"), ["has two no number"])
        self.assertEqual(self.remarks("ru", "one", "few"), ["lacks many 0"])
        self.assertEqual(self.remarks("ja"), [])
        self.assertEqual(self.remarks("ja", "zero", "one"), ["has one no number"])
        self.assertEqual(self.remarks("ar", "one", "many"), ["lacks few 3", "lacks two 2", "lacks zero 0"])
        for language in "es", "fr", "it", "pt-BR":
            self.assertEqual(self.remarks(language, "one"), [], "only a million and the like choose another")
            self.assertEqual(self.remarks(language, "one", "many"), [])
        self.assertEqual(self.remarks("fr", "one", kind="f"), [])
        self.assertEqual(self.remarks("zh-Hant"), [])

    def test_numbers_with_decimals_choose_forms_too(self):
        self.assertEqual(self.remarks("cs", "one", "few"), [])
        self.assertEqual(self.remarks("cs", "one", "few", "many"), [])
        self.assertEqual(self.remarks("cs", "one", "few", kind=".1f"), ["lacks many 0.0"])
        self.assertEqual(self.remarks("lv", "zero", kind="@"), ["lacks one 1"])

    def test_a_text_that_lost_its_plurals_is_told(self):
        files = {"k": plural(n=variable(one="one", other="%d"))}
        self.bundle({"en.lproj/T.stringsdict": files, **{f"{language}.lproj/T.strings": table(k="%d")
                                                         for language in ("de", "ja", "German", "ar")}})
        self.assertEqual(self.check("b"), [
            'b/ar.lproj/T.strings:1:1: warning: "k": has no plural forms, which "ar" needs for 0',
            'b/de.lproj/T.strings:1:1: warning: "k": has no plural forms, which "de" needs for 1'])
        self.assertEqual({finding["kind"] for finding in json.loads(self.tool("check", "b", "--json"))}, {"missing-form"})
        self.bundle({"ar.lproj/T.stringsdict": "<plist>", "de.lproj/T.stringsdict": files})
        finding, = self.check("b", status=1)
        self.assertTrue(finding.startswith("b/ar.lproj/T.stringsdict: error: "), "it may have the forms")

    def test_names_that_are_no_codes_of_languages_have_no_rules(self):
        for language in "English", "Simplified Chinese", "POSIX":
            self.assertEqual(self.remarks(language, "one", "few"), [])
        self.assertEqual(self.remarks("fil", "few"), ["has few no number", "lacks one 0"])

    def test_base_is_in_the_language_of_the_region(self):
        self.assertEqual(self.remarks("Base"), [])
        self.assertEqual(self.remarks("Base", region="English"), [])
        self.assertEqual(self.remarks("Base", region="en_US"), ["lacks one 1"])


class BaseLanguages(InFolder):
    def test_the_base_is_what_is_asked_for_else_base_else_of_the_region_else_english(self):
        languages = ("Base", "de", "en", "pt-BR", "pt_PT", "zh")

        def bundle(*present, region=None):
            name = f"b{len(list(self.folder.iterdir()))}"
            self.bundle({f"{language}.lproj/T.strings": table(**{language.replace("-", "_"): ""}) for language in present},
                        name, {"CFBundleDevelopmentRegion": region} if region else None)
            return name

        cases = [((bundle(*languages), "--base", "de"), "de"), ((bundle(*languages), "--base=zh"), "zh"),
                 ((bundle(*languages, region="de"),), "Base"), ((bundle(*languages[1:], region="de"),), "de"),
                 ((bundle(*languages[1:], region="de_CH"),), "de"), ((bundle(*languages[1:], region="pt_BR"),), "pt-BR"),
                 ((bundle(*languages[1:], region="pt-PT"),), "pt_PT"), ((bundle(*languages[1:]),), "en"),
                 ((bundle(*languages[1:], region="fr"),), "en")]
        empty = bundle("de", "en", region="de")
        (self.folder / empty / "Base.lproj").mkdir()
        cases.append(((empty,), "de"))
        self.assertEqual([line for line in self.check(empty) if "Base" in line], [], "it is there for other resources")
        for words, base in cases:
            with self.subTest(words=words):
                bases = {line.rsplit('"', 2)[-2] for line in self.check(*words)}
                self.assertEqual(bases, {base})
        for words in (bundle("de", "fr"),), (bundle("de", "en"), "--base", "fr"):
            self.assertIn("base language", self.tool("check", *words, status=2)[1])

    def test_a_table_may_be_checked_alone(self):
        self.bundle({"en.lproj/A.strings": table(a="%d"), "en.lproj/B.strings": table(b="%d"),
                     "de.lproj/A.strings": table(a="%@"), "de.lproj/B.strings": "wrong"})
        for words in ("--table", "A"), ("--table=A",):
            self.assertEqual(self.check("b", *words, status=1),
                             ['b/de.lproj/A.strings:1:1: error: "a": takes (any), in "en" (integer)'])

    def test_a_table_alone_is_compared_with_the_same_base(self):
        self.bundle({"Base.lproj/B.strings": "", "en.lproj/A.strings": table(a="%d"), "en.lproj/B.strings": "",
                     "de.lproj/A.strings": table(a="%@"), "de.lproj/B.strings": ""})
        for options, status in ((), 0), (("--base", "en"), 1):
            lines = self.check("b", *options, status=status)
            self.assertEqual(len(lines), 2)
            self.assertEqual(self.check("b", "--table", "A", *options, status=status), lines)


class Printing(InFolder):
    def test_what_is_printed_reads_back_the_same(self):
        texts = {"b": "B", "a \"\\": "two\nlines\t\r\x01\x7f", "": "🙂 Grüße", "*/": "//", "%@": "\u2028"}
        self.write("binary.strings", plistlib.dumps(texts, fmt=plistlib.FMT_BINARY))
        printed = self.tool("print", "binary.strings")
        self.assertEqual(printed.split("\n")[0], '"" = "🙂 Grüße";')
        self.assertEqual(printed.count("\n"), len(texts))
        for number, content in enumerate((printed, printed.encode("utf-16"), b"\xfe\xff" + printed.encode("utf-16-be"))):
            self.write(f"{number}.strings", content)
        for name in "0", "1", "2":
            self.assertEqual(self.tool("print", f"{name}.strings"), printed)
        self.assertEqual(json.loads(self.tool("print", "--json", "1.strings")), texts)

    def test_plural_variables_are_in_comments_and_in_json(self):
        self.write("T.stringsdict", {"k": plural(n=variable("ld", one="one\n", other="%ld")), "a": plural("plain")})
        printed = self.tool("print", "T.stringsdict")
        self.assertEqual(printed, '"a" = "plain";\n"k" = "%#@n@";\n    // "n" (%ld), one: "one\\n"\n    // "n" (%ld), other: '
                                  '"%ld"\n')
        self.write("T.strings", printed)
        self.assertEqual(json.loads(self.tool("print", "T.strings", "--json")), {"a": "plain", "k": "%#@n@"})
        self.assertEqual(json.loads(self.tool("print", "T.stringsdict", "--json")), {
            "a": "plain", "k": {"text": "%#@n@", "variables": {"n": {"valueType": "ld", "one": "one\n", "other": "%ld"}}}})

    def test_what_is_no_table_is_not_printed(self):
        self.write("T.strings", '"a" = "b"\n')
        output, errors = self.tool("print", "T.strings", status=1, has_message=True)
        self.assertEqual((output, errors), ("", "T.strings:2:1: error: expected ';', found the end of the file\n"))
        for name in "nothing.strings", ".":
            self.assertIn(f"cannot read '{name}': ", self.tool("print", name, status=2)[1])

    def test_list_tells_languages_with_and_without_tables(self):
        self.bundle({"en.lproj/B.strings": table(a="a", b="b"), "en.lproj/A.strings": "",
                     "en.lproj/B.stringsdict": {"b": plural("x"), "c": plural("y")}, "Base.lproj/x.txt": "x",
                     "de.lproj/B.strings": '"a"'})
        output, errors = self.tool("list", "b", status=1, has_message=True)
        self.assertEqual(output, "Base\nde\tB\t0\nen\tA\t0\nen\tB\t3\n")
        self.assertTrue(errors.startswith("b/de.lproj/B.strings:1:4: error: "), errors)


class Errors(InFolder):
    def test_a_bundle_that_cannot_be_read_is_told_and_the_others_are_checked(self):
        self.bundle({"en.lproj/T.strings": "wrong"})
        self.write("file", "x")
        (self.folder / "empty").mkdir()
        self.bundle({"en.lproj/T.strings": ""}, "damaged", "no property list")
        output, errors = self.tool("check", "file", "b", "empty", "nowhere", status=2)
        self.assertTrue(output.startswith("b/en.lproj/T.strings:1:6: error: "), output)
        for name, line in zip(("file", "empty", "nowhere"), errors.splitlines(), strict=True):
            self.assertTrue(line.startswith("vorlan-strings: "), line)
            self.assertIn(f"'{name}'", line)
        self.assertIn("Info.plist", self.tool("check", "damaged", status=2)[1])
        self.assertIn("'U'", self.tool("check", "b", "--table", "U", status=2)[1])
        self.assertIn("'nowhere'", self.tool("list", "nowhere", status=2)[1])

    def test_a_wrong_call_is_told_with_the_usage(self):
        for words, told in (((), "no command"), (("",), "''"), (("show",), "'show'"), (("check",), "no bundle"),
                            (("print",), "no file"), (("list",), "no bundle"), (("check", ""), "is empty"),
                            (("list", "a", "b"), "'b'"), (("print", "a", "b"), "'b'"), (("check", "b", "--fix"), "'--fix'"),
                            (("check", "b", "-s"), "'-s'"), (("--fast", "check"), "'--fast'"),
                            (("list", "b", "--json"), "'--json'"), (("print", "b", "--strict"), "'--strict'"),
                            (("check", "b", "--base"), "'--base'"), (("check", "b", "--base="), "'--base'"),
                            (("check", "b", "--strict=yes"), "'--strict'"), (("--json", "check", "b"), "'--json'")):
            output, message = self.tool(*words, status=2)
            self.assertEqual(output, "")
            self.assertTrue(message.startswith("vorlan-strings: "), message)
            self.assertIn("\n\nUsage: vorlan-strings COMMAND", message)
            self.assertIn(told, message.split("\n")[0])

    def test_behind_two_dashes_nothing_is_an_option(self):
        self.bundle({"en.lproj/T.strings": '"a" = "a";'}, "--json")
        self.assertEqual(self.tool("check", "--", "--json"), "")

    def test_help_and_version_are_no_errors(self):
        usage = self.tool("--help")
        for command, option in ("check", "--strict"), ("print", "--json"), ("list", "language"):
            self.assertIn(f"  {command} ", usage)
            text = self.tool(command, "--help")
            self.assertTrue(text.startswith(f"Usage: vorlan-strings {command} "), text)
            self.assertIn(option, text)
        self.assertRegex(self.tool("--version"), r"^vorlan-strings \d+\.\d+\.\d+\n$")

    def test_output_that_cannot_be_written_is_told(self):
        self.write("T.strings", table(a="a"))
        with open("/dev/full", "wb") as full:
            result = subprocess.run([program, "print", "T.strings"], cwd=self.folder, stdout=full, stderr=subprocess.PIPE,
                                    timeout=limit)
        self.assertEqual(result.returncode, 2)
        self.assertIn(b"cannot write the output", result.stderr)


class Completion(InFolder):
    """Typed into a real bash, which then prints the words that the line was completed to."""

    def test_commands_options_bundles_languages_and_tables(self):
        self.bundle({"en.lproj/Main.strings": "", "de.lproj/Main.strings": "", "de.lproj/Menu.stringsdict": {}}, "My App.app")
        self.write("one.strings", "")
        self.write("one.txt", "")
        completed = Shell(self, program, completion, dict(os.environ), self.folder).completed
        self.assertEqual(sorted(completed("")), ["--help", "--version", "check", "list", "print"])
        self.assertEqual(completed("ch", "\t"), ["check"])
        for line, expected in (("check My", ["check", "My App.app/"]), ("list My", ["list", "My App.app/"]),
                               ("print o", ["print", "one.strings"]), ("check a --st", ["check", "a", "--strict"]),
                               ("print --j", ["print", "--json"]),
                               ("check My\\ App.app --base d", ["check", "My App.app", "--base", "de"]),
                               ("check 'My App.app' --base=e", ["check", "My App.app", "--base=en"]),
                               ("check My\\ App.app --table Me", ["check", "My App.app", "--table", "Menu"])):
            with self.subTest(line=line):
                self.assertEqual(completed(line, "\t"), expected)
        self.assertEqual(completed("check My\\ App.app --table="), ["check", "My App.app", "--table=Main", "Menu"])


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], "-v", *sys.argv[3:]])
