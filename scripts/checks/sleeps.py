# SPDX-License-Identifier: Apache-2.0
"""No test sleeps: a test that waits for time to pass is slow when all is well and wrong when the machine is busy."""

import re

from tree import CPP, files, finding, is_script

PLACES = ("tests", "testing", "include/VorlanFoundation/Testing")
_SLEEP = re.compile(r"\b(?:sleep_for|sleep_until|usleep|nanosleep|clock_nanosleep)\b|\bsleep\s*\(")
_SHELL_SLEEP = re.compile(r"(?:^|[;&|(]|\bdo\b|\bthen\b)\s*sleep\s+[\d.$\"]")


def check(root):
    looked_at, findings = 0, []
    for path in files(root, under=PLACES):
        if path.suffix not in CPP and not is_script(path):
            continue
        looked_at += 1
        for number, line in enumerate(path.read_text(encoding="utf-8").split("\n"), 1):
            if _SLEEP.search(line) or _SHELL_SLEEP.search(line):
                findings.append(finding(root, path, number, "a test may not sleep; wait for a condition instead"))
    return looked_at, findings
