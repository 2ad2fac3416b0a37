# SPDX-License-Identifier: Apache-2.0
"""Tests of the machine checks: each finds what it is for, leaves what is right alone, and fails on an empty tree."""

import sys
import tempfile
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).parents[2] / "scripts/checks"))

import formatting  # noqa: E402
import includes  # noqa: E402
import lengths  # noqa: E402
import licences  # noqa: E402
import paths  # noqa: E402
import run  # noqa: E402
import sleeps  # noqa: E402
import threads  # noqa: E402

CHECKS = (formatting, includes, lengths, licences, paths, sleeps, threads)
PUBLIC = "include/VorlanFoundation/"

# Put together here, so that this file is not found by the checks that it tests.
SLEEP = "sl" + "eep"
HASH = "#"
SPDX = "SPDX-" + "License-Identifier: Apache-2.0"


class Case(unittest.TestCase):
    def findings(self, check, tree):
        """What a check says of a tree with the given files."""
        with tempfile.TemporaryDirectory() as folder:
            for name, text in tree.items():
                path = Path(folder) / name
                path.parent.mkdir(parents=True, exist_ok=True)
                path.write_text(text, encoding="utf-8")
            looked_at, findings = check.check(Path(folder))
            self.assertGreater(looked_at, 0, "the sample was not looked at")
            return findings

    def assert_good(self, check, tree):
        self.assertEqual(self.findings(check, tree), [])

    def assert_bad(self, check, tree, *words):
        findings = self.findings(check, tree)
        self.assertEqual(len(findings), 1, findings)
        for word in words:
            self.assertIn(word, findings[0])


class Runner(Case):
    def test_a_check_that_finds_nothing_to_look_at_fails(self):
        with tempfile.TemporaryDirectory() as folder:
            for check in CHECKS:
                with self.subTest(check.__name__):
                    self.assertEqual(run.run(check.__name__, folder), 1)

    def test_build_folders_are_not_looked_at(self):
        with tempfile.TemporaryDirectory() as folder:
            (Path(folder) / "build/debug").mkdir(parents=True)
            (Path(folder) / "build/debug/Generated.cpp").write_text("int x;\n")
            self.assertEqual(licences.check(Path(folder)), (0, []))


class Includes(Case):
    def test_arrows_that_point_down_are_good(self):
        self.assert_good(includes, {
            PUBLIC + "Execution.h": "#include <VorlanFoundation/Execution/Timer.h>\n",
            PUBLIC + "Execution/Timer.h": "#include <VorlanFoundation/Platform/Queue.h>\n",
            PUBLIC + "Platform/Queue.h": "#include <chrono>\n#include <VorlanFoundation/Platform/Work.h>\n",
            PUBLIC + "Observation.h": "#include <VorlanFoundation/Execution.h>\n",
            PUBLIC + "Testing/Pump.h": "#include <VorlanFoundation/Execution.h>\n",
            PUBLIC + "VorlanFoundation.h": "#include <VorlanFoundation/Observation.h>\n",
            "platform/runloop/Loop.cpp": '#include <glib.h>\n#include "platform/runloop/Loop.h"\n',
            "platform/runloop/Loop.h": "#include <memory>\n",
            "reachability/Service.cpp": '#include "platform/runloop/Loop.h"\n#include <VorlanFoundation/Observation.h>\n',
            "testing/Pump.cpp": "#include <VorlanFoundation/Testing/Pump.h>\n",
            "examples/gtk/main.cpp": "#include <gtk/gtk.h>\n#include <VorlanFoundation/Execution.h>\n",
            "tests/platform/LoopTests.cpp": '#include <glib.h>\n#include "platform/runloop/Loop.h"\n',
            "benchmarks/Queues.cpp": "#include <dispatch/dispatch.h>\n",
        })

    def test_the_platform_includes_no_subsystem(self):
        tree = {"platform/values/A.cpp": "#include <VorlanFoundation/Execution.h>\n"}
        self.assert_bad(includes, tree, "platform/values/A.cpp:1", "private platform may not include")

    def test_a_subsystem_includes_only_the_one_it_builds_on(self):
        for folder, header in (("execution", "Observation"), ("reachability", "Execution"), ("logging", "Persistence")):
            with self.subTest(folder):
                self.assert_bad(includes, {f"{folder}/A.cpp": f"\n#include <VorlanFoundation/{header}.h>\n"}, ":2")

    def test_a_subsystem_includes_nothing_foreign(self):
        self.assert_bad(includes, {"execution/A.cpp": "#include <unistd.h>\n"}, "unistd.h")

    def test_a_subsystem_gets_nothing_foreign_through_the_platform(self):
        self.assert_bad(includes, {
            "execution/A.cpp": '#include "platform/dispatch/Engine.h"\n',
            "platform/dispatch/Engine.h": '#include "platform/dispatch/Wrapper.h"\n',
            "platform/dispatch/Wrapper.h": "#include <dispatch/dispatch.h>\n",
        }, "execution/A.cpp", "brings dispatch/dispatch.h along")

    def test_a_public_header_includes_nothing_foreign_and_nothing_private(self):
        for line in ("#include <glib.h>", '#include "platform/runloop/Loop.h"', "#  include <sys/types.h>"):
            with self.subTest(line):
                self.assert_bad(includes, {PUBLIC + "Platform/RunLoop.h": line + "\n"}, "public platform may not")

    def test_the_test_kit_and_hosts_see_public_headers_only(self):
        for folder in ("testing", "examples/tour", "tools"):
            with self.subTest(folder):
                self.assert_bad(includes, {folder + "/A.cpp": '#include "platform/values/Text.h"\n'}, "may not include")

    def test_a_folder_without_a_rule_is_a_finding(self):
        self.assert_bad(includes, {"sundries/A.cpp": '#include "sundries/A.h"\n'}, "no rule")

    def test_an_include_in_a_comment_is_none(self):
        tree = {"execution/A.cpp": "// #include <unistd.h>\n/*\n#include <unistd.h>\n*/\n#include <vector>\n"}
        self.assert_good(includes, tree)


