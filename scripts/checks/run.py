# SPDX-License-Identifier: Apache-2.0
"""Runs one check of the sources: run.py NAME [ROOT]. Prints what is wrong, and fails if anything is.

A check is a module beside this file with a function check(root), which returns the number of things it looked
at and a list of what is wrong. One that found nothing to look at has lost its subject, and fails.
"""

import importlib
import sys
from pathlib import Path


def run(name, root):
    looked_at, findings = importlib.import_module(name).check(Path(root).resolve())
    if looked_at == 0:
        findings = [f"{name}: found nothing to check under {root}"]
    for line in findings:
        print(line)
    print(f"{name}: looked at {looked_at}, {len(findings)} wrong")
    return 1 if findings else 0


if __name__ == "__main__":
    sys.exit(run(sys.argv[1], sys.argv[2] if len(sys.argv) > 2 else Path(__file__).parents[2]))
