# SPDX-License-Identifier: Apache-2.0
"""Every C++ source is as clang-format leaves it; scripts/format mends it. Tells one place a file."""

import re
import shutil
import subprocess

from tree import CPP, files

PROGRAM = "clang-format-19"
_FINDING = re.compile(r"^([^:\n]+):.*\berror: .*$", re.MULTILINE)


def check(root):
    sources = [str(path.relative_to(root)) for path in files(root, *CPP)]
    if not shutil.which(PROGRAM):
        return len(sources), [f"{PROGRAM} is missing; scripts/setup installs it"]
    if not sources:
        return 0, []
    command = [PROGRAM, "--dry-run", "-Werror", "--style=file", *sources]
    done = subprocess.run(command, cwd=root, capture_output=True, text=True, stdin=subprocess.DEVNULL)
    first = {}
    for match in _FINDING.finditer(done.stderr):
        first.setdefault(match[1], match[0])
    findings = list(first.values())
    if done.returncode != 0 and not findings:
        findings = [done.stderr or f"{PROGRAM} failed"]
    return len(sources), findings