class Threads(Case):
    def header(self, text):
        return {PUBLIC + "A.h": "#pragma once\nnamespace vorlan {\n" + text + "\n}\n"}

    def test_a_class_that_says_so_is_good(self):
        self.assert_good(threads, self.header(
            "/// Counts.\n///\n/// Threads: safe from any thread.\n/// Owns:    nothing.\n"
            "template <class T>\n    requires(sizeof(T) > 1)\nclass VORLAN_EXPORT Counter final : public Base<T> {\n"
            "public:\n    int count() const;\n};"))

    def test_a_class_that_does_not_is_bad(self):
        for text in (
            "class Counter {\npublic:\n    int count();\n};",
            "/// Counts.\nclass Counter {\n    int count_ = 0;\n};",
            "/// Threads: any.\n\nclass Counter {};",
            "// Threads: any.\nclass Counter {};",
            "/// Threads: any.\nint other();\nclass Counter {};",
            "/// Threads:\nclass Counter {};",
            "namespace testing {\nclass Counter {};\n}",
            "#define OPEN \\\n    {\nstruct [[nodiscard]] Counter {\n    bool go() { return true; }\n};",
            "template <class T>\nstruct Counter : Base<T> {\n    virtual ~Counter();\n};",
            "/// Counts.\ntemplate <class T>\nclass Counter;\ntemplate <class R>\nclass Counter<R()> {};",
        ):
            with self.subTest(text):
                self.assert_bad(threads, self.header(text), "Counter does not say")

    def test_what_has_no_behaviour_or_is_not_public_need_not(self):
        good = "/// Threads: any.\nclass Good {};\n"
        for text in (
            "struct Point {\n    double x = std::max(1.0, 2.0);\n    double y = 0;\n"
            "    bool operator==(const Point&) const = default;\n};",
            "struct Options {\n    std::function<void(int)> handler;\n    void (*call)(int) = nullptr;\n    enum class Kind { a, b } kind;\n};",
            "enum class Kind { a, b };",
            "enum class Kind : unsigned char { a, b };",
            "class Later;",
            "namespace detail {\nclass Hidden {\n    int count();\n};\n}",
            "template <class T>\nint count(T& t) {\n    struct Local { int go(); };\n    return 1;\n}",
            "template <>\nclass Good<int> {\n    int count();\n};",
            "/* class Counter { int count(); }; */ const char* text = \"class Counter { int c(); };\";",
        ):
            with self.subTest(text):
                self.assert_good(threads, self.header(good + text))

    def test_the_comment_above_a_declared_template_speaks_for_its_only_form(self):
        self.assert_good(threads, self.header(
            "/// Threads: any.\ntemplate <class Signature>\nclass Call;\n"
            "template <class R>\nclass Call<R()> {\n    R operator()();\n};"))

    def test_labels_keep_their_order(self):
        text = "/// Counts.\n/// Owns: nothing.\n/// Threads: any.\nclass Counter {};"
        self.assert_bad(threads, self.header(text), "out of order")


class Sleeps(Case):
    def test_a_sleeping_test_is_bad(self):
        for name, text in (
            ("tests/execution/ATests.cpp", f"std::this_thread::{SLEEP}_for(1ms);\n"),
            ("tests/A.cpp", f"u{SLEEP}(5);\n"),
            ("testing/Pump.cpp", f"nano{SLEEP}(&t, nullptr);\n"),
            ("tests/scripts/run", f"#!/bin/sh\nwhile true; do {SLEEP} 1; done\n"),
            ("tests/wait.py", f"time.{SLEEP}(1)\n"),
        ):
            with self.subTest(name):
                self.assert_bad(sleeps, {name: text}, "may not sleep")

    def test_waiting_for_a_condition_is_good(self):
        self.assert_good(sleeps, {
            "tests/A.cpp": "condition.wait_for(lock, 5s, done);\nTEST(Worker, SleepsWhenIdle) { wakeUp(); }\n",
            "benchmarks/B.cpp": f"{SLEEP}_for(1s);\n",
        })


class Paths(Case):
    def test_what_exists_may_be_named(self):
        self.assert_good(paths, {
            "README.md": "See [the guide](docs/Guide.md#start), `scripts/setup`, platform/network/Kernel.h.\n"
                         "#include <VorlanFoundation/Execution.h>\nAll of `execution/` and logging/tracing too.\n",
            "docs/Guide.md": "Back to [it](../README.md) or [out](https://example.com/platform/none.h).\n",
            "scripts/setup": "#!/bin/sh\n# Used by scripts/setup.\n",
            "platform/network/Kernel.h": "// See `Kernel.h`, platform/network/*.h and platform/network/...\n",
            PUBLIC + "Execution.h": "// A folder: platform/network/\n",
            "execution/A.cpp": 'auto path = "platform/none.h";\n',
        })

    def test_what_does_not_exist_may_not(self):
        for name, text in (
            ("README.md", "Run `scripts/nothing`."),
            ("README.md", "[guide](docs/Guide.md)"),
            ("README.md", "#include <VorlanFoundation/Nothing.h>"),
            ("execution/A.cpp", "// As in platform/network/Kernel.h."),
            ("execution/A.cpp", "int x; // made in `Maker.cpp`"),
            ("execution/A.cpp", "/* see\n   execution/Timer.cpp */"),
            ("cmake/A.cmake", f"set(x y) {HASH} as tests/none says"),
        ):
            with self.subTest(text):
                self.assert_bad(paths, {name: text + "\n"}, "does not exist")


class Licences(Case):
    def test_the_line_stands_first_or_behind_the_interpreter(self):
        self.assert_good(licences, {
            "a/A.cpp": f"// {SPDX}\n", "CMakeLists.txt": f"# {SPDX}\n", "scripts/a": f"#!/bin/sh\n# {SPDX}\n",
            "README.md": "Words\n", "data.json": "{}\n",
        })

    def test_a_source_without_it_is_bad(self):
        for name, text in (
            ("A.h", "#pragma once\n"), ("A.py", "import sys\n"), ("b", "#!/bin/sh\necho\n"), (".clang-tidy", "Checks: x\n"),
            ("A.cpp", f"\n// {SPDX}\n"), ("B.cpp", f"# {SPDX}\n"), ("C.h", ""),
        ):
            with self.subTest(name):
                self.assert_bad(licences, {name: text}, "does not begin")


class Lengths(Case):
    def test_only_long_files_are_bad(self):
        self.assert_good(lengths, {"A.cpp": "\n" * 399})
        self.assert_bad(lengths, {"A.cpp": "\n" * 400}, "400 lines")


class Formatting(Case):
    STYLE = (Path(__file__).parents[2] / ".clang-format").read_text(encoding="utf-8")

    def test_only_what_the_formatter_would_change_is_bad(self):
        self.assert_good(formatting, {".clang-format": self.STYLE, "A.cpp": "int& f(int& x) {\n    return x;\n}\n"})
        self.assert_bad(formatting, {".clang-format": self.STYLE, "A.cpp": "int &x = y;\n"}, "A.cpp:1", "clang-format")


if __name__ == "__main__":
    unittest.main()
